#pragma once
// One finger drags the entity over the horizontal plane at the height where it stood when
// the gesture began: the point under the finger moves with the finger.
// Thread: main thread.

#include "reality/EntityGestureRecognizer.h"

#include <QVector3D>

#include <optional>

namespace orvanta::reality {

class EntityTranslationGestureRecognizer final : public EntityGestureRecognizer {
public:
    EntityTranslationGestureRecognizer(ARView& view, std::weak_ptr<Entity> entity)
        : EntityGestureRecognizer(view, std::move(entity), 1) {}

private:
    bool began(Entity& entity, const std::vector<QPointF>& touches) override;
    void moved(Entity& entity, const std::vector<QPointF>& touches) override;
    std::optional<QVector3D> groundPoint(QPointF touch) const;

    float planeHeight_ = 0.0f;    // world y of the drag plane
    QVector3D startHit_;          // world point under the finger at the start
    QVector3D startPosition_;     // entity world position at the start
};

} // namespace orvanta::reality
