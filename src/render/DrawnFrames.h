#pragma once
// Waiting for what a window shows: runs the event loop until a condition holds after a drawn
// frame, and then for a few more frames so that the state that met it is on screen with its
// edges smoothed. For tools and tests that render and then capture.
// Thread: main thread.

#include <functional>

class QQuickWindow;

namespace orvanta::render {

class DrawnFrames {
public:
    // False when `ready` did not hold within `timeoutSeconds`.
    static bool waitUntil(QQuickWindow& window, const std::function<bool()>& ready, double timeoutSeconds);
};

} // namespace orvanta::render
