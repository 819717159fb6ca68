#pragma once
// Writes every frame of a session to a file, one FrameRecord line per frame, from the moment
// it is made until it is destroyed or stop() is called. Opening the file is an expected
// failure reported by make().
// Thread: the session's clock queue.

#include "arsession/ARSession.h"
#include "core/Cancellable.h"
#include "core/Error.h"

#include <QFile>
#include <QString>

#include <memory>
#include <variant>

namespace orvanta::arsession {

class SessionRecorder {
    struct Passkey {}; // only make() constructs recorders

public:
    explicit SessionRecorder(Passkey) {}
    static std::variant<std::unique_ptr<SessionRecorder>, core::Error> make(ARSession& session, const QString& path);
    ~SessionRecorder() = default;
    SessionRecorder(const SessionRecorder&) = delete;
    SessionRecorder& operator=(const SessionRecorder&) = delete;

    // Stops recording and flushes the file.
    void stop();
    int framesWritten() const { return framesWritten_; }

private:
    void write(const ARFrame& frame);

    QFile file_;
    core::Cancellable subscription_;
    int framesWritten_ = 0;
};

} // namespace orvanta::arsession
