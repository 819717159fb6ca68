#include "arsession/camera/VideoFileSource.h"

#include <QUrl>

namespace orvanta::arsession::camera {

VideoFileSource::VideoFileSource(const QString& path) : path_(path) {
    player_.setVideoSink(relay_.videoSink());
    player_.setLoops(QMediaPlayer::Infinite);
    QObject::connect(&player_, &QMediaPlayer::errorOccurred, &player_,
                     [this](QMediaPlayer::Error, const QString& message) {
                         // A file that has played is still there: its pipeline stopped on a
                         // passing stream error (GStreamer's, on a busy machine), so it is
                         // opened again and goes on from where it stopped.
                         if ((player_.position() > 0 || restarts_ > 0) && restarts_ < maxRestarts) {
                             ++restarts_;
                             QMetaObject::invokeMethod(&player_, [this, at = player_.position()] {
                                 player_.setSource(QUrl());
                                 player_.setSource(QUrl::fromLocalFile(path_));
                                 player_.setPosition(at);
                                 if (relay_.sink()) player_.play();
                             }, Qt::QueuedConnection);
                             return;
                         }
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
