#pragma once
// Receiver of a focus square's news. Every method has an empty default, so a delegate
// overrides only what it needs. The focus square holds its delegate weakly.
// Thread: called on the main thread, inside the scene's per-frame update.
// References passed in are valid only during the call.

#include "arsession/ARPlaneAnchor.h"
#include "focus/FocusIndicatorState.h"

namespace orvanta::focus {

class FocusIndicator;

class FocusIndicatorDelegate {
public:
    virtual ~FocusIndicatorDelegate() = default;

    // Hooks for a delegate's own moves into tracking and initializing; the focus square's
    // state change does not call them (trackingUpdated reports every change).
    virtual void toTrackingState() {}
    virtual void toInitializingState() {}

    // After every change of the square's state to a different value. `oldState` is the state
    // before the change.
    virtual void focusIndicatorTrackingUpdated(FocusIndicator&, const FocusIndicatorState& /*trackingUpdated*/,
                                               const FocusIndicatorState* /*oldState*/) {}
    // When the plane the square rests on becomes another plane (a different identifier).
    // `oldPlane` is null when the square had not rested on a plane before.
    virtual void focusIndicatorPlaneChanged(FocusIndicator&, const arsession::ARPlaneAnchor* /*planeChanged*/,
                                            const arsession::ARPlaneAnchor* /*oldPlane*/) {}
};

} // namespace orvanta::focus
