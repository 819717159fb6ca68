#include "reality/EntityRotationGestureRecognizer.h"

#include "reality/Entity.h"

#include <QtMath>

#include <cmath>
#include <numbers>

namespace orvanta::reality {

float EntityRotationGestureRecognizer::twistAngle(QPointF first, QPointF second) {
    return float(std::atan2(second.y() - first.y(), second.x() - first.x()));
}

bool EntityRotationGestureRecognizer::began(Entity& entity, const std::vector<QPointF>& touches) {
    startAngle_ = twistAngle(touches[0], touches[1]);
    startOrientation_ = entity.orientation(nullptr);
    return true;
}

void EntityRotationGestureRecognizer::moved(Entity& entity, const std::vector<QPointF>& touches) {
    constexpr float pi = std::numbers::pi_v<float>;
    float turned = twistAngle(touches[0], touches[1]) - startAngle_;
    turned = std::remainder(turned, 2.0f * pi); // the shorter way round, in (−π, π]
    // Clockwise on screen is clockwise seen from above: a negative turn about +y.
    const QQuaternion twist = QQuaternion::fromAxisAndAngle(0.0f, 1.0f, 0.0f, -qRadiansToDegrees(turned));
    entity.setOrientation(twist * startOrientation_, nullptr);
}

} // namespace orvanta::reality
