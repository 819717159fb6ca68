// The coaching overlay follows tracking and plane discovery with will/did calls in order.
#include "SessionTestSupport.h"

#include "arsession/ARCoachingOverlayView.h"
#include "arsession/ARCoachingOverlayViewDelegate.h"

#include <gtest/gtest.h>

namespace orvanta::arsession {
namespace {

using testing::ClockedSession;

struct CoachingLog : ARCoachingOverlayViewDelegate {
    std::vector<std::string> calls;
    void coachingOverlayViewWillActivate(ARCoachingOverlayView& v) override { note("will activate", v); }
    void coachingOverlayViewDidActivate(ARCoachingOverlayView& v) override { note("did activate", v); }
    void coachingOverlayViewWillDeactivate(ARCoachingOverlayView& v) override { note("will deactivate", v); }
    void coachingOverlayViewDidDeactivate(ARCoachingOverlayView& v) override { note("did deactivate", v); }
    // Records the overlay's state at the call too, so "will" is seen before the change.
    void note(const std::string& what, ARCoachingOverlayView& v) {
        calls.push_back(what + (v.isActive() ? " [active]" : " [inactive]"));
    }
};

TEST(ARCoachingOverlayViewTest, ActivatesUntilAHorizontalPlaneIsFoundAndAgainAfterAnInterruption) {
    SimulatedWorld::Script script;
    script.interruptions = {{4.0, 5.0}};
    ClockedSession s(script);
    auto log = std::make_shared<CoachingLog>();
    ARCoachingOverlayView overlay;
    overlay.setGoal(ARCoachingOverlayView::Goal::horizontalPlane);
    overlay.setSession(s.session);
    overlay.setDelegate(log);
    s.session->run(ClockedSession::horizontalPlanes());

    s.clock->advance(1.6); // tracking normal, no plane yet: still active
    EXPECT_EQ(log->calls, (std::vector<std::string>{"will activate [inactive]", "did activate [active]"}));
    s.clock->advance(0.2); // the table is found
    EXPECT_EQ(log->calls, (std::vector<std::string>{"will activate [inactive]", "did activate [active]",
                                                    "will deactivate [active]", "did deactivate [inactive]"}));
    EXPECT_FALSE(overlay.isActive());

    s.clock->advance(3.3); // 5.1 s: back from the interruption, relocalizing
    EXPECT_TRUE(overlay.isActive());
    s.clock->advance(1.0);
    EXPECT_FALSE(overlay.isActive());
    EXPECT_EQ(log->calls.size(), 8u);
}

TEST(ARCoachingOverlayViewTest, GoalsNeedNormalTrackingAndTheirKindOfPlane) {
    using Goal = ARCoachingOverlayView::Goal;
    ARFrame frame;
    frame.camera.trackingState = TrackingState::normal();
    EXPECT_TRUE(ARCoachingOverlayView::isGoalMet(Goal::tracking, frame));
    EXPECT_FALSE(ARCoachingOverlayView::isGoalMet(Goal::anyPlane, frame));
    ARPlaneAnchor wall;
    wall.alignment = ARPlaneAnchor::Alignment::vertical;
    frame.anchors.push_back(wall);
    EXPECT_FALSE(ARCoachingOverlayView::isGoalMet(Goal::horizontalPlane, frame));
    EXPECT_TRUE(ARCoachingOverlayView::isGoalMet(Goal::verticalPlane, frame));
    EXPECT_TRUE(ARCoachingOverlayView::isGoalMet(Goal::anyPlane, frame));
    frame.camera.trackingState = TrackingState::limited(TrackingState::Reason::excessiveMotion);
    EXPECT_FALSE(ARCoachingOverlayView::isGoalMet(Goal::verticalPlane, frame));
}

} // namespace
} // namespace orvanta::arsession
