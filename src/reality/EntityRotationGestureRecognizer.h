#pragma once
// Two fingers twist the entity about the world's vertical axis: a clockwise twist on screen
// turns it clockwise as seen from above, by the angle the fingers turned.
// Thread: main thread.

#include "reality/EntityGestureRecognizer.h"

#include <QQuaternion>

namespace orvanta::reality {

class EntityRotationGestureRecognizer final : public EntityGestureRecognizer {
public:
    EntityRotationGestureRecognizer(ARView& view, std::weak_ptr<Entity> entity)
        : EntityGestureRecognizer(view, std::move(entity), 2) {}

    // Screen angle (radians, clockwise positive since y points down) of the line from the
    // first touch to the second. Pure.
    static float twistAngle(QPointF first, QPointF second);

private:
    bool began(Entity& entity, const std::vector<QPointF>& touches) override;
    void moved(Entity& entity, const std::vector<QPointF>& touches) override;

    float startAngle_ = 0.0f;
    QQuaternion startOrientation_; // world orientation at the start
};

} // namespace orvanta::reality
