// Session behaviour: run options, pause, interruptions and failures reaching the delegate,
// delivery on the delegate queue, frame observers, the stepped clock, the coaching overlay,
// and recording and replaying a session.
#include "SessionTestSupport.h"

#include "arsession/ARCoachingOverlayView.h"
#include "arsession/ARCoachingOverlayViewDelegate.h"
#include "arsession/ARSessionError.h"
#include "arsession/FrameRecord.h"
#include "arsession/ReplayBackend.h"
#include "arsession/SessionRecorder.h"
#include "arsession/SteppedClock.h"
#include "core/Dispatch.h"
#include "support/TestModels.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace orvanta::arsession {
namespace {

using testing::RecordingDelegate;
using testing::ClockedSession;

std::vector<std::string> eventsSince(const RecordingDelegate& delegate, std::size_t first) {
    return {delegate.events.begin() + std::ptrdiff_t(first), delegate.events.end()};
}

TEST(ARSessionTest, FramesComeAtSixtyHertzOnlyWhileRunningToWhoeverStillListens) {
    ClockedSession s;
    int observed = 0;
    auto observation = s.session->observeFrames([&](const ARFrame&) { ++observed; });
    s.clock->advance(1.0);
    EXPECT_EQ(s.session->currentFrame(), nullptr);
    s.session->run(ClockedSession::horizontalPlanes());
    s.clock->advance(1.0 + 1e-9);
    EXPECT_EQ(s.delegate->frames, 60);
    EXPECT_EQ(observed, 60);
    EXPECT_NEAR(s.session->currentFrame()->timestamp, 2.0, 1e-9);

    s.session->pause();
    s.clock->advance(1.0);
    EXPECT_EQ(s.delegate->frames, 60);
    EXPECT_NE(s.session->currentFrame(), nullptr); // the last frame stays readable
    s.session->run(ClockedSession::horizontalPlanes());
    s.clock->advance(0.5 + 1e-9);
    EXPECT_EQ(s.delegate->frames, 90);

    // A cancelled observer hears nothing; nor does a dropped delegate, which the session holds weakly.
    observation.cancel();
    s.delegate.reset();
    s.clock->advance(0.1);
    EXPECT_EQ(observed, 90);
}

TEST(ARSessionTest, RunOptionsDecideWhatTrackingAndAnchorsStartOver) {
    struct Case {
        const char* name;
        bool pauseFirst;
        unsigned options;
        double seconds;
        std::vector<std::string> events;
        std::size_t anchors;
    };
    const Case cases[] = {
        {"resume after a pause", true, {}, 1.0, {"tracking limited(relocalizing)", "tracking normal"}, 2},
        {"reset tracking", false, ARSession::resetTracking, 1.5,
         {"tracking notAvailable", "tracking limited(initializing)", "tracking normal"}, 2},
        // Removal is reported at once; then the table is found again 0.5 s after tracking is normal.
        {"remove existing anchors", false, ARSession::resetTracking | ARSession::removeExistingAnchors, 1.8,
         {"remove table", "remove floor", "tracking notAvailable", "tracking limited(initializing)",
          "tracking normal", "add table"}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ClockedSession s;
        s.session->run(ClockedSession::horizontalPlanes());
        s.clock->advance(3.0);
        if (c.pauseFirst) {
            s.session->pause();
            s.clock->advance(1.0);
        }
        const std::size_t mark = s.delegate->events.size();
        s.session->run(ClockedSession::horizontalPlanes(), c.options);
        s.clock->advance(c.seconds);
        EXPECT_EQ(eventsSince(*s.delegate, mark), c.events);
        EXPECT_EQ(s.session->currentFrame()->anchors.size(), c.anchors);
    }
}

TEST(ARSessionTest, InterruptionStopsFramesAndResumesWithRelocalizationAndAPauseStillHearsItsEnd) {
    SimulatedWorld::Script script;
    script.interruptions = {{2.0, 3.0}};
    for (const bool pauseDuring : {false, true}) {
        SCOPED_TRACE(pauseDuring);
        ClockedSession s(script);
        s.session->run(ClockedSession::horizontalPlanes());
        s.clock->advance(1.99);
        const std::size_t mark = s.delegate->events.size();
        s.clock->advance(0.51);
        const int frames = s.delegate->frames;
        if (pauseDuring) s.session->pause();
        s.clock->advance(0.4);
        EXPECT_EQ(s.delegate->frames, frames); // none while interrupted
        s.clock->advance(0.7);
        // The floor, due at 2.7 s, shows with the first frame after the interruption.
        const std::vector<std::string> resumed{"interrupted", "interruption ended", "tracking limited(relocalizing)",
                                               "add floor", "tracking normal"};
        EXPECT_EQ(eventsSince(*s.delegate, mark), pauseDuring ? std::vector<std::string>(resumed.begin(), resumed.begin() + 2) : resumed);
    }
}

TEST(ARSessionTest, FailureReachesTheDelegateAndStopsTheSessionUntilRunAgain) {
    SimulatedWorld::Script script;
    script.failures = {{2.0, ARSessionError::make(ARSessionError::worldTrackingFailed)}};
    ClockedSession s(script);
    s.session->run(ClockedSession::horizontalPlanes());
    s.clock->advance(2.5);
    EXPECT_EQ(s.delegate->events.back(), "failed ARErrorDomain 200 World tracking failed.");
    EXPECT_FALSE(s.session->isRunning());
    const int frames = s.delegate->frames;
    s.clock->advance(1.0);
    EXPECT_EQ(s.delegate->frames, frames);

    s.session->run(ClockedSession::horizontalPlanes(), ARSession::resetTracking | ARSession::removeExistingAnchors);
    s.clock->advance(1.0);
    EXPECT_GT(s.delegate->frames, frames);
    EXPECT_EQ(s.delegate->events.back(), "tracking limited(initializing)"); // the failure happens once
}

TEST(ARSessionTest, DelegateHearsOnTheMainQueueByDefault) {
    auto clock = std::make_shared<core::ManualScheduler>();
    auto session = std::make_shared<ARSession>(std::make_unique<SimulatedWorld>(), clock);
    auto delegate = std::make_shared<RecordingDelegate>();
    session->setDelegate(delegate);
    session->run(ClockedSession::horizontalPlanes());
    clock->advance(0.1);
    EXPECT_TRUE(delegate->events.empty()); // queued on the main queue, not yet run
    auto main = std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main());
    ASSERT_TRUE(main);
    main->runPending();
    EXPECT_EQ(delegate->events, (std::vector<std::string>{"tracking notAvailable"}));
    EXPECT_EQ(delegate->frames, 6);
}

// The stepped clock fires repeating tasks once per elapsed interval and runs due one-shots.
TEST(SteppedClockTest, RepeatsPerElapsedIntervalAndStopsWhenInvalidated) {
    SteppedClock clock;
    std::vector<std::string> calls;
    auto timer = clock.scheduleRepeating(0.1, [&] { calls.push_back("tick " + std::to_string(clock.now())); });
    clock.asyncAfter(0.15, [&] { calls.push_back("once"); });
    clock.step(0.05);
    EXPECT_TRUE(calls.empty());
    clock.step(0.2); // 0.25 s: the one-shot, then two ticks
    EXPECT_EQ(calls, (std::vector<std::string>{"once", "tick 0.250000", "tick 0.250000"}));
    timer.invalidate();
    clock.step(1.0);
    EXPECT_EQ(calls.size(), 3u);
    EXPECT_DOUBLE_EQ(clock.now(), 1.25);
}

// The coaching overlay follows tracking and plane discovery with will/did calls in order.
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

// A recorded session replays as the same frames; malformed recordings are errors.
std::vector<ARFrame> collect(ARSession& session, core::ManualScheduler& clock, double seconds) {
    std::vector<ARFrame> frames;
    auto observation = session.observeFrames([&](const ARFrame& f) { frames.push_back(f); });
    clock.advance(seconds);
    return frames;
}

TEST(RecordReplayTest, ReplayGivesTheRecordedFrames) {
    QTemporaryDir dir;
    const QString path = dir.filePath("session.jsonl");
    ClockedSession recorded;
    auto made = SessionRecorder::make(*recorded.session, path);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<SessionRecorder>>(made));
    auto recorder = std::move(std::get<std::unique_ptr<SessionRecorder>>(made));
    recorded.session->run(ClockedSession::horizontalPlanes());
    const auto original = collect(*recorded.session, *recorded.clock, 4.0);
    recorder->stop();
    ASSERT_EQ(recorder->framesWritten(), int(original.size()));
    ASSERT_EQ(original.back().anchors.size(), 2u);

