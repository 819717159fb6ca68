#pragma once
// The device camera of one frame: its pose, tracking quality and lens, and the pure maths
// that maps between world points and screen points.
//
// Conventions: the camera looks along its local −z axis, +y is up on screen, +x right.
// Screen points are in the view's points, origin at the top-left corner, y down.
//
// Without a camera image (the simulated world, replays of it) the view shows
// verticalFieldOfView across its height, centred. With a camera image the image is
// aspect-filled into the view: scaled to cover it, centred, the overflow cropped, the way a
// phone shows its camera; the projection then follows the intrinsics (an off-centre
// principal point included) through that crop, so a world point lands on the view point where
// the picture shows it. Lens distortion is not modelled here: the picture is drawn as taken.
// Units: metres, radians. Thread: a value type, usable on any thread.

#include "arsession/CameraIntrinsics.h"
#include "arsession/Ray.h"
#include "arsession/TrackingState.h"

#include <QMatrix4x4>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QVector3D>

#include <optional>

namespace orvanta::arsession {

class ARCamera {
public:
    QMatrix4x4 transform;                           // camera to world
    TrackingState trackingState = TrackingState::notAvailable();
    float verticalFieldOfView = 1.0471976f;          // radians (60°), across the viewport height
    CameraIntrinsics intrinsics; // of the camera image; invalid when there is none
    QSize imageResolution;       // pixels of the camera image; empty when there is none

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
    // The part of the camera image the view shows, in image coordinates whose origin is the
    // image's top-left corner (so the whole image is 0 … width, 0 … height; a pixel centre
    // is at +0.5). The viewport itself, at the origin, when there is no camera image.
    QRectF visibleImageRect(QSizeF viewportSize) const;
    // Whether frames carry a camera image that the projection follows.
    bool hasImage() const { return !imageResolution.isEmpty() && intrinsics.isValid(); }

    friend bool operator==(const ARCamera& a, const ARCamera& b) {
        return a.transform == b.transform && a.trackingState == b.trackingState &&
               a.verticalFieldOfView == b.verticalFieldOfView && a.intrinsics == b.intrinsics &&
               a.imageResolution == b.imageResolution;
    }

private:
    // The lens as seen in the view: focal lengths and principal point in view points, the
    // principal point measured from the view's top-left corner.
    struct ViewLens {
        float fx, fy, cx, cy;
    };
    ViewLens viewLens(QSizeF viewportSize) const;
};

} // namespace orvanta::arsession
