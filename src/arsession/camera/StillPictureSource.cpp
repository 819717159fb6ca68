#include "arsession/camera/StillPictureSource.h"

#include <cmath>

namespace orvanta::arsession::camera {

StillPictureSource::StillPictureSource(QImage picture, double framesPerSecond)
    : picture_(std::move(picture)), interval_(1.0 / framesPerSecond) {}

core::Result<std::unique_ptr<StillPictureSource>> StillPictureSource::open(const QString& path,
                                                                           double framesPerSecond) {
    QImage picture(path);
    if (picture.isNull()) return core::Error(errorDomain, 1, "Picture " + path.toStdString() + " cannot be read");
    return std::make_unique<StillPictureSource>(std::move(picture), framesPerSecond);
}

void StillPictureSource::start(FrameSink& sink) {
    sink_ = &sink;
    delivered_ = 0;
}

void StillPictureSource::advance(double seconds) {
    if (!sink_) return;
    const long long due = (long long)std::floor(seconds / interval_ + 1e-9) + 1;
    if (due <= delivered_) return;
    delivered_ = due;
    sink_->takeFrame(picture_, double(due - 1) * interval_);
}

} // namespace orvanta::arsession::camera
