#pragma once
// The chunked LZ4 framing crate files wrap around compressed blobs: a first byte with the
// chunk count; 0 means the rest is one raw LZ4 block, otherwise each chunk is an int32 size
// followed by a raw block. Blocks are decoded with LZ4_decompress_safe, which never writes
// past the output or reads past the input.
// Thread: stateless; any thread.

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanta::import::usd {

class Lz4Framing {
public:
    // An LZ4 block cannot expand its input by more than this factor; used to cap output
    // buffers by what a compressed blob can actually hold.
    static constexpr std::uint64_t maxExpansion = 256;

    // Decompresses `framed` into `out` and returns the number of bytes written. Throws
    // CrateFormatError when the framing or a block is broken or the output does not fit.
    // Thread: any.
    static std::size_t decompress(std::span<const std::uint8_t> framed, std::span<std::uint8_t> out);
};

} // namespace orvanta::import::usd
