#pragma once
// A queue whose clock only moves when told to: tests step delays, timers and deliveries
// exactly. Other threads may queue work; the driving thread runs it.
// Thread: async/asyncAfter/scheduleRepeating from any thread; advance/runPending/runUntil
// from the one driving thread, which counts as "on the queue" while it runs tasks.

#include "core/Scheduler.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace orvanta::core {

class ManualScheduler final : public Scheduler {
public:
    void async(Task task) override;
    void asyncAfter(double seconds, Task task) override;
    RepeatingTimer scheduleRepeating(double interval, Task task) override;
    double now() const override;
    bool isCurrent() const override;

    // Runs every task due now, including tasks they queue for now. Returns how many ran.
    int runPending();
    // Moves the clock forward by `seconds`, running due tasks in time order on the way.
    void advance(double seconds);
    // Runs due tasks as they become due (other threads may queue them) until `done()`
    // holds or `timeout` of real time has passed. Returns whether done() held.
    bool runUntil(const std::function<bool()>& done,
                  std::chrono::milliseconds timeout = std::chrono::seconds(60));

private:
    using Key = std::pair<double, std::uint64_t>; // due time, then arrival order
    bool popDue(double limit, Task& task);

    mutable std::mutex mutex_;
    std::condition_variable queued_;
    std::map<Key, Task> tasks_;
    std::uint64_t sequence_ = 0;
    double now_ = 0.0;
    std::thread::id driver_ = std::this_thread::get_id();
};

} // namespace orvanta::core
