#include "arsession/camera/VideoSinkRelay.h"

#include <QVideoFrame>

namespace orvanta::arsession::camera {

VideoSinkRelay::VideoSinkRelay() {
    QObject::connect(&videoSink_, &QVideoSink::videoFrameChanged, &videoSink_, [this](const QVideoFrame& frame) {
        if (!sink_ || !frame.isValid()) return;
        const QImage picture = frame.toImage();
        if (!picture.isNull()) sink_->takeFrame(picture, double(frame.startTime()) * 1e-6);
    });
}

} // namespace orvanta::arsession::camera
