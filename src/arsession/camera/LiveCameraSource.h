#pragma once
// A camera of the machine through Qt Multimedia. A camera that is missing, fails or goes
// away is reported to the sink as a failure (the session treats it as an interruption).
// Thread: the session's clock queue, which must run an event loop (see FrameSource).

#include "arsession/camera/FrameSource.h"
#include "arsession/camera/VideoSinkRelay.h"

#include <QByteArray>
#include <QCamera>
#include <QMediaCaptureSession>
#include <QMediaDevices>

#include <memory>

namespace orvanta::arsession::camera {

class LiveCameraSource final : public FrameSource {
public:
    static constexpr const char* errorDomain = "FrameSourceError";

    // The camera with Qt's device id `deviceId`; empty for the system's default camera.
    explicit LiveCameraSource(QByteArray deviceId = {});

    void start(FrameSink& sink) override;
    void stop() override;

private:
    void fail(const std::string& message);

    QByteArray deviceId_;
    std::unique_ptr<QCamera> camera_;
    QMediaCaptureSession capture_;
    QMediaDevices devices_; // tells when the camera goes away
    VideoSinkRelay relay_;
};

} // namespace orvanta::arsession::camera
