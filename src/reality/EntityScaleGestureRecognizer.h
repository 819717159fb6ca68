#pragma once
// Two fingers pinch the entity: its scale is multiplied by the ratio of the fingers'
// current distance to their distance when the gesture began.
// Thread: main thread.

#include "reality/EntityGestureRecognizer.h"

#include <QVector3D>

namespace orvanta::reality {

class EntityScaleGestureRecognizer final : public EntityGestureRecognizer {
public:
    EntityScaleGestureRecognizer(ARView& view, std::weak_ptr<Entity> entity)
        : EntityGestureRecognizer(view, std::move(entity), 2) {}

private:
    bool began(Entity& entity, const std::vector<QPointF>& touches) override;
    void moved(Entity& entity, const std::vector<QPointF>& touches) override;

    float startDistance_ = 0.0f;
    QVector3D startScale_;
};

} // namespace orvanta::reality
