#include "arsession/camera/CardLocator.h"

#include <opencv2/aruco/charuco.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include <algorithm>
#include <cmath>

namespace orvanta::arsession::camera {

namespace {

// Two planar solutions whose reprojection errors are this close are both plausible.
constexpr double ambiguousErrorRatio = 1.5;
constexpr double ambiguousErrorSlack = 0.3; // pixels
// A board's corners fitted worse than this (root mean square, as a share of the board's
// extent in the picture) do not lie where the card text says: another board is printed.
constexpr double misfitShareOfExtent = 0.02;

// The camera's axes in OpenCV (x right, y down, z forward) against the session's (x right,
// y up, −z forward).
const QMatrix4x4 openCvToSession(1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1);

// Angle between the rotations of two transforms, radians.
double rotationDistance(const QMatrix4x4& a, const QMatrix4x4& b) {
    double trace = 0.0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) trace += double(a(j, i)) * double(b(j, i));
    return std::acos(std::clamp((trace - 1.0) * 0.5, -1.0, 1.0));
}

} // namespace

struct CardLocator::Detector {
    TableCard card;
    CameraCalibration lens;
    // The card's plane (x along the printed picture's right, y along its up, z out of the
    // paper, origin at the card's centre) in the world.
    QMatrix4x4 cardToWorld;
    cv::Mat cameraMatrix = cv::Mat::eye(3, 3, CV_64F);
    cv::Mat distortion = cv::Mat::zeros(1, 5, CV_64F);
    cv::Ptr<cv::aruco::Dictionary> dictionary;
    cv::Ptr<cv::aruco::CharucoBoard> board;
    cv::Ptr<cv::aruco::DetectorParameters> parameters = cv::aruco::DetectorParameters::create();
    cv::QRCodeDetector qr;

    // Buffers kept between pictures.
    cv::Mat gray, converted, smoothed;
    std::vector<std::vector<cv::Point2f>> markerCorners, rejected;
    std::vector<int> markerIds;
    std::vector<cv::Point2f> imagePoints, charucoCorners, projected;
    std::vector<int> charucoIds;
    std::vector<cv::Point3f> objectPoints;
    std::vector<cv::Mat> rotations, translations;
    cv::Mat errors;

    Detector(TableCard c, CameraCalibration l) : card(std::move(c)), lens(std::move(l)) {
        cameraMatrix.at<double>(0, 0) = lens.intrinsics.fx;
        cameraMatrix.at<double>(1, 1) = lens.intrinsics.fy;
        cameraMatrix.at<double>(0, 2) = lens.intrinsics.cx;
        cameraMatrix.at<double>(1, 2) = lens.intrinsics.cy;
        for (int i = 0; i < 5; ++i) distortion.at<double>(i) = lens.distortion[std::size_t(i)];
        // The long side runs along −z: up on a portrait card, right on a landscape one.
        const QSizeF size = card.size();
        if (size.width() > size.height())
            cardToWorld = QMatrix4x4(0, -1, 0, 0, 0, 0, 1, 0, -1, 0, 0, 0, 0, 0, 0, 1);
        else
            cardToWorld = QMatrix4x4(1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1);
        if (card.kind != TableCard::Kind::qr) dictionary = cv::aruco::getPredefinedDictionary(card.dictionary);
        if (card.kind == TableCard::Kind::charuco)
            board = cv::aruco::CharucoBoard::create(card.columns, card.rows, card.squareSize, card.markerSize, dictionary);
        if (card.kind == TableCard::Kind::aruco)
            parameters->cornerRefinementMethod = cv::aruco::CORNER_REFINE_SUBPIX;
        // Two thresholding passes (windows of 5 and 15 pixels) instead of the default three:
        // a third of the detection time, and the markers of a card on a table are found alike.
        parameters->adaptiveThreshWinSizeMin = 5;
        parameters->adaptiveThreshWinSizeMax = 15;
        parameters->adaptiveThreshWinSizeStep = 10;
    }

