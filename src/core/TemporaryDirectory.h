#pragma once
// The process's temporary directory, private to the user: $TMPDIR when set, otherwise a
// directory of the kit's own under the system's shared temporary folder, made with mode
// 0700. Files there are trusted as the kit's own, so a directory another user could write
// into, or swap for a link, is refused rather than used.
// Thread: any.

#include "core/Result.h"
#include "core/Url.h"

#include <string>

namespace orvanta::core {

class TemporaryDirectory {
public:
    // Fails ("TemporaryDirectoryError") when $TMPDIR names no usable directory, or when the
    // kit's own directory cannot be made or is not private (see privateDirectoryUnder).
    static Result<Url> url();

    // The kit's directory under `shared`, made on first use. Refused when it is a symbolic
    // link or not a directory, belongs to another user, or lets anyone but its owner in.
    static Result<Url> privateDirectoryUnder(const std::string& shared);
};

} // namespace orvanta::core
