#include "reality/AnchorEntity.h"

namespace orvanta::reality {

AnchorEntity::AnchorEntity(const AnchoringComponent& target, std::string name) : Entity(std::move(name)) {
    if (target.kind() == AnchoringComponent::Kind::world) setTransform(Transform::fromMatrix(target.worldTransform()));
    setAnchoring(target);
}

AnchorEntity::AnchorEntity(const QMatrix4x4& worldTransform, std::string name)
    : AnchorEntity(AnchoringComponent::world(worldTransform), std::move(name)) {}

} // namespace orvanta::reality
