#pragma once
// Option set of the gestures ARView::installGestures can attach to an entity.

namespace orvanta::reality {

struct EntityGestures {
    static constexpr unsigned translation = 1; // one finger drags the entity along its horizontal plane
    static constexpr unsigned rotation = 2;    // two fingers twist it about the vertical axis
    static constexpr unsigned scale = 4;       // two fingers pinch it smaller or larger
    static constexpr unsigned all = translation | rotation | scale;
};

} // namespace orvanta::reality
