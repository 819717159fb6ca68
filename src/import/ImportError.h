#pragma once
// Errors of the model importers, all in the "ModelImportError" domain.
// Thread: any.

#include "core/Error.h"

#include <string>

namespace orvanta::import {

enum class ImportErrorCode {
    unreadableFile = 1,     // cannot open, map or read the file
    unrecognisedFormat = 2, // the bytes are no model format the kit reads
    malformedData = 3,      // a known format whose contents are broken or truncated
    unsupportedFeature = 4, // valid, but uses something the kit cannot read (say, a required extension)
    limitExceeded = 5,      // declared sizes or counts beyond what the kit accepts
};

inline constexpr const char* importErrorDomain = "ModelImportError";

inline core::Error importError(ImportErrorCode code, std::string message) {
    return core::Error(importErrorDomain, static_cast<int>(code), std::move(message));
}

} // namespace orvanta::import
