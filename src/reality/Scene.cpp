#include "reality/Scene.h"

namespace orvanta::reality {

std::shared_ptr<Entity> Scene::findEntity(const std::string& name) const {
    for (const auto& anchor : anchors_)
        if (auto found = anchor->findEntity(name)) return found;
    return nullptr;
}

core::Cancellable Scene::subscribeToUpdate(UpdateHandler handler) { return updateHandlers_.add(std::move(handler)); }

const arsession::ARPlaneAnchor* Scene::planeFor(const AnchoringComponent& anchoring, const std::optional<QUuid>& current,
                                                const arsession::ARFrame& frame) {
    if (current)
        if (const auto* plane = frame.anchor(*current)) return plane;
    for (const auto& plane : frame.anchors)
        if (anchoring.accepts(plane)) return &plane;
    return nullptr;
}

void Scene::updateAnchor(Entity& anchor, const arsession::ARFrame* frame) {
    const auto& anchoring = anchor.anchoring();
    if (!anchoring || anchoring->kind() == AnchoringComponent::Kind::world) {
        anchor.setAnchorState(true);
        return;
    }
    if (!frame) return;
    // Anchors take the pose of their target; their own scale is theirs to keep.
    const auto follow = [&](const QMatrix4x4& pose, const QVector3D& position) {
        anchor.setPosition(position);
        anchor.setOrientation(Transform::fromMatrix(pose).rotation);
    };
    if (anchoring->kind() == AnchoringComponent::Kind::camera) {
        follow(frame->camera.transform, frame->camera.position());
        anchor.setAnchorState(true);
        return;
    }
    if (const auto* plane = planeFor(*anchoring, anchor.anchorIdentifier(), *frame)) {
        follow(plane->transform, plane->worldCenter());
        anchor.setAnchorState(true, plane->identifier);
    } else {
        anchor.setAnchorState(false);
    }
}

void Scene::update(const arsession::ARFrame* frame, double deltaTime) {
    // By index: a handler of the previous frame may have changed the collection.
    for (std::size_t i = 0; i < anchors_.size(); ++i) updateAnchor(*anchors_[i], frame);
    updateHandlers_.call(SceneUpdateEvent{this, deltaTime});
}

} // namespace orvanta::reality
