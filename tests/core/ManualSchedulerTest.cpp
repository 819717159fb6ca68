#include "core/ManualScheduler.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using orvanta::core::ManualScheduler;

// Due order, arrival order among equal due times, and each task seeing the clock at its due time.
TEST(ManualScheduler, RunsDelayedTasksInDueOrderAsTheClockAdvances) {
    ManualScheduler queue;
    std::vector<double> ran;
    queue.asyncAfter(5.0, [&] { ran.push_back(5); });
    queue.asyncAfter(1.0, [&] { ran.push_back(queue.now()); });
    queue.async([&] { ran.push_back(0); });
    queue.asyncAfter(1.0, [&] { ran.push_back(2); });
    queue.advance(4.999);
    EXPECT_EQ(ran, (std::vector<double>{0, 1, 2}));
    queue.advance(0.001);
    EXPECT_EQ(ran, (std::vector<double>{0, 1, 2, 5}));
    EXPECT_DOUBLE_EQ(queue.now(), 5.0);
}

TEST(ManualScheduler, RepeatingTimerFiresEachIntervalUntilInvalidated) {
    ManualScheduler queue;
    int fired = 0;
    auto timer = queue.scheduleRepeating(5.0, [&] { ++fired; });
    queue.advance(4.9);
    EXPECT_EQ(fired, 0);
    queue.advance(10.1);
    EXPECT_EQ(fired, 3);
    timer.invalidate();
    queue.advance(20);
    EXPECT_EQ(fired, 3);
}

TEST(ManualScheduler, RunUntilWaitsForWorkQueuedFromAnotherThread) {
    ManualScheduler queue;
    bool done = false;
    std::thread worker([&] { queue.async([&] { done = queue.isCurrent(); }); });
    EXPECT_TRUE(queue.runUntil([&] { return done; }));
    worker.join();
}
