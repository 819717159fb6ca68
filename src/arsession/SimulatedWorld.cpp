#include "arsession/SimulatedWorld.h"

#include "arsession/PlaneRaycast.h"

#include <algorithm>
#include <cmath>

namespace orvanta::arsession {

namespace {

QMatrix4x4 translated(float x, float y, float z) {
    QMatrix4x4 m;
    m.translate(x, y, z);
    return m;
}

} // namespace

std::vector<SimulatedWorld::Surface> SimulatedWorld::defaultRoom() {
    using A = ARPlaneAnchor::Alignment;
    using C = ARPlaneAnchor::Classification;
    QMatrix4x4 wall = translated(0.0f, 1.3f, -2.0f);
    wall.rotate(90.0f, 1.0f, 0.0f, 0.0f); // local y (the normal) → world +z, facing the room
    return {
        {QUuid("{5a1d7c52-0000-4000-8000-000000000001}"), translated(0.0f, 0.75f, -0.6f), 1.2f, 0.8f, A::horizontal,
         C::table, 0.5},
        {QUuid("{5a1d7c52-0000-4000-8000-000000000002}"), translated(0.0f, 0.0f, -0.5f), 4.0f, 4.0f, A::horizontal,
         C::floor, 1.5},
        {QUuid("{5a1d7c52-0000-4000-8000-000000000003}"), wall, 4.0f, 2.6f, A::vertical, C::wall, 2.5},
    };
}

SimulatedWorld::SimulatedWorld() : SimulatedWorld(Script{}) {}

SimulatedWorld::SimulatedWorld(Script script, std::vector<Surface> surfaces)
    : script_(std::move(script)), surfaces_(std::move(surfaces)) {}

void SimulatedWorld::run(const ARWorldTrackingConfiguration& configuration, bool resetTracking,
                         bool removeExistingAnchors, double time) {
    configuration_ = configuration;
    const bool first = worldStart_ < 0.0;
    if (first) worldStart_ = time;
    if (first || resetTracking) {
        trackingStart_ = time;
        relocalizeFrom_ = -1.0;
    } else if (!running_) {
        relocalizeFrom_ = time; // resuming after a pause: the tracker finds itself again
    }
    const double normalAt = trackingStart_ + script_.notAvailableFor + script_.initializingFor;
    if (first || removeExistingAnchors) planesFrom_ = std::max(time, normalAt);
    running_ = true;
}

void SimulatedWorld::pause(double) { running_ = false; }

TrackingState SimulatedWorld::trackingAt(double time) const {
    const double since = time - trackingStart_;
    if (since < script_.notAvailableFor) return TrackingState::notAvailable();
    if (since < script_.notAvailableFor + script_.initializingFor)
        return TrackingState::limited(TrackingState::Reason::initializing);
    if (relocalizeFrom_ >= 0.0 && time - relocalizeFrom_ < script_.relocalizingFor)
        return TrackingState::limited(TrackingState::Reason::relocalizing);
    return TrackingState::normal();
}

bool SimulatedWorld::detects(const Surface& surface) const {
    return configuration_.detects(surface.alignment == ARPlaneAnchor::Alignment::horizontal
                                      ? ARWorldTrackingConfiguration::horizontal
                                      : ARWorldTrackingConfiguration::vertical);
}

QVector2D SimulatedWorld::detectedSize(const Surface& surface, double seconds, float initialSize,
                                       double growthDuration) {
    const float progress = growthDuration <= 0.0 ? 1.0f : float(std::clamp(seconds / growthDuration, 0.0, 1.0));
    const auto grow = [&](float full) {
        const float start = std::min(initialSize, full);
        return start + (full - start) * progress;
    };
    return {grow(surface.width), grow(surface.depth)};
}

void SimulatedWorld::fillPlanes(double time, std::vector<ARPlaneAnchor>& anchors) const {
    anchors.clear();
    for (const auto& surface : surfaces_) {
        const double seenFor = time - (planesFrom_ + surface.discoveredAfter);
        if (seenFor < 0.0 || !detects(surface)) continue;
        const QVector2D size =
            detectedSize(surface, seenFor, script_.initialPlaneSize, script_.planeGrowthDuration);
        ARPlaneAnchor& anchor = anchors.emplace_back();
        anchor.identifier = surface.identifier;
        anchor.transform = surface.transform;
        anchor.alignment = surface.alignment;
        anchor.center = QVector3D();
        anchor.extent = QVector3D(size.x(), 0.0f, size.y());
        anchor.classification = surface.classification;
    }
}

QMatrix4x4 SimulatedWorld::cameraPose(double seconds, float swayAmplitude) {
    const float t = float(seconds);
    const float s = swayAmplitude;
    const QVector3D eye(s * std::sin(0.9f * t), 1.4f + 0.5f * s * std::sin(1.7f * t), 0.3f + s * std::sin(0.6f * t + 1.0f));
    const QVector3D target(s * std::sin(0.4f * t), 0.75f, -0.6f + s * std::cos(0.5f * t));
    const QVector3D forward = (target - eye).normalized();
    const QVector3D right = QVector3D::crossProduct(forward, QVector3D(0.0f, 1.0f, 0.0f)).normalized();
    const QVector3D up = QVector3D::crossProduct(right, forward);
    QMatrix4x4 pose;
    pose.setColumn(0, QVector4D(right, 0.0f));
    pose.setColumn(1, QVector4D(up, 0.0f));
    pose.setColumn(2, QVector4D(-forward, 0.0f));
    pose.setColumn(3, QVector4D(eye, 1.0f));
    return pose;
}

void SimulatedWorld::poll(double time, Update& update) {
    const auto& interruptions = script_.interruptions;
    // Interruptions that passed entirely while the session was not running never happen.
    while (!interrupted_ && nextInterruption_ < interruptions.size() && !running_ &&
           interruptions[nextInterruption_].end <= time)
        ++nextInterruption_;
    if (!interrupted_ && running_ && nextInterruption_ < interruptions.size() &&
        time >= interruptions[nextInterruption_].begin) {
        interrupted_ = true;
        update.interruptionBegan = true;
    }
    if (interrupted_ && time >= interruptions[nextInterruption_].end) {
        interrupted_ = false;
        ++nextInterruption_;
        relocalizeFrom_ = time;
        update.interruptionEnded = true;
    }
    if (running_ && nextFailure_ < script_.failures.size() && time >= script_.failures[nextFailure_].time) {
        update.failure = script_.failures[nextFailure_++].error;
        running_ = false;
        return;
    }
    if (!running_ || interrupted_) return;

    update.hasFrame = true;
    ARFrame& frame = update.frame;
    frame.timestamp = time;
    frame.camera.transform = cameraPose(time - worldStart_, script_.swayAmplitude);
    frame.camera.trackingState = trackingAt(time);
    fillPlanes(time, frame.anchors);
}

void SimulatedWorld::raycast(const ARRaycastQuery& query, const ARFrame& frame,
                             std::vector<ARRaycastResult>& results) const {
    if (query.target != ARRaycastQuery::Target::estimatedPlane) {
        PlaneRaycast::existingPlanes(query, frame.anchors, results);
        return;
    }
    if (frame.camera.trackingState == TrackingState::notAvailable()) return;
    for (const auto& surface : surfaces_) {
        if (!PlaneRaycast::accepts(query.targetAlignment, surface.alignment)) continue;
        const QVector2D halfSize(surface.width * 0.5f, surface.depth * 0.5f);
        if (auto result = PlaneRaycast::hit(query, surface.transform, QVector3D(), halfSize, surface.alignment))
            results.push_back(*result);
    }
}

} // namespace orvanta::arsession
