#pragma once
// Handlers that subscribe to a repeating event, each ended by cancelling (or dropping) the
// Cancellable that add() returns. Calling the handlers makes no heap allocation. A handler
// added while the handlers run first runs on the next call; one cancelled meanwhile is not
// called afterwards.
// Thread: the owner's thread.

#include "core/Cancellable.h"
#include "core/CancellationToken.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace orvanta::arsession {

template <class... Args>
class HandlerList {
public:
    using Handler = std::function<void(Args...)>;

    [[nodiscard]] core::Cancellable add(Handler handler) {
        auto token = std::make_shared<core::CancellationToken>();
        entries_.push_back(std::make_shared<Entry>(Entry{token, std::move(handler)}));
        return core::Cancellable(token);
    }

    void call(Args... args) {
        // Entries added by a handler land beyond `count`; holding each entry keeps it alive
        // even when the vector grows meanwhile.
        const std::size_t count = entries_.size();
        for (std::size_t i = 0; i < count; ++i) {
            const std::shared_ptr<Entry> entry = entries_[i];
            if (!entry->token->isCancelled()) entry->handler(args...);
        }
        std::erase_if(entries_, [](const std::shared_ptr<Entry>& e) { return e->token->isCancelled(); });
    }

    // Handlers not yet cancelled.
    std::size_t size() const {
        return std::size_t(std::count_if(entries_.begin(), entries_.end(),
                                         [](const std::shared_ptr<Entry>& e) { return !e->token->isCancelled(); }));
    }

private:
    struct Entry {
        std::shared_ptr<core::CancellationToken> token;
        Handler handler;
    };
    std::vector<std::shared_ptr<Entry>> entries_;
};

} // namespace orvanta::arsession
