#pragma once
// One frame of the session: when it was captured, the camera, every plane the session knows
// at that moment, and the camera picture when the frames come from a real camera. The session
// reuses one frame object, so a reference to it is valid until the next frame on the session's
// clock queue; copy it to keep it.
// Units: seconds on the session clock. Thread: a value type.

#include "arsession/ARCamera.h"
#include "arsession/ARPlaneAnchor.h"

#include <QImage>

#include <memory>
#include <vector>

namespace orvanta::arsession {

struct ARFrame {
    double timestamp = 0.0;
    ARCamera camera;
    std::vector<ARPlaneAnchor> anchors;
    // The picture this frame was tracked on, as the camera took it (never undistorted); null
    // for the simulated world and for replays without pictures. The camera backend recycles a
    // small pool of pictures, so a holder should let go of it once drawn.
    std::shared_ptr<const QImage> capturedImage;

    // The anchor with `identifier`, or nullptr.
    const ARPlaneAnchor* anchor(const QUuid& identifier) const;

    friend bool operator==(const ARFrame&, const ARFrame&) = default;
};

} // namespace orvanta::arsession
