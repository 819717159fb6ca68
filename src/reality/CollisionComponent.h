#pragma once
// The shapes that touches and ray hits test against.
// Thread: a value type.

#include "reality/ShapeResource.h"

#include <vector>

namespace orvanta::reality {

struct CollisionComponent {
    std::vector<ShapeResource> shapes;
};

} // namespace orvanta::reality
