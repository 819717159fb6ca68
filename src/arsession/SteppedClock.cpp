#include "arsession/SteppedClock.h"

#include <algorithm>
#include <cassert>

namespace orvanta::arsession {

void SteppedClock::asyncAfter(double seconds, Task task) {
    std::lock_guard lock(mutex_);
    oneShots_.push_back({now_ + std::max(0.0, seconds), order_++, std::move(task)});
}

core::RepeatingTimer SteppedClock::scheduleRepeating(double interval, Task task) {
    assert(interval > 0.0);
    auto valid = std::make_shared<std::atomic<bool>>(true);
    std::lock_guard lock(mutex_);
    repeating_.push_back(std::make_shared<Repeating>(Repeating{interval, now_ + interval, std::move(task), valid}));
    return core::RepeatingTimer(valid);
}

double SteppedClock::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

bool SteppedClock::popDueOneShot(Task& task) {
    std::lock_guard lock(mutex_);
    const auto due = std::min_element(oneShots_.begin(), oneShots_.end(), [](const OneShot& a, const OneShot& b) {
        return a.due < b.due || (a.due == b.due && a.order < b.order);
    });
    if (due == oneShots_.end() || due->due > now_) return false;
    task = std::move(due->task);
    oneShots_.erase(due);
    return true;
}

void SteppedClock::step(double seconds) {
    assert(seconds >= 0.0 && isCurrent());
    double now;
    std::size_t timers;
    {
        std::lock_guard lock(mutex_);
        now_ += seconds;
        now = now_;
        std::erase_if(repeating_, [](const auto& r) { return !r->valid->load(); });
        timers = repeating_.size();
    }
    Task task;
    while (popDueOneShot(task)) task();
    // Timers added by these tasks start on the next step. Index access: a task may add timers.
    for (std::size_t i = 0; i < timers; ++i) {
        std::shared_ptr<Repeating> timer;
        {
            std::lock_guard lock(mutex_);
            timer = repeating_[i];
        }
        while (timer->valid->load() && timer->nextDue <= now + 1e-9) {
            timer->nextDue += timer->interval;
            timer->task();
        }
    }
}

} // namespace orvanta::arsession
