#include "arsession/ReplayBackend.h"

#include "arsession/FrameRecord.h"
#include "arsession/PlaneRaycast.h"

#include <QFile>

#include <algorithm>

namespace orvanta::arsession {

std::variant<std::unique_ptr<ReplayBackend>, core::Error> ReplayBackend::load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return core::Error(FrameRecord::errorDomain, 3,
                           "Cannot read the recording " + path.toStdString() + ": " + file.errorString().toStdString());
    std::vector<ARFrame> frames;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.isEmpty()) continue;
        auto decoded = FrameRecord::decode(line);
        if (auto* error = std::get_if<core::Error>(&decoded)) return *error;
        frames.push_back(std::move(std::get<ARFrame>(decoded)));
    }
    return std::make_unique<ReplayBackend>(std::move(frames));
}

ReplayBackend::ReplayBackend(std::vector<ARFrame> frames) : frames_(std::move(frames)) {}

void ReplayBackend::run(const ARWorldTrackingConfiguration&, bool resetTracking, bool, double time) {
    if (resetTracking) next_ = 0; // a recording cannot be re-tracked; it starts over
    // The next frame plays one recorded frame interval after the start, as it came one interval
    // after its predecessor (the first frame: one interval after the recording started).
    if (next_ < frames_.size()) {
        const std::size_t previous = next_ > 0 ? next_ - 1 : 0;
        const std::size_t following = next_ > 0 ? next_ : std::min<std::size_t>(1, frames_.size() - 1);
        recordingOffset_ = frames_[next_].timestamp - (frames_[following].timestamp - frames_[previous].timestamp);
    }
    runStart_ = time;
    running_ = true;
}

void ReplayBackend::pause(double) { running_ = false; }

void ReplayBackend::poll(double time, Update& update) {
    if (!running_ || next_ >= frames_.size()) return;
    if (frames_[next_].timestamp - recordingOffset_ > time - runStart_ + 1e-6) return;
    update.hasFrame = true;
    update.frame = frames_[next_++];
}

void ReplayBackend::raycast(const ARRaycastQuery& query, const ARFrame& frame,
                            std::vector<ARRaycastResult>& results) const {
    if (query.target != ARRaycastQuery::Target::estimatedPlane) {
        PlaneRaycast::existingPlanes(query, frame.anchors, results);
        return;
    }
    // No world model: estimated planes are the recorded planes' detected areas, without anchor.
    const ARRaycastQuery asGeometry(query.origin, query.direction, ARRaycastQuery::Target::existingPlaneGeometry,
                                    query.targetAlignment);
    const std::size_t first = results.size();
    PlaneRaycast::existingPlanes(asGeometry, frame.anchors, results);
    for (std::size_t i = first; i < results.size(); ++i) {
        results[i].target = ARRaycastQuery::Target::estimatedPlane;
        results[i].anchor.reset();
    }
}

} // namespace orvanta::arsession
