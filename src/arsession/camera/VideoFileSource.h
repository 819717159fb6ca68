#pragma once
// A video file as a camera, played by Qt Multimedia at its own pace, in a loop (as ARSource
// promises: a session outlasts a short clip, and its frames stop when the pictures do). A
// stream error once the file has played reopens it (up to maxRestarts times) instead of failing.
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
    static constexpr int maxRestarts = 10; // in the source's life

    QString path_;
    int restarts_ = 0;
    QMediaPlayer player_;
    VideoSinkRelay relay_;
};

} // namespace orvanta::arsession::camera
