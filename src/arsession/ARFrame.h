#pragma once
// One frame of the session: when it was captured, the camera, and every plane the session
// knows at that moment. The session reuses one frame object, so a reference to it is valid
// until the next frame on the session's clock queue; copy it to keep it.
// Units: seconds on the session clock. Thread: a value type.

#include "arsession/ARCamera.h"
#include "arsession/ARPlaneAnchor.h"

#include <vector>

namespace orvanta::arsession {

struct ARFrame {
    double timestamp = 0.0;
    ARCamera camera;
    std::vector<ARPlaneAnchor> anchors;

    // The anchor with `identifier`, or nullptr.
    const ARPlaneAnchor* anchor(const QUuid& identifier) const;

    friend bool operator==(const ARFrame&, const ARFrame&) = default;
};

} // namespace orvanta::arsession
