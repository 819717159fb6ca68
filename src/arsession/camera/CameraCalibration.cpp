#include "arsession/camera/CameraCalibration.h"

#include <opencv2/core.hpp>

#include <QFileInfo>

#include <cmath>

namespace orvanta::arsession::camera {

namespace {

constexpr double defaultDiagonalFieldOfView = 70.0 * M_PI / 180.0;

core::Error badField(const QString& path, const std::string& problem) {
    return core::Error(CameraCalibration::errorDomain, 2,
                       "Calibration file " + path.toStdString() + ": " + problem);
}

} // namespace

core::Result<CameraCalibration> CameraCalibration::load(const QString& path) {
    if (!QFileInfo(path).isFile())
        return core::Error(errorDomain, 1, "Calibration file " + path.toStdString() + " cannot be read");
    cv::Mat matrix, coefficients;
    int width = 0, height = 0;
    try {
        cv::FileStorage storage(path.toStdString(), cv::FileStorage::READ);
        if (!storage.isOpened())
            return core::Error(errorDomain, 1, "Calibration file " + path.toStdString() + " cannot be read");
        storage["camera_matrix"] >> matrix;
        storage["distortion_coefficients"] >> coefficients;
        storage["image_width"] >> width;
        storage["image_height"] >> height;
    } catch (const cv::Exception& e) {
        return core::Error(errorDomain, 1, "Calibration file " + path.toStdString() + " is not OpenCV YAML: " + e.msg);
    }
    if (matrix.rows != 3 || matrix.cols != 3) return badField(path, "camera_matrix must be a 3x3 matrix");
    matrix.convertTo(matrix, CV_64F);
    CameraCalibration calibration;
    calibration.intrinsics = {float(matrix.at<double>(0, 0)), float(matrix.at<double>(1, 1)),
                              float(matrix.at<double>(0, 2)), float(matrix.at<double>(1, 2))};
    if (!calibration.intrinsics.isValid()) return badField(path, "camera_matrix must have positive focal lengths");
    const int count = int(coefficients.total());
    if (count != 0 && count != 4 && count != 5)
        return badField(path, "distortion_coefficients must hold 4 or 5 numbers");
    coefficients.convertTo(coefficients, CV_64F);
    for (int i = 0; i < count; ++i) calibration.distortion[std::size_t(i)] = coefficients.at<double>(i);
    if (width <= 0 || height <= 0) return badField(path, "image_width and image_height must be positive");
    calibration.imageSize = QSize(width, height);
    return calibration;
}

CameraCalibration CameraCalibration::defaultLens(QSize imageSize) {
    const double diagonal = std::hypot(imageSize.width(), imageSize.height());
    const float focal = float(diagonal * 0.5 / std::tan(defaultDiagonalFieldOfView * 0.5));
    CameraCalibration lens;
    lens.intrinsics = {focal, focal, (imageSize.width() - 1) * 0.5f, (imageSize.height() - 1) * 0.5f};
    lens.imageSize = imageSize;
    return lens;
}

CameraCalibration CameraCalibration::scaledTo(QSize size) const {
    const float sx = float(size.width()) / float(imageSize.width());
    const float sy = float(size.height()) / float(imageSize.height());
    CameraCalibration scaled = *this;
    // Pixel centres: the corner at −0.5 stays at −0.5.
    scaled.intrinsics = {intrinsics.fx * sx, intrinsics.fy * sy, (intrinsics.cx + 0.5f) * sx - 0.5f,
                         (intrinsics.cy + 0.5f) * sy - 0.5f};
    scaled.imageSize = size;
    return scaled;
}

} // namespace orvanta::arsession::camera
