#pragma once
// What an entity shows: a mesh and one material per mesh part.
// Thread: a value type (the mesh is shared).

#include "reality/Material.h"
#include "reality/MeshResource.h"

#include <memory>
#include <vector>

namespace orvanta::reality {

struct ModelComponent {
    std::shared_ptr<const MeshResource> mesh;
    std::vector<Material> materials;
};

} // namespace orvanta::reality
