// Session behaviour: run options, pause, interruptions and failures reaching the delegate,
// delivery on the delegate queue, and frame observers.
#include "SessionTestSupport.h"

#include "arsession/ARSessionError.h"
#include "core/Dispatch.h"

#include <gtest/gtest.h>

#include <algorithm>

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

} // namespace
} // namespace orvanta::arsession
