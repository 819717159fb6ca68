#pragma once
// A serial queue of work with a clock: the main queue, a background queue, or a manual
// queue that tests drive step by step. Tasks run one at a time in the order they became due.
// Thread: every method may be called from any thread; tasks run on the queue's own thread.

#include "core/RepeatingTimer.h"

#include <functional>

namespace orvanta::core {

class Scheduler {
public:
    using Task = std::function<void()>;
    virtual ~Scheduler() = default;

    // Runs `task` on this queue after the work already queued.
    virtual void async(Task task) = 0;
    // Runs `task` on this queue once `seconds` have passed on this queue's clock.
    virtual void asyncAfter(double seconds, Task task) = 0;
    // Runs `task` every `interval` seconds until the returned timer is invalidated.
    virtual RepeatingTimer scheduleRepeating(double interval, Task task) = 0;
    // Seconds on this queue's clock (monotonic; the origin is the queue's own).
    virtual double now() const = 0;
    // True when the caller runs on this queue.
    virtual bool isCurrent() const = 0;
};

} // namespace orvanta::core
