// The worker-thread queue and the manual queue the tests drive: order, delayed and repeating
// tasks, and work queued from another thread.
#include "core/EventLoopScheduler.h"
#include "core/ManualScheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

using namespace orvanta::core;
using namespace std::chrono_literals;

namespace {

// Collects what tasks on a worker report, and lets the test wait for a count of reports.
class Reports {
public:
    void add(std::string report) {
        std::lock_guard lock(mutex_);
        reports_.push_back(std::move(report));
        changed_.notify_all();
    }
    // The reports once there are `count`, waiting a generous minute at most.
    std::vector<std::string> await(std::size_t count) {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(changed_.wait_for(lock, 60s, [&] { return reports_.size() >= count; })) << reports_.size() << " reports";
        return reports_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> reports_;
};

} // namespace

TEST(EventLoopScheduler, WorkerRunsTasksInOrderOnItsOwnThread) {
    auto worker = EventLoopScheduler::withWorkerThread("test-worker");
    Reports reports;
    EXPECT_FALSE(worker->isCurrent());
    for (int i = 0; i < 3; ++i)
        worker->async([&, i] { reports.add(std::to_string(i) + (worker->isCurrent() ? " on worker" : " elsewhere")); });
    EXPECT_EQ(reports.await(3), (std::vector<std::string>{"0 on worker", "1 on worker", "2 on worker"}));
    EXPECT_EQ(worker->thread()->objectName(), "test-worker");
}

TEST(EventLoopScheduler, DelayedAndRepeatingTasksNeverRunEarly) {
    auto worker = EventLoopScheduler::withWorkerThread("test-timers");
    Reports reports;
    const double start = worker->now();
    std::vector<double> firings;
    worker->asyncAfter(0.2, [&] { reports.add(worker->now() - start >= 0.2 - 0.001 ? "late enough" : "early"); });
    RepeatingTimer timer = worker->scheduleRepeating(0.05, [&] {
        firings.push_back(worker->now() - start);
        if (firings.size() == 3) timer.invalidate();
        reports.add("tick");
    });
    const auto seen = reports.await(4);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "late enough"), 1);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "tick"), 3);
    // The n-th firing of a 50 ms timer comes no sooner than n × 50 ms (less a millisecond of
    // rounding); how late it comes depends on the machine and is not checked.
    for (std::size_t n = 0; n < firings.size(); ++n) EXPECT_GE(firings[n], 0.05 * double(n + 1) - 0.001) << n;
    EXPECT_FALSE(timer.isValid());
}

TEST(EventLoopScheduler, ReleasingTheLastReferenceFromItsOwnTaskEndsTheThreadCleanly) {
    auto worker = EventLoopScheduler::withWorkerThread("test-self-release");
    Reports reports;
    QThread* thread = worker->thread();
    QObject::connect(thread, &QThread::finished, [&] { reports.add("finished"); });
    worker->async([&, held = std::move(worker)]() mutable {
        held.reset();
        reports.add("released");
    });
    EXPECT_EQ(reports.await(2), (std::vector<std::string>{"released", "finished"}));
}

// Due order, arrival order among equal due times, each task seeing the clock at its due time,
// and a repeating timer firing once per elapsed interval until invalidated.
TEST(ManualScheduler, RunsDelayedAndRepeatingTasksInDueOrderAsTheClockAdvances) {
    ManualScheduler queue;
    std::vector<double> ran;
    int fired = 0;
    auto timer = queue.scheduleRepeating(2.0, [&] { ++fired; });
    queue.asyncAfter(5.0, [&] { ran.push_back(5); });
    queue.asyncAfter(1.0, [&] { ran.push_back(queue.now()); });
    queue.async([&] { ran.push_back(0); });
    queue.asyncAfter(1.0, [&] { ran.push_back(2); });
    queue.advance(4.999);
    EXPECT_EQ(ran, (std::vector<double>{0, 1, 2}));
    queue.advance(0.001);
    EXPECT_EQ(ran, (std::vector<double>{0, 1, 2, 5}));
    EXPECT_DOUBLE_EQ(queue.now(), 5.0);
    EXPECT_EQ(fired, 2);
    timer.invalidate();
    queue.advance(20);
    EXPECT_EQ(fired, 2);
}

TEST(ManualScheduler, RunUntilWaitsForWorkQueuedFromAnotherThread) {
    ManualScheduler queue;
    bool done = false;
    std::thread worker([&] { queue.async([&] { done = queue.isCurrent(); }); });
    EXPECT_TRUE(queue.runUntil([&] { return done; }));
    worker.join();
}
