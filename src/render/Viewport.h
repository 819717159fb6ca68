#pragma once
// Makes the Quick 3D view that the kit's items draw into: a View3D in `parent` looking through
// `camera` or, without one, a perspective camera whose field of view is measured vertically,
// over a plain `background` rectangle that fills `parent` beneath all its other children. Made
// from C++, the view goes through the same set-up steps as one declared in QML (without them
// it draws nothing).
//
// The view draws into its own layer, cleared to transparent and smoothed progressively, so the background
// rectangle (or a camera picture stacked beneath it) shows through where no model is drawn.
// Drawn inline instead it cost three to six times less a frame under a software renderer (see
// docs/PERFORMANCE.md), but on Qt 6.4 an inline view crashed Quick 3D's render thread as soon
// as the window was grabbed, so the layer stays.
// Thread: main thread.

#include <QColor>

class QQuickItem;
class QQuickRectangle;
class QQuick3DViewport;
class QQuick3DCamera;
class QQuick3DPerspectiveCamera;

namespace orvanta::render {

struct Viewport {
    QQuick3DViewport* view;
    QQuick3DPerspectiveCamera* camera; // the camera made here; null when one was given
    QQuickRectangle* background;       // the plain rectangle beneath; its colour can change later

    static Viewport make(QQuickItem* parent, const QColor& background, QQuick3DCamera* camera = nullptr);
};

} // namespace orvanta::render
