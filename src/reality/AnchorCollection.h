#pragma once
// The scene's root entities (its anchors), in insertion order. An entity appended twice is
// kept once. Removing an anchor detaches it, so a plane anchor that comes back looks for
// its plane again.
// Thread: every method on the main thread.

#include "reality/Entity.h"

#include <memory>
#include <vector>

namespace orvanta::reality {

class AnchorCollection {
public:
    // Contract: `anchor` is non-null and has no parent.
    void append(const std::shared_ptr<Entity>& anchor);
    // Does nothing when `anchor` is not in the collection.
    void remove(const std::shared_ptr<Entity>& anchor);
    void removeAll();

    std::size_t size() const { return anchors_.size(); }
    bool empty() const { return anchors_.empty(); }
    const std::shared_ptr<Entity>& operator[](std::size_t i) const { return anchors_[i]; }
    auto begin() const { return anchors_.begin(); }
    auto end() const { return anchors_.end(); }
    bool contains(const Entity* anchor) const;

private:
    std::vector<std::shared_ptr<Entity>> anchors_;
};

} // namespace orvanta::reality
