#pragma once
// Draws an AR view into an image. The renderer bridge implements it; ARView::snapshot uses
// the installed one.
// Thread: called on the main thread; the completion must be called on the main thread,
// exactly once, with the image or with none when rendering failed.

#include <QImage>

#include <functional>
#include <optional>

namespace orvanta::reality {

class ARView;

class SnapshotRenderer {
public:
    using Completion = std::function<void(std::optional<QImage>)>;
    virtual ~SnapshotRenderer() = default;
    // `saveToHDR`: render with a floating-point format where possible.
    virtual void renderSnapshot(const ARView& view, bool saveToHDR, Completion completion) = 0;
};

} // namespace orvanta::reality
