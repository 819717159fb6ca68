#pragma once
// A collision shape: a box given by its centre and half extents in the owning entity's space.
// Units: metres. Thread: a value type.

#include "reality/BoundingBox.h"

#include <QVector3D>

namespace orvanta::reality {

struct ShapeResource {
    QVector3D center;
    QVector3D halfExtents;

    static ShapeResource generateBox(const QVector3D& size) { return {QVector3D(), size * 0.5f}; }
    static ShapeResource fromBounds(const BoundingBox& box) { return {box.center(), box.extents() * 0.5f}; }
    ShapeResource offsetBy(const QVector3D& translation) const { return {center + translation, halfExtents}; }

    friend bool operator==(const ShapeResource&, const ShapeResource&) = default;
};

} // namespace orvanta::reality
