#pragma once
// Base of the gestures installed on an entity. A gesture begins only when the fingers it
// needs touch down while the entity is shown (Entity::isActive) and one of them (or their
// midpoint) hits the entity's collision shapes (its own or a descendant's); it then follows
// the fingers until one lifts or another joins. The entity is
// held weakly; the view is the one that installed the gesture.
// Thread: every method on the main thread.

#include "reality/TouchEvent.h"

#include <QPointF>

#include <memory>
#include <vector>

namespace orvanta::reality {

class ARView;
class Entity;

class EntityGestureRecognizer {
public:
    enum class State { possible, began, changed, ended, cancelled };

    EntityGestureRecognizer(ARView& view, std::weak_ptr<Entity> entity, std::size_t touchCount);
    virtual ~EntityGestureRecognizer() = default;
    EntityGestureRecognizer(const EntityGestureRecognizer&) = delete;
    EntityGestureRecognizer& operator=(const EntityGestureRecognizer&) = delete;

    std::shared_ptr<Entity> entity() const { return entity_.lock(); }
    State state() const { return state_; }
    bool isEnabled = true;

    // Feeds one touch event; ARView forwards every event to every installed recognizer.
    void handle(const TouchEvent& event);

protected:
    // Called when the needed fingers touch down on the entity; returns whether the gesture
    // can start from these touches. Then called on each move.
    virtual bool began(Entity& entity, const std::vector<QPointF>& touches) = 0;
    virtual void moved(Entity& entity, const std::vector<QPointF>& touches) = 0;
    ARView& view() const { return view_; }

private:
    bool isActive() const { return state_ == State::began || state_ == State::changed; }
    bool hitsEntity(const std::vector<QPointF>& touches) const;

    ARView& view_;
    std::weak_ptr<Entity> entity_;
    std::size_t touchCount_;
    State state_ = State::possible;
};

} // namespace orvanta::reality
