#pragma once
// The per-frame event of a scene, sent after anchors have been updated.
// Thread: a value type.

namespace orvanta::reality {

class Scene;

struct SceneUpdateEvent {
    Scene* scene = nullptr;
    double deltaTime = 0.0; // seconds since the previous update (0 for the first)
};

} // namespace orvanta::reality
