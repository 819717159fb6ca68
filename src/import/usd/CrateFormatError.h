#pragma once
// The failure raised inside the crate reader when the bytes break the format or a limit.
// It never leaves the reader: CrateReader::read turns it into a core::Error. Unwinding from
// deep inside value decoding keeps the many bounds checks to one line each.
// Thread: a value type.

#include "import/ImportError.h"

#include <stdexcept>
#include <string>

namespace orvanta::import::usd {

class CrateFormatError : public std::runtime_error {
public:
    explicit CrateFormatError(const std::string& message, ImportErrorCode code = ImportErrorCode::malformedData)
        : std::runtime_error(message), code_(code) {}

    ImportErrorCode code() const { return code_; }

private:
    ImportErrorCode code_;
};

} // namespace orvanta::import::usd
