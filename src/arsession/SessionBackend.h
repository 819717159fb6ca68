#pragma once
// Source of a session's frames: the simulated world, a replay of a recording, or (later) a
// device's tracker. The session calls it from its clock; a backend never calls back.
// Thread: every method is called on the session's clock queue.

#include "arsession/ARFrame.h"
#include "arsession/ARRaycastQuery.h"
#include "arsession/ARRaycastResult.h"
#include "arsession/ARWorldTrackingConfiguration.h"
#include "core/Error.h"

#include <optional>
#include <vector>

namespace orvanta::arsession {

class SessionBackend {
public:
    // What happened since the previous poll. The session keeps one Update and hands it to
    // every poll, so the frame's anchor list keeps its capacity between frames.
    struct Update {
        bool hasFrame = false;          // `frame` holds a new frame
        ARFrame frame;                  // filled in place when hasFrame
        bool interruptionBegan = false; // the camera feed stopped
        bool interruptionEnded = false; // the camera feed is back
        std::optional<core::Error> failure;

        void clearEvents() {
            hasFrame = interruptionBegan = interruptionEnded = false;
            failure.reset();
        }
    };

    virtual ~SessionBackend() = default;

    // Starts or restarts tracking at `time` (seconds on the session clock).
    // `resetTracking` forgets the tracking history; `removeExistingAnchors` forgets the planes.
    virtual void run(const ARWorldTrackingConfiguration& configuration, bool resetTracking,
                     bool removeExistingAnchors, double time) = 0;
    // Stops tracking at `time`; events such as the end of an interruption are still polled.
    virtual void pause(double time) = 0;
    // Reports what happened up to `time`. While paused, only events are reported. The
    // steady state must not allocate.
    virtual void poll(double time, Update& update) = 0;
    // Appends the hits of `query` against `frame` to `results`, in any order. Must not allocate
    // beyond the growth of `results`.
    virtual void raycast(const ARRaycastQuery& query, const ARFrame& frame,
                         std::vector<ARRaycastResult>& results) const = 0;
};

} // namespace orvanta::arsession
