#include "scenegraph/OrbitCameraControl.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace orvanta::scenegraph {

void OrbitCameraControl::frame(const import::Bounds& bounds, float aspect) {
    const QVector3D min = bounds.empty ? QVector3D(-0.5f, -0.5f, -0.5f) : bounds.min;
    const QVector3D max = bounds.empty ? QVector3D(0.5f, 0.5f, 0.5f) : bounds.max;
    target_ = (min + max) * 0.5f;
    radius_ = std::max((max - min).length() * 0.5f, 1e-4f);
    const float horizontal = 2.0f * std::atan(std::tan(kFieldOfView / 2.0f) * std::max(aspect, 1e-3f));
    const float narrowest = std::min(kFieldOfView, horizontal);
    framedDistance_ = distance_ = radius_ / std::sin(narrowest / 2.0f);
    yaw_ = 0.0f;
    pitch_ = kFramingPitch;
}

void OrbitCameraControl::orbit(float yaw, float pitch) {
    yaw_ = std::remainder(yaw_ + yaw, 2.0f * float(M_PI));
    pitch_ = std::clamp(pitch_ + pitch, -kMaxPitch, kMaxPitch);
}

void OrbitCameraControl::zoom(float factor) {
    if (!(factor > 0.0f)) return;
    distance_ = std::clamp(distance_ / factor, framedDistance_ * 0.01f, framedDistance_ * 100.0f);
}

void OrbitCameraControl::pan(float right, float up) {
    const float visibleHeight = 2.0f * distance_ * std::tan(kFieldOfView / 2.0f);
    const QQuaternion r = rotation();
    target_ += r.rotatedVector(QVector3D(1, 0, 0)) * (right * visibleHeight) +
               r.rotatedVector(QVector3D(0, 1, 0)) * (up * visibleHeight);
}

QQuaternion OrbitCameraControl::rotation() const {
    return QQuaternion::fromEulerAngles(qRadiansToDegrees(pitch_), qRadiansToDegrees(yaw_), 0.0f);
}

QVector3D OrbitCameraControl::position() const {
    // The camera looks along its −z axis, so it sits on its +z axis from the target.
    return target_ + rotation().rotatedVector(QVector3D(0, 0, distance_));
}

QMatrix4x4 OrbitCameraControl::cameraTransform() const {
    QMatrix4x4 m;
    m.translate(position());
    m.rotate(rotation());
    return m;
}

float OrbitCameraControl::nearPlane() const { return std::max(distance_ - radius_ * 2.0f, distance_ * 0.01f); }

float OrbitCameraControl::farPlane() const { return distance_ + radius_ * 4.0f; }

} // namespace orvanta::scenegraph
