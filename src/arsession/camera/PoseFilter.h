#pragma once
// Steadies a stream of camera poses: a one-euro filter on the position and on the rotation.
// Each is a low-pass filter whose cut-off rises with the speed of the motion, so a still
// camera's jitter is smoothed away while a moving camera is followed without visible lag.
// Units: metres, radians, seconds. Thread: a value type, one stream per filter.

#include <QMatrix4x4>
#include <QQuaternion>
#include <QVector3D>

namespace orvanta::arsession::camera {

class PoseFilter {
public:
    struct Settings {
        double minimumCutoff = 1.0;   // Hz, the cut-off of a still camera
        double positionBeta = 20.0;   // Hz more per metre per second
        double rotationBeta = 4.0;    // Hz more per radian per second
        double derivativeCutoff = 1.0; // Hz, smoothing of the speed estimate
    };

    PoseFilter() = default;
    explicit PoseFilter(Settings settings) : settings_(settings) {}

    // The filtered pose (rigid, camera to world) for `pose` measured at `time`. The first
    // pose after construction or reset() passes unchanged.
    QMatrix4x4 filter(const QMatrix4x4& pose, double time);
    void reset() { started_ = false; }

private:
    QMatrix4x4 current() const;

    Settings settings_;
    bool started_ = false;
    double time_ = 0.0;
    QVector3D position_, velocity_;
    QQuaternion rotation_;
    double angularSpeed_ = 0.0;
};

} // namespace orvanta::arsession::camera
