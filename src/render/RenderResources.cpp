#include "render/RenderResources.h"

namespace orvanta::render {

RenderResources::RenderResources(QQuick3DObject* resourceParent)
    : resourceParent_(resourceParent), textures_(resourceParent), materials_(textures_) {}

RenderResources::~RenderResources() { *alive_ = false; }

RenderResources::GeometryHandle RenderResources::geometry(const std::shared_ptr<const import::ImportedMesh>& mesh) {
    const import::ImportedMesh* key = mesh.get();
    if (const auto it = geometries_.find(key); it != geometries_.end())
        if (auto found = it->second.lock()) return found;
    auto* geometry = new MeshGeometry(mesh);
    geometry->setParentItem(resourceParent_);
    // The geometry holds the mesh, so its address stays unique while the entry exists.
    GeometryHandle handle(geometry, [this, alive = alive_, key](MeshGeometry* g) {
        if (*alive) geometries_.erase(key);
        g->deleteLater();
    });
    geometries_[key] = handle;
    return handle;
}

} // namespace orvanta::render
