#include "reality/EntityGestureRecognizer.h"

#include "reality/ARView.h"
#include "reality/Entity.h"

namespace orvanta::reality {

EntityGestureRecognizer::EntityGestureRecognizer(ARView& view, std::weak_ptr<Entity> entity, std::size_t touchCount)
    : view_(view), entity_(std::move(entity)), touchCount_(touchCount) {}

void EntityGestureRecognizer::handle(const TouchEvent& event) {
    const auto target = entity_.lock();
    const bool rightFingers = event.touches.size() == touchCount_;
    switch (event.phase) {
    case TouchEvent::Phase::began:
        if (isActive()) {
            if (!rightFingers) state_ = State::ended; // another finger joined: this gesture is over
            return;
        }
        if (isEnabled && target && rightFingers && hitsEntity(event.touches) && began(*target, event.touches))
            state_ = State::began;
        return;
    case TouchEvent::Phase::moved:
        if (!isActive()) return;
        if (!target || !rightFingers) {
            state_ = State::ended;
            return;
        }
        state_ = State::changed;
        moved(*target, event.touches);
        return;
    case TouchEvent::Phase::ended:
        if (isActive()) state_ = State::ended;
        return;
    case TouchEvent::Phase::cancelled:
        if (isActive()) state_ = State::cancelled;
        return;
    }
}

bool EntityGestureRecognizer::hitsEntity(const std::vector<QPointF>& touches) const {
    const auto target = entity_.lock();
    if (!target || !target->isActive()) return false;
    const auto hits = [&](QPointF point) {
        const auto ray = view_.ray(point);
        return ray && ARView::hitDistance(*target, *ray).has_value();
    };
    QPointF midpoint;
    for (const QPointF& touch : touches) {
        if (hits(touch)) return true;
        midpoint += touch / qreal(touches.size());
    }
    return touches.size() > 1 && hits(midpoint);
}

} // namespace orvanta::reality
