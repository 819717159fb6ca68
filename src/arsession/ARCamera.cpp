#include "arsession/ARCamera.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace orvanta::arsession {

namespace {

// Scale of the aspect fill and the view position of the image's top-left corner.
struct Fill {
    float scale;
    QPointF origin;
};

Fill aspectFill(QSize image, QSizeF viewport) {
    const float scale = float(std::max(viewport.width() / image.width(), viewport.height() / image.height()));
    return {scale, QPointF((viewport.width() - image.width() * scale) * 0.5,
                           (viewport.height() - image.height() * scale) * 0.5)};
}

} // namespace

ARCamera::ViewLens ARCamera::viewLens(QSizeF viewportSize) const {
    assert(!viewportSize.isEmpty());
    if (!hasImage()) {
        const float focal = float(viewportSize.height() * 0.5) / std::tan(verticalFieldOfView * 0.5f);
        return {focal, focal, float(viewportSize.width() * 0.5), float(viewportSize.height() * 0.5)};
    }
    const Fill fill = aspectFill(imageResolution, viewportSize);
    // OpenCV's pixel (0, 0) is a pixel centre: the image's corner lies half a pixel before it.
    return {intrinsics.fx * fill.scale, intrinsics.fy * fill.scale,
            float(fill.origin.x()) + (intrinsics.cx + 0.5f) * fill.scale,
            float(fill.origin.y()) + (intrinsics.cy + 0.5f) * fill.scale};
}

QMatrix4x4 ARCamera::projectionMatrix(QSizeF viewportSize, float zNear, float zFar) const {
    const ViewLens lens = viewLens(viewportSize);
    const float width = float(viewportSize.width()), height = float(viewportSize.height());
    // Clip x / w = 2 fx / width · x / −z + (2 cx / width − 1), likewise y (upwards), and
    // OpenGL's depth range.
    return QMatrix4x4(2.0f * lens.fx / width, 0.0f, 1.0f - 2.0f * lens.cx / width, 0.0f,
                      0.0f, 2.0f * lens.fy / height, 2.0f * lens.cy / height - 1.0f, 0.0f,
                      0.0f, 0.0f, -(zFar + zNear) / (zFar - zNear), -2.0f * zFar * zNear / (zFar - zNear),
                      0.0f, 0.0f, -1.0f, 0.0f);
}

Ray ARCamera::ray(QPointF screenPoint, QSizeF viewportSize) const {
    const ViewLens lens = viewLens(viewportSize);
    const QVector3D local((float(screenPoint.x()) - lens.cx) / lens.fx, (lens.cy - float(screenPoint.y())) / lens.fy,
                          -1.0f);
    return {position(), transform.mapVector(local).normalized()};
}

std::optional<QPointF> ARCamera::projectPoint(const QVector3D& worldPoint, QSizeF viewportSize) const {
    const QVector3D local = transform.inverted().map(worldPoint);
    if (local.z() >= 0.0f) return std::nullopt;
    const ViewLens lens = viewLens(viewportSize);
    const float depth = -local.z();
    return QPointF(lens.cx + lens.fx * local.x() / depth, lens.cy - lens.fy * local.y() / depth);
}

QRectF ARCamera::visibleImageRect(QSizeF viewportSize) const {
    assert(!viewportSize.isEmpty());
    if (!hasImage()) return QRectF(QPointF(0, 0), viewportSize);
    const Fill fill = aspectFill(imageResolution, viewportSize);
    return QRectF(-fill.origin / fill.scale, viewportSize / fill.scale);
}

} // namespace orvanta::arsession
