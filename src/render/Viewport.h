#pragma once
// Makes the Quick 3D view that the kit's items draw into: a View3D filling `parent`, cleared
// to `clearColor`, with multisample antialiasing, looking through `camera` or, without one, a
// perspective camera whose field of view is measured vertically. Made from C++, the view goes
// through the same set-up steps as one declared in QML (without them it draws nothing).
// Thread: main thread.

#include <QColor>

class QQuickItem;
class QQuick3DViewport;
class QQuick3DCamera;
class QQuick3DPerspectiveCamera;

namespace orvanta::render {

struct Viewport {
    QQuick3DViewport* view;
    QQuick3DPerspectiveCamera* camera; // the camera made here; null when one was given

    static Viewport make(QQuickItem* parent, const QColor& clearColor, QQuick3DCamera* camera = nullptr);
};

} // namespace orvanta::render
