#include "arsession/PlaneRaycast.h"

#include "arsession/Ray.h"

#include <cmath>

namespace orvanta::arsession {

bool PlaneRaycast::accepts(ARRaycastQuery::TargetAlignment filter, ARPlaneAnchor::Alignment alignment) {
    switch (filter) {
    case ARRaycastQuery::TargetAlignment::any: return true;
    case ARRaycastQuery::TargetAlignment::horizontal: return alignment == ARPlaneAnchor::Alignment::horizontal;
    case ARRaycastQuery::TargetAlignment::vertical: return alignment == ARPlaneAnchor::Alignment::vertical;
    }
    return false;
}

std::optional<ARRaycastResult> PlaneRaycast::hit(const ARRaycastQuery& query, const QMatrix4x4& planeToWorld,
                                                 const QVector3D& centerInPlane, std::optional<QVector2D> halfSize,
                                                 ARPlaneAnchor::Alignment alignment) {
    // The plane's frame is rigid, so its axes are unit columns and the local coordinates of a
    // point are dot products with them: no matrix inverse on this path.
    const QVector3D xAxis = planeToWorld.column(0).toVector3D();
    const QVector3D normal = planeToWorld.column(1).toVector3D();
    const QVector3D zAxis = planeToWorld.column(2).toVector3D();
    const QVector3D origin = planeToWorld.column(3).toVector3D();

    const Ray ray{query.origin, query.direction};
    const auto t = ray.intersectPlane(origin, normal);
    if (!t) return std::nullopt;
    const QVector3D point = ray.at(*t);
    if (halfSize) {
        const QVector3D offset = point - origin;
        if (std::abs(QVector3D::dotProduct(offset, xAxis) - centerInPlane.x()) > halfSize->x() ||
            std::abs(QVector3D::dotProduct(offset, zAxis) - centerInPlane.z()) > halfSize->y())
            return std::nullopt;
    }
    ARRaycastResult result;
    result.worldTransform = planeToWorld;
    result.worldTransform.setColumn(3, QVector4D(point, 1.0f));
    result.target = query.target;
    result.targetAlignment = alignment == ARPlaneAnchor::Alignment::horizontal
                                 ? ARRaycastQuery::TargetAlignment::horizontal
                                 : ARRaycastQuery::TargetAlignment::vertical;
    result.distance = *t * query.direction.length();
    return result;
}

void PlaneRaycast::existingPlanes(const ARRaycastQuery& query, const std::vector<ARPlaneAnchor>& anchors,
                                  std::vector<ARRaycastResult>& results) {
    if (query.target == ARRaycastQuery::Target::estimatedPlane) return;
    const bool bounded = query.target == ARRaycastQuery::Target::existingPlaneGeometry;
    for (const auto& anchor : anchors) {
        if (!accepts(query.targetAlignment, anchor.alignment)) continue;
        const auto halfSize =
            bounded ? std::optional<QVector2D>(QVector2D(anchor.extent.x(), anchor.extent.z()) * 0.5f) : std::nullopt;
        if (auto result = hit(query, anchor.transform, anchor.center, halfSize, anchor.alignment)) {
            result->anchor = anchor;
            results.push_back(*result);
        }
    }
}

} // namespace orvanta::arsession
