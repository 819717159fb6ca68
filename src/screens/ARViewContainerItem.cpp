#include "screens/ARViewContainerItem.h"

#include "reality/ModelEntity.h"

namespace orvanta {

ARViewContainerItem::ARViewContainerItem(QQuickItem* parent) : render::ARViewItem(parent) {
    // Each frame's sync shows every enabled entity; the model is hidden again in the same
    // turn, before the window draws, while its textures are still on their way.
    connect(this, &render::ARViewItem::frameSynced, this, &ARViewContainerItem::hideModelWhileTexturesDecode);
}

void ARViewContainerItem::setScreen(FoodARView* screen) {
    assert(!screen_ && screen && "the AR view item is bound to one screen, once");
    screen_ = screen;
    container_.emplace(screen->modelEntityBinding(), screen->isModelLoadedBinding(), screen->arViewBinding(),
                       screen->trackingStateBinding(), screen->backendFactory());
    context_.coordinator = container_->makeCoordinator();
    setARView(container_->makeUIView(context_));
    setCoachingOverlay(context_.coordinator->coachingOverlay);
    connect(screen->viewModelObject(), &OrvARViewModel::modelEntityChanged, this, &ARViewContainerItem::modelChanged);
    modelChanged();
    emit screenChanged();
}

void ARViewContainerItem::modelChanged() {
    if (container_ && arView()) container_->updateUIView(arView(), context_);
}

void ARViewContainerItem::hideModelWhileTexturesDecode() {
    if (texturesReady() || !screen_) return;
    if (const auto& model = screen_->viewModel()->modelEntity())
        if (QQuick3DNode* node = bridge().node(model.get())) node->setVisible(false);
}

} // namespace orvanta
