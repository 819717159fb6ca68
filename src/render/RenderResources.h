#pragma once
// The GPU-side resources of one view, shared between the nodes that use them: one custom
// geometry per imported mesh, one texture per distinct image, and the material factory.
// A resource lives as long as some node holds its handle.
// Thread: main thread.

#include "render/MaterialFactory.h"
#include "render/MeshGeometry.h"
#include "render/TextureCache.h"

#include <map>
#include <memory>

namespace orvanta::render {

class RenderResources {
public:
    using GeometryHandle = std::shared_ptr<MeshGeometry>;

    // Resources become children of `resourceParent`, a node of the scene that shows them.
    explicit RenderResources(QQuick3DObject* resourceParent);
    ~RenderResources();
    RenderResources(const RenderResources&) = delete;
    RenderResources& operator=(const RenderResources&) = delete;

    QQuick3DObject* resourceParent() const { return resourceParent_; }
    TextureCache& textures() { return textures_; }
    const MaterialFactory& materials() const { return materials_; }
    // The geometry of `mesh`, made on first use.
    GeometryHandle geometry(const std::shared_ptr<const import::ImportedMesh>& mesh);

private:
    QQuick3DObject* resourceParent_;
    TextureCache textures_;
    MaterialFactory materials_;
    std::map<const import::ImportedMesh*, std::weak_ptr<MeshGeometry>> geometries_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace orvanta::render
