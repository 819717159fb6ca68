#include "models/Reality3DViewItem.h"

namespace orvanta {

void Reality3DViewItem::setViewer(Reality3DView viewer) {
    viewer_ = std::move(viewer);
    setSceneView(viewer_->makeUIView());
    bindingsChanged();
}

void Reality3DViewItem::bindingsChanged() {
    if (viewer_ && sceneView()) viewer_->updateUIView(sceneView());
}

} // namespace orvanta
