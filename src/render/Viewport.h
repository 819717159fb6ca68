#pragma once
// Makes the Quick 3D view that the kit's items draw into: a View3D in `parent` looking through
// `camera` or, without one, a perspective camera whose field of view is measured vertically,
// over a plain `background` rectangle that fills `parent` beneath all its other children. Made
// from C++, the view goes through the same set-up steps as one declared in QML (without them
// it draws nothing).
//
// The view draws inline, straight into the window's own pass in its place among the items:
// an offscreen layer of its own, multisampled, resolved and then drawn again into the window,
// cost three to six times as much a frame under a software renderer (see
// docs/PERFORMANCE.md). Its edges are therefore smoothed when the window is multisampled
// (QQuick3D::idealSurfaceFormat(samples) as the window's format), not by the view itself.
// Drawn inline, the view clears nothing: items beneath it (a camera picture) show through.
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

    static Viewport make(QQuickItem* parent, const QColor& background, QQuick3DCamera* camera = nullptr);
};

} // namespace orvanta::render
