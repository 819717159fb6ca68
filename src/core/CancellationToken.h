#pragma once
// Shared flag of one subscription chain. Cancelling it stops delivery downstream and runs
// the cancel actions that producers registered (for example aborting a transfer).
// Thread: any.

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

namespace orvanta::core {

class CancellationToken {
public:
    bool isCancelled() const { return cancelled_.load(std::memory_order_acquire); }

    // Runs the registered actions once; later calls do nothing.
    void cancel();

    // Registers an action to run on cancel; runs it at once if already cancelled.
    void onCancel(std::function<void()> action);

private:
    std::atomic<bool> cancelled_{false};
    std::mutex mutex_;
    std::vector<std::function<void()>> actions_;
};

} // namespace orvanta::core
