#include "reality/ARView.h"

#include "arsession/SimulatedWorld.h"
#include "core/Dispatch.h"
#include "reality/Entity.h"
#include "reality/EntityGestures.h"
#include "reality/EntityRotationGestureRecognizer.h"
#include "reality/EntityScaleGestureRecognizer.h"
#include "reality/EntityTranslationGestureRecognizer.h"

#include <cassert>

namespace orvanta::reality {

using arsession::ARRaycastQuery;

ARView::ARView(QSizeF frameSize, std::unique_ptr<arsession::SessionBackend> backend,
               std::shared_ptr<core::Scheduler> clock)
    : frameSize_(frameSize),
      session_(std::make_shared<arsession::ARSession>(
          backend ? std::move(backend) : std::make_unique<arsession::SimulatedWorld>(), std::move(clock))) {
    setAutomaticUpdates(true);
}

ARView::~ARView() = default;

QMatrix4x4 ARView::cameraTransform() const {
    const auto* frame = session_->currentFrame();
    return frame ? frame->camera.transform : QMatrix4x4();
}

std::optional<arsession::Ray> ARView::ray(QPointF screenPoint) const {
    const auto* frame = session_->currentFrame();
    if (!frame || frameSize_.isEmpty()) return std::nullopt;
    return frame->camera.ray(screenPoint, frameSize_);
}

std::optional<ARRaycastQuery> ARView::makeRaycastQuery(QPointF screenPoint, ARRaycastQuery::Target target,
                                                        ARRaycastQuery::TargetAlignment alignment) const {
    const auto r = ray(screenPoint);
    if (!r) return std::nullopt;
    return ARRaycastQuery(r->origin, r->direction, target, alignment);
}

std::vector<arsession::ARRaycastResult> ARView::raycast(QPointF screenPoint, ARRaycastQuery::Target target,
                                                         ARRaycastQuery::TargetAlignment alignment) const {
    const auto query = makeRaycastQuery(screenPoint, target, alignment);
    return query ? session_->raycast(*query) : std::vector<arsession::ARRaycastResult>();
}

namespace {

// Distance along `ray` to the entity's own collision shapes (not its children's).
std::optional<float> shapeDistance(const Entity& entity, const arsession::Ray& ray) {
    if (!entity.collision() || entity.collision()->shapes.empty()) return std::nullopt;
    // The ray in the entity's space: an affine map keeps the ray parameter t.
    const QMatrix4x4 toLocal = entity.worldTransformMatrix().inverted();
    const arsession::Ray local{toLocal.map(ray.origin), toLocal.mapVector(ray.direction)};
    std::optional<float> nearest;
    for (const auto& shape : entity.collision()->shapes) {
        const auto t = local.intersectBox(shape.center - shape.halfExtents, shape.center + shape.halfExtents);
        if (t && (!nearest || *t < *nearest)) nearest = t;
    }
    return nearest;
}

} // namespace

std::optional<float> ARView::hitDistance(const Entity& entity, const arsession::Ray& ray) {
    std::optional<float> nearest = shapeDistance(entity, ray);
    for (const auto& child : entity.children()) {
        if (!child->isEnabled()) continue;
        const auto t = hitDistance(*child, ray);
        if (t && (!nearest || *t < *nearest)) nearest = t;
    }
    return nearest;
}

std::shared_ptr<Entity> ARView::entity(QPointF screenPoint) const {
    const auto r = ray(screenPoint);
    if (!r) return nullptr;
    std::shared_ptr<Entity> nearest;
    float nearestT = 0.0f;
    std::vector<std::shared_ptr<Entity>> pending(scene_.anchors().begin(), scene_.anchors().end());
    while (!pending.empty()) {
        auto entity = std::move(pending.back());
        pending.pop_back();
        if (!entity->isActive()) continue;
        if (const auto t = shapeDistance(*entity, *r); t && (!nearest || *t < nearestT)) {
            nearest = entity;
            nearestT = *t;
        }
        pending.insert(pending.end(), entity->children().begin(), entity->children().end());
    }
    return nearest;
}

std::vector<std::shared_ptr<EntityGestureRecognizer>> ARView::installGestures(unsigned gestures,
                                                                              const std::shared_ptr<Entity>& entity) {
    assert(entity);
    std::vector<std::shared_ptr<EntityGestureRecognizer>> installed;
    if (gestures & EntityGestures::translation)
        installed.push_back(std::make_shared<EntityTranslationGestureRecognizer>(*this, entity));
    if (gestures & EntityGestures::rotation)
        installed.push_back(std::make_shared<EntityRotationGestureRecognizer>(*this, entity));
    if (gestures & EntityGestures::scale)
        installed.push_back(std::make_shared<EntityScaleGestureRecognizer>(*this, entity));
    gestures_.insert(gestures_.end(), installed.begin(), installed.end());
    return installed;
}

void ARView::handleTouches(const TouchEvent& event) {
    for (const auto& gesture : gestures_) gesture->handle(event);
}

void ARView::snapshot(bool saveToHDR, SnapshotRenderer::Completion completion) {
    if (renderer_) {
        renderer_->renderSnapshot(*this, saveToHDR, std::move(completion));
        return;
    }
    core::Dispatch::main()->async([completion = std::move(completion)] { completion(std::nullopt); });
}

void ARView::stepFrame() {
    const double now = session_->clock()->now();
    const double deltaTime = lastStep_ ? now - *lastStep_ : 0.0;
    lastStep_ = now;
    scene_.update(session_->currentFrame(), deltaTime);
}

void ARView::setAutomaticUpdates(bool enabled) {
    if (enabled == automaticUpdates_) return;
    automaticUpdates_ = enabled;
    frameObservation_ = enabled ? session_->observeFrames([this](const arsession::ARFrame&) { stepFrame(); })
                                : core::Cancellable();
}

} // namespace orvanta::reality
