#pragma once
// A scene anchor: a root entity with an anchoring target (world transform, camera, or a
// detected plane). Its content is shown only while it is anchored (see Entity::isAnchored):
// a plane anchor waits for the first detected plane that fits its target.
// Thread: every method on the main thread.

#include "reality/AnchoringComponent.h"
#include "reality/Entity.h"

namespace orvanta::reality {

class AnchorEntity : public Entity {
public:
    explicit AnchorEntity(const AnchoringComponent& target, std::string name = {});
    // A world anchor at `worldTransform` (identity by default).
    explicit AnchorEntity(const QMatrix4x4& worldTransform = QMatrix4x4(), std::string name = {});
};

} // namespace orvanta::reality
