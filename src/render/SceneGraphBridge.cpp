#include "render/SceneGraphBridge.h"

#include "reality/ModelEntity.h"

#include <QtMath>

namespace orvanta::render {

void SceneGraphBridge::sync(const scenegraph::SceneNode& rootNode) {
    beginSync();
    for (const auto& child : rootNode.childNodes()) visit(child, root());
    endSync();
}

void SceneGraphBridge::visit(const std::shared_ptr<scenegraph::SceneNode>& sceneNode, QQuick3DNode* parent) {
    Record& record = reach(sceneNode, sceneNode->name(), parent);
    QQuick3DNode* node = record.node;
    const QVector3D angles = sceneNode->eulerAngles();
    node->setPosition(sceneNode->position());
    // Roll about z first, then pitch about x, then yaw about y, as the scene node defines them.
    node->setRotation(QQuaternion::fromEulerAngles(qRadiansToDegrees(angles.x()), qRadiansToDegrees(angles.y()),
                                                   qRadiansToDegrees(angles.z())));
    node->setScale(sceneNode->scale());

    if (record.meshRevision != sceneNode->geometryRevision()) {
        record.meshRevision = sceneNode->geometryRevision();
        record.mesh.reset();
        if (const auto& geometry = sceneNode->geometry(); geometry && geometry->source) {
            const reality::ModelComponent model = reality::ModelEntity::modelComponent(geometry->source, geometry->mesh);
            record.mesh = std::make_unique<DrawnMesh>(resources(), node, model.mesh->sharedMesh(), model.materials,
                                                      geometry->instances);
        }
    }
    for (const auto& child : sceneNode->childNodes()) visit(child, node);
}

} // namespace orvanta::render
