#include "screens/ThreeDViewerItem.h"

namespace orvanta {

void ThreeDViewerItem::setScreen(FoodARView* screen) {
    assert(!screen_ && screen && "the 3D viewer item is bound to one screen, once");
    screen_ = screen;
    connect(screen->viewModelObject(), &OrvARViewModel::scnModelChanged, this, &ThreeDViewerItem::bindingsChanged);
    setViewer(Reality3DView(screen->scnModelBinding(), screen->isModelLoadedBinding()));
    emit screenChanged();
}

} // namespace orvanta
