#pragma once
// Builds a scene-graph tree that mirrors an imported scene: one node per imported node, in
// file order, with its local transform, and one geometry child per mesh; after the node's
// children, one geometry child per mesh each of its instance tables draws, drawing it at every
// copy. Prototype trees get no nodes of their own.
// Thread: any; the result is not shared until returned.

#include "scenegraph/Scene.h"

namespace orvanta::scenegraph {

class SceneNodeBuilder {
public:
    static Scene build(std::shared_ptr<const import::ImportedScene> imported);
};

} // namespace orvanta::scenegraph
