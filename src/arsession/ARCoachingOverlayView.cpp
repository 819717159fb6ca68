#include "arsession/ARCoachingOverlayView.h"

#include "arsession/ARCoachingOverlayViewDelegate.h"

#include <algorithm>

namespace orvanta::arsession {

void ARCoachingOverlayView::setSession(const std::shared_ptr<ARSession>& session) {
    session_ = session;
    subscription_ = session ? session->observeFrames([this](const ARFrame& frame) { frameArrived(frame); })
                            : core::Cancellable();
}

bool ARCoachingOverlayView::isGoalMet(Goal goal, const ARFrame& frame) {
    if (!frame.camera.trackingState.isNormal()) return false;
    const auto hasPlane = [&](auto predicate) {
        return std::any_of(frame.anchors.begin(), frame.anchors.end(), predicate);
    };
    switch (goal) {
    case Goal::tracking: return true;
    case Goal::horizontalPlane:
        return hasPlane([](const ARPlaneAnchor& a) { return a.alignment == ARPlaneAnchor::Alignment::horizontal; });
    case Goal::verticalPlane:
        return hasPlane([](const ARPlaneAnchor& a) { return a.alignment == ARPlaneAnchor::Alignment::vertical; });
    case Goal::anyPlane: return !frame.anchors.empty();
    }
    return false;
}

void ARCoachingOverlayView::frameArrived(const ARFrame& frame) {
    const bool shouldBeActive = !isGoalMet(goal_, frame);
    if (shouldBeActive == active_) return;
    const auto delegate = delegate_.lock();
    if (shouldBeActive) {
        if (delegate) delegate->coachingOverlayViewWillActivate(*this);
        active_ = true;
        if (delegate) delegate->coachingOverlayViewDidActivate(*this);
    } else {
        if (delegate) delegate->coachingOverlayViewWillDeactivate(*this);
        active_ = false;
        if (delegate) delegate->coachingOverlayViewDidDeactivate(*this);
    }
}

} // namespace orvanta::arsession
