#pragma once
// A soft dark patch under the content of a plane anchor, where it touches the surface: a
// flat quad with a radial fall-off, sized to the content's footprint and following it as
// gestures move it. It grounds a placed dish on the table without the cost of shadow maps.
// Thread: main thread.

#include "reality/Entity.h"
#include "render/DrawnMesh.h"

#include <memory>

class QQuick3DNode;

namespace orvanta::render {

class ContactShadow {
public:
    // The patch lies under `anchorNode`, the node of a plane anchor.
    ContactShadow(RenderResources& resources, QQuick3DNode* anchorNode);

    // Fits the patch to the footprint of `anchor`'s content; hidden when it has none.
    void follow(const reality::Entity& anchor);

private:
    DrawnMesh quad_;
};

} // namespace orvanta::render
