#include "scenegraph/SceneNodeBuilder.h"

namespace orvanta::scenegraph {

namespace {

std::shared_ptr<SceneNode> buildNode(const std::shared_ptr<const import::ImportedScene>& imported, int index) {
    const import::ImportedNode& source = imported->nodes[static_cast<std::size_t>(index)];
    auto node = SceneNode::make(source.name);
    node->setTransform(source.localTransform);
    // A node with exactly one mesh draws it itself; several meshes get a child each.
    if (source.meshes.size() == 1) {
        node->setGeometry(SceneGeometry{imported, source.meshes.front()});
    } else {
        for (int mesh : source.meshes) {
            auto part = SceneNode::make(imported->meshes[static_cast<std::size_t>(mesh)].name);
            part->setGeometry(SceneGeometry{imported, mesh});
            node->addChildNode(part);
        }
    }
    for (int child : source.children) node->addChildNode(buildNode(imported, child));
    for (const import::ImportedInstances& instances : source.instances) {
        for (import::InstancedMesh& instanced : imported->instancedMeshes(instances)) {
            auto part = SceneNode::make(imported->meshes[static_cast<std::size_t>(instanced.mesh)].name);
            part->setGeometry(SceneGeometry{imported, instanced.mesh, std::move(instanced.table)});
            node->addChildNode(part);
        }
    }
    return node;
}

} // namespace

Scene SceneNodeBuilder::build(std::shared_ptr<const import::ImportedScene> imported) {
    Scene scene;
    if (imported->nodes.empty()) return scene;
    // The imported root becomes the scene's root; its children are the scene's top level.
    auto root = buildNode(imported, 0);
    scene.rootNode = root;
    return scene;
}

} // namespace orvanta::scenegraph
