#pragma once
// Axis-aligned box; an empty box contains nothing and is the identity of union.
// Units: metres. Thread: a value type.

#include <QMatrix4x4>
#include <QVector3D>

namespace orvanta::reality {

struct BoundingBox {
    QVector3D min;
    QVector3D max;
    bool isEmpty = true;

    BoundingBox() = default;
    BoundingBox(QVector3D min, QVector3D max) : min(min), max(max), isEmpty(false) {}

    QVector3D center() const { return (min + max) * 0.5f; }
    QVector3D extents() const { return isEmpty ? QVector3D() : max - min; }

    void add(const QVector3D& point);
    void add(const BoundingBox& other);
    // The box around the eight corners of this box mapped by `matrix`.
    BoundingBox transformed(const QMatrix4x4& matrix) const;

    friend bool operator==(const BoundingBox&, const BoundingBox&) = default;
};

} // namespace orvanta::reality
