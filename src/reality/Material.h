#pragma once
// Any material a model component can carry.
// Thread: a value type.

#include "reality/PhysicallyBasedMaterial.h"
#include "reality/SimpleMaterial.h"
#include "reality/UnlitMaterial.h"

#include <variant>

namespace orvanta::reality {

using Material = std::variant<PhysicallyBasedMaterial, SimpleMaterial, UnlitMaterial>;

} // namespace orvanta::reality
