#pragma once
// Reads a USDC ("crate") layer, versions 0.4.0 to 0.11.0, into a Layer with the same specs,
// paths and field names the text reader produces. The bytes are read in place (they may be
// an entry of a memory-mapped USDZ package); every offset, count and size is checked against
// them, and decoded data is capped by a memory budget derived from the file size.
//
// Values as stored: specifier, variability and permission become Tokens ("def", "uniform",
// ...); token, string and path list ops become TokenArray, StringArray and PathArray holding
// their explicit, added, prepended and appended items; references and payloads (list op or
// single) become ReferenceArray; asset[] and bool[] become StringArray and IntArray; int2-4
// vectors are flattened into IntArray, which keeps the declared type's width. Relationships carry no typeName field.
// Thread: stateless; any thread.

#include "core/Result.h"
#include "import/usd/UsdLayer.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanta::import::usd {

class CrateReader {
public:
    enum class Arrays {
        decodeNow,        // every value is decoded before read returns
        decodeWhenRead,   // large numeric arrays stay encoded as DeferredArrays; `bytes` must
                          // outlive the layer
    };

    // Reads the crate file in `bytes`; `identifier` names the layer in the result and in error
    // messages. Fails with unrecognisedFormat when the bytes are no crate file,
    // unsupportedFeature for a version outside 0.4.0-0.11.0, malformedData for broken or
    // truncated contents and limitExceeded when decoding would exceed the memory budget.
    // Values of types the kit does not use are kept as empty Values. Thread: any.
    static core::Result<Layer> read(std::span<const std::uint8_t> bytes, std::string identifier,
                                    Arrays arrays = Arrays::decodeNow);
};

} // namespace orvanta::import::usd