    void toGray(const QImage& picture) {
        switch (picture.format()) {
        case QImage::Format_Grayscale8:
            gray = cv::Mat(picture.height(), picture.width(), CV_8UC1, const_cast<uchar*>(picture.constBits()),
                           std::size_t(picture.bytesPerLine()));
            return;
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            cv::cvtColor(cv::Mat(picture.height(), picture.width(), CV_8UC4, const_cast<uchar*>(picture.constBits()),
                                 std::size_t(picture.bytesPerLine())),
                         converted, cv::COLOR_BGRA2GRAY);
            break;
        case QImage::Format_RGB888:
            cv::cvtColor(cv::Mat(picture.height(), picture.width(), CV_8UC3, const_cast<uchar*>(picture.constBits()),
                                 std::size_t(picture.bytesPerLine())),
                         converted, cv::COLOR_RGB2GRAY);
            break;
        default: {
            const QImage grayPicture = picture.convertToFormat(QImage::Format_Grayscale8);
            cv::Mat(grayPicture.height(), grayPicture.width(), CV_8UC1, const_cast<uchar*>(grayPicture.constBits()),
                    std::size_t(grayPicture.bytesPerLine()))
                .copyTo(converted);
        }
        }
        gray = converted;
    }

    // The four corners of a square code of side `side`, in the order OpenCV's detectors give
    // them: top-left, top-right, bottom-right, bottom-left.
    void squareCorners(float side) {
        const float h = side * 0.5f;
        objectPoints = {{-h, h, 0}, {h, h, 0}, {h, -h, 0}, {-h, -h, 0}};
    }

    // Fills imagePoints and objectPoints (card plane); false when the card is not seen.
    bool findCorners() {
        imagePoints.clear();
        objectPoints.clear();
        if (card.kind == TableCard::Kind::qr) {
            // The finder-pattern search trips over sensor noise; a slight blur steadies it
            // without moving the code's corners.
            cv::GaussianBlur(gray, smoothed, cv::Size(0, 0), 1.0);
            if (!qr.detect(smoothed, imagePoints) || imagePoints.size() != 4) return false;
            squareCorners(card.markerSize);
            return true;
        }
        cv::aruco::detectMarkers(gray, dictionary, markerCorners, markerIds, parameters, rejected);
        if (card.kind == TableCard::Kind::aruco) {
            for (std::size_t i = 0; i < markerIds.size(); ++i) {
                if (markerIds[i] != card.markerId) continue;
                imagePoints = markerCorners[i];
                squareCorners(card.markerSize);
                return true;
            }
            return false;
        }
        if (markerIds.empty()) return false;
        // Markers of the dictionary that the board does not hold: a board of another shape
        // printed with the same dictionary.
        const auto foreign = std::count_if(markerIds.begin(), markerIds.end(),
                                           [&](int id) { return id >= int(board->ids.size()); });
        if (foreign * 4 >= std::ptrdiff_t(markerIds.size())) return false;
        cv::aruco::interpolateCornersCharuco(markerCorners, markerIds, gray, board, charucoCorners, charucoIds);
        if (charucoIds.size() < 4) return false;
        // The board's own frame has its origin at the printed picture's top-left corner, y down.
        const QSizeF size = card.size();
        for (std::size_t i = 0; i < charucoIds.size(); ++i) {
            const cv::Point3f corner = board->chessboardCorners[std::size_t(charucoIds[i])];
            objectPoints.emplace_back(corner.x - float(size.width()) * 0.5f, float(size.height()) * 0.5f - corner.y, 0.0f);
            imagePoints.push_back(charucoCorners[i]);
        }
        // A single row of corners does not fix a plane's pose.
        return !cv::aruco::testCharucoCornersCollinear(board, charucoIds);
    }

