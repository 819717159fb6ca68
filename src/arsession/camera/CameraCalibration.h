#pragma once
// A camera's lens as calibration measured it: the pinhole intrinsics, OpenCV's five distortion
// coefficients (k1, k2, p1, p2, k3) and the image size they were measured at. Files are
// OpenCV FileStorage YAML with `camera_matrix` (3×3), `distortion_coefficients` (4 or 5
// numbers), `image_width` and `image_height`.
// Thread: a value type, usable on any thread.

#include "arsession/CameraIntrinsics.h"
#include "core/Result.h"

#include <QSize>
#include <QString>

#include <array>

namespace orvanta::arsession::camera {

class CameraCalibration {
public:
    // Errors of calibration files: code 1 a file that cannot be read, 2 a missing or bad
    // field (named in the message).
    static constexpr const char* errorDomain = "CameraCalibrationError";

    static core::Result<CameraCalibration> load(const QString& path);
    // A typical laptop camera for pictures of `imageSize`: 70° diagonal field of view, square
    // pixels, principal point at the centre, no distortion.
    static CameraCalibration defaultLens(QSize imageSize);

    // The same lens for pictures of `imageSize` (a camera mode of another resolution):
    // focal lengths and principal point scale with each axis; distortion is unchanged.
    CameraCalibration scaledTo(QSize imageSize) const;

    CameraIntrinsics intrinsics;
    std::array<double, 5> distortion{}; // k1, k2, p1, p2, k3
    QSize imageSize;

    friend bool operator==(const CameraCalibration&, const CameraCalibration&) = default;
};

} // namespace orvanta::arsession::camera
