#include "calibrate/CharucoViews.h"

#include <opencv2/calib3d.hpp>

#include <cstdio>

namespace orvanta::calibrate {

using arsession::camera::TableCard;

namespace {

// Fewer corners than this in one picture say too little about the lens.
constexpr int minimumCorners = 8;

std::string pixels(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f px", value);
    return text;
}

} // namespace

CharucoViews::CharucoViews(const TableCard& card)
    : board_(cv::aruco::CharucoBoard::create(card.columns, card.rows, card.squareSize, card.markerSize,
                                             cv::aruco::getPredefinedDictionary(card.dictionary))),
      parameters_(cv::aruco::DetectorParameters::create()) {
    parameters_->cornerRefinementMethod = cv::aruco::CORNER_REFINE_SUBPIX;
}

std::optional<CharucoViews::Detection> CharucoViews::detect(const cv::Mat& grey) const {
    std::vector<std::vector<cv::Point2f>> markers;
    std::vector<int> markerIds;
    cv::aruco::detectMarkers(grey, board_->dictionary, markers, markerIds, parameters_);
    if (markerIds.size() < 2) return std::nullopt;
    Detection detection;
    cv::aruco::interpolateCornersCharuco(markers, markerIds, grey, board_, detection.corners, detection.ids);
    if (int(detection.ids.size()) < minimumCorners) return std::nullopt;
    return detection;
}

void CharucoViews::add(Detection detection, cv::Size size) {
    size_ = size;
    views_.push_back(std::move(detection));
}

core::Result<CharucoViews::Outcome> CharucoViews::calibrate() const {
    if (count() < minimumViews)
        return core::Error(errorDomain, 1,
                           "only " + std::to_string(count()) + " usable view" + (count() == 1 ? "" : "s") +
                               " of the card (at least " + std::to_string(minimumViews) +
                               " are needed): take more pictures in which the card is sharp, well lit and mostly "
                               "in view, from different angles");
    std::vector<cv::Mat> corners, ids;
    for (const Detection& view : views_) {
        corners.push_back(cv::Mat(view.corners).clone());
        ids.push_back(cv::Mat(view.ids).clone());
    }
    cv::Mat matrix, coefficients;
    double error = 0.0;
    try {
        error = cv::aruco::calibrateCameraCharuco(corners, ids, board_, size_, matrix, coefficients);
    } catch (const cv::Exception& e) {
        return core::Error(errorDomain, 1,
                           "OpenCV could not calibrate from these views (" + e.msg +
                               "): take pictures of the whole card from several different angles");
    }
    Outcome outcome;
    outcome.views = count();
    outcome.reprojectionError = error;
    outcome.lens.intrinsics = {float(matrix.at<double>(0, 0)), float(matrix.at<double>(1, 1)),
                               float(matrix.at<double>(0, 2)), float(matrix.at<double>(1, 2))};
    for (int i = 0; i < 5 && i < int(coefficients.total()); ++i)
        outcome.lens.distortion[std::size_t(i)] = coefficients.at<double>(i);
    outcome.lens.imageSize = QSize(size_.width, size_.height);
    const auto& k = outcome.lens.intrinsics;
    const bool centreInPicture = k.cx > 0 && k.cx < size_.width && k.cy > 0 && k.cy < size_.height;
    if (error > largestReprojectionError || !k.isValid() || !centreInPicture)
        return core::Error(errorDomain, 1,
                           "the calibration is wrong: its reprojection error is " + pixels(error) + " (at most " +
                               pixels(largestReprojectionError) +
                               " is right). Check that --card describes the printed card, that it lies flat and "
                               "was printed at actual size, and use sharp pictures without motion blur");
    return outcome;
}

bool CharucoViews::save(const Outcome& outcome, const TableCard& card, const std::string& path) {
    const auto& k = outcome.lens.intrinsics;
    const cv::Mat matrix = (cv::Mat_<double>(3, 3) << k.fx, 0.0, k.cx, 0.0, k.fy, k.cy, 0.0, 0.0, 1.0);
    const cv::Mat coefficients(1, 5, CV_64F, const_cast<double*>(outcome.lens.distortion.data()));
    try {
        cv::FileStorage storage(path, cv::FileStorage::WRITE);
        if (!storage.isOpened()) return false;
        storage << "image_width" << outcome.lens.imageSize.width();
        storage << "image_height" << outcome.lens.imageSize.height();
        storage << "camera_matrix" << matrix;
        storage << "distortion_coefficients" << coefficients;
        storage << "reprojection_error" << outcome.reprojectionError;
        storage << "views" << outcome.views;
        storage << "card" << card.text();
    } catch (const cv::Exception&) {
        return false;
    }
    return true;
}

} // namespace orvanta::calibrate
