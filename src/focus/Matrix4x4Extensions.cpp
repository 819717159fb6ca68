#include "focus/Matrix4x4Extensions.h"

#include <QGenericMatrix>

namespace orvanta::focus {

QVector3D translation(const QMatrix4x4& matrix) {
    return matrix.column(3).toVector3D();
}

void setTranslation(QMatrix4x4& matrix, const QVector3D& translation) {
    matrix.setColumn(3, QVector4D(translation, matrix(3, 3)));
}

QQuaternion orientation(const QMatrix4x4& matrix) {
    QMatrix3x3 rotation;
    for (int column = 0; column < 3; ++column) {
        const QVector3D axis = matrix.column(column).toVector3D();
        const float length = axis.length();
        if (length == 0.0f) return QQuaternion();
        for (int row = 0; row < 3; ++row) rotation(row, column) = axis[row] / length;
    }
    return QQuaternion::fromRotationMatrix(rotation).normalized();
}

} // namespace orvanta::focus
