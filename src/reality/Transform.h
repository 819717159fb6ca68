#pragma once
// A scale, then a rotation, then a translation: the local transform of an entity.
// Units: metres; the rotation is a unit quaternion. Thread: a value type.

#include <QMatrix4x4>
#include <QQuaternion>
#include <QVector3D>

namespace orvanta::reality {

struct Transform {
    QVector3D scale{1.0f, 1.0f, 1.0f};
    QQuaternion rotation; // identity
    QVector3D translation;

    Transform() = default;
    Transform(QVector3D scale, QQuaternion rotation, QVector3D translation)
        : scale(scale), rotation(rotation), translation(translation) {}

    // T · R · S as a matrix.
    QMatrix4x4 matrix() const;
    // Splits an affine matrix into translation, rotation and (positive or mirrored) scale.
    // Shear, which these three cannot express, is dropped; a mirrored matrix gets a negative x scale.
    static Transform fromMatrix(const QMatrix4x4& matrix);

    friend bool operator==(const Transform&, const Transform&) = default;
};

} // namespace orvanta::reality
