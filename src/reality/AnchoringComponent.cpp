#include "reality/AnchoringComponent.h"

namespace orvanta::reality {

bool AnchoringComponent::accepts(const arsession::ARPlaneAnchor& plane) const {
    return kind_ == Kind::plane && plane.alignment == alignment_ && classification_.accepts(plane.classification) &&
           plane.extent.x() >= minimumBounds_.x() && plane.extent.z() >= minimumBounds_.y();
}

} // namespace orvanta::reality
