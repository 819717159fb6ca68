#pragma once
// A clock that moves only when its driver calls step(): for code that owns the frame loop,
// such as a renderer's display callback or a benchmark. step() advances the time, runs the
// one-shot tasks that became due (in due order), then fires each valid repeating task once
// for every interval that has elapsed. Unlike ManualScheduler it keeps no per-firing
// bookkeeping, so a step that only fires repeating tasks makes no heap allocation.
// Thread: async/asyncAfter/scheduleRepeating/now from any thread; step() and the tasks on
// the one driving thread (the thread that made the clock).

#include "core/Scheduler.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace orvanta::arsession {

class SteppedClock final : public core::Scheduler {
public:
    void async(Task task) override { asyncAfter(0.0, std::move(task)); }
    void asyncAfter(double seconds, Task task) override;
    core::RepeatingTimer scheduleRepeating(double interval, Task task) override;
    double now() const override;
    bool isCurrent() const override { return std::this_thread::get_id() == driver_; }

    // Moves the clock forward by `seconds` (≥ 0) and runs what became due.
    void step(double seconds);

private:
    struct OneShot {
        double due;
        std::uint64_t order;
        Task task;
    };
    struct Repeating {
        double interval;
        double nextDue;
        Task task;
        std::shared_ptr<std::atomic<bool>> valid;
    };
    bool popDueOneShot(Task& task);

    mutable std::mutex mutex_;
    double now_ = 0.0;
    std::uint64_t order_ = 0;
    std::vector<OneShot> oneShots_;
    std::vector<std::shared_ptr<Repeating>> repeating_;
    std::thread::id driver_ = std::this_thread::get_id();
};

} // namespace orvanta::arsession
