#include "arsession/camera/VideoFileSource.h"

#include <QUrl>

namespace orvanta::arsession::camera {

VideoFileSource::VideoFileSource(const QString& path) : path_(path) {
    player_.setVideoSink(relay_.videoSink());
    player_.setLoops(QMediaPlayer::Infinite);
    QObject::connect(&player_, &QMediaPlayer::errorOccurred, &player_,
                     [this](QMediaPlayer::Error, const QString& message) {
                         if (relay_.sink())
                             relay_.sink()->sourceFailed(core::Error(
                                 errorDomain, 2, "Video " + path_.toStdString() + " cannot be played: " + message.toStdString()));
                     });
}

void VideoFileSource::start(FrameSink& sink) {
    relay_.setSink(&sink);
    if (player_.source().isEmpty()) player_.setSource(QUrl::fromLocalFile(path_));
    player_.play();
}

void VideoFileSource::stop() {
    relay_.setSink(nullptr);
    player_.pause();
}

} // namespace orvanta::arsession::camera
