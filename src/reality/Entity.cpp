#include "reality/Entity.h"

#include <algorithm>
#include <cassert>

namespace orvanta::reality {

namespace {

QMatrix4x4 worldOf(const Entity* entity) { return entity ? entity->worldTransformMatrix() : QMatrix4x4(); }

QMatrix4x4 worldInverseOf(const Entity* entity) {
    return entity ? entity->worldTransformMatrix().inverted() : QMatrix4x4();
}

} // namespace

Entity::~Entity() = default;

void Entity::addChild(const std::shared_ptr<Entity>& child, bool preservingWorldTransform) {
    assert(child);
    for (const Entity* ancestor = this; ancestor; ancestor = ancestor->parent_.lock().get())
        assert(ancestor != child.get() && "an entity cannot become its own descendant");
    const QMatrix4x4 world = preservingWorldTransform ? child->worldTransformMatrix() : QMatrix4x4();
    if (const auto old = child->parent()) old->removeChild(child);
    child->parent_ = weak_from_this();
    assert(!child->parent_.expired() && "a parent entity must be owned by a shared_ptr");
    children_.push_back(child);
    if (preservingWorldTransform) child->setTransformMatrix(world, nullptr);
}

void Entity::removeChild(const std::shared_ptr<Entity>& child, bool preservingWorldTransform) {
    const auto it = std::find(children_.begin(), children_.end(), child);
    if (it == children_.end()) return;
    const QMatrix4x4 world = preservingWorldTransform ? child->worldTransformMatrix() : QMatrix4x4();
    children_.erase(it);
    child->parent_.reset();
    if (preservingWorldTransform) child->transform_ = Transform::fromMatrix(world);
}

void Entity::removeFromParent(bool preservingWorldTransform) {
    if (const auto p = parent()) p->removeChild(shared_from_this(), preservingWorldTransform);
}

std::shared_ptr<Entity> Entity::findEntity(const std::string& name) {
    if (name_ == name) return shared_from_this();
    for (const auto& child : children_)
        if (auto found = child->findEntity(name)) return found;
    return nullptr;
}

QMatrix4x4 Entity::worldTransformMatrix() const {
    QMatrix4x4 m = transform_.matrix();
    for (auto p = parent_.lock(); p; p = p->parent_.lock()) m = p->transform_.matrix() * m;
    return m;
}

QMatrix4x4 Entity::transformMatrix(const Entity* reference) const {
    return reference ? worldInverseOf(reference) * worldTransformMatrix() : worldTransformMatrix();
}

void Entity::setTransformMatrix(const QMatrix4x4& matrix, const Entity* reference) {
    const QMatrix4x4 world = reference ? worldOf(reference) * matrix : matrix;
    transform_ = Transform::fromMatrix(worldInverseOf(parent_.lock().get()) * world);
}

QVector3D Entity::position(const Entity* reference) const {
    return transformMatrix(reference).column(3).toVector3D();
}

void Entity::setPosition(const QVector3D& position, const Entity* reference) {
    const QVector3D world = reference ? worldOf(reference).map(position) : position;
    transform_.translation = worldInverseOf(parent_.lock().get()).map(world);
}

QQuaternion Entity::orientation(const Entity* reference) const {
    return Transform::fromMatrix(transformMatrix(reference)).rotation;
}

void Entity::setOrientation(const QQuaternion& orientation, const Entity* reference) {
    const QQuaternion world = reference ? reference->orientation(nullptr) * orientation : orientation;
    const auto p = parent_.lock();
    const QQuaternion local = p ? p->orientation(nullptr).conjugated() * world : world;
    transform_.rotation = local.normalized();
}

QVector3D Entity::convertPositionTo(const QVector3D& position, const Entity* target) const {
    return worldInverseOf(target).map(worldTransformMatrix().map(position));
}

QVector3D Entity::convertPositionFrom(const QVector3D& position, const Entity* source) const {
    return worldTransformMatrix().inverted().map(worldOf(source).map(position));
}

QVector3D Entity::convertDirectionTo(const QVector3D& direction, const Entity* target) const {
    return worldInverseOf(target).mapVector(worldTransformMatrix().mapVector(direction));
}

void Entity::setAnchoring(std::optional<AnchoringComponent> anchoring) {
    anchoring_ = std::move(anchoring);
    if (anchoring_ && anchoring_->kind() != AnchoringComponent::Kind::world) {
        anchored_ = false;
        anchorIdentifier_.reset();
    }
}

void Entity::generateCollisionShapes(bool recursive) {
    if (model_ && model_->mesh && !model_->bounds().isEmpty)
        collision_ = CollisionComponent{{ShapeResource::fromBounds(model_->bounds())}};
    if (recursive)
        for (const auto& child : children_) child->generateCollisionShapes(true);
}

BoundingBox Entity::visualBounds(bool recursive, const Entity* reference) const {
    BoundingBox box;
    if (model_ && model_->mesh) box.add(model_->bounds().transformed(transformMatrix(reference)));
    if (recursive)
        for (const auto& child : children_) box.add(child->visualBounds(true, reference));
    return box;
}

bool Entity::isEnabledInHierarchy() const {
    if (!enabled_) return false;
    for (auto p = parent_.lock(); p; p = p->parent_.lock())
        if (!p->enabled_) return false;
    return true;
}

const Entity* Entity::root() const {
    const Entity* entity = this;
    for (auto p = parent_.lock(); p; p = p->parent_.lock()) entity = p.get();
    return entity; // owned by its own parent chain, which the caller keeps alive
}

bool Entity::isAnchored() const { return root()->anchored_; }

void Entity::setAnchorState(bool anchored, std::optional<QUuid> planeIdentifier) {
    assert(parent_.expired());
    anchored_ = anchored;
    anchorIdentifier_ = anchored ? planeIdentifier : std::nullopt;
}

} // namespace orvanta::reality