    auto loaded = ReplayBackend::load(path);
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<ReplayBackend>>(loaded));
    ClockedSession replay(std::move(std::get<std::unique_ptr<ReplayBackend>>(loaded)));
    replay.session->run(ClockedSession::horizontalPlanes());
    EXPECT_EQ(collect(*replay.session, *replay.clock, 5.0), original);
    EXPECT_EQ(replay.delegate->events, recorded.delegate->events);

    // Ray casts answer from the replayed planes.
    const auto hits = replay.session->raycast(ARRaycastQuery(QVector3D(0, 2, -0.6f), QVector3D(0, -1, 0),
                                                    ARRaycastQuery::Target::existingPlaneGeometry,
                                                    ARRaycastQuery::TargetAlignment::horizontal));
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits[0].anchor->classification, ARPlaneAnchor::Classification::table);
}

TEST(RecordReplayTest, MalformedRecordsAreErrors) {
    ARFrame frame;
    frame.timestamp = 1.5;
    const QByteArray good = FrameRecord::encode(frame);
    EXPECT_TRUE(std::holds_alternative<ARFrame>(FrameRecord::decode(good)));
    EXPECT_FALSE(good.contains("intrinsics")); // a frame without a camera image has no lens

    ARFrame cameraFrame = frame;
    cameraFrame.camera.intrinsics = {912.5f, 910.25f, 641.75f, 355.5f};
    cameraFrame.camera.imageResolution = QSize(1280, 720);
    const auto lens = FrameRecord::decode(FrameRecord::encode(cameraFrame));
    ASSERT_TRUE(std::holds_alternative<ARFrame>(lens));
    EXPECT_EQ(std::get<ARFrame>(lens), cameraFrame);

    QByteArray badTracking = good;
    badTracking.replace("notAvailable", "sideways");
    const auto decoded = FrameRecord::decode(badTracking);
    ASSERT_TRUE(std::holds_alternative<core::Error>(decoded));
    EXPECT_EQ(std::get<core::Error>(decoded).localizedDescription(),
              "Malformed frame record: unknown tracking state \"sideways\"");
    EXPECT_TRUE(std::holds_alternative<core::Error>(FrameRecord::decode("[1, 2]")));
    EXPECT_TRUE(std::holds_alternative<core::Error>(FrameRecord::decode("{\"t\": 1}")));

    QTemporaryDir dir;
    orvanta::testing::TestModels::write(dir.filePath("broken.jsonl").toStdString(), good + "\n{not json\n");
    EXPECT_TRUE(std::holds_alternative<core::Error>(ReplayBackend::load(dir.filePath("broken.jsonl"))));
    EXPECT_TRUE(std::holds_alternative<core::Error>(ReplayBackend::load(dir.filePath("missing.jsonl"))));
}

} // namespace
} // namespace orvanta::arsession
