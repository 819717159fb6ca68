#pragma once
// A supply of camera pictures: a live camera, a video file, a folder of pictures, a still
// photo. Live sources deliver as the camera takes pictures; recorded pictures are paced by
// the session's clock through advance().
// Thread: every method on the session's clock queue; Qt-based sources need that thread's
// event loop (the main queue's, by default).

#include "arsession/camera/FrameSink.h"

namespace orvanta::arsession::camera {

class FrameSource {
public:
    virtual ~FrameSource() = default;
    // Begins delivering to `sink` (which outlives the delivery) until stop().
    virtual void start(FrameSink& sink) = 0;
    virtual void stop() = 0;
    // `seconds` have passed on the session clock since start(); sources paced by that clock
    // deliver the pictures that have become due. Must not allocate in the steady state.
    virtual void advance(double seconds) { (void)seconds; }
};

} // namespace orvanta::arsession::camera
