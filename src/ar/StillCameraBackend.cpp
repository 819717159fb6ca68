#include "ar/StillCameraBackend.h"

#include "arsession/PlaneRaycast.h"

#include <cassert>

namespace orvanta {

StillCameraBackend::StillCameraBackend(const arsession::ARCamera& camera,
                                       std::vector<std::shared_ptr<const QImage>> pictures, QSizeF table)
    : pictures_(std::move(pictures)) {
    assert(!pictures_.empty() && camera.hasImage() && camera.imageResolution == pictures_.front()->size());
    frame_.camera = camera;
    frame_.camera.trackingState = arsession::TrackingState::normal();
    arsession::ARPlaneAnchor plane;
    plane.identifier = QUuid::createUuid();
    plane.extent = QVector3D(float(table.width()), 0.0f, float(table.height()));
    plane.classification = arsession::ARPlaneAnchor::Classification::table;
    frame_.anchors.push_back(plane);
}

void StillCameraBackend::poll(double time, Update& update) {
    frame_.timestamp = time;
    frame_.capturedImage = pictures_[next_];
    next_ = (next_ + 1) % pictures_.size();
    update.frame = frame_;
    update.hasFrame = true;
}

void StillCameraBackend::raycast(const arsession::ARRaycastQuery& query, const arsession::ARFrame& frame,
                                 std::vector<arsession::ARRaycastResult>& results) const {
    arsession::PlaneRaycast::existingPlanes(query, frame.anchors, results);
}

} // namespace orvanta
