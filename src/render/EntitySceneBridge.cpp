#include "render/EntitySceneBridge.h"

namespace orvanta::render {

void EntitySceneBridge::sync(const reality::Scene& scene) {
    beginSync();
    for (const auto& anchor : scene.anchors()) visit(anchor, root(), true);
    endSync();
}

void EntitySceneBridge::visit(const std::shared_ptr<reality::Entity>& entity, QQuick3DNode* parent, bool isAnchor) {
    Record& record = reach(entity, entity->name(), parent);
    QQuick3DNode* node = record.node;
    const reality::Transform& transform = entity->transform();
    node->setPosition(transform.translation);
    node->setRotation(transform.rotation);
    node->setScale(transform.scale);
    node->setVisible(isAnchor ? entity->isEnabled() && entity->isAnchored() : entity->isEnabled());

    if (record.meshRevision != entity->modelRevision()) {
        record.meshRevision = entity->modelRevision();
        record.mesh.reset();
        if (const auto& model = entity->model(); model && model->mesh)
            record.mesh = std::make_unique<DrawnMesh>(resources(), node, model->mesh->sharedMesh(), model->materials,
                                                      model->instances ? model->instances->sharedTable() : nullptr);
    }

    const auto& anchoring = entity->anchoring();
    if (isAnchor && anchoring && anchoring->kind() == reality::AnchoringComponent::Kind::plane) {
        if (!record.shadow) record.shadow = std::make_unique<ContactShadow>(resources(), node);
        record.shadow->follow(*entity);
    }
    for (const auto& child : entity->children()) visit(child, node, false);
}

} // namespace orvanta::render
