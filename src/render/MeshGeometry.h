#pragma once
// An imported triangle mesh as Quick 3D custom geometry: one interleaved vertex stream
// (position, and normal, tangent frame, both texture-coordinate sets and vertex colour where
// the mesh has them) and the
// mesh's own 32-bit index buffer, viewed in place, with one subset per material part.
// Thread: main thread (a Quick 3D object).

#include "import/ImportedScene.h"

#include <QQuick3DGeometry>

#include <memory>

namespace orvanta::render {

class MeshGeometry : public QQuick3DGeometry {
    Q_OBJECT

public:
    // Keeps `mesh` alive: the index buffer is a view over its indices.
    explicit MeshGeometry(std::shared_ptr<const import::ImportedMesh> mesh, QQuick3DObject* parent = nullptr);

    const import::ImportedMesh& mesh() const { return *mesh_; }
    // The number of material parts (at least one).
    int partCount() const { return subsetCount() > 0 ? subsetCount() : 1; }

private:
    std::shared_ptr<const import::ImportedMesh> mesh_;
};

} // namespace orvanta::render
