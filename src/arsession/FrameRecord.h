#pragma once
// The text form of one frame in a session recording: one JSON object per line,
//   {"t":<seconds>,"camera":{"transform":[16 numbers, column-major],"tracking":"<state>",
//    "fov":<radians>[,"intrinsics":[fx,fy,cx,cy],"image":[width,height]]},"planes":[{"id":"<uuid>","transform":[16],"alignment":"horizontal",
//    "center":[x,y,z],"extent":[x,y,z],"classification":"table"}, ...]}
// Numbers are written in their shortest exact form, so a frame reads back equal.
// Thread: pure functions, any thread.

#include "arsession/ARFrame.h"
#include "core/Error.h"

#include <QByteArray>

#include <variant>

namespace orvanta::arsession {

class FrameRecord {
public:
    // Errors of recordings: code 1 a malformed line, 2 a file that cannot be written, 3 a file
    // that cannot be read; the message names the problem.
    static constexpr const char* errorDomain = "FrameRecordError";

    // One line without its newline.
    static QByteArray encode(const ARFrame& frame);
    // The frame in `line`, or an error (code 1) for malformed text.
    static std::variant<ARFrame, core::Error> decode(const QByteArray& line);
};

} // namespace orvanta::arsession
