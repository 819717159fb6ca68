#pragma once
// A loaded 3D scene: the root node of its graph.
// Thread: as SceneNode.

#include "scenegraph/SceneNode.h"

namespace orvanta::scenegraph {

struct Scene {
    std::shared_ptr<SceneNode> rootNode = SceneNode::make();
};

} // namespace orvanta::scenegraph
