#pragma once
// A node of the 3D viewer's scene graph: a name, a local transform (position, Euler angles,
// scale), optional geometry and camera, and child nodes. Adding a node that already has a
// parent moves it.
// Thread: main thread once the node is in a shown scene; any single thread before that.

#include "import/ImportedScene.h"

#include <QMatrix4x4>
#include <QVector3D>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::scenegraph {

// What a node draws: one mesh of an imported scene, with that scene's materials, once or,
// with instances, once per copy.
struct SceneGeometry {
    std::shared_ptr<const import::ImportedScene> source;
    int mesh = -1;
    std::shared_ptr<const import::InstanceTable> instances; // null: drawn once; else copies in the node's space

    const import::ImportedMesh& importedMesh() const { return source->meshes[static_cast<std::size_t>(mesh)]; }
};

struct SceneCamera {
    float fieldOfViewDegrees = 60.0f;
    float zNear = 0.01f;
    float zFar = 100.0f;
};

class SceneNode : public std::enable_shared_from_this<SceneNode> {
    struct Key {
        explicit Key() = default;
    };

public:
    static std::shared_ptr<SceneNode> make(std::string name = {});
    SceneNode(Key, std::string name) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }

    QVector3D position() const { return position_; }
    void setPosition(const QVector3D& position) { position_ = position; }
    // Rotation in radians about X (pitch), Y (yaw) and Z (roll), applied roll first, then
    // pitch, then yaw.
    QVector3D eulerAngles() const { return eulerAngles_; }
    void setEulerAngles(const QVector3D& angles) { eulerAngles_ = angles; }
    QVector3D scale() const { return scale_; }
    void setScale(const QVector3D& scale) { scale_ = scale; }
    // The local transform as a matrix; setting it decomposes into position, angles, scale.
    QMatrix4x4 transform() const;
    void setTransform(const QMatrix4x4& matrix);
    // This node's transform relative to the root of its tree.
    QMatrix4x4 worldTransform() const;

    const std::optional<SceneGeometry>& geometry() const { return geometry_; }
    void setGeometry(std::optional<SceneGeometry> geometry) {
        geometry_ = std::move(geometry);
        ++geometryRevision_;
    }
    // Counts the geometry changes, so that a renderer sees new geometry without comparing it.
    std::uint64_t geometryRevision() const { return geometryRevision_; }
    const std::optional<SceneCamera>& camera() const { return camera_; }
    void setCamera(std::optional<SceneCamera> camera) { camera_ = camera; }

    std::shared_ptr<SceneNode> parent() const { return parent_.lock(); }
    const std::vector<std::shared_ptr<SceneNode>>& childNodes() const { return children_; }
    // Appends `child`, taking it from its former parent if it had one.
    void addChildNode(const std::shared_ptr<SceneNode>& child);
    void removeFromParentNode();

    // Bounds of this node's and its descendants' geometry in this node's parent space.
    import::Bounds boundingBox() const;
    // A short rendering for log lines: <SceneNode: 0x... 'name' | N children>
    std::string description() const;

private:
    std::string name_;
    QVector3D position_;
    QVector3D eulerAngles_;
    QVector3D scale_{1.0f, 1.0f, 1.0f};
    std::optional<SceneGeometry> geometry_;
    std::uint64_t geometryRevision_ = 0;
    std::optional<SceneCamera> camera_;
    std::weak_ptr<SceneNode> parent_;
    std::vector<std::shared_ptr<SceneNode>> children_;
};

} // namespace orvanta::scenegraph
