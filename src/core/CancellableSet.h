#pragma once
// The set of subscriptions a subscriber keeps alive; they end with the set.
// Thread: owner's thread.

#include "core/Cancellable.h"

#include <cstddef>
#include <vector>

namespace orvanta::core {

class CancellableSet {
public:
    void store(Cancellable cancellable) { items_.push_back(std::move(cancellable)); }
    std::size_t size() const { return items_.size(); }
    void removeAll() { items_.clear(); }

private:
    std::vector<Cancellable> items_;
};

} // namespace orvanta::core
