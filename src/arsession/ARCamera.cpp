#include "arsession/ARCamera.h"

#include <QtMath>

#include <cassert>
#include <cmath>

namespace orvanta::arsession {

namespace {

float aspect(QSizeF viewport) { return float(viewport.width() / viewport.height()); }

// Half the viewport height, in view-space units at distance 1.
float halfHeightAtUnitDistance(float verticalFieldOfView) { return std::tan(verticalFieldOfView * 0.5f); }

} // namespace

QMatrix4x4 ARCamera::projectionMatrix(QSizeF viewportSize, float zNear, float zFar) const {
    assert(!viewportSize.isEmpty());
    QMatrix4x4 projection;
    projection.perspective(qRadiansToDegrees(verticalFieldOfView), aspect(viewportSize), zNear, zFar);
    return projection;
}

Ray ARCamera::ray(QPointF screenPoint, QSizeF viewportSize) const {
    assert(!viewportSize.isEmpty());
    const float halfHeight = halfHeightAtUnitDistance(verticalFieldOfView);
    const float halfWidth = halfHeight * aspect(viewportSize);
    // Normalised device coordinates: −1 … 1, y up.
    const float x = float(screenPoint.x() / viewportSize.width()) * 2.0f - 1.0f;
    const float y = 1.0f - float(screenPoint.y() / viewportSize.height()) * 2.0f;
    const QVector3D local(x * halfWidth, y * halfHeight, -1.0f);
    const QVector3D direction = transform.mapVector(local).normalized();
    return {position(), direction};
}

std::optional<QPointF> ARCamera::projectPoint(const QVector3D& worldPoint, QSizeF viewportSize) const {
    assert(!viewportSize.isEmpty());
    const QVector3D local = transform.inverted().map(worldPoint);
    if (local.z() >= 0.0f) return std::nullopt;
    const float halfHeight = halfHeightAtUnitDistance(verticalFieldOfView);
    const float halfWidth = halfHeight * aspect(viewportSize);
    const float x = local.x() / (-local.z() * halfWidth);
    const float y = local.y() / (-local.z() * halfHeight);
    return QPointF((x + 1.0f) * 0.5f * viewportSize.width(), (1.0f - y) * 0.5f * viewportSize.height());
}

} // namespace orvanta::arsession
