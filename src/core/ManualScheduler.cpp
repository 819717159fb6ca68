#include "core/ManualScheduler.h"

#include <memory>

namespace orvanta::core {

void ManualScheduler::async(Task task) { asyncAfter(0.0, std::move(task)); }

void ManualScheduler::asyncAfter(double seconds, Task task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.emplace(Key{now_ + std::max(0.0, seconds), sequence_++}, std::move(task));
    }
    queued_.notify_all();
}

RepeatingTimer ManualScheduler::scheduleRepeating(double interval, Task task) {
    auto valid = std::make_shared<std::atomic<bool>>(true);
    // Each firing queues the next one, so the timer lives exactly as long as it is valid.
    auto fire = std::make_shared<std::function<void()>>();
    *fire = [this, interval, task = std::move(task), valid, weakFire = std::weak_ptr(fire)] {
        if (!valid->load()) return;
        task();
        if (auto next = weakFire.lock(); next && valid->load()) asyncAfter(interval, [next] { (*next)(); });
    };
    asyncAfter(interval, [fire] { (*fire)(); });
    return RepeatingTimer(valid);
}

double ManualScheduler::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

bool ManualScheduler::isCurrent() const {
    std::lock_guard lock(mutex_);
    return driver_ == std::this_thread::get_id();
}

bool ManualScheduler::popDue(double limit, Task& task) {
    std::lock_guard lock(mutex_);
    if (tasks_.empty() || tasks_.begin()->first.first > limit) return false;
    auto node = tasks_.extract(tasks_.begin());
    now_ = std::max(now_, node.key().first);
    task = std::move(node.mapped());
    driver_ = std::this_thread::get_id();
    return true;
}

int ManualScheduler::runPending() {
    int count = 0;
    Task task;
    while (popDue(now(), task)) {
        task();
        ++count;
    }
    return count;
}

void ManualScheduler::advance(double seconds) {
    const double target = now() + seconds;
    Task task;
    while (popDue(target, task)) task();
    std::lock_guard lock(mutex_);
    now_ = target;
}

bool ManualScheduler::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        runPending();
        if (done()) return true;
        if (std::chrono::steady_clock::now() >= deadline) return false;
        // Other threads may also make done() true without queueing anything here, so look
        // again at least every few milliseconds.
        std::unique_lock lock(mutex_);
        queued_.wait_until(lock, std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(2)),
                           [this] { return !tasks_.empty() && tasks_.begin()->first.first <= now_; });
    }
}

} // namespace orvanta::core
