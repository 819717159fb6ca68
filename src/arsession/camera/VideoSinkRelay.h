#pragma once
// Hands the frames a Qt Multimedia video sink receives (from a camera or a media player) to
// a FrameSink as pictures, timed by the frames' own start times.
// Thread: the thread the relay lives on (frames arrive through its event loop).

#include "arsession/camera/FrameSink.h"

#include <QVideoSink>

namespace orvanta::arsession::camera {

class VideoSinkRelay {
public:
    VideoSinkRelay();
    QVideoSink* videoSink() { return &videoSink_; }
    // Where frames go; null stops the relay.
    void setSink(FrameSink* sink) { sink_ = sink; }
    FrameSink* sink() const { return sink_; }

private:
    QVideoSink videoSink_;
    FrameSink* sink_ = nullptr;
};

} // namespace orvanta::arsession::camera
