#pragma once
// Camera pictures with known ground truth: a table card lying at the world origin on a
// textured table (CardTableScene), seen through a known camera pose and a real lens
// (off-centre principal point, OpenCV's five-coefficient distortion), with blur, uneven light
// and noise. The geometry is drawn once; each frame adds fresh noise.

#include "arsession/camera/CardTableScene.h"

#include <QImage>
#include <QMatrix4x4>

namespace orvanta::testing {

using SyntheticLook = arsession::camera::CardTableScene::Look;

class SyntheticCameraFrames {
public:
    SyntheticCameraFrames(const arsession::camera::TableCard& card, const QMatrix4x4& cameraTransform,
                          arsession::camera::CameraCalibration lens, SyntheticLook look = {});

    // The picture with noise drawn from `seed` (RGB32, the lens's image size).
    QImage frame(unsigned seed) const { return scene_.withNoise(clean_, seed); }

    const arsession::camera::CameraCalibration& lens() const { return scene_.lens(); }
    const QMatrix4x4& cameraTransform() const { return cameraTransform_; }

    static QMatrix4x4 lookingAt(float distance, float elevation, float azimuth, QVector3D target = {}) {
        return arsession::camera::CardTableScene::lookingAt(distance, elevation, azimuth, target);
    }
    // A lens for pictures of `size`: about 60° across, principal point off centre, noticeable
    // barrel distortion.
    static arsession::camera::CameraCalibration testLens(QSize size);

private:
    arsession::camera::CardTableScene scene_;
    QMatrix4x4 cameraTransform_;
    QImage clean_;
};

} // namespace orvanta::testing
