#pragma once
// Camera pictures with known ground truth: a table card lying at the world origin on a
// textured table, seen through a known camera pose and a real lens (off-centre principal
// point, OpenCV's five-coefficient distortion), with blur, uneven light and noise. The
// geometry is drawn once (supersampled); each frame adds fresh noise.

#include "arsession/camera/CameraCalibration.h"
#include "arsession/camera/TableCard.h"

#include <QImage>
#include <QMatrix4x4>

namespace orvanta::testing {

struct SyntheticLook {
    double noise = 3.0;        // standard deviation of the sensor noise, grey levels
    double blur = 0.7;         // standard deviation of the lens blur, pixels; 0 for none
    double unevenLight = 0.35; // the darkest corner has this fraction less light than the brightest
    bool showCard = true;      // false: the same table without the card
};

class SyntheticCameraFrames {
public:
    SyntheticCameraFrames(const arsession::camera::TableCard& card, const QMatrix4x4& cameraTransform,
                          arsession::camera::CameraCalibration lens, SyntheticLook look = {});

    // The picture with noise drawn from `seed` (RGB32, the lens's image size).
    QImage frame(unsigned seed) const;

    const arsession::camera::CameraCalibration& lens() const { return lens_; }
    const QMatrix4x4& cameraTransform() const { return cameraTransform_; }

    // A camera `distance` metres from `target`, `elevation` degrees above the table and
    // `azimuth` degrees around it (0: on the +z side, looking along −z), looking at `target`.
    static QMatrix4x4 lookingAt(float distance, float elevation, float azimuth, QVector3D target = {});
    // A lens for pictures of `size`: about 60° across, principal point off centre, noticeable
    // barrel distortion.
    static arsession::camera::CameraCalibration testLens(QSize size);

private:
    arsession::camera::CameraCalibration lens_;
    QMatrix4x4 cameraTransform_;
    SyntheticLook look_;
    QImage clean_;
};

} // namespace orvanta::testing
