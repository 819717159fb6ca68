#include "arsession/camera/FrameTracker.h"

#include <cstring>

namespace orvanta::arsession::camera {

namespace {

// Enough for the picture being tracked, the one waiting, the latest result and the frames
// the session and a renderer still hold.
constexpr std::size_t poolSize = 6;

} // namespace

FrameTracker::FrameTracker(TableCard card, std::optional<CameraCalibration> calibration,
                           PoseFilter::Settings smoothing)
    : card_(std::move(card)), calibration_(std::move(calibration)), filter_(smoothing), worker_([this] { work(); }) {}

FrameTracker::~FrameTracker() {
    {
        std::lock_guard lock(mutex_);
        quitting_ = true;
    }
    changed_.notify_all();
    worker_.join();
}

std::shared_ptr<QImage> FrameTracker::freeImage(const QImage& picture) {
    for (auto& image : pool_) {
        if (image.use_count() != 1) continue; // held by the worker, the session or a renderer
        if (image->size() != picture.size() || image->format() != picture.format())
            *image = QImage(picture.size(), picture.format());
        return image;
    }
    if (pool_.size() == poolSize) return nullptr;
    return pool_.emplace_back(std::make_shared<QImage>(picture.size(), picture.format()));
}

void FrameTracker::takeFrame(const QImage& picture, double seconds) {
    {
        std::lock_guard lock(mutex_);
        if (pending_) {
            // The waiting picture is replaced by this newer one.
            pending_.reset();
            ++dropped_;
        }
        const std::shared_ptr<QImage> image = freeImage(picture);
        if (!image) {
            ++dropped_;
            return;
        }
        const qsizetype lineBytes = std::min(image->bytesPerLine(), picture.bytesPerLine());
        for (int y = 0; y < picture.height(); ++y) std::memcpy(image->scanLine(y), picture.constScanLine(y), size_t(lineBytes));
        pending_ = image;
        pendingSeconds_ = seconds;
    }
    changed_.notify_all();
}

void FrameTracker::sourceFailed(const core::Error& error) {
    std::lock_guard lock(mutex_);
    failure_ = error;
}

bool FrameTracker::latest(Result& result) const {
    std::lock_guard lock(mutex_);
    if (latest_.sequence == result.sequence) return false;
    result = latest_;
    return true;
}

std::optional<core::Error> FrameTracker::takeFailure() {
    std::lock_guard lock(mutex_);
    if (!failure_) return std::nullopt; // no copy, no allocation
    std::optional<core::Error> failure = std::move(failure_);
    failure_.reset();
    return failure;
}

void FrameTracker::forgetPose() {
    std::lock_guard lock(mutex_);
    forgetRequested_ = true;
}

std::uint64_t FrameTracker::droppedFrames() const {
    std::lock_guard lock(mutex_);
    return dropped_;
}

void FrameTracker::waitUntilIdle() const {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !pending_ && !busy_; });
}

void FrameTracker::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return quitting_ || pending_; });
        if (quitting_) return;
        const std::shared_ptr<QImage> picture = std::move(pending_);
        const double seconds = pendingSeconds_;
        const bool forget = forgetRequested_;
        forgetRequested_ = false;
        busy_ = true;
        lock.unlock();

        if (forget) {
            filter_.reset();
            previousSighting_.reset();
            everFound_ = false;
        }
        if (!locator_ || locator_->lens().imageSize != picture->size())
            locator_ = std::make_unique<CardLocator>(card_, calibration_ ? calibration_->scaledTo(picture->size())
                                                                         : CameraCalibration::defaultLens(picture->size()));
        const auto sighting = locator_->locate(*picture, previousSighting_);
        if (sighting) {
            previousSighting_ = sighting->cameraTransform;
            pose_ = filter_.filter(sighting->cameraTransform, seconds);
            everFound_ = true;
        }

        lock.lock();
        latest_.sequence += 1;
        latest_.picture = picture;
        latest_.lens = locator_->lens();
        latest_.found = sighting.has_value();
        latest_.everFound = everFound_;
        latest_.cameraTransform = pose_;
        busy_ = false;
        changed_.notify_all();
    }
}

} // namespace orvanta::arsession::camera
