#pragma once
// Decoding of crate files' compressed integer arrays. A compressed block is a uint64 size and
// an LZ4-framed blob; inside, the most common delta (4 or 8 bytes), then 2-bit codes packed
// four per byte, lowest bits first, then variable-width deltas. Code 0 adds the common delta,
// codes 1-3 add an 8-, 16- or 32-bit delta (16-, 32- or 64-bit for 64-bit integers). The
// values are the running sum from 0.
// Thread: stateless; any thread.

#include "import/usd/CrateBudget.h"
#include "import/usd/CrateCursor.h"

#include <cstdint>
#include <span>
#include <vector>

namespace orvanta::import::usd {

class CrateIntegerCoding {
public:
    // Reads one compressed block of `count` integers at the cursor (uint64 size, LZ4 blob),
    // charging the memory it takes to `budget`. Int is the coded type (std::int32_t,
    // std::uint32_t or std::int64_t); each value is converted to Out as that type. Throws
    // CrateFormatError when the block is broken or shorter than its codes say.
    // Thread: any.
    template <class Int, class Out = Int>
    static std::vector<Out> read(CrateCursor& cursor, std::uint64_t count, CrateBudget& budget);
};

} // namespace orvanta::import::usd
