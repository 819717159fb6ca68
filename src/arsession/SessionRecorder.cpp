#include "arsession/SessionRecorder.h"

#include "arsession/FrameRecord.h"

namespace orvanta::arsession {

std::variant<std::unique_ptr<SessionRecorder>, core::Error> SessionRecorder::make(ARSession& session,
                                                                                  const QString& path) {
    auto recorder = std::make_unique<SessionRecorder>(Passkey{});
    recorder->file_.setFileName(path);
    if (!recorder->file_.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return core::Error(FrameRecord::errorDomain, 2,
                           "Cannot write the recording " + path.toStdString() + ": " +
                               recorder->file_.errorString().toStdString());
    recorder->subscription_ = session.observeFrames([r = recorder.get()](const ARFrame& frame) { r->write(frame); });
    return recorder;
}

void SessionRecorder::write(const ARFrame& frame) {
    file_.write(FrameRecord::encode(frame));
    file_.write("\n", 1);
    ++framesWritten_;
}

void SessionRecorder::stop() {
    subscription_.cancel();
    file_.close();
}

} // namespace orvanta::arsession
