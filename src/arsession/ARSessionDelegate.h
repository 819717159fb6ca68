#pragma once
// Receiver of a session's news. Every method has an empty default, so a delegate overrides
// only what it needs. The session holds its delegate weakly.
// Thread: called on the session's delegate queue (the main queue unless set otherwise).
// References passed in are valid only during the call.

#include "arsession/ARPlaneAnchor.h"

#include <vector>

namespace orvanta::core {
class Error;
}

namespace orvanta::arsession {

class ARSession;
class ARCamera;
struct ARFrame;

class ARSessionDelegate {
public:
    virtual ~ARSessionDelegate() = default;

    virtual void sessionDidUpdateFrame(ARSession&, const ARFrame&) {}
    virtual void sessionDidAddAnchors(ARSession&, const std::vector<ARPlaneAnchor>&) {}
    virtual void sessionDidUpdateAnchors(ARSession&, const std::vector<ARPlaneAnchor>&) {}
    virtual void sessionDidRemoveAnchors(ARSession&, const std::vector<ARPlaneAnchor>&) {}
    virtual void sessionCameraDidChangeTrackingState(ARSession&, const ARCamera&) {}
    virtual void sessionDidFailWithError(ARSession&, const core::Error&) {}
    virtual void sessionWasInterrupted(ARSession&) {}
    virtual void sessionInterruptionEnded(ARSession&) {}
};

} // namespace orvanta::arsession
