#include "reality/Transform.h"

#include <QGenericMatrix>

#include <cmath>

namespace orvanta::reality {

QMatrix4x4 Transform::matrix() const {
    QMatrix4x4 m;
    m.translate(translation);
    m.rotate(rotation);
    m.scale(scale);
    return m;
}

Transform Transform::fromMatrix(const QMatrix4x4& matrix) {
    QVector3D axes[3] = {matrix.column(0).toVector3D(), matrix.column(1).toVector3D(), matrix.column(2).toVector3D()};
    QVector3D scale(axes[0].length(), axes[1].length(), axes[2].length());
    if (QVector3D::dotProduct(QVector3D::crossProduct(axes[0], axes[1]), axes[2]) < 0.0f) scale[0] = -scale[0];

    QMatrix3x3 rotation;
    for (int c = 0; c < 3; ++c) {
        // A collapsed axis carries no rotation; the unit axis stands in for it.
        const QVector3D axis = std::abs(scale[c]) > 1e-12f ? axes[c] / scale[c] : QVector3D(c == 0, c == 1, c == 2);
        for (int r = 0; r < 3; ++r) rotation(r, c) = axis[r];
    }
    return Transform(scale, QQuaternion::fromRotationMatrix(rotation).normalized(), matrix.column(3).toVector3D());
}

} // namespace orvanta::reality
