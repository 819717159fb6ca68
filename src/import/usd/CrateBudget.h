#pragma once
// The memory the crate reader may spend on one layer. Crate values can be shared by many
// fields and compressed data can claim huge element counts, so every decoded allocation is
// charged here before it is made; running out fails the read with limitExceeded instead of
// exhausting memory.
// Thread: used by one reader on one thread.

#include "import/usd/CrateFormatError.h"

#include <cstdint>

namespace orvanta::import::usd {

class CrateBudget {
public:
    explicit CrateBudget(std::uint64_t bytes) : left_(bytes) {}

    // Takes `bytes` from the budget or throws CrateFormatError(limitExceeded). Thread: the reader's.
    void charge(std::uint64_t bytes) {
        if (bytes > left_) {
            throw CrateFormatError("decoded data would exceed the memory budget for this layer",
                                   ImportErrorCode::limitExceeded);
        }
        left_ -= bytes;
    }

private:
    std::uint64_t left_;
};

} // namespace orvanta::import::usd
