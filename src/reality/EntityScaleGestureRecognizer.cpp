#include "reality/EntityScaleGestureRecognizer.h"

#include "reality/Entity.h"

#include <QLineF>

namespace orvanta::reality {

namespace {

// Closer fingers than this (points) give no usable ratio.
constexpr float minimumPinchDistance = 1.0f;

} // namespace

bool EntityScaleGestureRecognizer::began(Entity& entity, const std::vector<QPointF>& touches) {
    startDistance_ = float(QLineF(touches[0], touches[1]).length());
    startScale_ = entity.scale();
    return startDistance_ >= minimumPinchDistance;
}

void EntityScaleGestureRecognizer::moved(Entity& entity, const std::vector<QPointF>& touches) {
    const float distance = float(QLineF(touches[0], touches[1]).length());
    entity.setScale(startScale_ * (distance / startDistance_));
}

} // namespace orvanta::reality
