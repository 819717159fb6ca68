#pragma once
// Makes the Quick 3D view that the kit's items draw into: a View3D filling `parent`, cleared
// to `clearColor`, with multisample antialiasing and a perspective camera whose field of
// view is measured vertically. Made from C++, the view goes through the same set-up steps
// as one declared in QML (without them it draws nothing).
// Thread: main thread.

#include <QColor>

class QQuickItem;
class QQuick3DViewport;
class QQuick3DPerspectiveCamera;

namespace orvanta::render {

struct Viewport {
    QQuick3DViewport* view;
    QQuick3DPerspectiveCamera* camera;

    static Viewport make(QQuickItem* parent, const QColor& clearColor);

    // Takes `view` away from the item that made it, which is going away, and deletes it once
    // its window has drawn a few more frames. Quick 3D keeps the GPU copies of meshes and
    // textures in a cache shared by the window's views and drops an entry when the view syncs
    // the removal of its node; deleting the view at once would leave stale entries behind,
    // which a later view of the window can pick up by address and crash on.
    static void retire(QQuick3DViewport* view);
};

} // namespace orvanta::render
