#pragma once
// Mirrors the 3D viewer's scene-node graph in Quick 3D: one node per scene node under a
// root node, with the node's position, Euler angles and scale, and a model for its geometry
// drawn with the imported scene's materials (the same mesh and material code as the AR
// view). Camera nodes draw nothing; the view reads them for its point of view.
// sync() applies what changed, as the entity bridge does (see NodeMirror.h).
// Thread: main thread.

#include "render/NodeMirror.h"
#include "scenegraph/SceneNode.h"

namespace orvanta::render {

class SceneGraphBridge : public NodeMirror<scenegraph::SceneNode> {
public:
    using NodeMirror::NodeMirror;

    // Mirrors the children of `rootNode` (the scene's root stands for the mirror's root).
    void sync(const scenegraph::SceneNode& rootNode);

private:
    void visit(const std::shared_ptr<scenegraph::SceneNode>& sceneNode, QQuick3DNode* parent);
};

} // namespace orvanta::render
