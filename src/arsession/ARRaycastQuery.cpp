#include "arsession/ARRaycastQuery.h"

namespace orvanta::arsession {

std::string_view ARRaycastQuery::name(Target target) {
    switch (target) {
    case Target::existingPlaneGeometry: return "existingPlaneGeometry";
    case Target::existingPlaneInfinite: return "existingPlaneInfinite";
    case Target::estimatedPlane: return "estimatedPlane";
    }
    return {};
}

} // namespace orvanta::arsession
