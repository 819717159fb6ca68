#pragma once
// The 3D viewer's own point of view, used while its scene has no camera node: a camera that
// circles a target point. frame() points it at a box from the front (+z) and a little above,
// far enough for the whole box to show; orbit, zoom and pan then move it as mouse, wheel
// and touch ask. Its clipping planes follow its distance, so a model authored in
// centimetres and one authored in metres both fill the view alike.
// Units: the scene's (metres for the kit's models); angles in radians.
// Thread: a value type; pure maths.

#include "import/ImportedScene.h"

#include <QMatrix4x4>
#include <QQuaternion>
#include <QVector3D>

namespace orvanta::scenegraph {

class OrbitCameraControl {
public:
    static constexpr float kFieldOfView = 1.0471976f; // vertical, 60°
    static constexpr float kFramingPitch = -0.2617994f; // 15° above the horizon
    static constexpr float kMaxPitch = 1.5533430f;      // 89°

    // Aims at the centre of `bounds` from the front and above so that its bounding sphere
    // fills the narrower side of a viewport of `aspect` (width / height). An empty box frames
    // a unit box at the origin.
    void frame(const import::Bounds& bounds, float aspect);
    // Turns about the target: `yaw` about world up, `pitch` up or down (kept within ±89°).
    void orbit(float yaw, float pitch);
    // Moves towards the target by `factor` (> 1 closer, < 1 away), staying between a
    // hundredth and a hundred times the framed distance.
    void zoom(float factor);
    // Slides target and camera across the view by fractions of the visible height.
    void pan(float right, float up);

    QVector3D target() const { return target_; }
    float distance() const { return distance_; }
    float yaw() const { return yaw_; }
    float pitch() const { return pitch_; }
    QVector3D position() const;
    QQuaternion rotation() const;
    // Camera to world.
    QMatrix4x4 cameraTransform() const;
    float nearPlane() const;
    float farPlane() const;

private:
    QVector3D target_;
    float radius_ = 1.0f;       // of the framed box's bounding sphere
    float framedDistance_ = 2.0f;
    float distance_ = 2.0f;
    float yaw_ = 0.0f;
    float pitch_ = kFramingPitch;
};

} // namespace orvanta::scenegraph
