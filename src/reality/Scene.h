#pragma once
// The entity scene of an AR view: its anchors, and the per-frame update event.
// Each update, in this order: every anchor follows its target (camera anchors take the
// camera pose; plane anchors attach to the first fitting plane and then follow it, and are
// detached when it disappears), then every update subscriber is called.
// Thread: every method on the main thread.

#include "arsession/ARFrame.h"
#include "arsession/HandlerList.h"
#include "core/Cancellable.h"
#include "reality/AnchorCollection.h"
#include "reality/SceneUpdateEvent.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvanta::reality {

class Scene {
public:
    using UpdateHandler = std::function<void(const SceneUpdateEvent&)>;

    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    AnchorCollection& anchors() { return anchors_; }
    const AnchorCollection& anchors() const { return anchors_; }
    void addAnchor(const std::shared_ptr<Entity>& anchor) { anchors_.append(anchor); }
    // The first entity named `name` in any anchor's subtree, anchors in order.
    std::shared_ptr<Entity> findEntity(const std::string& name) const;

    // Calls `handler` on every update until the Cancellable is cancelled or dropped. A handler
    // added during an update first runs on the next one; one cancelled during an update is
    // not called afterwards.
    [[nodiscard]] core::Cancellable subscribeToUpdate(UpdateHandler handler);

    // One frame: anchors follow `frame` (null before the session's first frame), then the
    // update event fires with `deltaTime` seconds. Makes no heap allocation.
    void update(const arsession::ARFrame* frame, double deltaTime);

    // The pure rule of plane anchoring: the anchor of `frame` that `anchoring` attaches to,
    // given the plane it is attached to now (`current`, kept while it is still in the frame),
    // or nullptr.
    static const arsession::ARPlaneAnchor* planeFor(const AnchoringComponent& anchoring,
                                                    const std::optional<QUuid>& current,
                                                    const arsession::ARFrame& frame);

private:
    void updateAnchor(Entity& anchor, const arsession::ARFrame* frame);

    AnchorCollection anchors_;
    arsession::HandlerList<const SceneUpdateEvent&> updateHandlers_;
};

} // namespace orvanta::reality
