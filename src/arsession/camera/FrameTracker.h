#pragma once
// Tracks the card in camera pictures on a worker thread of its own. Pictures are copied into
// a small pool of recycled images; while one picture is being tracked, a newer one waits, and
// a still newer one replaces it (the newest picture wins; the replaced one counts as
// dropped). The result of the latest tracked picture is picked up by the session's clock,
// which never waits for the worker.
// Thread: takeFrame and sourceFailed on any thread (the sources'); the rest on the session's
// clock queue.

#include "arsession/camera/CameraCalibration.h"
#include "arsession/camera/CardLocator.h"
#include "arsession/camera/FrameSink.h"
#include "arsession/camera/PoseFilter.h"
#include "arsession/camera/TableCard.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace orvanta::arsession::camera {

class FrameTracker final : public FrameSink {
public:
    struct Result {
        std::uint64_t sequence = 0;            // pictures tracked so far; 0: none yet
        std::shared_ptr<const QImage> picture; // the picture tracked
        CameraCalibration lens;                // the lens for the picture's size
        bool found = false;                    // the card is in the picture
        bool everFound = false;                // the card has been found since the pose was last forgotten
        QMatrix4x4 cameraTransform;            // smoothed pose; the last one found when the card is not in view
    };

    FrameTracker(TableCard card, std::optional<CameraCalibration> calibration, PoseFilter::Settings smoothing = {});
    ~FrameTracker() override;
    FrameTracker(const FrameTracker&) = delete;
    FrameTracker& operator=(const FrameTracker&) = delete;

    void takeFrame(const QImage& picture, double seconds) override;
    void sourceFailed(const core::Error& error) override;

    // Copies the latest result into `result` when it is newer than `result`; true then.
    // Allocates nothing.
    bool latest(Result& result) const;
    // The failure reported since the last call, if any.
    std::optional<core::Error> takeFailure();
    // The next pictures start from no pose: no smoothing towards the old one, not found yet.
    void forgetPose();
    // Pictures replaced by a newer one before they were tracked.
    std::uint64_t droppedFrames() const;
    // Blocks until every picture handed over so far has been tracked (tools and tests).
    void waitUntilIdle() const;

private:
    // A pooled image free for the next picture, sized like `picture`; null when all are in use.
    std::shared_ptr<QImage> freeImage(const QImage& picture);
    void work();

    const TableCard card_;
    const std::optional<CameraCalibration> calibration_;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::shared_ptr<QImage>> pool_;
    std::shared_ptr<QImage> pending_;
    double pendingSeconds_ = 0.0;
    bool busy_ = false;
    bool forgetRequested_ = false;
    bool quitting_ = false;
    std::uint64_t dropped_ = 0;
    Result latest_;
    std::optional<core::Error> failure_;

    // Worker thread only.
    std::unique_ptr<CardLocator> locator_;
    PoseFilter filter_;
    std::optional<QMatrix4x4> previousSighting_;
    bool everFound_ = false;
    QMatrix4x4 pose_;

    std::thread worker_;
};

} // namespace orvanta::arsession::camera
