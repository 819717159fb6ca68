#pragma once
// Takes snapshots of what an item shows on screen: the window's frame cut to the item's
// rectangle, at the window's device pixel ratio. With `saveToHDR`, and a driver that offers
// half-float render targets, the 3D view is rendered into a half-float target for the
// snapshot and the image comes as 16-bit floats.
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
    // The snapshot itself, synchronously; none when the item is gone or has no window or size.
    std::optional<QImage> grab(bool saveToHDR) const;

private:
    QPointer<QQuickItem> item_;
    QPointer<QQuick3DViewport> viewport_;
};

} // namespace orvanta::render
