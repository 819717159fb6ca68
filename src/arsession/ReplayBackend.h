#pragma once
// Plays a recorded session back (see FrameRecord): each poll hands out the next recorded
// frame once the clock has moved, since run(), as far as it had moved at recording time
// since the first recorded frame. Frames keep their recorded timestamps, so a replay
// yields exactly the recorded frames. Ray casts hit the recorded planes; with no world model
// behind it, an estimated-plane query hits the recorded planes' detected areas too.
// Thread: the session's clock queue (see SessionBackend).

#include "arsession/SessionBackend.h"
#include "core/Error.h"

#include <QString>

#include <memory>
#include <variant>
#include <vector>

namespace orvanta::arsession {

class ReplayBackend final : public SessionBackend {
public:
    // Reads the recording at `path`; an unreadable file or a malformed line is an error.
    static std::variant<std::unique_ptr<ReplayBackend>, core::Error> load(const QString& path);
    explicit ReplayBackend(std::vector<ARFrame> frames);

    void run(const ARWorldTrackingConfiguration& configuration, bool resetTracking, bool removeExistingAnchors,
             double time) override;
    void pause(double time) override;
    void poll(double time, Update& update) override;
    void raycast(const ARRaycastQuery& query, const ARFrame& frame,
                 std::vector<ARRaycastResult>& results) const override;

    bool finished() const { return next_ >= frames_.size(); }

private:
    std::vector<ARFrame> frames_;
    std::size_t next_ = 0;
    bool running_ = false;
    double runStart_ = 0.0;
    double recordingOffset_ = 0.0; // recorded time of the frame that plays at runStart_
};

} // namespace orvanta::arsession
