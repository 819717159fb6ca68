#pragma once
// What the focus square is doing: initializing (no usable hit: it floats in front of the
// camera), or tracking a ray-cast hit seen from a camera.
// Two initializing states are equal; two tracking states are equal when their hits and
// cameras are; initializing never equals tracking.
// Thread: a value type; copying never allocates.

#include "arsession/ARCamera.h"
#include "arsession/ARRaycastResult.h"

#include <optional>

namespace orvanta::focus {

class FocusIndicatorState {
public:
    static FocusIndicatorState initializing() { return FocusIndicatorState(); }
    static FocusIndicatorState tracking(const arsession::ARRaycastResult& raycastResult,
                                        const std::optional<arsession::ARCamera>& camera) {
        FocusIndicatorState state;
        state.tracking_ = Tracking{raycastResult, camera};
        return state;
    }

    bool isInitializing() const { return !tracking_; }
    bool isTracking() const { return tracking_.has_value(); }
    // The hit and camera of a tracking state. Contract: isTracking().
    const arsession::ARRaycastResult& raycastResult() const { return tracking_.value().raycastResult; }
    const std::optional<arsession::ARCamera>& camera() const { return tracking_.value().camera; }

    friend bool operator==(const FocusIndicatorState&, const FocusIndicatorState&) = default;

private:
    struct Tracking {
        arsession::ARRaycastResult raycastResult;
        std::optional<arsession::ARCamera> camera;
        friend bool operator==(const Tracking&, const Tracking&) = default;
    };
    FocusIndicatorState() = default;

    std::optional<Tracking> tracking_;
};

} // namespace orvanta::focus
