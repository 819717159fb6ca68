#pragma once
// Camera pictures of a table card lying at the world origin on a wooden table, drawn through
// a given lens (OpenCV's pinhole model with its five distortion coefficients) from any camera
// pose, with lens blur, uneven light and sensor noise. The pictures are honest: the card is
// the one CardArtwork prints, so the kit's own tracking finds it where it was drawn. They
// stand in for a camera where there is none: the sample app's video and the tests' frames
// with known ground truth. The card, the table and the lens's rays are prepared once; each
// picture then costs one pass over the image (drawn supersampled).
// Thread: a value (copies share what was prepared); usable from any thread.

#include "arsession/camera/CameraCalibration.h"
#include "arsession/camera/TableCard.h"

#include <QImage>
#include <QMatrix4x4>
#include <QVector3D>

#include <memory>

namespace orvanta::arsession::camera {

class CardTableScene {
public:
    struct Look {
        double noise = 3.0;        // standard deviation of the sensor noise, grey levels
        double blur = 0.7;         // standard deviation of the lens blur, pixels; 0 for none
        double unevenLight = 0.35; // the darkest corner has this fraction less light than the brightest
        bool showCard = true;      // false: the same table without the card
    };

    CardTableScene(const TableCard& card, CameraCalibration lens, Look look);
    CardTableScene(const TableCard& card, CameraCalibration lens) : CardTableScene(card, std::move(lens), Look()) {}

    // The picture seen from `cameraTransform` (camera to world; the camera looks along its −z
    // with +y up), without noise (RGB32, the lens's image size).
    QImage picture(const QMatrix4x4& cameraTransform) const;
    // `picture` with the sensor noise drawn from `seed` added.
    QImage withNoise(const QImage& picture, unsigned seed) const;

    const CameraCalibration& lens() const { return lens_; }

    // A camera `distance` metres from `target`, `elevation` degrees above the table and
    // `azimuth` degrees around it (0: on the +z side, looking along −z), looking at `target`.
    static QMatrix4x4 lookingAt(float distance, float elevation, float azimuth, QVector3D target = {});

private:
    struct Prepared; // the paper, the table and the rays, in OpenCV's types

    CameraCalibration lens_;
    Look look_;
    std::shared_ptr<const Prepared> prepared_;
};

} // namespace orvanta::arsession::camera
