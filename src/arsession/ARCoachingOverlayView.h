#pragma once
// Guidance shown over the camera image until the session is ready for its goal. It watches
// its session's frames: it is active while tracking is not normal or no plane of the goal
// has been found, and inactive once such a plane exists and tracking is normal. Each change
// calls the delegate's will… then did… methods, in that order, within one frame.
// Layout flags (autoresizingMask) are kept for the view layer that draws the overlay.
// Thread: every method on the session's clock queue.

#include "arsession/ARSession.h"
#include "core/Cancellable.h"

#include <memory>

namespace orvanta::arsession {

class ARCoachingOverlayViewDelegate;

class ARCoachingOverlayView {
public:
    enum class Goal { tracking = 0, horizontalPlane = 1, verticalPlane = 2, anyPlane = 3 };
    // Option set of layout flags; raw values as the view layer expects.
    enum AutoresizingMask : unsigned { flexibleWidth = 2, flexibleHeight = 16 };

    ARCoachingOverlayView() = default;
    ARCoachingOverlayView(const ARCoachingOverlayView&) = delete;
    ARCoachingOverlayView& operator=(const ARCoachingOverlayView&) = delete;

    Goal goal() const { return goal_; }
    void setGoal(Goal goal) { goal_ = goal; }

    // Starts watching `session` (null stops watching). The overlay holds it weakly.
    void setSession(const std::shared_ptr<ARSession>& session);
    std::shared_ptr<ARSession> session() const { return session_.lock(); }

    void setDelegate(std::weak_ptr<ARCoachingOverlayViewDelegate> delegate) { delegate_ = std::move(delegate); }

    unsigned autoresizingMask = 0;

    bool isActive() const { return active_; }

    // Whether `frame` satisfies `goal` (tracking normal and, for plane goals, a plane of the
    // goal's alignment). Pure; exposed for tests and the view layer.
    static bool isGoalMet(Goal goal, const ARFrame& frame);

private:
    void frameArrived(const ARFrame& frame);

    Goal goal_ = Goal::tracking;
    std::weak_ptr<ARSession> session_;
    std::weak_ptr<ARCoachingOverlayViewDelegate> delegate_;
    core::Cancellable subscription_;
    bool active_ = false;
};

} // namespace orvanta::arsession
