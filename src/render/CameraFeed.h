#pragma once
// What the AR view shows behind its content: the picture of the device camera. A device
// backend hands camera images, which go into the background item behind the 3D view; the
// simulated world and its replays have no images, so their feed draws the room itself, in
// world space, seen through the session camera like the content.
// Thread: main thread.

#include "arsession/ARFrame.h"
#include "render/RenderResources.h"

class QQuick3DNode;
class QQuickItem;

namespace orvanta::render {

class CameraFeed {
public:
    virtual ~CameraFeed() = default;
    // Called once, before the first frame: `world` is a node in world space drawn with the
    // session camera (lights placed there light the content too); `background` is an item
    // filling the view behind the 3D view.
    virtual void attach(RenderResources& resources, QQuick3DNode* world, QQuickItem* background) = 0;
    // Called for every new session frame.
    virtual void update(const arsession::ARFrame& frame) = 0;
};

} // namespace orvanta::render
