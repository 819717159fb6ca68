#include "scenegraph/SceneNode.h"

#include <QQuaternion>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace orvanta::scenegraph {

namespace {

constexpr float radiansToDegrees = 57.29577951308232f;

QQuaternion rotationFromEuler(const QVector3D& radians) {
    // Qt applies roll (Z), then pitch (X), then yaw (Y), in degrees.
    return QQuaternion::fromEulerAngles(radians * radiansToDegrees);
}

void collect(const SceneNode& node, const QMatrix4x4& toSpace, import::Bounds& bounds) {
    const QMatrix4x4 nodeToSpace = toSpace * node.transform();
    if (const auto& geometry = node.geometry()) {
        const auto& positions = geometry->importedMesh().positions;
        if (geometry->instances) {
            import::Bounds mesh;
            for (const QVector3D& p : positions) mesh.add(p);
            for (const QMatrix4x4& copy : geometry->instances->transforms) bounds.add(mesh, nodeToSpace * copy);
        } else {
            for (const QVector3D& p : positions) bounds.add(nodeToSpace.map(p));
        }
    }
    for (const auto& child : node.childNodes()) collect(*child, nodeToSpace, bounds);
}

} // namespace

std::shared_ptr<SceneNode> SceneNode::make(std::string name) {
    return std::make_shared<SceneNode>(Key{}, std::move(name));
}

QMatrix4x4 SceneNode::transform() const {
    QMatrix4x4 m;
    m.translate(position_);
    m.rotate(rotationFromEuler(eulerAngles_));
    m.scale(scale_);
    return m;
}

void SceneNode::setTransform(const QMatrix4x4& matrix) {
    position_ = matrix.column(3).toVector3D();
    const QVector3D x = matrix.column(0).toVector3D();
    const QVector3D y = matrix.column(1).toVector3D();
    const QVector3D z = matrix.column(2).toVector3D();
    const float handedness = QVector3D::dotProduct(QVector3D::crossProduct(x, y), z) < 0 ? -1.0f : 1.0f;
    scale_ = {x.length() * handedness, y.length(), z.length()};
    QMatrix3x3 rotation;
    for (int row = 0; row < 3; ++row) {
        rotation(row, 0) = scale_.x() != 0 ? x[row] / scale_.x() : 0;
        rotation(row, 1) = scale_.y() != 0 ? y[row] / scale_.y() : 0;
        rotation(row, 2) = scale_.z() != 0 ? z[row] / scale_.z() : 0;
    }
    eulerAngles_ = QQuaternion::fromRotationMatrix(rotation).toEulerAngles() / radiansToDegrees;
}

QMatrix4x4 SceneNode::worldTransform() const {
    const auto p = parent();
    return p ? p->worldTransform() * transform() : transform();
}

void SceneNode::addChildNode(const std::shared_ptr<SceneNode>& child) {
    child->removeFromParentNode();
    child->parent_ = weak_from_this();
    children_.push_back(child);
}

void SceneNode::removeFromParentNode() {
    const auto p = parent();
    if (!p) return;
    auto self = shared_from_this(); // keeps this node alive while it leaves the list
    auto& siblings = p->children_;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), self), siblings.end());
    parent_.reset();
}

import::Bounds SceneNode::boundingBox() const {
    import::Bounds bounds;
    collect(*this, QMatrix4x4(), bounds);
    return bounds;
}

std::string SceneNode::description() const {
    std::ostringstream out;
    out << "<SceneNode: " << static_cast<const void*>(this);
    if (!name_.empty()) out << " '" << name_ << "'";
    out << " | " << children_.size() << (children_.size() == 1 ? " child>" : " children>");
    return out.str();
}

} // namespace orvanta::scenegraph
