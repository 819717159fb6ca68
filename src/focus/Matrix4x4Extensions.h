#pragma once
// Helpers over 4×4 rigid transforms (column-major, column 3 holds the translation).
// Thread: pure functions over values; any thread.

#include <QMatrix4x4>
#include <QQuaternion>
#include <QVector3D>

namespace orvanta::focus {

// The first three components of the fourth column, in metres.
QVector3D translation(const QMatrix4x4& matrix);

// Replaces the first three components of the fourth column; the rest is untouched.
void setTranslation(QMatrix4x4& matrix, const QVector3D& translation);

// The rotation of the upper-left 3×3 block as a unit quaternion. The basis columns are
// normalised first, so a matrix that also scales yields its rotation alone. A degenerate
// block (a zero-length column) yields the identity.
QQuaternion orientation(const QMatrix4x4& matrix);

} // namespace orvanta::focus
