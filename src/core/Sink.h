#pragma once
// The receiving end of one subscription: takes at most one completion, and values only
// before it; drops everything once its chain is cancelled.
// Thread: any; a chain delivers from one thread at a time.

#include "core/CancellationToken.h"
#include "core/Completion.h"

#include <atomic>
#include <functional>
#include <memory>

namespace orvanta::core {

template <class T>
class Sink {
public:
    Sink(std::function<void(T)> onValue, std::function<void(const Completion&)> onCompletion,
         std::shared_ptr<CancellationToken> token)
        : onValue_(std::move(onValue)), onCompletion_(std::move(onCompletion)), token_(std::move(token)) {}

    void receive(T value) {
        if (done_.load() || token_->isCancelled()) return;
        if (onValue_) onValue_(std::move(value));
    }

    void complete(const Completion& completion) {
        if (done_.exchange(true) || token_->isCancelled()) return;
        if (onCompletion_) onCompletion_(completion);
    }

    const std::shared_ptr<CancellationToken>& token() const { return token_; }

private:
    std::function<void(T)> onValue_;
    std::function<void(const Completion&)> onCompletion_;
    std::shared_ptr<CancellationToken> token_;
    std::atomic<bool> done_{false};
};

} // namespace orvanta::core
