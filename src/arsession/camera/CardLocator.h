#pragma once
// Finds the table card in one camera picture and the camera's pose relative to it.
//
// The card's corners are found with OpenCV (aruco markers, ChArUco corners, or a QR code's
// corners), the pose comes from those points undistorted through the lens (a planar pose
// solver that yields both solutions of a plane), and is returned as the camera-to-world
// transform of the session's conventions (the card's frame is the world, see TableCard).
// When the two planar solutions fit the points about equally well (a small, far, face-on
// card), the one nearer to the previous pose wins, so the pose does not flip between them.
//
// Thread: a locator is used by one thread at a time (it keeps buffers between pictures).

#include "arsession/camera/CameraCalibration.h"
#include "arsession/camera/TableCard.h"
#include "arsession/ARCamera.h"
#include "core/Result.h"

#include <QImage>
#include <QMatrix4x4>

#include <memory>
#include <optional>

namespace orvanta::arsession::camera {

class CardLocator {
public:
    struct Sighting {
        QMatrix4x4 cameraTransform;     // camera to world (the card's frame)
        float reprojectionError = 0.0f; // RMS, pixels
        int points = 0;                 // corner points the pose rests on
    };

    // Errors of the one-shot location: code 1 when the picture shows no card.
    static constexpr const char* errorDomain = "CardLocatorError";

    CardLocator(TableCard card, CameraCalibration lens);
    ~CardLocator();
    CardLocator(const CardLocator&) = delete;
    CardLocator& operator=(const CardLocator&) = delete;

    // The card in `picture` (any format; the lens must be for the picture's size), or none.
    // `previous` is the camera transform of the last sighting, used to choose between two
    // equally good planar solutions.
    std::optional<Sighting> locate(const QImage& picture, const std::optional<QMatrix4x4>& previous = std::nullopt);

    // The camera of one still picture: its pose on the card, the lens (the calibration scaled
    // to the picture, or the default lens) and the picture's size, tracking normal. An error
    // "no table card found" when the card is not in the picture.
    static core::Result<ARCamera> locateInPicture(const QImage& picture, const TableCard& card,
                                                  const std::optional<CameraCalibration>& calibration);

    const CameraCalibration& lens() const;

private:
    struct Detector;
    std::unique_ptr<Detector> detector_;
};

} // namespace orvanta::arsession::camera
