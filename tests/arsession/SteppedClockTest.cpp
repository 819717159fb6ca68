// The stepped clock fires repeating tasks once per elapsed interval and runs due one-shots.
#include "arsession/SteppedClock.h"

#include <gtest/gtest.h>

namespace orvanta::arsession {
namespace {

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

} // namespace
} // namespace orvanta::arsession
