#pragma once
// Where a frame source hands its pictures and its failures.
// Thread: both methods may be called on any thread, one call at a time per source.

#include "core/Error.h"

#include <QImage>

namespace orvanta::arsession::camera {

class FrameSink {
public:
    virtual ~FrameSink() = default;
    // A new camera picture taken at `seconds` on the source's clock. The sink copies what it
    // keeps before returning.
    virtual void takeFrame(const QImage& picture, double seconds) = 0;
    // The source stopped delivering: the camera disappeared, a file could not be read.
    virtual void sourceFailed(const core::Error& error) = 0;
};

} // namespace orvanta::arsession::camera
