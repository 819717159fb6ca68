#include "arsession/Ray.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orvanta::arsession {

std::optional<float> Ray::intersectPlane(const QVector3D& point, const QVector3D& normal) const {
    const float denominator = QVector3D::dotProduct(direction, normal);
    if (std::abs(denominator) < 1e-8f) return std::nullopt;
    const float t = QVector3D::dotProduct(point - origin, normal) / denominator;
    if (t < 0.0f) return std::nullopt;
    return t;
}

std::optional<float> Ray::intersectBox(const QVector3D& min, const QVector3D& max) const {
    float near = 0.0f;
    float far = std::numeric_limits<float>::infinity();
    for (int axis = 0; axis < 3; ++axis) {
        const float o = origin[axis];
        const float d = direction[axis];
        if (std::abs(d) < 1e-12f) {
            if (o < min[axis] || o > max[axis]) return std::nullopt;
            continue;
        }
        float t0 = (min[axis] - o) / d;
        float t1 = (max[axis] - o) / d;
        if (t0 > t1) std::swap(t0, t1);
        near = std::max(near, t0);
        far = std::min(far, t1);
        if (near > far) return std::nullopt;
    }
    return near;
}

} // namespace orvanta::arsession
