#pragma once
// Ray casts against plane anchors, shared by the backends. Pure functions.
// Units: metres. Thread: any.

#include "arsession/ARPlaneAnchor.h"
#include "arsession/ARRaycastQuery.h"
#include "arsession/ARRaycastResult.h"

#include <QVector2D>

#include <optional>
#include <vector>

namespace orvanta::arsession {

class PlaneRaycast {
public:
    // Whether a surface of `alignment` passes the query's alignment filter.
    static bool accepts(ARRaycastQuery::TargetAlignment filter, ARPlaneAnchor::Alignment alignment);

    // The hit of the query's ray on the plane of `planeToWorld` (y along the normal), with
    // the plane's orientation; when `halfSize` is given the hit must lie within ± halfSize
    // (x, z) of `centerInPlane`. None on a miss. `target` and `alignment` are copied into the result.
    static std::optional<ARRaycastResult> hit(const ARRaycastQuery& query, const QMatrix4x4& planeToWorld,
                                              const QVector3D& centerInPlane, std::optional<QVector2D> halfSize,
                                              ARPlaneAnchor::Alignment alignment);

    // Hits of an existing-plane query (geometry or infinite) on `anchors`, appended to `results`.
    static void existingPlanes(const ARRaycastQuery& query, const std::vector<ARPlaneAnchor>& anchors,
                               std::vector<ARRaycastResult>& results);
};

} // namespace orvanta::arsession
