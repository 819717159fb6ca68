#pragma once
// The focus square's per-frame maths as pure functions over value types.
// Units: metres for lengths, radians for angles. Rotations are unit quaternions.
// Thread: pure functions; any thread. None of them allocates.

#include "arsession/ARPlaneAnchor.h"
#include "arsession/ARRaycastResult.h"

#include <QQuaternion>
#include <QVector3D>

namespace orvanta::focus {

// Fraction of the remaining turn that one frame of the alignment animation covers.
inline constexpr float kAlignmentTurnStep = 0.15f;
// Dot product of the probe vector under both rotations at which a turn counts as finished.
inline constexpr float kAlignmentDoneThreshold = 0.999f;
// Component of a hit's up direction along world up below which the hit counts as upside down.
inline constexpr float kUpsideDownThreshold = -0.9f;
// Distance in metres at which the square shows at its own size.
inline constexpr float kUnitScaleDistance = 0.7f;

// Uniform scale of the square for a camera at `distance` metres (>= 0): linear from 0 at the
// camera to 1 at 0.7 m, then growing by a quarter of each further metre (0.25·d + 0.825).
// Continuous at 0.7 m. A NaN distance yields NaN.
float scaleForDistance(float distance);

// Yaw angle `angle` moved by quarter turns towards `reference` until the two differ by at
// most π/4 (a square looks the same after a quarter turn, so this is the smallest turn
// that shows the same yaw). Both angles must be finite.
float normalize(float angle, float forMinimalRotationTo);

// Whether the turn from `current` to `target` still has to go on: the unit probe
// (1, 1, 1)/√3 is rotated by both, and the turn goes on while their dot product is below
// 0.999. Equal rotations (or q and −q) end it.
bool shouldContinueAlignAnim(const QQuaternion& current, const QQuaternion& target);

// One frame of the alignment turn: the shortest-path spherical interpolation covering 15 %
// of the way from `current` to `target`, renormalised.
QQuaternion alignmentAnimationStep(const QQuaternion& current, const QQuaternion& target);

// Whether world up carried through `rotation` points down (its y component is below -0.9).
bool isUpsideDown(const QQuaternion& rotation);

// `rotation` followed by a half turn about its own x axis (the quaternion with real part
// cos(π/2) and vector part sin(π/2)·x̂), so an upside-down frame faces up again and vice versa.
QQuaternion halfTurnFlipped(const QQuaternion& rotation);

// Yaw of `rotation`: the angle about world up (+y) of its forward axis (−z), in (−π, π].
// Zero for the identity; positive for a turn to the left. A forward axis pointing straight
// up or down has no yaw and yields 0.
float yaw(const QQuaternion& rotation);

// The alignment of the surface `hit` lies on: its plane anchor's when it has one, else the
// alignment the ray cast was aimed at (horizontal unless vertical).
arsession::ARPlaneAnchor::Alignment alignmentOf(const arsession::ARRaycastResult& hit);

// The focus indicator's square lies in its local x–y plane and faces its +z axis (its child
// carrying the square is turned a quarter turn about x); the square's top edge points along +y.

// Yaw of the square's top edge for an indicator turned by `indicatorRotation` (see yaw()).
float squareYaw(const QQuaternion& indicatorRotation);

// The indicator rotation that lays the square on the surface hit with rotation `hitRotation`
// (whose y axis is the surface normal), for a surface of `alignment`:
// - a hit whose up direction points down (see isUpsideDown) is first turned by half a turn;
// - on a horizontal surface the square is twisted about the normal so that its top edge
//   points along `cameraYaw`, brought by quarter turns to within π/4 of `currentSquareYaw`
//   (the square never turns further than it must to follow the camera);
// - on a vertical surface the hit's own frame is kept.
// Angles in radians.
QQuaternion squareRotation(const QQuaternion& hitRotation, arsession::ARPlaneAnchor::Alignment alignment,
                           float cameraYaw, float currentSquareYaw);

} // namespace orvanta::focus
