#include "reality/AnchorCollection.h"

#include <algorithm>
#include <cassert>

namespace orvanta::reality {

namespace {

// World anchors (and entities without an anchoring target) stand where they are at once;
// camera and plane anchors wait for the scene's next update.
bool anchoredOnArrival(const Entity& anchor) {
    return !anchor.anchoring() || anchor.anchoring()->kind() == AnchoringComponent::Kind::world;
}

} // namespace

void AnchorCollection::append(const std::shared_ptr<Entity>& anchor) {
    assert(anchor && !anchor->parent());
    if (contains(anchor.get())) return;
    anchors_.push_back(anchor);
    if (anchoredOnArrival(*anchor)) anchor->setAnchorState(true);
}

void AnchorCollection::remove(const std::shared_ptr<Entity>& anchor) {
    const auto it = std::find(anchors_.begin(), anchors_.end(), anchor);
    if (it == anchors_.end()) return;
    anchors_.erase(it);
    anchor->setAnchorState(false);
}

void AnchorCollection::removeAll() {
    // Detach after emptying, so the collection is consistent if an entity is looked at meanwhile.
    const auto removed = std::move(anchors_);
    anchors_.clear();
    for (const auto& anchor : removed) anchor->setAnchorState(false);
}

bool AnchorCollection::contains(const Entity* anchor) const {
    return std::any_of(anchors_.begin(), anchors_.end(), [&](const auto& a) { return a.get() == anchor; });
}

} // namespace orvanta::reality
