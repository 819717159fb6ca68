// libFuzzer entry: arbitrary bytes as a USDZ package. Opens the archive, resolves asset
// paths against its entries, reads crate layers and opens nested packages in place.
#include "import/usd/CrateReader.h"
#include "import/usd/UsdzArchive.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace {

using orvanta::import::usd::CrateReader;
using orvanta::import::usd::UsdzArchive;

void readPackage(std::span<const std::uint8_t> bytes, int depth) {
    auto archive = UsdzArchive::open(bytes, nullptr);
    if (!archive) return;
    const std::string& layer = archive->entries().front().path;
    for (const auto& entry : archive->entries()) {
        if (const auto resolved = UsdzArchive::resolve(layer, "./" + entry.path)) (void)archive->find(*resolved);
        if (entry.data.size() >= 8 && std::memcmp(entry.data.data(), "PXR-USDC", 8) == 0) {
            (void)CrateReader::read(entry.data, entry.path);
        } else if (depth == 0 && entry.path.ends_with(".usdz")) {
            readPackage(entry.data, depth + 1);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readPackage(std::span<const std::uint8_t>(data, size), 0);
    return 0;
}
