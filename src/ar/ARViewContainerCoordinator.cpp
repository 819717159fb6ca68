#include "ar/ARViewContainerCoordinator.h"

#include "core/Error.h"
#include "core/Log.h"

#include <string>

namespace orvanta {

void ARViewContainer::Coordinator::sessionDidFailWithError(arsession::ARSession&, const core::Error& error) {
    core::Log::print("ARSession failed: " + error.localizedDescription());
    resetARSession();
}

void ARViewContainer::Coordinator::sessionWasInterrupted(arsession::ARSession&) {
    core::Log::print("ARSession was interrupted");
    if (const auto view = parent.arView.get()) view->session()->pause();
}

void ARViewContainer::Coordinator::sessionInterruptionEnded(arsession::ARSession&) {
    core::Log::print("ARSession interruption ended, resetting session");
}

void ARViewContainer::Coordinator::sessionCameraDidChangeTrackingState(arsession::ARSession&,
                                                                       const arsession::ARCamera& camera) {
    if (camera.trackingState.isNormal()) {
        parent.trackingState.set(TrackingStateEnum::normal);
        core::Log::print("Tracking is normal, ready to place objects");
    } else {
        parent.trackingState.set(TrackingStateEnum::notTracking);
        core::Log::print("Tracking state: " + camera.trackingState.description());
    }
}

void ARViewContainer::Coordinator::coachingOverlayViewDidActivate(arsession::ARCoachingOverlayView&) {
    core::Log::print("Coaching session activated");
}

void ARViewContainer::Coordinator::coachingOverlayViewDidDeactivate(arsession::ARCoachingOverlayView&) {
    core::Log::print("Coaching session deactivated");
}

void ARViewContainer::Coordinator::coachingOverlayViewWillActivate(arsession::ARCoachingOverlayView&) {
    core::Log::print("Coaching session will activate");
}

void ARViewContainer::Coordinator::coachingOverlayViewWillDeactivate(arsession::ARCoachingOverlayView&) {
    core::Log::print("Coaching session will deactivate");
}

void ARViewContainer::Coordinator::resetARSession() {
    const auto view = parent.arView.get();
    if (!view) return;
    core::Log::print("resetARSession");
    // Kept alive by the view's scene, not by this coordinator, until the anchors are cleared.
    focus::FocusIndicator::make(view, focus::FocusIndicatorComponent::classic());
    view->session()->run(ARViewContainer::horizontalPlaneTracking(),
                         arsession::ARSession::resetTracking | arsession::ARSession::removeExistingAnchors);
    ARViewContainer::clearExistingAnchors(*view);
}

} // namespace orvanta
