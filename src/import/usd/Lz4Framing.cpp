#include "import/usd/Lz4Framing.h"

#include "import/usd/CrateCursor.h"

#include <lz4.h>

#include <algorithm>
#include <climits>

namespace orvanta::import::usd {

namespace {

std::size_t decompressBlock(std::span<const std::uint8_t> block, std::span<std::uint8_t> out) {
    if (block.size() > static_cast<std::size_t>(LZ4_MAX_INPUT_SIZE)) {
        throw CrateFormatError("an LZ4 block is larger than LZ4 allows");
    }
    const int capacity = static_cast<int>(std::min<std::size_t>(out.size(), INT_MAX));
    const int written = LZ4_decompress_safe(reinterpret_cast<const char*>(block.data()),
                                            reinterpret_cast<char*>(out.data()), static_cast<int>(block.size()),
                                            capacity);
    if (written < 0) throw CrateFormatError("LZ4 data is corrupt");
    return static_cast<std::size_t>(written);
}

} // namespace

std::size_t Lz4Framing::decompress(std::span<const std::uint8_t> framed, std::span<std::uint8_t> out) {
    CrateCursor in(framed);
    const auto chunks = in.read<std::uint8_t>();
    if (chunks == 0) return decompressBlock(in.take(in.remaining()), out);
    std::size_t written = 0;
    for (unsigned i = 0; i < chunks; ++i) {
        const auto size = in.read<std::int32_t>();
        if (size <= 0) throw CrateFormatError("an LZ4 chunk has a size of " + std::to_string(size));
        written += decompressBlock(in.take(static_cast<std::uint64_t>(size)), out.subspan(written));
    }
    return written;
}

} // namespace orvanta::import::usd