    // True when the board's corners, seen at this pose, land far from where they were found:
    // their layout is not the one the card text describes (rows and columns swapped, say).
    bool misfit(const cv::Mat& rotation, const cv::Mat& translation) {
        cv::projectPoints(objectPoints, rotation, translation, cameraMatrix, distortion, projected);
        double squares = 0.0;
        for (std::size_t i = 0; i < projected.size(); ++i) {
            const cv::Point2f d = projected[i] - imagePoints[i];
            squares += double(d.dot(d));
        }
        const cv::Rect2f extent = cv::boundingRect(imagePoints);
        const double rms = std::sqrt(squares / double(projected.size()));
        return rms > misfitShareOfExtent * std::hypot(extent.width, extent.height);
    }

    QMatrix4x4 cameraTransform(const cv::Mat& rotation, const cv::Mat& translation) const {
        cv::Mat r;
        cv::Rodrigues(rotation, r);
        // Card plane to OpenCV camera: x_cam = R x_card + t.
        QMatrix4x4 cardToCamera;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) cardToCamera(i, j) = float(r.at<double>(i, j));
            cardToCamera(i, 3) = float(translation.at<double>(i));
        }
        return cardToWorld * cardToCamera.inverted() * openCvToSession;
    }

    std::optional<Sighting> locate(const QImage& picture, const std::optional<QMatrix4x4>& previous) {
        assert(picture.size() == lens.imageSize);
        toGray(picture);
        if (!findCorners()) return std::nullopt;
        const bool square = card.kind != TableCard::Kind::charuco;
        const int solutions =
            cv::solvePnPGeneric(objectPoints, imagePoints, cameraMatrix, distortion, rotations, translations, false,
                                square ? cv::SOLVEPNP_IPPE_SQUARE : cv::SOLVEPNP_IPPE, cv::noArray(), cv::noArray(),
                                errors);
        if (solutions == 0) return std::nullopt;
        std::size_t chosen = 0;
        if (solutions == 2 && previous) {
            const double best = errors.at<double>(0), other = errors.at<double>(1);
            if (other <= best * ambiguousErrorRatio + ambiguousErrorSlack &&
                rotationDistance(cameraTransform(rotations[1], translations[1]), *previous) <
                    rotationDistance(cameraTransform(rotations[0], translations[0]), *previous))
                chosen = 1;
        }
        if (!square) cv::solvePnPRefineLM(objectPoints, imagePoints, cameraMatrix, distortion, rotations[chosen],
                                          translations[chosen]);
        if (!square && misfit(rotations[chosen], translations[chosen])) return std::nullopt;
        Sighting sighting;
        sighting.cameraTransform = cameraTransform(rotations[chosen], translations[chosen]);
        sighting.reprojectionError = float(errors.at<double>(int(chosen)));
        sighting.points = int(imagePoints.size());
        return sighting;
    }
};

CardLocator::CardLocator(TableCard card, CameraCalibration lens)
    : detector_(std::make_unique<Detector>(std::move(card), std::move(lens))) {}

CardLocator::~CardLocator() = default;

const CameraCalibration& CardLocator::lens() const { return detector_->lens; }

std::optional<CardLocator::Sighting> CardLocator::locate(const QImage& picture,
                                                          const std::optional<QMatrix4x4>& previous) {
    return detector_->locate(picture, previous);
}

core::Result<ARCamera> CardLocator::locateInPicture(const QImage& picture, const TableCard& card,
                                                    const std::optional<CameraCalibration>& calibration) {
    const CameraCalibration lens =
        calibration ? calibration->scaledTo(picture.size()) : CameraCalibration::defaultLens(picture.size());
    CardLocator locator(card, lens);
    const auto sighting = locator.locate(picture);
    if (!sighting) return core::Error(errorDomain, 1, "no table card found");
    ARCamera camera;
    camera.transform = sighting->cameraTransform;
    camera.trackingState = TrackingState::normal();
    camera.intrinsics = lens.intrinsics;
    camera.imageResolution = picture.size();
    camera.verticalFieldOfView = 2.0f * std::atan(float(picture.height()) * 0.5f / lens.intrinsics.fy);
    return camera;
}

} // namespace orvanta::arsession::camera
