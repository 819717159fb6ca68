#pragma once
// A half-line in some space and the intersection maths used by ray casts and touch hit
// tests. Pure functions over value types.
// Units: metres. Thread: a value type, usable on any thread.

#include <QVector3D>

#include <optional>

namespace orvanta::arsession {

struct Ray {
    QVector3D origin;
    QVector3D direction; // need not be unit length; distances are in multiples of it

    QVector3D at(float t) const { return origin + direction * t; }

    // Parameter t ≥ 0 where the ray meets the plane through `point` with normal `normal`;
    // none when the ray runs parallel to the plane or the plane lies behind the origin.
    std::optional<float> intersectPlane(const QVector3D& point, const QVector3D& normal) const;
    // Entry parameter t ≥ 0 into the axis-aligned box [min, max] (0 when the origin is
    // inside); none on a miss. Slab method; a zero direction component is handled.
    std::optional<float> intersectBox(const QVector3D& min, const QVector3D& max) const;
};

} // namespace orvanta::arsession
