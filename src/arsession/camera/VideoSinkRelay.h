#pragma once
// Hands the frames a Qt Multimedia video sink receives (from a camera or a media player) to
// a FrameSink as RGB32 pictures, timed by the frames' own start times. The usual camera and
// decoder formats (BGRA, RGBA, YUYV, UYVY, I420, NV12) are converted into one reused picture;
// others go through Qt's converter, which needs a GUI application.
// Thread: the thread the relay lives on (frames arrive through its event loop).

#include "arsession/camera/FrameSink.h"

#include <QImage>
#include <QVideoSink>

#include <vector>

namespace orvanta::arsession::camera {

class VideoSinkRelay {
public:
    VideoSinkRelay();
    QVideoSink* videoSink() { return &videoSink_; }
    // Where frames go; null stops the relay.
    void setSink(FrameSink* sink) { sink_ = sink; }
    FrameSink* sink() const { return sink_; }

private:
    void relay(QVideoFrame frame);

    QVideoSink videoSink_;
    FrameSink* sink_ = nullptr;
    QImage picture_; // reused while the frame size stays
    std::vector<unsigned char> yuv_; // planar frames gathered for conversion
};

} // namespace orvanta::arsession::camera
