#pragma once
// The AR view: owns a tracking session and an entity scene, knows its size on screen and
// the camera, answers ray casts and hit tests from screen points, runs gestures on
// entities, and takes snapshots through an installed renderer.
//
// Each new session frame steps the view (stepFrame): anchors follow the frame and the
// scene's update event fires. A renderer that wants to drive updates itself turns
// automatic updates off and calls stepFrame() once per drawn frame.
// Screen points: view points, origin top-left, y down.
// Thread: every method on the main thread (the session's clock queue).

#include "arsession/ARRaycastQuery.h"
#include "arsession/ARRaycastResult.h"
#include "arsession/ARSession.h"
#include "arsession/Ray.h"
#include "arsession/SessionBackend.h"
#include "core/Cancellable.h"
#include "core/Scheduler.h"
#include "reality/EntityGestureRecognizer.h"
#include "reality/Scene.h"
#include "reality/SnapshotRenderer.h"
#include "reality/TouchEvent.h"

#include <QImage>
#include <QMatrix4x4>
#include <QPointF>
#include <QSizeF>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta::reality {

class Entity;

class ARView {
public:
    // `frameSize`: size on screen in points (may be empty until laid out).
    // `backend`: source of frames; null means a SimulatedWorld with its default script.
    // `clock`: the session's clock queue; null means core::Dispatch::main().
    explicit ARView(QSizeF frameSize = {}, std::unique_ptr<arsession::SessionBackend> backend = nullptr,
                    std::shared_ptr<core::Scheduler> clock = nullptr);
    ~ARView();
    ARView(const ARView&) = delete;
    ARView& operator=(const ARView&) = delete;

    const std::shared_ptr<arsession::ARSession>& session() const { return session_; }
    Scene& scene() { return scene_; }
    const Scene& scene() const { return scene_; }

    QSizeF frameSize() const { return frameSize_; }
    void setFrameSize(QSizeF size) { frameSize_ = size; }
    QPointF center() const { return {frameSize_.width() / 2.0, frameSize_.height() / 2.0}; }

    // Camera to world of the session's current frame; identity before the first frame.
    QMatrix4x4 cameraTransform() const;
    // World ray through `screenPoint`; none before the first frame or while the view has no size.
    std::optional<arsession::Ray> ray(QPointF screenPoint) const;
    // The query for a ray cast from `screenPoint`; none when ray() is none.
    std::optional<arsession::ARRaycastQuery> makeRaycastQuery(QPointF screenPoint, arsession::ARRaycastQuery::Target target,
                                                             arsession::ARRaycastQuery::TargetAlignment alignment) const;
    // Session ray cast from `screenPoint`, nearest first; empty when there is no ray.
    std::vector<arsession::ARRaycastResult> raycast(QPointF screenPoint, arsession::ARRaycastQuery::Target target,
                                                    arsession::ARRaycastQuery::TargetAlignment alignment) const;
    // The nearest active entity with collision shapes under `screenPoint`, or null.
    std::shared_ptr<Entity> entity(QPointF screenPoint) const;
    // Distance along `ray` to the collision shapes of `entity` and its descendants; none on a miss.
    static std::optional<float> hitDistance(const Entity& entity, const arsession::Ray& ray);

    // Attaches the gestures in `gestures` (EntityGestures flags) to `entity`; the view keeps
    // them, and also returns them. Contract: `entity` is non-null.
    std::vector<std::shared_ptr<EntityGestureRecognizer>> installGestures(unsigned gestures,
                                                                          const std::shared_ptr<Entity>& entity);
    // Forwards a touch event to every installed gesture, in installation order.
    void handleTouches(const TouchEvent& event);

    void setSnapshotRenderer(std::shared_ptr<SnapshotRenderer> renderer) { renderer_ = std::move(renderer); }
    // Renders the view through the installed renderer; without one, `completion` gets none on
    // the next turn of the main queue.
    void snapshot(bool saveToHDR, SnapshotRenderer::Completion completion);

    // One frame: anchors follow the session's current frame, then the scene's update event
    // fires with the clock time elapsed since the previous step (0 for the first).
    void stepFrame();
    // Whether each new session frame calls stepFrame() (on by default).
    void setAutomaticUpdates(bool enabled);

private:
    QSizeF frameSize_;
    std::shared_ptr<arsession::ARSession> session_;
    Scene scene_;
    std::vector<std::shared_ptr<EntityGestureRecognizer>> gestures_;
    std::shared_ptr<SnapshotRenderer> renderer_;
    core::Cancellable frameObservation_;
    std::optional<double> lastStep_;
    bool automaticUpdates_ = false;
};

} // namespace orvanta::reality
