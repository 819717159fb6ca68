#pragma once
// The 3D viewer as an item a QML screen places: it draws the SceneView that its
// Reality3DView makes, and runs the viewer's update whenever the screen says that a bound
// value changed.
// Thread: main thread.

#include "models/Reality3DView.h"
#include "render/SceneViewItem.h"

#include <optional>

namespace orvanta {

class Reality3DViewItem : public render::SceneViewItem {
    Q_OBJECT

public:
    explicit Reality3DViewItem(QQuickItem* parent = nullptr) : SceneViewItem(parent) {}

    // Binds the item to the screen's state: builds the view once and runs the first update.
    void setViewer(Reality3DView viewer);
    // The screen calls this after `model` or `isModelLoaded` changed.
    Q_INVOKABLE void bindingsChanged();

private:
    std::optional<Reality3DView> viewer_;
};

} // namespace orvanta
