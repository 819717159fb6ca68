#include "arsession/camera/CameraBackend.h"

#include "arsession/PlaneRaycast.h"

#include <algorithm>
#include <cmath>

namespace orvanta::arsession::camera {

CameraBackend::CameraBackend(std::unique_ptr<FrameSource> source, TableCard card,
                             std::optional<CameraCalibration> calibration, Settings settings)
    : card_(card), settings_(settings), tracker_(std::move(card), std::move(calibration), settings.smoothing),
      source_(std::move(source)) {}

CameraBackend::CameraBackend(std::unique_ptr<FrameSource> source, TableCard card,
                             std::optional<CameraCalibration> calibration)
    : CameraBackend(std::move(source), std::move(card), std::move(calibration), Settings{}) {}

CameraBackend::~CameraBackend() { source_->stop(); }

void CameraBackend::run(const ARWorldTrackingConfiguration& configuration, bool resetTracking,
                        bool removeExistingAnchors, double time) {
    configuration_ = configuration;
    if (resetTracking) tracker_.forgetPose();
    if (removeExistingAnchors) anchorId_ = QUuid();
    // A resumed camera has to find the card again before its pose is trusted.
    relocalizing_ = !resetTracking && result_.everFound;
    if (!running_) {
        running_ = true;
        runStart_ = time;
        source_->start(tracker_);
    }
}

void CameraBackend::pause(double) {
    if (!running_) return;
    running_ = false;
    source_->stop();
}

void CameraBackend::poll(double time, Update& update) {
    if (tracker_.takeFailure() && !interrupted_) {
        interrupted_ = true;
        update.interruptionBegan = true;
    }
    if (!running_) return;
    source_->advance(time - runStart_);
    if (!tracker_.latest(result_)) return;
    if (interrupted_) {
        interrupted_ = false;
        relocalizing_ = result_.everFound;
        update.interruptionEnded = true;
    }
    update.hasFrame = true;
    fillFrame(time, update.frame);
}

void CameraBackend::fillFrame(double time, ARFrame& frame) {
    if (result_.found) relocalizing_ = false;
    ARCamera& camera = frame.camera;
    if (result_.found)
        camera.trackingState = TrackingState::normal();
    else if (relocalizing_)
        camera.trackingState = TrackingState::limited(TrackingState::Reason::relocalizing);
    else if (result_.everFound)
        camera.trackingState = TrackingState::limited(TrackingState::Reason::insufficientFeatures);
    else
        camera.trackingState = TrackingState::limited(TrackingState::Reason::initializing);
    frame.timestamp = time;
    camera.transform = result_.cameraTransform;
    camera.intrinsics = result_.lens.intrinsics;
    camera.imageResolution = result_.lens.imageSize;
    camera.verticalFieldOfView = 2.0f * std::atan(float(result_.lens.imageSize.height()) * 0.5f / result_.lens.intrinsics.fy);
    frame.capturedImage = result_.picture;

    if (result_.found && anchorId_.isNull() && configuration_.detects(ARWorldTrackingConfiguration::horizontal))
        anchorId_ = QUuid::createUuid();
    frame.anchors.clear();
    if (!anchorId_.isNull()) frame.anchors.push_back(tableAnchor());
}

ARPlaneAnchor CameraBackend::tableAnchor() const {
    const QSizeF card = card_.size();
    // The card's long side runs along z (see TableCard).
    const float across = float(std::min(card.width(), card.height()));
    const float along = float(std::max(card.width(), card.height()));
    ARPlaneAnchor anchor;
    anchor.identifier = anchorId_;
    anchor.alignment = ARPlaneAnchor::Alignment::horizontal;
    anchor.classification = ARPlaneAnchor::Classification::table;
    anchor.extent = QVector3D(std::max(across, float(settings_.tableSize.width())), 0.0f,
                              std::max(along, float(settings_.tableSize.height())));
    return anchor;
}

void CameraBackend::raycast(const ARRaycastQuery& query, const ARFrame& frame,
                            std::vector<ARRaycastResult>& results) const {
    if (query.target != ARRaycastQuery::Target::estimatedPlane) {
        PlaneRaycast::existingPlanes(query, frame.anchors, results);
        return;
    }
    // Before a plane is reported, the table around a card that has been seen is still known.
    if (!result_.everFound || !PlaneRaycast::accepts(query.targetAlignment, ARPlaneAnchor::Alignment::horizontal))
        return;
    const ARPlaneAnchor table = tableAnchor();
    if (auto hit = PlaneRaycast::hit(query, table.transform, table.center,
                                     QVector2D(table.extent.x() * 0.5f, table.extent.z() * 0.5f), table.alignment))
        results.push_back(*hit);
}

} // namespace orvanta::arsession::camera
