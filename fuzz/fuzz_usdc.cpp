// libFuzzer entry: arbitrary bytes as a USDC crate layer. The reader must return a layer or
// an error, never crash, hang or exhaust memory.
#include "import/usd/CrateReader.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    (void)orvanta::import::usd::CrateReader::read(std::span<const std::uint8_t>(data, size), "fuzz.usdc");
    return 0;
}
