#pragma once
// A video file as a camera, played by Qt Multimedia at its own pace, in a loop (as ARSource
// promises: a session outlasts a short clip, and its frames stop when the pictures do).
// Thread: the session's clock queue, which must run an event loop (see FrameSource).

#include "arsession/camera/FrameSource.h"
#include "arsession/camera/VideoSinkRelay.h"

#include <QMediaPlayer>
#include <QString>

namespace orvanta::arsession::camera {

class VideoFileSource final : public FrameSource {
public:
    static constexpr const char* errorDomain = "FrameSourceError";

    explicit VideoFileSource(const QString& path);

    void start(FrameSink& sink) override;
    void stop() override;

private:
    QString path_;
    QMediaPlayer player_;
    VideoSinkRelay relay_;
};

} // namespace orvanta::arsession::camera
