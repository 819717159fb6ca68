#include "arsession/camera/LiveCameraSource.h"

#include <QCameraDevice>
#include <QMediaDevices>

namespace orvanta::arsession::camera {

LiveCameraSource::LiveCameraSource(QByteArray deviceId) : deviceId_(std::move(deviceId)) {
    capture_.setVideoSink(relay_.videoSink());
    QObject::connect(&devices_, &QMediaDevices::videoInputsChanged, &devices_, [this] {
        if (!camera_ || !relay_.sink()) return;
        for (const QCameraDevice& input : QMediaDevices::videoInputs())
            if (input == camera_->cameraDevice()) return;
        fail("Camera " + camera_->cameraDevice().description().toStdString() + " went away");
    });
}

void LiveCameraSource::fail(const std::string& message) {
    if (FrameSink* sink = relay_.sink()) sink->sourceFailed(core::Error(errorDomain, 3, message));
}

void LiveCameraSource::start(FrameSink& sink) {
    relay_.setSink(&sink);
    if (!camera_) {
        QCameraDevice device = QMediaDevices::defaultVideoInput();
        if (!deviceId_.isEmpty()) {
            device = QCameraDevice();
            for (const QCameraDevice& input : QMediaDevices::videoInputs())
                if (input.id() == deviceId_) device = input;
        }
        if (device.isNull()) {
            fail(deviceId_.isEmpty() ? "No camera is available"
                                     : "Camera " + deviceId_.toStdString() + " is not available");
            return;
        }
        camera_ = std::make_unique<QCamera>(device);
        QObject::connect(camera_.get(), &QCamera::errorOccurred, camera_.get(),
                         [this](QCamera::Error, const QString& message) { fail("Camera failed: " + message.toStdString()); });
        capture_.setCamera(camera_.get());
    }
    camera_->start();
}

void LiveCameraSource::stop() {
    relay_.setSink(nullptr);
    if (camera_) camera_->stop();
}

} // namespace orvanta::arsession::camera
