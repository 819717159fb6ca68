#include "arsession/camera/CardTableScene.h"

#include "arsession/camera/CardArtwork.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>

namespace orvanta::arsession::camera {

namespace {

constexpr double cardPixelsPerMetre = 6000.0;
constexpr double tablePixelsPerMetre = 400.0;
constexpr double tableSide = 3.0; // metres, centred on the card
constexpr int supersampling = 2;
constexpr int gridStep = 8; // fine samples between exactly undistorted rays

// Image pixel coordinate (OpenCV's: 0 at the first pixel's centre) of fine sample `i`'s centre.
float fineToPixel(int i) { return (float(i) + 0.5f) / supersampling - 0.5f; }

// The card as printed: the code on white paper with its margin, in BGR; printer black is not
// perfectly black. `origin` receives the code's top-left pixel.
cv::Mat printedCard(const TableCard& card, cv::Point& origin) {
    QImage artwork = CardArtwork::draw(card, cardPixelsPerMetre, "https://menu.example/table/12").value();
    const cv::Mat pattern(artwork.height(), artwork.width(), CV_8UC1, artwork.bits(), std::size_t(artwork.bytesPerLine()));
    const int margin = int(std::lround(CardArtwork::margin(card) * cardPixelsPerMetre));
    cv::Mat paper(pattern.rows + 2 * margin, pattern.cols + 2 * margin, CV_8UC1, cv::Scalar(245));
    cv::Mat code;
    pattern.convertTo(code, CV_8UC1, 215.0 / 255.0, 30.0);
    code.copyTo(paper(cv::Rect(margin, margin, pattern.cols, pattern.rows)));
    origin = cv::Point(margin, margin);
    cv::Mat bgr;
    cv::cvtColor(paper, bgr, cv::COLOR_GRAY2BGR);
    return bgr;
}

// A wooden table top: brown with grain along x and blotches.
cv::Mat tableTexture() {
    const int side = int(tableSide * tablePixelsPerMetre);
    cv::RNG rng(7);
    cv::Mat blotches(side / 16, side / 16, CV_32FC1);
    rng.fill(blotches, cv::RNG::NORMAL, 0.0, 1.0);
    cv::resize(blotches, blotches, cv::Size(side, side), 0, 0, cv::INTER_CUBIC);
    cv::Mat grain(side, 1, CV_32FC1);
    rng.fill(grain, cv::RNG::NORMAL, 0.0, 1.0);
    cv::GaussianBlur(grain, grain, cv::Size(1, 9), 0, 2.0);
    cv::Mat texture(side, side, CV_8UC3);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const float shade = 1.0f + 0.12f * blotches.at<float>(y, x) + 0.18f * grain.at<float>(y) +
                                0.05f * std::sin(float(x) * 0.05f + grain.at<float>(y) * 3.0f);
            texture.at<cv::Vec3b>(y, x) = cv::Vec3b(cv::saturate_cast<uchar>(60 * shade),
                                                   cv::saturate_cast<uchar>(100 * shade),
                                                   cv::saturate_cast<uchar>(150 * shade));
        }
    return texture;
}

// Each fine sample's ray through the lens's distortion (x right, y down, at unit depth):
// undistorted exactly on a coarse grid, interpolated between (the distortion field is smooth).
cv::Mat fineRays(const CameraCalibration& lens, cv::Size fine) {
    std::vector<cv::Point2f> knots;
    const int columns = fine.width / gridStep + 2, rows = fine.height / gridStep + 2;
    for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i) knots.emplace_back(fineToPixel(i * gridStep), fineToPixel(j * gridStep));
    cv::Mat matrix = (cv::Mat_<double>(3, 3) << lens.intrinsics.fx, 0, lens.intrinsics.cx, 0, lens.intrinsics.fy,
                      lens.intrinsics.cy, 0, 0, 1);
    std::array<double, 5> distortion = lens.distortion;
    std::vector<cv::Point2f> knotRays;
    cv::undistortPoints(knots, knotRays, matrix, cv::Mat(1, 5, CV_64F, distortion.data()), cv::noArray(),
                        cv::noArray(), cv::TermCriteria(cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 30, 1e-7));
    cv::Mat rays(fine, CV_32FC2);
    for (int y = 0; y < fine.height; ++y)
        for (int x = 0; x < fine.width; ++x) {
            const int i = x / gridStep, j = y / gridStep;
            const float u = float(x % gridStep) / gridStep, v = float(y % gridStep) / gridStep;
            const auto at = [&](int di, int dj) { return knotRays[std::size_t((j + dj) * columns + i + di)]; };
            rays.at<cv::Point2f>(y, x) =
                (at(0, 0) * (1 - u) + at(1, 0) * u) * (1 - v) + (at(0, 1) * (1 - u) + at(1, 1) * u) * v;
        }
    return rays;
}

} // namespace

struct CardTableScene::Prepared {
    cv::Mat paper; // BGR
    cv::Point codeOrigin;
    QSizeF cardSize; // metres
    cv::Mat table; // BGR
    cv::Mat rays;  // CV_32FC2, one per fine sample
};

