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

} // namespace

template <class Int, class Out>
void CrateIntegerCoding::decode(std::span<const std::uint8_t> encoded, std::uint64_t count, std::vector<Out>& out) {
    using Unsigned = std::make_unsigned_t<Int>;
    using D = Deltas<sizeof(Int)>;
    if (encoded.size() < sizeof(Int) || encoded.size() - sizeof(Int) < codeBytes(count)) {
        throw CrateFormatError("compressed integers are shorter than their codes");
    }
    const auto common = load<Unsigned>(encoded.data());
    const std::uint8_t* codes = encoded.data() + sizeof(Int);
    const std::uint8_t* deltas = codes + codeBytes(count);
    const std::uint8_t* const end = encoded.data() + encoded.size();
    // Delta width by code; a delta is read as 8 bytes and sign-extended from its width, so a
    // group of four needs at most 3 * 8 + 8 bytes left to skip the per-value checks.
    constexpr unsigned width[4] = {0, sizeof(typename D::Small), sizeof(typename D::Medium), sizeof(typename D::Large)};
    constexpr std::size_t groupReach = 32;

    Unsigned running = 0;
    const auto next = [&](unsigned code) {
        if (code == 0) return common;
        const unsigned shift = 64 - 8 * width[code];
        const auto delta = static_cast<std::int64_t>(load<std::uint64_t>(deltas) << shift) >> shift;
        deltas += width[code];
        return static_cast<Unsigned>(delta);
    };
    std::uint64_t i = 0;
    for (; i + 4 <= count && static_cast<std::size_t>(end - deltas) >= groupReach; i += 4) {
        const unsigned byte = codes[i / 4];
        for (unsigned j = 0; j < 4; ++j) {
            running += next((byte >> (2 * j)) & 3u);
            out.push_back(static_cast<Out>(static_cast<Int>(running)));
        }
    }
    // The last values, near the end of the data: check each delta and read it exactly.
    for (; i < count; ++i) {
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
        out.push_back(static_cast<Out>(static_cast<Int>(running)));
    }
}

template <class Int, class Out>
std::vector<Out> CrateIntegerCoding::read(CrateCursor& cursor, std::uint64_t count, CrateBudget& budget) {
    const auto framed = cursor.take(cursor.read<std::uint64_t>());
    const std::uint64_t inflatedMax = framed.size() * Lz4Framing::maxExpansion + 64;
    if (count / 4 > inflatedMax) {  // every value takes at least a 2-bit code
        throw CrateFormatError(std::to_string(count) + " compressed integers cannot fit in " +
                               std::to_string(framed.size()) + " bytes");
    }
    // The block holds the common delta, the codes and at most one full-width delta per value,
    // and LZ4 cannot have expanded the framed bytes beyond maxExpansion. The buffer is left
    // uninitialised: only the pages LZ4 writes are ever touched.
    const std::uint64_t capacity = std::min(sizeof(Int) + codeBytes(count) + count * sizeof(Int), inflatedMax);
    budget.charge(capacity);
    const auto working = std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(capacity));
    const std::size_t decoded =
        Lz4Framing::decompress(framed, std::span<std::uint8_t>(working.get(), static_cast<std::size_t>(capacity)));
    budget.charge(count * sizeof(Out));
    std::vector<Out> out;
    out.reserve(static_cast<std::size_t>(count));
    decode<Int, Out>(std::span<const std::uint8_t>(working.get(), decoded), count, out);
    return out;
}

template std::vector<std::int32_t> CrateIntegerCoding::read<std::int32_t>(CrateCursor&, std::uint64_t, CrateBudget&);
template std::vector<std::int64_t> CrateIntegerCoding::read<std::uint32_t, std::int64_t>(CrateCursor&, std::uint64_t, CrateBudget&);
template std::vector<std::int64_t> CrateIntegerCoding::read<std::int64_t>(CrateCursor&, std::uint64_t, CrateBudget&);

} // namespace orvanta::import::usd
