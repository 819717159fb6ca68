#pragma once
// Receiver of a coaching overlay's activation changes; every method has an empty default.
// The overlay holds its delegate weakly.
// Thread: called on the session's clock queue.

namespace orvanta::arsession {

class ARCoachingOverlayView;

class ARCoachingOverlayViewDelegate {
public:
    virtual ~ARCoachingOverlayViewDelegate() = default;

    virtual void coachingOverlayViewWillActivate(ARCoachingOverlayView&) {}
    virtual void coachingOverlayViewDidActivate(ARCoachingOverlayView&) {}
    virtual void coachingOverlayViewWillDeactivate(ARCoachingOverlayView&) {}
    virtual void coachingOverlayViewDidDeactivate(ARCoachingOverlayView&) {}
};

} // namespace orvanta::arsession
