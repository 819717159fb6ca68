#include "arsession/camera/PoseFilter.h"

#include <QGenericMatrix>

#include <cmath>

namespace orvanta::arsession::camera {

namespace {

// Weight of the new sample of a first-order low-pass filter with cut-off `cutoff` Hz.
float smoothing(double cutoff, double interval) {
    const double tau = 1.0 / (2.0 * M_PI * cutoff);
    return float(1.0 / (1.0 + tau / interval));
}

QQuaternion rotationOf(const QMatrix4x4& pose) { return QQuaternion::fromRotationMatrix(pose.toGenericMatrix<3, 3>()); }

} // namespace

QMatrix4x4 PoseFilter::filter(const QMatrix4x4& pose, double time) {
    const QVector3D position = pose.column(3).toVector3D();
    QQuaternion rotation = rotationOf(pose);
    if (!started_) {
        started_ = true;
        time_ = time;
        position_ = position;
        rotation_ = rotation;
        velocity_ = QVector3D();
        angularSpeed_ = 0.0;
        return pose;
    }
    const double interval = time - time_;
    if (interval <= 0.0) return current();
    time_ = time;
    // The same rotation has two quaternions; take the one on the current side.
    if (QQuaternion::dotProduct(rotation, rotation_) < 0.0f) rotation = -rotation;

    const float derivativeWeight = smoothing(settings_.derivativeCutoff, interval);
    velocity_ += ((position - position_) / float(interval) - velocity_) * derivativeWeight;
    const QQuaternion delta = rotation_.conjugated() * rotation;
    const double angle = 2.0 * std::acos(std::clamp(double(std::abs(delta.scalar())), 0.0, 1.0));
    angularSpeed_ += (angle / interval - angularSpeed_) * double(derivativeWeight);

    position_ += (position - position_) *
                 smoothing(settings_.minimumCutoff + settings_.positionBeta * double(velocity_.length()), interval);
    rotation_ = QQuaternion::slerp(
        rotation_, rotation,
        smoothing(settings_.minimumCutoff + settings_.rotationBeta * angularSpeed_, interval)).normalized();

    return current();
}

QMatrix4x4 PoseFilter::current() const {
    QMatrix4x4 filtered;
    filtered.translate(position_);
    filtered.rotate(rotation_);
    return filtered;
}

} // namespace orvanta::arsession::camera
