#pragma once
// What an entity shows: a mesh and one material per mesh part, drawn once or, with
// instances, once per copy.
// Thread: a value type (the mesh and the instances are shared).

#include "reality/Material.h"
#include "reality/MeshInstances.h"
#include "reality/MeshResource.h"

#include <memory>
#include <vector>

namespace orvanta::reality {

struct ModelComponent {
    std::shared_ptr<const MeshResource> mesh;
    std::vector<Material> materials;
    std::shared_ptr<const MeshInstances> instances; // null: the mesh is drawn once, as it is

    // What is drawn, in the entity's space. Contract: `mesh` is non-null.
    const BoundingBox& bounds() const { return instances ? instances->bounds() : mesh->bounds(); }
};

} // namespace orvanta::reality
