#pragma once
// The device camera of one frame: its pose, tracking quality and lens, and the pure maths
// that maps between world points and screen points.
//
// Conventions: the camera looks along its local −z axis, +y is up on screen, +x right.
// Screen points are in the view's points, origin at the top-left corner, y down.
// Units: metres, radians. Thread: a value type, usable on any thread.

#include "arsession/Ray.h"
#include "arsession/TrackingState.h"

#include <QMatrix4x4>
#include <QPointF>
#include <QSizeF>
#include <QVector3D>

#include <optional>

namespace orvanta::arsession {

class ARCamera {
public:
    QMatrix4x4 transform;                           // camera to world
    TrackingState trackingState = TrackingState::notAvailable();
    float verticalFieldOfView = 1.0471976f;          // radians (60°), across the viewport height

    QVector3D position() const { return transform.column(3).toVector3D(); }
    // Unit vector the camera looks along, in world space (the −z axis of `transform`).
    QVector3D forward() const { return -transform.column(2).toVector3D().normalized(); }

    // Perspective projection for a viewport of `viewportSize` points (aspect = width / height).
    QMatrix4x4 projectionMatrix(QSizeF viewportSize, float zNear = 0.001f, float zFar = 1000.0f) const;
    // World ray through `screenPoint`: origin at the camera, unit direction. The centre of
    // the viewport gives forward(). Precondition: a non-empty viewport.
    Ray ray(QPointF screenPoint, QSizeF viewportSize) const;
    // Screen point of `worldPoint`; none when the point lies behind the camera.
    std::optional<QPointF> projectPoint(const QVector3D& worldPoint, QSizeF viewportSize) const;

    friend bool operator==(const ARCamera& a, const ARCamera& b) {
        return a.transform == b.transform && a.trackingState == b.trackingState &&
               a.verticalFieldOfView == b.verticalFieldOfView;
    }
};

} // namespace orvanta::arsession
