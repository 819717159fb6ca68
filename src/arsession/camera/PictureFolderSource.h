#pragma once
// A folder of numbered pictures (PNG or JPEG, in the numeric order of their names) played
// once at a given frame rate of the session clock; the last picture's pose stays. Pictures
// are read on a loader thread of the source's own, so the session's clock never waits on a
// file.
// Thread: the session's clock queue (see FrameSource).

#include "arsession/camera/FrameSource.h"
#include "core/Result.h"

#include <QString>
#include <QStringList>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace orvanta::arsession::camera {

class PictureFolderSource final : public FrameSource {
public:
    static constexpr const char* errorDomain = "FrameSourceError";

    // The pictures of `folder`; an error (code 1) when it holds none.
    static core::Result<std::unique_ptr<PictureFolderSource>> open(const QString& folder, double framesPerSecond);
    PictureFolderSource(QStringList files, double framesPerSecond);
    ~PictureFolderSource() override;

    void start(FrameSink& sink) override;
    void stop() override;
    void advance(double seconds) override;

private:
    void load();

    const QStringList files_;
    const double interval_;
    std::mutex mutex_;
    std::condition_variable wake_;
    FrameSink* sink_ = nullptr; // guarded by mutex_
    int requested_ = 0;         // pictures due so far; guarded by mutex_
    int loaded_ = 0;            // pictures delivered so far; loader thread only
    bool quitting_ = false;
    std::thread loader_;
};

} // namespace orvanta::arsession::camera
