#include "arsession/ARFrame.h"

namespace orvanta::arsession {

const ARPlaneAnchor* ARFrame::anchor(const QUuid& identifier) const {
    for (const auto& a : anchors)
        if (a.identifier == identifier) return &a;
    return nullptr;
}

} // namespace orvanta::arsession
