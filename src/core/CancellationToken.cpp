#include "core/CancellationToken.h"

namespace orvanta::core {

void CancellationToken::cancel() {
    std::vector<std::function<void()>> actions;
    {
        std::lock_guard lock(mutex_);
        if (cancelled_.exchange(true, std::memory_order_acq_rel)) return;
        actions.swap(actions_);
    }
    for (auto& action : actions) action();
}

void CancellationToken::onCancel(std::function<void()> action) {
    {
        std::lock_guard lock(mutex_);
        if (!isCancelled()) {
            actions_.push_back(std::move(action));
            return;
        }
    }
    action();
}

} // namespace orvanta::core
