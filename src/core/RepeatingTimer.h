#pragma once
// Handle of a repeating timer made by a Scheduler. The timer fires until invalidated;
// dropping the handle does not stop it (like a run-loop timer).
// Thread: any.

#include <atomic>
#include <memory>

namespace orvanta::core {

class RepeatingTimer {
public:
    RepeatingTimer() = default;
    explicit RepeatingTimer(std::shared_ptr<std::atomic<bool>> valid) : valid_(std::move(valid)) {}

    void invalidate() {
        if (valid_) valid_->store(false);
    }
    bool isValid() const { return valid_ && valid_->load(); }

private:
    std::shared_ptr<std::atomic<bool>> valid_;
};

} // namespace orvanta::core
