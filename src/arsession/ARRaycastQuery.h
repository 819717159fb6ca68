#pragma once
// A ray-cast request: a world ray, the kind of surface it may hit and the surface
// orientation it accepts.
// Units: metres. Thread: a value type, usable on any thread.

#include <QVector3D>

#include <string_view>

namespace orvanta::arsession {

class ARRaycastQuery {
public:
    enum class Target {
        existingPlaneGeometry, // detected planes, within their detected area
        existingPlaneInfinite, // detected planes, extended without bounds
        estimatedPlane,        // surfaces the tracker believes exist, before (or without) a plane anchor
    };
    enum class TargetAlignment { horizontal, vertical, any };

    ARRaycastQuery(QVector3D origin, QVector3D direction, Target target, TargetAlignment alignment)
        : origin(origin), direction(direction), target(target), targetAlignment(alignment) {}

    QVector3D origin;
    QVector3D direction; // world space; need not be unit length
    Target target;
    TargetAlignment targetAlignment;

    static std::string_view name(Target target);
};

} // namespace orvanta::arsession
