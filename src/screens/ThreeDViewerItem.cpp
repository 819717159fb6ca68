#include "screens/ThreeDViewerItem.h"

#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta {

ThreeDViewerItem::ThreeDViewerItem(QQuickItem* parent) : Reality3DViewItem(parent) {
    setBackgroundColor(Qt::white);
    // New nodes ask for their textures while the item syncs, before the frame that would draw
    // them; the view shows again in the turn that hands over the last decoded image.
    connect(this, &render::SceneViewItem::synced, this, &ThreeDViewerItem::showWhenTexturesReady);
    connect(&textures(), &render::TextureCache::decodesFinished, this, &ThreeDViewerItem::showWhenTexturesReady);
}

void ThreeDViewerItem::setScreen(FoodARView* screen) {
    assert(!screen_ && screen && "the 3D viewer item is bound to one screen, once");
    screen_ = screen;
    connect(screen->viewModelObject(), &OrvARViewModel::scnModelChanged, this, &ThreeDViewerItem::bindingsChanged);
    connect(screen, &FoodARView::isModelLoadedChanged, this, &ThreeDViewerItem::bindingsChanged);
    setViewer(Reality3DView(screen->scnModelBinding(), screen->isModelLoadedBinding()));
    emit screenChanged();
}

void ThreeDViewerItem::showWhenTexturesReady() { setContentVisible(texturesReady()); }

} // namespace orvanta
