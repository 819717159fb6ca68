#pragma once
// One ray-cast hit. `worldTransform` places the hit point with the y axis along the surface
// normal (for a plane hit, the plane anchor's orientation). `anchor` is the plane that was
// hit for existing-plane targets and none for estimated planes.
// Units: metres. Thread: a value type, usable on any thread.

#include "arsession/ARPlaneAnchor.h"
#include "arsession/ARRaycastQuery.h"

#include <QMatrix4x4>

#include <optional>

namespace orvanta::arsession {

struct ARRaycastResult {
    QMatrix4x4 worldTransform;
    ARRaycastQuery::Target target = ARRaycastQuery::Target::estimatedPlane;
    ARRaycastQuery::TargetAlignment targetAlignment = ARRaycastQuery::TargetAlignment::horizontal;
    std::optional<ARPlaneAnchor> anchor;
    float distance = 0.0f; // metres from the query origin, for ordering

    QVector3D position() const { return worldTransform.column(3).toVector3D(); }

    friend bool operator==(const ARRaycastResult& a, const ARRaycastResult& b) {
        return a.worldTransform == b.worldTransform && a.target == b.target &&
               a.targetAlignment == b.targetAlignment && a.anchor == b.anchor && a.distance == b.distance;
    }
};

} // namespace orvanta::arsession
