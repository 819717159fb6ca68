#include "import/usd/CrateIntegerCoding.h"

#include "import/usd/Lz4Framing.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace orvanta::import::usd {

namespace {

template <class Int> struct Deltas;
template <> struct Deltas<std::int32_t> { using Small = std::int8_t; using Medium = std::int16_t; using Large = std::int32_t; };
template <> struct Deltas<std::int64_t> { using Small = std::int16_t; using Medium = std::int32_t; using Large = std::int64_t; };

template <class T> T load(const std::uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof(T));
    return value;
}

std::uint64_t codeBytes(std::uint64_t count) { return (count + 3) / 4; }

} // namespace

template <class Int>
void CrateIntegerCoding::decode(std::span<const std::uint8_t> encoded, std::span<Int> out) {
    using Unsigned = std::make_unsigned_t<Int>;
    using D = Deltas<Int>;
    const std::uint64_t count = out.size();
    if (encoded.size() < sizeof(Int) || encoded.size() - sizeof(Int) < codeBytes(count)) {
        throw CrateFormatError("compressed integers are shorter than their codes");
    }
    const auto common = static_cast<Unsigned>(load<Int>(encoded.data()));
    const std::uint8_t* codes = encoded.data() + sizeof(Int);
    const std::uint8_t* deltas = codes + codeBytes(count);
    const std::uint8_t* end = encoded.data() + encoded.size();
    // Far from the end every delta fits; only the last few need checking.
    constexpr std::size_t groupMax = sizeof(typename D::Large);

    Unsigned running = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const unsigned code = (codes[i / 4] >> (2 * (i % 4))) & 3u;
        if (code != 0 && static_cast<std::size_t>(end - deltas) < groupMax) {
            const std::size_t need = code == 1 ? sizeof(typename D::Small)
                                    : code == 2 ? sizeof(typename D::Medium)
                                                : sizeof(typename D::Large);
            if (static_cast<std::size_t>(end - deltas) < need) {
                throw CrateFormatError("compressed integers end before their last delta");
            }
        }
        switch (code) {
        case 0: running += common; break;
        case 1: running += static_cast<Unsigned>(load<typename D::Small>(deltas)); deltas += sizeof(typename D::Small); break;
        case 2: running += static_cast<Unsigned>(load<typename D::Medium>(deltas)); deltas += sizeof(typename D::Medium); break;
        default: running += static_cast<Unsigned>(load<typename D::Large>(deltas)); deltas += sizeof(typename D::Large); break;
        }
        out[i] = static_cast<Int>(running);
    }
}

template <class Int>
std::vector<Int> CrateIntegerCoding::read(CrateCursor& cursor, std::uint64_t count, CrateBudget& budget) {
    const auto framed = cursor.take(cursor.read<std::uint64_t>());
    const std::uint64_t inflatedMax = framed.size() * Lz4Framing::maxExpansion + 64;
    if (count / 4 > inflatedMax) {  // every value takes at least a 2-bit code
        throw CrateFormatError(std::to_string(count) + " compressed integers cannot fit in " +
                               std::to_string(framed.size()) + " bytes");
    }
    // The block holds the common delta, the codes and at most one full-width delta per value,
    // and LZ4 cannot have expanded the framed bytes beyond maxExpansion.
    const std::uint64_t largest = sizeof(Int) + codeBytes(count) + count * sizeof(Int);
    const std::uint64_t capacity = std::min(largest, inflatedMax);
    budget.charge(capacity);
    std::vector<std::uint8_t> working(static_cast<std::size_t>(capacity));
    const std::size_t decoded = Lz4Framing::decompress(framed, working);
    budget.charge(count * sizeof(Int));
    std::vector<Int> out(static_cast<std::size_t>(count));
    decode<Int>(std::span<const std::uint8_t>(working.data(), decoded), out);
    return out;
}

template void CrateIntegerCoding::decode<std::int32_t>(std::span<const std::uint8_t>, std::span<std::int32_t>);
template void CrateIntegerCoding::decode<std::int64_t>(std::span<const std::uint8_t>, std::span<std::int64_t>);
template std::vector<std::int32_t> CrateIntegerCoding::read<std::int32_t>(CrateCursor&, std::uint64_t, CrateBudget&);
template std::vector<std::int64_t> CrateIntegerCoding::read<std::int64_t>(CrateCursor&, std::uint64_t, CrateBudget&);

} // namespace orvanta::import::usd
