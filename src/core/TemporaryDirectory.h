#pragma once
// The kit's own folder inside the temporary directory: $TMPDIR when set, otherwise the
// system's shared temporary folder. The temporary directory itself is shared with every other
// program of the user, so the kit never keeps files loose in it: its cache (downloaded models,
// shared pictures) lives in "OrvantaARFoodSDK-<uid>", made with mode 0700. Files there are
// trusted as the kit's own, so a folder another user could write into, or swap for a link,
// is refused rather than used.
// Thread: any.

#include "core/Result.h"
#include "core/Url.h"

#include <string>

namespace orvanta::core {

class TemporaryDirectory {
public:
    // The kit's folder, made on first use. Fails ("TemporaryDirectoryError") when $TMPDIR
    // names no usable directory, or when the kit's folder cannot be made or is not private
    // (see privateDirectoryUnder).
    static Result<Url> url();

    // The kit's folder under `shared`, made on first use. Refused when it is a symbolic link
    // or not a directory, belongs to another user, or lets anyone but its owner in.
    static Result<Url> privateDirectoryUnder(const std::string& shared);

    // Removes everything inside the kit's folder, and nothing outside it: the folder stays,
    // empty. Links inside it are removed, never followed. Returns how many entries went.
    static Result<int> clear();
};

} // namespace orvanta::core
