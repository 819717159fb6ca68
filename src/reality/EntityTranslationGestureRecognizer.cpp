#include "reality/EntityTranslationGestureRecognizer.h"

#include "reality/ARView.h"
#include "reality/Entity.h"

namespace orvanta::reality {

std::optional<QVector3D> EntityTranslationGestureRecognizer::groundPoint(QPointF touch) const {
    const auto ray = view().ray(touch);
    if (!ray) return std::nullopt;
    const auto t = ray->intersectPlane(QVector3D(0.0f, planeHeight_, 0.0f), QVector3D(0.0f, 1.0f, 0.0f));
    if (!t) return std::nullopt;
    return ray->at(*t);
}

bool EntityTranslationGestureRecognizer::began(Entity& entity, const std::vector<QPointF>& touches) {
    startPosition_ = entity.position(nullptr);
    planeHeight_ = startPosition_.y();
    const auto hit = groundPoint(touches.front());
    if (!hit) return false;
    startHit_ = *hit;
    return true;
}

void EntityTranslationGestureRecognizer::moved(Entity& entity, const std::vector<QPointF>& touches) {
    // A finger above the horizon has no ground point: the entity waits where it is.
    if (const auto hit = groundPoint(touches.front())) entity.setPosition(startPosition_ + (*hit - startHit_), nullptr);
}

} // namespace orvanta::reality
