#include "focus/FocusMath.h"

#include <cassert>
#include <cmath>
#include <numbers>

namespace orvanta::focus {

namespace {
constexpr float kQuarterTurn = std::numbers::pi_v<float> / 2.0f;
constexpr float kEighthTurn = std::numbers::pi_v<float> / 4.0f;

QQuaternion aboutY(float radians) {
    return QQuaternion(std::cos(radians / 2.0f), 0.0f, std::sin(radians / 2.0f), 0.0f);
}
QQuaternion aboutX(float radians) {
    return QQuaternion(std::cos(radians / 2.0f), std::sin(radians / 2.0f), 0.0f, 0.0f);
}
} // namespace

float scaleForDistance(float distance) {
    assert(!(distance < 0.0f));
    if (distance < kUnitScaleDistance) return distance / kUnitScaleDistance;
    return 0.25f * distance + 0.825f;
}

float normalize(float angle, float forMinimalRotationTo) {
    assert(std::isfinite(angle) && std::isfinite(forMinimalRotationTo));
    const float reference = forMinimalRotationTo;
    while (std::abs(angle - reference) > kEighthTurn) {
        angle += angle < reference ? kQuarterTurn : -kQuarterTurn;
    }
    return angle;
}

bool shouldContinueAlignAnim(const QQuaternion& current, const QQuaternion& target) {
    const float c = 1.0f / std::sqrt(3.0f);
    const QVector3D probe(c, c, c);
    const float dot = QVector3D::dotProduct(current.rotatedVector(probe), target.rotatedVector(probe));
    return dot < kAlignmentDoneThreshold;
}

QQuaternion alignmentAnimationStep(const QQuaternion& current, const QQuaternion& target) {
    return QQuaternion::slerp(current, target, kAlignmentTurnStep).normalized();
}

bool isUpsideDown(const QQuaternion& rotation) {
    return rotation.rotatedVector(QVector3D(0, 1, 0)).y() < kUpsideDownThreshold;
}

QQuaternion halfTurnFlipped(const QQuaternion& rotation) {
    const float half = std::numbers::pi_v<float> / 2.0f;
    const QQuaternion halfTurnAboutX(std::cos(half), std::sin(half), 0.0f, 0.0f);
    return (rotation * halfTurnAboutX).normalized();
}

float yaw(const QQuaternion& rotation) {
    const QVector3D forward = rotation.rotatedVector(QVector3D(0, 0, -1));
    if (forward.x() == 0.0f && forward.z() == 0.0f) return 0.0f;
    return std::atan2(-forward.x(), -forward.z());
}

float squareYaw(const QQuaternion& indicatorRotation) {
    return yaw(indicatorRotation * aboutX(kQuarterTurn));
}

QQuaternion squareRotation(const QQuaternion& hitRotation, arsession::ARPlaneAnchor::Alignment alignment,
                           float cameraYaw, float currentSquareYaw) {
    QQuaternion surface = isUpsideDown(hitRotation) ? halfTurnFlipped(hitRotation) : hitRotation;
    if (alignment == arsession::ARPlaneAnchor::Alignment::horizontal) {
        const float wanted = normalize(cameraYaw, currentSquareYaw);
        surface = surface * aboutY(wanted - yaw(surface));
    }
    return (surface * aboutX(-kQuarterTurn)).normalized();
}

arsession::ARPlaneAnchor::Alignment alignmentOf(const arsession::ARRaycastResult& hit) {
    if (hit.anchor) return hit.anchor->alignment;
    return hit.targetAlignment == arsession::ARRaycastQuery::TargetAlignment::vertical
               ? arsession::ARPlaneAnchor::Alignment::vertical
               : arsession::ARPlaneAnchor::Alignment::horizontal;
}

} // namespace orvanta::focus
