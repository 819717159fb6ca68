#include "arsession/camera/VideoSinkRelay.h"

#include <QGuiApplication>
#include <QVideoFrame>

#include <opencv2/imgproc.hpp>

#include <cstring>

namespace orvanta::arsession::camera {

namespace {

// Copies `rows` rows of `width` bytes of plane `plane` of a mapped frame into `out` from row
// `firstRow` on.
void copyPlane(const QVideoFrame& frame, int plane, int width, int rows, cv::Mat& out, int firstRow) {
    for (int y = 0; y < rows; ++y)
        std::memcpy(out.ptr(firstRow + y), frame.bits(plane) + qsizetype(y) * frame.bytesPerLine(plane), size_t(width));
}

} // namespace

VideoSinkRelay::VideoSinkRelay() {
    QObject::connect(&videoSink_, &QVideoSink::videoFrameChanged, &videoSink_, [this](const QVideoFrame& frame) {
        if (sink_ && frame.isValid()) relay(frame);
    });
}

void VideoSinkRelay::relay(QVideoFrame frame) {
    const double seconds = double(frame.startTime()) * 1e-6;
    const int width = frame.width(), height = frame.height();
    if (!frame.map(QVideoFrame::ReadOnly)) return;
    if (picture_.size() != frame.size()) picture_ = QImage(frame.size(), QImage::Format_RGB32);
    cv::Mat bgra(height, width, CV_8UC4, picture_.bits(), size_t(picture_.bytesPerLine()));
    bool converted = true;
    switch (frame.pixelFormat()) {
    case QVideoFrameFormat::Format_BGRA8888:
    case QVideoFrameFormat::Format_BGRX8888:
        cv::Mat(height, width, CV_8UC4, frame.bits(0), size_t(frame.bytesPerLine(0))).copyTo(bgra);
        break;
    case QVideoFrameFormat::Format_RGBA8888:
    case QVideoFrameFormat::Format_RGBX8888:
        cv::cvtColor(cv::Mat(height, width, CV_8UC4, frame.bits(0), size_t(frame.bytesPerLine(0))), bgra,
                     cv::COLOR_RGBA2BGRA);
        break;
    case QVideoFrameFormat::Format_YUYV:
    case QVideoFrameFormat::Format_UYVY:
        cv::cvtColor(cv::Mat(height, width, CV_8UC2, frame.bits(0), size_t(frame.bytesPerLine(0))), bgra,
                     frame.pixelFormat() == QVideoFrameFormat::Format_YUYV ? cv::COLOR_YUV2BGRA_YUYV
                                                                           : cv::COLOR_YUV2BGRA_UYVY);
        break;
    case QVideoFrameFormat::Format_YUV420P:
    case QVideoFrameFormat::Format_NV12: {
        // OpenCV wants the planes one after the other, without padding.
        yuv_.resize(size_t(width) * size_t(height * 3 / 2));
        cv::Mat planes(height * 3 / 2, width, CV_8UC1, yuv_.data());
        copyPlane(frame, 0, width, height, planes, 0);
        if (frame.pixelFormat() == QVideoFrameFormat::Format_NV12) {
            copyPlane(frame, 1, width, height / 2, planes, height);
            cv::cvtColor(planes, bgra, cv::COLOR_YUV2BGRA_NV12);
        } else {
            // Each chroma plane is a quarter of the picture: half-width rows, two to a buffer row.
            cv::Mat(height / 2, width / 2, CV_8UC1, frame.bits(1), size_t(frame.bytesPerLine(1)))
                .copyTo(cv::Mat(height / 2, width / 2, CV_8UC1, planes.ptr(height), size_t(width / 2)));
            cv::Mat(height / 2, width / 2, CV_8UC1, frame.bits(2), size_t(frame.bytesPerLine(2)))
                .copyTo(cv::Mat(height / 2, width / 2, CV_8UC1, planes.ptr(height) + (height / 2) * (width / 2),
                                size_t(width / 2)));
            cv::cvtColor(planes, bgra, cv::COLOR_YUV2BGRA_I420);
        }
        break;
    }
    default:
        converted = false;
    }
    frame.unmap();
    if (converted) {
        sink_->takeFrame(picture_, seconds);
        return;
    }
    // Other formats go through Qt's converter, which needs a GUI application.
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        const QImage picture = frame.toImage();
        if (!picture.isNull()) sink_->takeFrame(picture, seconds);
    }
}

} // namespace orvanta::arsession::camera
