#pragma once
// A node of the AR scene: a name, a local transform (relative to the parent), children, and
// optional components (model, collision, anchoring). A parent owns its children; a child
// refers to its parent weakly. Entities are always held by shared_ptr (make them with
// std::make_shared), and may be subclassed.
//
// Spaces: "local" is relative to the parent; a `relativeTo` / `to` / `from` argument of
// nullptr means world space (the space of the scene's anchors, whose parent is none).
// Units: metres; orientations are unit quaternions.
// Thread: every method on the main thread.

#include "reality/AnchoringComponent.h"
#include "reality/BoundingBox.h"
#include "reality/CollisionComponent.h"
#include "reality/ModelComponent.h"
#include "reality/Transform.h"

#include <QMatrix4x4>
#include <QQuaternion>
#include <QVector3D>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::reality {

class Entity : public std::enable_shared_from_this<Entity> {
public:
    explicit Entity(std::string name = {}) : name_(std::move(name)) {}
    virtual ~Entity();
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }

    // --- hierarchy
    std::shared_ptr<Entity> parent() const { return parent_.lock(); }
    const std::vector<std::shared_ptr<Entity>>& children() const { return children_; }
    // Moves `child` under this entity (out of its old parent first), appended last. With
    // `preservingWorldTransform` its local transform is rewritten so it stays where it was in
    // the world. Contract: `child` is neither this entity nor one of its ancestors.
    void addChild(const std::shared_ptr<Entity>& child, bool preservingWorldTransform = false);
    // Takes `child` out of this entity; does nothing when it is not a child.
    void removeChild(const std::shared_ptr<Entity>& child, bool preservingWorldTransform = false);
    // Takes this entity out of its parent. With `preservingWorldTransform` its local transform
    // becomes its former world transform (it has no parent afterwards).
    void removeFromParent(bool preservingWorldTransform = false);
    // The first entity named `name` in this subtree, depth first (this entity included).
    std::shared_ptr<Entity> findEntity(const std::string& name);

    // --- local transform
    const Transform& transform() const { return transform_; }
    void setTransform(const Transform& transform) { transform_ = transform; }
    QVector3D position() const { return transform_.translation; }
    void setPosition(const QVector3D& position) { transform_.translation = position; }
    QQuaternion orientation() const { return transform_.rotation; }
    void setOrientation(const QQuaternion& orientation) { transform_.rotation = orientation.normalized(); }
    QVector3D scale() const { return transform_.scale; }
    void setScale(const QVector3D& scale) { transform_.scale = scale; }

    // --- transforms relative to other entities (nullptr = world)
    // This entity's space to world space.
    QMatrix4x4 worldTransformMatrix() const;
    // This entity's space to the space of `reference`.
    QMatrix4x4 transformMatrix(const Entity* reference) const;
    // Sets the local transform so that transformMatrix(reference) becomes `matrix`.
    void setTransformMatrix(const QMatrix4x4& matrix, const Entity* reference);
    QVector3D position(const Entity* reference) const;
    void setPosition(const QVector3D& position, const Entity* reference);
    QQuaternion orientation(const Entity* reference) const;
    void setOrientation(const QQuaternion& orientation, const Entity* reference);
    // A point of this entity's space expressed in the space of `target`.
    QVector3D convertPositionTo(const QVector3D& position, const Entity* target) const;
    // A point of the space of `source` expressed in this entity's space.
    QVector3D convertPositionFrom(const QVector3D& position, const Entity* source) const;
    // A direction (no translation) of this entity's space in the space of `target`.
    QVector3D convertDirectionTo(const QVector3D& direction, const Entity* target) const;

    // --- components
    const std::optional<ModelComponent>& model() const { return model_; }
    void setModel(std::optional<ModelComponent> model) {
        model_ = std::move(model);
        ++modelRevision_;
    }
    // Counts the model changes, so that a renderer sees a new model without comparing it.
    std::uint64_t modelRevision() const { return modelRevision_; }
    const std::optional<CollisionComponent>& collision() const { return collision_; }
    void setCollision(std::optional<CollisionComponent> collision) { collision_ = std::move(collision); }
    const std::optional<AnchoringComponent>& anchoring() const { return anchoring_; }
    // Setting an anchoring target detaches the entity until the scene attaches it again.
    void setAnchoring(std::optional<AnchoringComponent> anchoring);

    // Gives every entity that has a model (this one, and with `recursive` its descendants)
    // a collision box around its mesh's bounds.
    void generateCollisionShapes(bool recursive);
    // Bounds of the meshes of this entity (and with `recursive` of its descendants) in the
    // space of `reference`.
    BoundingBox visualBounds(bool recursive, const Entity* reference) const;

    // --- state
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }
    // Enabled, and every ancestor enabled.
    bool isEnabledInHierarchy() const;
    // For a scene anchor: whether its target has been found (world targets always, camera
    // targets once a frame exists, plane targets once a fitting plane is detected). For any
    // other entity: whether its root anchor is anchored.
    bool isAnchored() const;
    // Shown by the renderer: enabled in the hierarchy and anchored.
    bool isActive() const { return isEnabledInHierarchy() && isAnchored(); }
    // The identifier of the plane a plane-anchored entity is attached to, if any.
    const std::optional<QUuid>& anchorIdentifier() const { return anchorIdentifier_; }

    // Scene bookkeeping, called by the scene and its anchor collection: records whether this
    // root entity is anchored and to which plane. Contract: the entity has no parent.
    void setAnchorState(bool anchored, std::optional<QUuid> planeIdentifier = std::nullopt);

private:
    const Entity* root() const;

    std::string name_;
    Transform transform_;
    std::weak_ptr<Entity> parent_;
    std::vector<std::shared_ptr<Entity>> children_;
    std::optional<ModelComponent> model_;
    std::uint64_t modelRevision_ = 0;
    std::optional<CollisionComponent> collision_;
    std::optional<AnchoringComponent> anchoring_;
    bool enabled_ = true;
    bool anchored_ = false;
    std::optional<QUuid> anchorIdentifier_;
};

} // namespace orvanta::reality
