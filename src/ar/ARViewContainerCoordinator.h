#pragma once
// The AR view container's delegate of the session and of the coaching overlay: it reports
// the camera's tracking quality to the screen as a TrackingStateEnum, pauses the session on
// an interruption, restarts it after a failure, and prints what happens.
// Thread: the callbacks on the session's delegate queue (the main queue); the rest on the
// main thread.

#include "ar/ARViewContainer.h"
#include "arsession/ARCoachingOverlayView.h"
#include "arsession/ARCoachingOverlayViewDelegate.h"
#include "arsession/ARSessionDelegate.h"
#include "focus/FocusIndicator.h"

#include <cstdint>
#include <memory>

namespace orvanta {

class ARViewContainer::Coordinator final : public arsession::ARSessionDelegate,
                                           public arsession::ARCoachingOverlayViewDelegate,
                                           public std::enable_shared_from_this<ARViewContainer::Coordinator> {
public:
    explicit Coordinator(ARViewContainer parent) : parent(std::move(parent)) {}
    Coordinator(const Coordinator&) = delete;
    Coordinator& operator=(const Coordinator&) = delete;

    // The way back to the screen's state (the same bindings as the container's).
    ARViewContainer parent;
    // The focus square made by makeUIView; null until then.
    std::shared_ptr<focus::FocusIndicator> focusIndicator;
    // The coaching overlay laid over the view by makeUIView; kept here as long as the view lives.
    std::shared_ptr<arsession::ARCoachingOverlayView> coachingOverlay;

    // Prints "ARSession failed: " and the error's message, then restarts the session.
    void sessionDidFailWithError(arsession::ARSession& session, const core::Error& error) override;
    // Prints "ARSession was interrupted" and pauses the bound view's session.
    void sessionWasInterrupted(arsession::ARSession& session) override;
    // Prints "ARSession interruption ended, resetting session"; the session stays as it is.
    void sessionInterruptionEnded(arsession::ARSession& session) override;
    // Writes `normal` or `notTracking` to the tracking-state binding and prints the state.
    void sessionCameraDidChangeTrackingState(arsession::ARSession& session, const arsession::ARCamera& camera) override;

    // Each prints its line ("Coaching session activated", …).
    void coachingOverlayViewDidActivate(arsession::ARCoachingOverlayView& overlay) override;
    void coachingOverlayViewDidDeactivate(arsession::ARCoachingOverlayView& overlay) override;
    void coachingOverlayViewWillActivate(arsession::ARCoachingOverlayView& overlay) override;
    void coachingOverlayViewWillDeactivate(arsession::ARCoachingOverlayView& overlay) override;

private:
    friend class ARViewContainer;

    // With a bound view: prints "resetARSession", makes a new focus square on the view,
    // reruns the session with reset tracking and removal of anchors, and clears the scene's
    // anchors (the new square with them). Without a view it does nothing.
    void resetARSession();

    // Counts placements asked for by updateUIView; a queued placement runs only while it is
    // the latest.
    std::uint64_t placementRequest_ = 0;
};

} // namespace orvanta
