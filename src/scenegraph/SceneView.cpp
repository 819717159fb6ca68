#include "scenegraph/SceneView.h"

namespace orvanta::scenegraph {

namespace {
std::shared_ptr<SceneNode> firstCamera(const std::shared_ptr<SceneNode>& node) {
    if (node->camera()) return node;
    for (const auto& child : node->childNodes())
        if (auto found = firstCamera(child)) return found;
    return nullptr;
}
} // namespace

std::shared_ptr<SceneNode> SceneView::pointOfView() const {
    return scene_ ? firstCamera(scene_->rootNode) : nullptr;
}

} // namespace orvanta::scenegraph
