#pragma once
// Immutable triangle mesh shared by the entities that show it: imported data is shared, not
// copied. Each subset (part) of the mesh draws with the model component's material of the
// same index.
// Units: metres. Thread: immutable after creation, shareable between threads.

#include "import/ImportedScene.h"
#include "reality/BoundingBox.h"

#include <memory>

namespace orvanta::reality {

class MeshResource {
public:
    explicit MeshResource(std::shared_ptr<const import::ImportedMesh> mesh);

    const import::ImportedMesh& mesh() const { return *mesh_; }
    const std::shared_ptr<const import::ImportedMesh>& sharedMesh() const { return mesh_; }
    // Bounds of the vertices in the mesh's own space.
    const BoundingBox& bounds() const { return bounds_; }
    std::size_t partCount() const { return mesh_->subsets.empty() ? 1 : mesh_->subsets.size(); }

    // A flat rectangle in the x–z plane facing +y, centred on the origin, `width` along x and
    // `depth` along z, with rounded corners of `cornerRadius` (clamped to half the shorter edge).
    static std::shared_ptr<const MeshResource> generatePlane(float width, float depth, float cornerRadius = 0.0f);
    // A box centred on the origin (`width` x, `height` y, `depth` z), flat-shaded.
    static std::shared_ptr<const MeshResource> generateBox(float width, float height, float depth);
    static std::shared_ptr<const MeshResource> generateBox(float size) { return generateBox(size, size, size); }

private:
    std::shared_ptr<const import::ImportedMesh> mesh_;
    BoundingBox bounds_;
};

} // namespace orvanta::reality
