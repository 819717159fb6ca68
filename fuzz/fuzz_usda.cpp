// libFuzzer entry point for the USDA text reader and everything behind it: the bytes are
// parsed as a layer, then composed and turned into a scene. References to other files are
// anchored in a folder that does not exist, so the input never reaches the disk.

#include "import/usd/UsdImporter.h"
#include "import/usd/UsdaParser.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanta::import::usd;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    (void)UsdaParser::parse(text, "fuzz.usda");
    // Through the importer as well, so composition and scene extraction see what parses.
    std::string layer = text.starts_with("#usda") ? std::string(text) : "#usda 1.0\n" + std::string(text);
    const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(layer.data()), layer.size());
    (void)UsdImporter::importBytes(bytes, nullptr, "/nonexistent-fuzz-folder/fuzz.usda");
    return 0;
}
