#include "arsession/camera/PictureFolderSource.h"

#include <QDir>
#include <QImage>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace orvanta::arsession::camera {

core::Result<std::unique_ptr<PictureFolderSource>> PictureFolderSource::open(const QString& folder,
                                                                             double framesPerSecond) {
    const QDir dir(folder);
    QStringList names = dir.entryList({"*.png", "*.jpg", "*.jpeg", "*.PNG", "*.JPG", "*.JPEG"}, QDir::Files);
    if (names.isEmpty())
        return core::Error(errorDomain, 1, "Folder " + folder.toStdString() + " holds no PNG or JPEG pictures");
    // Numeric order: frame2 before frame10. The last run of digits counts, then the name.
    const auto number = [](const QString& name) {
        static const QRegularExpression digits("(\\d+)\\D*$");
        const auto match = digits.match(name);
        return match.hasMatch() ? match.captured(1).toULongLong() : 0ull;
    };
    std::sort(names.begin(), names.end(), [&](const QString& a, const QString& b) {
        return std::pair(number(a), a) < std::pair(number(b), b);
    });
    for (QString& name : names) name = dir.filePath(name);
    return std::make_unique<PictureFolderSource>(std::move(names), framesPerSecond);
}

PictureFolderSource::PictureFolderSource(QStringList files, double framesPerSecond)
    : files_(std::move(files)), interval_(1.0 / framesPerSecond), loader_([this] { load(); }) {}

PictureFolderSource::~PictureFolderSource() {
    {
        std::lock_guard lock(mutex_);
        quitting_ = true;
    }
    wake_.notify_one();
    loader_.join();
}

void PictureFolderSource::start(FrameSink& sink) {
    std::lock_guard lock(mutex_);
    sink_ = &sink;
}

void PictureFolderSource::stop() {
    std::lock_guard lock(mutex_);
    sink_ = nullptr;
}

void PictureFolderSource::advance(double seconds) {
    const int due = std::min(int(std::floor(seconds / interval_ + 1e-9)) + 1, int(files_.size()));
    {
        std::lock_guard lock(mutex_);
        if (due <= requested_) return;
        requested_ = due;
    }
    wake_.notify_one();
}

void PictureFolderSource::load() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return quitting_ || (sink_ && loaded_ < requested_); });
        if (quitting_) return;
        // Only the newest due picture is read: one the clock has already passed is skipped.
        const int index = requested_ - 1;
        lock.unlock();
        const QImage picture(files_[index]);
        lock.lock();
        loaded_ = index + 1;
        if (!sink_) continue;
        if (picture.isNull())
            sink_->sourceFailed(core::Error(errorDomain, 1, "Picture " + files_[index].toStdString() + " cannot be read"));
        else
            sink_->takeFrame(picture, index * interval_);
    }
}

} // namespace orvanta::arsession::camera
