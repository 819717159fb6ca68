#pragma once
// The process's temporary directory: $TMPDIR when set, else the system default.
// Thread: any.

#include "core/Url.h"

namespace orvanta::core {

class TemporaryDirectory {
public:
    static Url url();
};

} // namespace orvanta::core
