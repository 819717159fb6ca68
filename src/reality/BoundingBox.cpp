#include "reality/BoundingBox.h"

namespace orvanta::reality {

void BoundingBox::add(const QVector3D& point) {
    if (isEmpty) {
        min = max = point;
        isEmpty = false;
        return;
    }
    for (int i = 0; i < 3; ++i) {
        min[i] = std::min(min[i], point[i]);
        max[i] = std::max(max[i], point[i]);
    }
}

void BoundingBox::add(const BoundingBox& other) {
    if (other.isEmpty) return;
    add(other.min);
    add(other.max);
}

BoundingBox BoundingBox::transformed(const QMatrix4x4& matrix) const {
    BoundingBox result;
    if (isEmpty) return result;
    for (int corner = 0; corner < 8; ++corner)
        result.add(matrix.map(QVector3D(corner & 1 ? max.x() : min.x(), corner & 2 ? max.y() : min.y(),
                                        corner & 4 ? max.z() : min.z())));
    return result;
}

} // namespace orvanta::reality
