#pragma once
// A session backend fed by camera pictures: a frame source delivers them, a FrameTracker
// finds the table card in them on its worker thread, and each poll hands the session the
// newest tracked picture as a frame. The card's frame is the world (see TableCard); once the
// card is found, one horizontal plane anchor stands for the table it lies on: centred on the
// card, as large as the card or the table size of the settings, whichever is larger.
//
// Tracking: notAvailable until the first picture; limited(initializing) until the card is
// first found; normal while it is in view; limited(insufficientFeatures) while it is lost
// (the last pose and the anchor stay); limited(relocalizing) after an interruption or a
// pause until it is found again. A source that fails (a missing or vanished camera, an
// unreadable file) interrupts the session; pictures arriving again end the interruption.
// Frames come only with new pictures, so the session's frames follow the camera's rate.
//
// Thread: the session's clock queue (see SessionBackend).

#include "arsession/SessionBackend.h"
#include "arsession/camera/FrameSource.h"
#include "arsession/camera/FrameTracker.h"

#include <QSizeF>
#include <QUuid>

#include <memory>

namespace orvanta::arsession::camera {

class CameraBackend final : public SessionBackend {
public:
    struct Settings {
        QSizeF tableSize{0.6, 0.6}; // metres: the least extent of the table's plane anchor
        PoseFilter::Settings smoothing;
    };

    CameraBackend(std::unique_ptr<FrameSource> source, TableCard card, std::optional<CameraCalibration> calibration,
                  Settings settings);
    CameraBackend(std::unique_ptr<FrameSource> source, TableCard card,
                  std::optional<CameraCalibration> calibration = std::nullopt);
    ~CameraBackend() override;

    void run(const ARWorldTrackingConfiguration& configuration, bool resetTracking, bool removeExistingAnchors,
             double time) override;
    void pause(double time) override;
    void poll(double time, Update& update) override;
    void raycast(const ARRaycastQuery& query, const ARFrame& frame,
                 std::vector<ARRaycastResult>& results) const override;

    const FrameTracker& tracker() const { return tracker_; }

private:
    void fillFrame(double time, ARFrame& frame);
    ARPlaneAnchor tableAnchor() const;

    const TableCard card_;
    const Settings settings_;
    FrameTracker tracker_; // outlives nothing it is handed to: the source stops before it goes
    std::unique_ptr<FrameSource> source_;
    ARWorldTrackingConfiguration configuration_;
    bool running_ = false;
    bool interrupted_ = false;
    bool relocalizing_ = false;
    double runStart_ = 0.0;
    QUuid anchorId_; // null until the card is found (again, after removeExistingAnchors)
    FrameTracker::Result result_;
};

} // namespace orvanta::arsession::camera