CardTableScene::CardTableScene(const TableCard& card, CameraCalibration lens, Look look)
    : lens_(std::move(lens)), look_(look) {
    auto prepared = std::make_shared<Prepared>();
    prepared->paper = printedCard(card, prepared->codeOrigin);
    prepared->cardSize = card.size();
    prepared->table = tableTexture();
    prepared->rays = fineRays(lens_, cv::Size(lens_.imageSize.width() * supersampling, lens_.imageSize.height() * supersampling));
    prepared_ = std::move(prepared);
}

QImage CardTableScene::picture(const QMatrix4x4& cameraTransform) const {
    const Prepared& p = *prepared_;
    const cv::Size size(lens_.imageSize.width(), lens_.imageSize.height());
    const cv::Size fine = p.rays.size();
    cv::Mat tableX(fine, CV_32FC1), tableY(fine, CV_32FC1), cardX(fine, CV_32FC1), cardY(fine, CV_32FC1);
    const QVector3D eye = cameraTransform.column(3).toVector3D();
    const QSizeF cardSize = p.cardSize;
    const bool landscape = cardSize.width() > cardSize.height();
    for (int row = 0; row < fine.height; ++row)
        for (int column = 0; column < fine.width; ++column) {
            const cv::Point2f n = p.rays.at<cv::Point2f>(row, column);
            const QVector3D direction = cameraTransform.mapVector(QVector3D(n.x, -n.y, -1.0f));
            float wx = 1e6f, wz = 1e6f; // off every texture
            if (direction.y() < 0.0f) {
                const float t = -eye.y() / direction.y();
                wx = eye.x() + t * direction.x();
                wz = eye.z() + t * direction.z();
            }
            tableX.at<float>(row, column) = float((wx + tableSide * 0.5) * tablePixelsPerMetre);
            tableY.at<float>(row, column) = float((wz + tableSide * 0.5) * tablePixelsPerMetre);
            // World to the printed picture: right along x, up along −z (a landscape card turned a
            // quarter so its long side runs along −z).
            const float right = landscape ? -wz : wx;
            const float up = landscape ? -wx : -wz;
            cardX.at<float>(row, column) =
                float(p.codeOrigin.x + (right + cardSize.width() * 0.5) * cardPixelsPerMetre - 0.5);
            cardY.at<float>(row, column) =
                float(p.codeOrigin.y + (cardSize.height() * 0.5 - up) * cardPixelsPerMetre - 0.5);
        }
    cv::Mat fineImage;
    cv::remap(p.table, fineImage, tableX, tableY, cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(90, 95, 100));
    if (look_.showCard) cv::remap(p.paper, fineImage, cardX, cardY, cv::INTER_AREA, cv::BORDER_TRANSPARENT);
    cv::Mat image;
    cv::resize(fineImage, image, size, 0, 0, cv::INTER_AREA);

    // Light falls off from the top-left corner towards the bottom-right.
    cv::Mat lit(size, CV_8UC3);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const double fall = look_.unevenLight * (0.6 * x / size.width + 0.4 * y / size.height);
            const cv::Vec3b c = image.at<cv::Vec3b>(y, x);
            lit.at<cv::Vec3b>(y, x) = cv::Vec3b(cv::saturate_cast<uchar>(c[0] * (1.0 - fall)),
                                               cv::saturate_cast<uchar>(c[1] * (1.0 - fall)),
                                               cv::saturate_cast<uchar>(c[2] * (1.0 - fall)));
        }
    if (look_.blur > 0.0) cv::GaussianBlur(lit, lit, cv::Size(0, 0), look_.blur);
    QImage result(size.width, size.height, QImage::Format_RGB32);
    cv::Mat bgra(size.height, size.width, CV_8UC4, result.bits(), std::size_t(result.bytesPerLine()));
    cv::cvtColor(lit, bgra, cv::COLOR_BGR2BGRA);
    return result;
}

QImage CardTableScene::withNoise(const QImage& picture, unsigned seed) const {
    QImage noisy = picture.convertToFormat(QImage::Format_RGB32);
    cv::Mat bgra(noisy.height(), noisy.width(), CV_8UC4, noisy.bits(), std::size_t(noisy.bytesPerLine()));
    cv::Mat noise(bgra.size(), CV_16SC4);
    cv::RNG rng(seed);
    rng.fill(noise, cv::RNG::NORMAL, 0.0, look_.noise);
    cv::Mat sum;
    bgra.convertTo(sum, CV_16SC4);
    sum += noise;
    sum.convertTo(bgra, CV_8UC4);
    return noisy;
}

QMatrix4x4 CardTableScene::lookingAt(float distance, float elevation, float azimuth, QVector3D target) {
    const float e = elevation * float(M_PI) / 180.0f, a = azimuth * float(M_PI) / 180.0f;
    const QVector3D eye = target + distance * QVector3D(std::cos(e) * std::sin(a), std::sin(e), std::cos(e) * std::cos(a));
    QMatrix4x4 view;
    view.lookAt(eye, target, QVector3D(0, 1, 0));
    return view.inverted();
}

} // namespace orvanta::arsession::camera
