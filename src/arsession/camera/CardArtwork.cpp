#include "arsession/camera/CardArtwork.h"

#include <opencv2/aruco/charuco.hpp>
#include <opencv2/imgproc.hpp>

#include <qrencode.h>

#include <cmath>
#include <memory>

namespace orvanta::arsession::camera {

namespace {

// The QR code holding `text`, one module per pixel, without its quiet zone; empty when the
// text does not fit a QR code. The lowest error correction keeps the modules large, so the
// code is found from farther away.
cv::Mat qrModules(const std::string& text) {
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString(text.c_str(), 0, QR_ECLEVEL_L, QR_MODE_8, 1), &QRcode_free);
    if (!code) return {};
    cv::Mat modules(code->width, code->width, CV_8UC1);
    for (int y = 0; y < code->width; ++y)
        for (int x = 0; x < code->width; ++x)
            modules.at<uchar>(y, x) = (code->data[y * code->width + x] & 1) ? 0 : 255;
    return modules;
}

} // namespace

core::Result<QImage> CardArtwork::draw(const TableCard& card, double pixelsPerMetre, const std::string& qrText) {
    const QSizeF size = card.size();
    const cv::Size pixels(int(std::lround(size.width() * pixelsPerMetre)), int(std::lround(size.height() * pixelsPerMetre)));
    QImage artwork(pixels.width, pixels.height, QImage::Format_Grayscale8);
    cv::Mat pattern(pixels, CV_8UC1, artwork.bits(), std::size_t(artwork.bytesPerLine()));
    switch (card.kind) {
    case TableCard::Kind::charuco: {
        cv::Mat drawn;
        cv::aruco::CharucoBoard::create(card.columns, card.rows, card.squareSize, card.markerSize,
                                        cv::aruco::getPredefinedDictionary(card.dictionary))
            ->draw(pixels, drawn);
        drawn.copyTo(pattern);
        break;
    }
    case TableCard::Kind::aruco: {
        cv::Mat drawn;
        cv::aruco::drawMarker(cv::aruco::getPredefinedDictionary(card.dictionary), card.markerId, pixels.width, drawn);
        drawn.copyTo(pattern);
        break;
    }
    case TableCard::Kind::qr: {
        if (qrText.empty()) return core::Error(errorDomain, 1, "A QR card needs the text its code holds");
        const cv::Mat modules = qrModules(qrText);
        if (modules.empty())
            return core::Error(errorDomain, 1, "The text is too long for a QR code (" +
                                                   std::to_string(qrText.size()) + " bytes)");
        cv::resize(modules, pattern, pixels, 0, 0, cv::INTER_NEAREST);
        break;
    }
    }
    return artwork;
}

double CardArtwork::margin(const TableCard& card) {
    return card.size().width() * (card.kind == TableCard::Kind::charuco ? 0.06 : 0.2);
}

} // namespace orvanta::arsession::camera
