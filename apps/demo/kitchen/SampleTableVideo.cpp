#include "SampleTableVideo.h"

#include "arsession/camera/CardTableScene.h"

#include <OrvantaARFoodSDK/ARSource.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <thread>
#include <vector>

namespace orvanta::demo {

using arsession::camera::CameraCalibration;
using arsession::camera::CardTableScene;
using arsession::camera::TableCard;

namespace {

core::Error videoError(const std::string& message) { return core::Error("SampleTableVideoError", 1, message); }

} // namespace

QString SampleTableVideo::path(const QString& folder) {
    return QDir(folder).filePath(QStringLiteral("table-card-v%1.avi").arg(generatorVersion));
}

QMatrix4x4 SampleTableVideo::cameraPose(int index) {
    // One slow sweep there and back (a cosine, so the camera eases at the turns), with two
    // swoops up to a steep view and a gentle drift in distance; aimed a little beside the
    // card's centre, as a hand holds it.
    const float t = float(index) / float(frameCount);
    const float turn = float(2 * M_PI) * t;
    const float azimuth = -50.0f + 50.0f * (1.0f - std::cos(turn));
    const float elevation = 50.0f + 28.0f * std::pow(std::sin(turn), 2.0f);
    const float distance = 0.55f + 0.06f * std::sin(2.0f * turn + 0.6f);
    const QVector3D aim(0.02f * std::sin(3.0f * turn), 0.0f, 0.015f * std::cos(2.0f * turn));
    return CardTableScene::lookingAt(distance, elevation, azimuth, aim);
}

core::Result<QString> SampleTableVideo::ensure(const QString& folder) {
    const QString file = path(folder);
    if (QFile::exists(file)) return file;
    if (!QDir().mkpath(folder)) return videoError("the folder " + folder.toStdString() + " cannot be made");

    auto card = TableCard::parse(ARSource::defaultTableCard);
    if (!card) return card.error();
    const CardTableScene scene(card.value(), CameraCalibration::defaultLens(frameSize));

    // Written under a name of this process's own (still ending in .avi, which the writer
    // needs) and renamed when complete, so that a run cut short leaves no truncated video
    // behind and two first runs at once each write whole files instead of one shared one.
    const QString partial = QDir(folder).filePath(
        QString("unfinished-%1-%2").arg(QCoreApplication::applicationPid()).arg(QFileInfo(file).fileName()));
    cv::VideoWriter writer(partial.toStdString(), cv::VideoWriter::fourcc('M', 'J', 'P', 'G'),
                           framesPerSecond, cv::Size(frameSize.width(), frameSize.height()));
    if (!writer.isOpened()) return videoError("the video " + partial.toStdString() + " cannot be written");
    // Frames are drawn a batch at a time on every core, and written in order.
    const int batch = std::max(1, QThread::idealThreadCount());
    std::vector<QImage> frames(static_cast<std::size_t>(batch));
    for (int first = 0; first < frameCount; first += batch) {
        const int count = std::min(batch, frameCount - first);
        std::vector<std::thread> painters;
        for (int k = 0; k < count; ++k)
            painters.emplace_back([&, k] {
                frames[std::size_t(k)] = scene.withNoise(scene.picture(cameraPose(first + k)), unsigned(first + k));
            });
        for (std::thread& painter : painters) painter.join();
        for (int k = 0; k < count; ++k) {
            QImage& frame = frames[std::size_t(k)];
            const cv::Mat bgra(frame.height(), frame.width(), CV_8UC4, frame.bits(), std::size_t(frame.bytesPerLine()));
            cv::Mat bgr;
            cv::cvtColor(bgra, bgr, cv::COLOR_BGRA2BGR);
            writer.write(bgr);
        }
    }
    writer.release();
    // The rename replaces in one step: a reader sees either no video or a complete one, also
    // when another run stored the same video meanwhile.
    std::error_code renamed;
    std::filesystem::rename(partial.toStdString(), file.toStdString(), renamed);
    if (renamed) {
        QFile::remove(partial);
        return videoError("the video " + file.toStdString() + " cannot be stored: " + renamed.message());
    }
    return file;
}

} // namespace orvanta::demo
