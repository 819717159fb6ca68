#pragma once
// One photo as a camera: the same picture again at a steady frame rate.
// Thread: the session's clock queue (see FrameSource).

#include "arsession/camera/FrameSource.h"
#include "core/Result.h"

#include <QImage>
#include <QString>

#include <memory>

namespace orvanta::arsession::camera {

class StillPictureSource final : public FrameSource {
public:
    static constexpr const char* errorDomain = "FrameSourceError";

    explicit StillPictureSource(QImage picture, double framesPerSecond = 30.0);
    // The photo at `path` (PNG or JPEG); an error (code 1) names a file that cannot be read.
    static core::Result<std::unique_ptr<StillPictureSource>> open(const QString& path, double framesPerSecond = 30.0);

    void start(FrameSink& sink) override;
    void stop() override { sink_ = nullptr; }
    void advance(double seconds) override;

private:
    QImage picture_;
    double interval_;
    FrameSink* sink_ = nullptr;
    long long delivered_ = 0;
};

} // namespace orvanta::arsession::camera
