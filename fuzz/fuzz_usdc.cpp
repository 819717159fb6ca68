// libFuzzer entry: arbitrary bytes as a USDC crate layer, read the way a stage reads it: the
// structure first, then every array left in the file decoded on its own. The reader must
// return a layer or an error and each decode a value or a CrateFormatError, never crash,
// hang or exhaust memory.
#include "import/usd/CrateFormatError.h"
#include "import/usd/CrateLazyArrays.h"
#include "import/usd/CrateReader.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanta::import::usd;
    const auto layer = CrateReader::read(std::span<const std::uint8_t>(data, size), "fuzz.usdc", CrateReader::Arrays::decodeWhenRead);
    if (!layer) return 0;
    for (const auto& [path, spec] : layer->specs) {
        for (const auto& [name, value] : spec.fields) {
            const auto* deferred = value.get<DeferredArray>();
            if (!deferred) continue;
            try {
                (void)deferred->source->decode(*deferred);
            } catch (const CrateFormatError&) {
            }
        }
    }
    return 0;
}
