#pragma once
// The dish screen's 3D viewer as a QML item: shows the screen's scene-graph model (the view
// model's `scnModel`) and writes the placed flag back to the screen; each new model runs the
// viewer's update.
// Thread: main thread.

#include "models/Reality3DViewItem.h"
#include "screens/FoodARView.h"

#include <QPointer>

namespace orvanta {

class ThreeDViewerItem : public Reality3DViewItem {
    Q_OBJECT
    Q_PROPERTY(orvanta::FoodARView* screen READ screen WRITE setScreen NOTIFY screenChanged)

public:
    explicit ThreeDViewerItem(QQuickItem* parent = nullptr) : Reality3DViewItem(parent) {}

    FoodARView* screen() const { return screen_; }
    // Binds the viewer to `screen`; set once.
    void setScreen(FoodARView* screen);

signals:
    void screenChanged();

private:
    QPointer<FoodARView> screen_;
};

} // namespace orvanta
