#pragma once
// Owner of a subscription: destroying it (or calling cancel) cancels the subscription.
// Thread: any; one owner at a time (move-only).

#include "core/CancellationToken.h"

#include <memory>

namespace orvanta::core {

class Cancellable {
public:
    Cancellable() = default;
    explicit Cancellable(std::shared_ptr<CancellationToken> token) : token_(std::move(token)) {}
    Cancellable(Cancellable&&) noexcept = default;
    Cancellable& operator=(Cancellable&& other) noexcept {
        if (this != &other) {
            cancel();
            token_ = std::move(other.token_);
        }
        return *this;
    }
    Cancellable(const Cancellable&) = delete;
    Cancellable& operator=(const Cancellable&) = delete;
    ~Cancellable() { cancel(); }

    void cancel() {
        if (token_) token_->cancel();
        token_.reset();
    }

private:
    std::shared_ptr<CancellationToken> token_;
};

} // namespace orvanta::core
