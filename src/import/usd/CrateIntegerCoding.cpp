#include "import/usd/CrateIntegerCoding.h"

#include "import/usd/Lz4Framing.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <type_traits>

namespace orvanta::import::usd {

namespace {

// Delta widths by the size of the coded integers.
template <std::size_t bytes> struct Deltas;
template <> struct Deltas<4> { using Small = std::int8_t; using Medium = std::int16_t; using Large = std::int32_t; };
template <> struct Deltas<8> { using Small = std::int16_t; using Medium = std::int32_t; using Large = std::int64_t; };

template <class T> T load(const std::uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof(T));
    return value;
}

std::uint64_t codeBytes(std::uint64_t count) { return (count + 3) / 4; }

// Decodes `count` values from `block`, which lies inside `storage` (the result's own bytes,
// room for count + 4 values), into the start of `storage`. `codes` is a copy of the block's
// codes. A value must never be written over a delta not yet read: when the writes would
// reach the unread deltas, those are moved to the end of `storage` once, from where every
// delta lies at or past the place of its value (no delta is wider than its value).
template <class Int, class Out>
void decodeInPlace(std::span<std::uint8_t> storage, std::span<const std::uint8_t> block, std::span<const std::uint8_t> codes,
                   std::uint64_t count) {
    using Unsigned = std::make_unsigned_t<Int>;
    using D = Deltas<sizeof(Int)>;
    Out* const out = reinterpret_cast<Out*>(storage.data());
    const auto common = load<Unsigned>(block.data());
    const std::uint8_t* deltas = block.data() + sizeof(Int) + codes.size();
    const std::uint8_t* end = block.data() + block.size();
    bool moved = false;
    // Makes room for values [0, written) below the unread deltas.
    const auto keepAhead = [&](std::uint64_t written) {
        if (storage.data() + written * sizeof(Out) <= deltas) return;
        if (!moved) {
            const auto rest = static_cast<std::size_t>(end - deltas);
            std::uint8_t* const to = storage.data() + storage.size() - rest;
            std::memmove(to, deltas, rest);
            deltas = to;
            end = to + rest;
            moved = true;
        }
        if (storage.data() + written * sizeof(Out) > deltas) {
            throw CrateFormatError("compressed integers hold more bytes than their codes use");
        }
    };
    // Delta width by code; a delta is read as 8 bytes and sign-extended from its width by a
    // shift pair, so a group of four needs at most 3 * 8 + 8 bytes left to skip the per-value
    // checks. Code 0 reads a delta too and discards it, which keeps the loop free of
    // data-dependent branches (random indices make those codes unpredictable).
    constexpr unsigned width[4] = {0, sizeof(typename D::Small), sizeof(typename D::Medium), sizeof(typename D::Large)};
    constexpr unsigned shift[4] = {0, 64 - 8 * width[1], 64 - 8 * width[2], 64 - 8 * width[3]};
    constexpr std::size_t groupReach = 32;

    Unsigned running = 0;
    std::uint64_t i = 0;
    for (; i + 4 <= count && static_cast<std::size_t>(end - deltas) >= groupReach; i += 4) {
        keepAhead(i + 4);
        const unsigned byte = codes[i / 4];
        for (unsigned j = 0; j < 4; ++j) {
            const unsigned code = (byte >> (2 * j)) & 3u;
            const auto delta = static_cast<std::int64_t>(load<std::uint64_t>(deltas) << shift[code]) >> shift[code];
            running += code == 0 ? common : static_cast<Unsigned>(delta);
            deltas += width[code];
            out[i + j] = static_cast<Out>(static_cast<Int>(running));
        }
    }
    // The last values, near the end of the data: check each delta and read it exactly.
    for (; i < count; ++i) {
        keepAhead(i + 1);
        const unsigned code = (codes[i / 4] >> (2 * (i % 4))) & 3u;
        if (static_cast<std::size_t>(end - deltas) < width[code]) {
            throw CrateFormatError("compressed integers end before their last delta");
        }
        switch (code) {
        case 0: running += common; break;
        case 1: running += static_cast<Unsigned>(load<typename D::Small>(deltas)); break;
        case 2: running += static_cast<Unsigned>(load<typename D::Medium>(deltas)); break;
        default: running += static_cast<Unsigned>(load<typename D::Large>(deltas)); break;
        }
        deltas += width[code];
        out[i] = static_cast<Out>(static_cast<Int>(running));
    }
}

} // namespace

template <class Int, class Out>
std::vector<Out> CrateIntegerCoding::read(CrateCursor& cursor, std::uint64_t count, CrateBudget& budget) {
    static_assert(sizeof(Out) >= sizeof(Int), "decoding in place needs every value to grow or keep its size");
    const auto framed = cursor.take(cursor.read<std::uint64_t>());
    const std::uint64_t inflatedMax = framed.size() * Lz4Framing::maxExpansion + 64;
    if (count / 4 > inflatedMax) {  // every value takes at least a 2-bit code
        throw CrateFormatError(std::to_string(count) + " compressed integers cannot fit in " +
                               std::to_string(framed.size()) + " bytes");
    }
    // The block holds the common delta, the codes and at most one full-width delta per value,
    // and LZ4 cannot have expanded the framed bytes beyond maxExpansion. It is inflated into
    // the tail of the result's own storage and decoded from there into its head, so no
    // second buffer of the block's size is ever needed.
    const std::uint64_t blockMax = std::min(sizeof(Int) + codeBytes(count) + count * sizeof(Int), inflatedMax);
    const std::uint64_t storage = std::max<std::uint64_t>(count + 4, (blockMax + sizeof(Out) - 1) / sizeof(Out));
    budget.charge(storage * sizeof(Out) + codeBytes(count));
    std::vector<Out> out(static_cast<std::size_t>(storage));
    const std::span<std::uint8_t> bytes(reinterpret_cast<std::uint8_t*>(out.data()), out.size() * sizeof(Out));
    const std::span<std::uint8_t> block = bytes.last(static_cast<std::size_t>(blockMax));
    const std::size_t inflated = Lz4Framing::decompress(framed, block);
    if (inflated < sizeof(Int) + codeBytes(count)) throw CrateFormatError("compressed integers are shorter than their codes");
    const std::vector<std::uint8_t> codes(block.begin() + sizeof(Int), block.begin() + static_cast<std::ptrdiff_t>(sizeof(Int) + codeBytes(count)));
    decodeInPlace<Int, Out>(bytes, block.first(inflated), codes, count);
    out.resize(static_cast<std::size_t>(count));
    return out;
}

template std::vector<std::int32_t> CrateIntegerCoding::read<std::int32_t>(CrateCursor&, std::uint64_t, CrateBudget&);
template std::vector<std::int64_t> CrateIntegerCoding::read<std::uint32_t, std::int64_t>(CrateCursor&, std::uint64_t, CrateBudget&);
template std::vector<std::int64_t> CrateIntegerCoding::read<std::int64_t>(CrateCursor&, std::uint64_t, CrateBudget&);

} // namespace orvanta::import::usd
