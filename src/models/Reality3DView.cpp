#include "models/Reality3DView.h"

#include "core/Dispatch.h"
#include "core/Log.h"

#include <cmath>

namespace orvanta {

std::shared_ptr<scenegraph::SceneView> Reality3DView::makeUIView() const {
    auto view = std::make_shared<scenegraph::SceneView>(QSizeF(0, 0));
    view->setAllowsCameraControl(true);
    view->setAutoenablesDefaultLighting(true);
    view->setScene(std::make_shared<scenegraph::Scene>());
    auto camera = scenegraph::SceneNode::make();
    camera->setCamera(scenegraph::SceneCamera{});
    camera->setPosition(QVector3D(0.0f, 20.0f, 20.0f));
    camera->setEulerAngles(QVector3D(-float(M_PI) / 4.0f, 0.0f, 0.0f));
    view->scene()->rootNode->addChildNode(camera);
    return view;
}

void Reality3DView::updateUIView(const std::shared_ptr<scenegraph::SceneView>& view) const {
    const SceneNodePtr node = model.get();
    if (!node) {
        core::Log::print("No model to display.");
        return;
    }
    core::Log::print("Updating model: " + node->description());
    clearExistingObjects(*view);
    node->setScale(QVector3D(0.5f, 0.5f, 0.5f));
    view->setNeedsDisplay();
    core::Dispatch::main()->async([self = *this, view, node] {
        core::Log::print("Adding model to scene");
        if (const auto& scene = view->scene()) scene->rootNode->addChildNode(node);
        self.isModelLoaded.set(true);
        view->setNeedsDisplay();
    });
}

void Reality3DView::clearExistingObjects(scenegraph::SceneView& view) {
    const auto& scene = view.scene();
    if (!scene) return;
    const auto& root = scene->rootNode;
    while (!root->childNodes().empty()) root->childNodes().back()->removeFromParentNode();
}

} // namespace orvanta
