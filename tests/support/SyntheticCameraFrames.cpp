#include "support/SyntheticCameraFrames.h"

namespace orvanta::testing {

using arsession::camera::CameraCalibration;

SyntheticCameraFrames::SyntheticCameraFrames(const arsession::camera::TableCard& card, const QMatrix4x4& cameraTransform,
                                             CameraCalibration lens, SyntheticLook look)
    : scene_(card, std::move(lens), look), cameraTransform_(cameraTransform), clean_(scene_.picture(cameraTransform)) {}

CameraCalibration SyntheticCameraFrames::testLens(QSize size) {
    CameraCalibration lens;
    const float w = float(size.width()), h = float(size.height());
    lens.intrinsics = {0.86f * w, 0.862f * w, 0.5f * w + 0.027f * w, 0.5f * h - 0.023f * h};
    lens.distortion = {0.11, -0.24, 0.0012, -0.0009, 0.09};
    lens.imageSize = size;
    return lens;
}

} // namespace orvanta::testing
