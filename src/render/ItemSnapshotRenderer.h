#pragma once
// Takes snapshots of one item: the item and its children drawn alone into an image of the
// item's size at the window's device pixel ratio, so whatever a layout stacks above the item
// (buttons, overlays, other pictures) stays out of the picture. With `saveToHDR`, and a driver
// that offers half-float render targets, the 3D view is rendered into a half-float target for
// the snapshot and the image comes as 16-bit floats.
// Thread: main thread; the completion runs on the main thread's next event-loop turn.

#include "reality/SnapshotRenderer.h"

#include <QPointer>
#include <QQuickItem>

class QQuick3DViewport;

namespace orvanta::render {

class ItemSnapshotRenderer final : public reality::SnapshotRenderer {
public:
    // `viewport`: the 3D view inside `item` whose target changes for HDR snapshots, or null.
    explicit ItemSnapshotRenderer(QQuickItem* item, QQuick3DViewport* viewport = nullptr);

    void renderSnapshot(const reality::ARView& view, bool saveToHDR, Completion completion) override;
    // The snapshot itself, synchronously (the window draws one frame for it); none when the
    // item is gone, has no size or is not in a shown window.
    std::optional<QImage> grab(bool saveToHDR) const;

private:
    QPointer<QQuickItem> item_;
    QPointer<QQuick3DViewport> viewport_;
};

} // namespace orvanta::render
