#include "screens/ARViewContainerItem.h"

namespace orvanta {

ARViewContainerItem::ARViewContainerItem(QQuickItem* parent) : render::ARViewItem(parent) {}

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

} // namespace orvanta
