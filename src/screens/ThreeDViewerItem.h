#pragma once
// The dish screen's 3D viewer as a QML item: shows the screen's scene-graph model (the view
// model's `scnModel`) on the screen's white background and writes the placed flag back to the
// screen; every change of either binding (the model, the placed flag) runs the viewer's
// update. The 3D view stays hidden while textures of what it shows are still decoding, so a
// dish never shows untextured.
// Thread: main thread.

#include "models/Reality3DViewItem.h"
#include "screens/FoodARView.h"

#include <QPointer>

namespace orvanta {

class ThreeDViewerItem : public Reality3DViewItem {
    Q_OBJECT
    Q_PROPERTY(orvanta::FoodARView* screen READ screen WRITE setScreen NOTIFY screenChanged)

public:
    explicit ThreeDViewerItem(QQuickItem* parent = nullptr);

    FoodARView* screen() const { return screen_; }
    // Binds the viewer to `screen`; set once.
    void setScreen(FoodARView* screen);

signals:
    void screenChanged();

private:
    void showWhenTexturesReady();

    QPointer<FoodARView> screen_;
};

} // namespace orvanta
