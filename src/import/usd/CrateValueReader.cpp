#include "import/usd/CrateValueReader.h"

#include "import/usd/CrateIntegerCoding.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace orvanta::import::usd {

namespace {

// The first `n` little-endian values of `raw`, copied without zero-filling the result first
// (the arrays are the bulk of a layer: points, normals, texture coordinates). Staging
// through a small buffer keeps the copy alignment-safe.
template <class T>
std::vector<T> copyPlain(std::span<const std::uint8_t> raw, std::size_t n) {
    constexpr std::size_t stage = 1024;
    std::vector<T> out;
    out.reserve(n);
    T buffer[stage];
    for (std::size_t done = 0; done < n;) {
        const std::size_t k = std::min(stage, n - done);
        std::memcpy(buffer, raw.data() + done * sizeof(T), k * sizeof(T));
        out.insert(out.end(), buffer, buffer + k);
        done += k;
    }
    return out;
}

// The crate type numbers the reader understands; any other number reads as an empty Value.
enum CrateType : std::uint8_t {
    typeBool = 1, typeUChar, typeInt, typeUInt, typeInt64, typeUInt64, typeHalf, typeFloat, typeDouble,
    typeString, typeToken, typeAssetPath, typeMatrix2d, typeMatrix3d, typeMatrix4d, typeQuatd, typeQuatf,
    typeQuath, typeVec2d, typeVec2f, typeVec2h, typeVec2i, typeVec3d, typeVec3f, typeVec3h, typeVec3i,
    typeVec4d, typeVec4f, typeVec4h, typeVec4i, typeDictionary, typeTokenListOp, typeStringListOp,
    typePathListOp, typeReferenceListOp, typeIntListOp, typeInt64ListOp, typeUIntListOp, typeUInt64ListOp,
    typePathVector, typeTokenVector, typeSpecifier, typePermission, typeVariability, typeVariantSelectionMap,
    typeTimeSamples, typePayload, typeDoubleVector, typeLayerOffsetVector, typeStringVector, typeValueBlock,
    typeValue, typeUnregisteredValue, typeUnregisteredValueListOp, typePayloadListOp, typeTimeCode,
};

constexpr std::uint64_t arrayBit = 1ull << 63;
constexpr std::uint64_t inlinedBit = 1ull << 62;
constexpr std::uint64_t compressedBit = 1ull << 61;
// Shorter arrays are written plainly even when flagged compressed.
constexpr std::uint64_t minCompressedArraySize = 16;
// Dictionaries and time samples hold values; deeper nesting is refused.
constexpr int maxDepth = 16;
// What one decoded Value costs beyond its elements, charged so shared or self-referencing
// values cannot multiply without bound.
constexpr std::uint64_t valueCost = sizeof(Value) + 32;

enum class Component : std::uint8_t { none, u8, i32, u32, i64, u64, f16, f32, f64 };

std::size_t componentSize(Component c) {
    switch (c) {
    case Component::u8: return 1;
    case Component::f16: return 2;
    case Component::i32: case Component::u32: case Component::f32: return 4;
    case Component::i64: case Component::u64: case Component::f64: return 8;
    case Component::none: break;
    }
    return 0;
}

bool isInteger(Component c) {
    return c == Component::u8 || c == Component::i32 || c == Component::u32 || c == Component::i64 ||
           c == Component::u64;
}

template <class T> T load(const std::uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof(T));
    return value;
}

float halfToFloat(std::uint16_t half) {
    const std::uint32_t sign = (half & 0x8000u) << 16;
    const std::uint32_t exponent = (half >> 10) & 0x1fu;
    const std::uint32_t mantissa = half & 0x3ffu;
    if (exponent == 0) {  // zero or subnormal
        const float magnitude = std::ldexp(static_cast<float>(mantissa), -24);
        return sign ? -magnitude : magnitude;
    }
    const std::uint32_t bits = exponent == 31 ? sign | 0x7f800000u | (mantissa << 13)
                                              : sign | ((exponent + 112) << 23) | (mantissa << 13);
    return std::bit_cast<float>(bits);
}

// One component of `c` at `at`, widened.
double loadReal(Component c, const std::uint8_t* at) {
    switch (c) {
    case Component::f16: return halfToFloat(load<std::uint16_t>(at));
    case Component::f32: return load<float>(at);
    default: return load<double>(at);
    }
}
std::int64_t loadInteger(Component c, const std::uint8_t* at) {
    switch (c) {
    case Component::u8: return *at;
    case Component::i32: return load<std::int32_t>(at);
    case Component::u32: return load<std::uint32_t>(at);
    default: return load<std::int64_t>(at);
    }
}

// The name of an enum value; a value this reader does not know reads as an empty Value.
Value enumToken(std::uint64_t value, std::initializer_list<const char*> names) {
    if (value >= names.size()) return Value{};
    return Value{Token{names.begin()[value]}};
}

} // namespace

// The shape of a numeric crate type: its component type and count, and whether it is a
// square matrix (inlined as its diagonal).
struct CrateValueReader::Numeric {
    Component component = Component::none;
    int width = 0;
    bool matrix = false;

    static Numeric of(std::uint8_t type) {
        using C = Component;
        switch (type) {
        case typeUChar: return {C::u8, 1};
        case typeInt: return {C::i32, 1};
        case typeUInt: return {C::u32, 1};
        case typeInt64: return {C::i64, 1};
        case typeUInt64: return {C::u64, 1};
        case typeHalf: return {C::f16, 1};
        case typeFloat: return {C::f32, 1};
        case typeDouble: case typeTimeCode: return {C::f64, 1};
        case typeMatrix2d: return {C::f64, 4, true};
        case typeMatrix3d: return {C::f64, 9, true};
        case typeMatrix4d: return {C::f64, 16, true};
        case typeQuatd: return {C::f64, 4};
        case typeQuatf: return {C::f32, 4};
        case typeQuath: return {C::f16, 4};
        case typeVec2d: return {C::f64, 2};
        case typeVec2f: return {C::f32, 2};
        case typeVec2h: return {C::f16, 2};
        case typeVec2i: return {C::i32, 2};
        case typeVec3d: return {C::f64, 3};
        case typeVec3f: return {C::f32, 3};
        case typeVec3h: return {C::f16, 3};
        case typeVec3i: return {C::i32, 3};
        case typeVec4d: return {C::f64, 4};
        case typeVec4f: return {C::f32, 4};
        case typeVec4h: return {C::f16, 4};
        case typeVec4i: return {C::i32, 4};
        default: return {};
        }
    }
    std::size_t elementSize() const { return componentSize(component) * static_cast<std::size_t>(width); }
};

Value CrateValueReader::unpack(std::uint64_t rep, int depth) {
    if (depth > maxDepth) throw CrateFormatError("values are nested too deeply");
    budget_.charge(valueCost);
    const auto type = static_cast<std::uint8_t>((rep >> 48) & 0xff);
    const std::uint64_t payload = rep & offsetMask;
    if (rep & arrayBit) {
        if (payload == 0) {  // an empty array: no data was written
            CrateCursor nothing(std::span<const std::uint8_t>{});
            return readArray(type, nothing, false);
        }
        if (depth == 0 && storage_ == Storage::deferLargeArrays && worthDeferring(type, payload)) return Value{DeferredArray{deferTo_, rep}};
        CrateCursor at(file_, payload);
        return readArray(type, at, (rep & compressedBit) != 0);
    }
    if (rep & inlinedBit) return unpackInlined(type, payload);
    CrateCursor at(file_, payload);
    return readScalar(type, at, depth);
}

bool CrateValueReader::worthDeferring(std::uint8_t type, std::uint64_t offset) {
    const Numeric numeric = Numeric::of(type);
    if (numeric.component == Component::none) return false;
    CrateCursor at(file_, offset);
    const std::uint64_t count = readArrayCount(at);
    return count >= minDeferredArrayBytes / numeric.elementSize();
}

Value CrateValueReader::unpackInlined(std::uint8_t type, std::uint64_t payload) {
    const auto low = static_cast<std::uint32_t>(payload);
    switch (type) {
    case typeBool: return Value{low != 0};
    case typeString: return Value{tables_.string(low)};
    case typeToken: return Value{Token{tables_.token(low)}};
    case typeAssetPath: return Value{AssetPath{tables_.token(low)}};
    case typeSpecifier: return enumToken(low, {"def", "over", "class"});
    case typePermission: return enumToken(low, {"public", "private"});
    case typeVariability: return enumToken(low, {"varying", "uniform", "config"});
    case typeDictionary: return Value{Dictionary{}};
    default: break;
    }
    const Numeric numeric = Numeric::of(type);
    if (numeric.component == Component::none) return Value{};
    if (numeric.width == 1) {
        // Scalars of up to four bytes sit in the payload as they are; wider ones were written
        // as their 32-bit counterpart because the value fits it.
        switch (numeric.component) {
        case Component::u8: return Value{IntArray{IntArray::Narrow{static_cast<std::int32_t>(low & 0xffu)}, false}};
        case Component::i32: return Value{IntArray{IntArray::Narrow{std::bit_cast<std::int32_t>(low)}, false}};
        case Component::i64: return Value{IntArray{IntArray::Wide{std::bit_cast<std::int32_t>(low)}, false}};
        case Component::u32: case Component::u64: return Value{IntArray{IntArray::Wide{low}, false}};
        case Component::f16: return Value{FloatArray{1, {halfToFloat(static_cast<std::uint16_t>(low))}, false}};
        case Component::f32: return Value{FloatArray{1, {std::bit_cast<float>(low)}, false}};
        default: return Value{DoubleArray{1, {std::bit_cast<float>(low)}, false}};
        }
    }
    // Vectors whose components all fit int8 keep them in the payload's low bytes; matrices
    // keep only their diagonal that way.
    std::vector<double> components(static_cast<std::size_t>(numeric.width), 0.0);
    const int dimension = numeric.matrix ? static_cast<int>(std::lround(std::sqrt(numeric.width))) : numeric.width;
    for (int i = 0; i < dimension; ++i) {
        const auto component = static_cast<std::int8_t>((payload >> (8 * i)) & 0xffu);
        components[static_cast<std::size_t>(numeric.matrix ? i * dimension + i : i)] = component;
    }
    switch (numeric.component) {
    case Component::f64: return Value{DoubleArray{numeric.width, std::move(components), false}};
    case Component::f32: case Component::f16:
        return Value{FloatArray{numeric.width, std::vector<float>(components.begin(), components.end()), false}};
    default: return Value{IntArray{IntArray::Narrow(components.begin(), components.end()), false}};
    }
}

Value CrateValueReader::readScalar(std::uint8_t type, CrateCursor& at, int depth) {
    switch (type) {
    case typeBool: case typeString: case typeToken: case typeAssetPath: case typeSpecifier:
    case typePermission: case typeVariability:
        // Normally inlined; out of line the same 32 bits sit at the offset.
        return unpackInlined(type, at.read<std::uint32_t>());
    case typeDictionary: return Value{readDictionary(at, depth)};
    case typeTimeSamples: return Value{readTimeSamples(at, depth)};
    case typeTokenListOp:
        return Value{readListOp<Token>(at, 4, [&](CrateCursor& c) { return Token{tables_.token(c.read<std::uint32_t>())}; })};
    case typeStringListOp:
        return Value{StringArray{readListOp<std::string>(at, 4, [&](CrateCursor& c) { return tables_.string(c.read<std::uint32_t>()); })}};
    case typePathListOp:
        return Value{readListOp<std::string>(at, 4, [&](CrateCursor& c) { return tables_.path(c.read<std::uint32_t>()); })};
    case typeReferenceListOp: return Value{readReferences(at, false, true, depth)};
    case typePayloadListOp: return Value{readReferences(at, true, true, depth)};
    case typePayload: return Value{readReferences(at, true, false, depth)};
    case typeIntListOp:
        return Value{IntArray{readListOp<std::int32_t>(at, 4, [](CrateCursor& c) { return c.read<std::int32_t>(); })}};
    case typeUIntListOp:
        return Value{IntArray{readListOp<std::int64_t>(at, 4, [](CrateCursor& c) { return std::int64_t{c.read<std::uint32_t>()}; })}};
    case typeInt64ListOp: case typeUInt64ListOp:
        return Value{IntArray{readListOp<std::int64_t>(at, 8, [](CrateCursor& c) { return c.read<std::int64_t>(); })}};
    case typePathVector: {
        PathArray paths;
        readVector(at, 4, paths, [&](CrateCursor& c) { return tables_.path(c.read<std::uint32_t>()); });
        return Value{std::move(paths)};
    }
    case typeTokenVector: {
        TokenArray tokens;
        readVector(at, 4, tokens, [&](CrateCursor& c) { return Token{tables_.token(c.read<std::uint32_t>())}; });
        return Value{std::move(tokens)};
    }
    case typeStringVector: {
        StringArray strings;
        readVector(at, 4, strings.values, [&](CrateCursor& c) { return tables_.string(c.read<std::uint32_t>()); });
        return Value{std::move(strings)};
    }
    case typeDoubleVector: case typeLayerOffsetVector: {
        const int width = type == typeDoubleVector ? 1 : 2;
        const auto count = at.read<std::uint64_t>();
        at.requireElements(count, 8u * width);
        return numericValue({Component::f64, width}, true, at.take(count * 8u * width), count);
    }
    case typeVariantSelectionMap: {
        const auto count = at.read<std::uint64_t>();
        at.requireElements(count, 8);
        budget_.charge(count * 96);
        VariantSelection selection;
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::string& set = tables_.string(at.read<std::uint32_t>());
            selection.insert_or_assign(set, tables_.string(at.read<std::uint32_t>()));
        }
        return Value{std::move(selection)};
    }
    default: break;
    }
    const Numeric numeric = Numeric::of(type);
    if (numeric.component == Component::none) return Value{};
    return numericValue(numeric, false, at.take(numeric.elementSize()), 1);
}

std::uint64_t CrateValueReader::readArrayCount(CrateCursor& at) {
    if (tables_.fileVersion < CrateTables::version(0, 5, 0)) at.read<std::uint32_t>();  // rank, always 1
    return tables_.fileVersion < CrateTables::version(0, 7, 0) ? at.read<std::uint32_t>() : at.read<std::uint64_t>();
}

Value CrateValueReader::readArray(std::uint8_t type, CrateCursor& at, bool compressed) {
    const bool empty = at.bytes().empty();
    const auto readIndexed = [&](auto&& element) {
        const std::uint64_t count = empty ? 0 : readArrayCount(at);
        at.requireElements(count, 4);
        budget_.charge(count * 40);
        std::vector<decltype(element(0u))> out;
        out.reserve(static_cast<std::size_t>(count));
        for (std::uint64_t i = 0; i < count; ++i) out.push_back(element(at.read<std::uint32_t>()));
        return out;
    };
    switch (type) {
    case typeToken: return Value{readIndexed([&](std::uint32_t i) { return Token{tables_.token(i)}; })};
    case typeString: return Value{StringArray{readIndexed([&](std::uint32_t i) { return tables_.string(i); })}};
    case typeAssetPath: return Value{StringArray{readIndexed([&](std::uint32_t i) { return tables_.token(i); })}};
    case typeBool: {
        const std::uint64_t count = empty ? 0 : readArrayCount(at);
        return numericValue({Component::u8, 1}, true, at.take(count), count);
    }
    default: break;
    }
    const Numeric numeric = Numeric::of(type);
    if (numeric.component == Component::none) return Value{};
    if (empty) return numericValue(numeric, true, {}, 0);
    return readNumericArray(numeric, at, compressed);
}

Value CrateValueReader::readNumericArray(const Numeric& numeric, CrateCursor& at, bool compressed) {
    const std::uint64_t count = readArrayCount(at);
    const bool scalarElements = numeric.width == 1 && numeric.component != Component::u8;
    if (!compressed || !scalarElements || count < minCompressedArraySize) {
        at.requireElements(count, numeric.elementSize());
        return numericValue(numeric, true, at.take(count * numeric.elementSize()), count);
    }
    if (!isInteger(numeric.component)) return readCompressedReals(numeric, at, count);
    IntArray out;
    switch (numeric.component) {
    case Component::i32: out.values = CrateIntegerCoding::read<std::int32_t>(at, count, budget_); break;
    case Component::u32: out.values = CrateIntegerCoding::read<std::uint32_t, std::int64_t>(at, count, budget_); break;
    default: out.values = CrateIntegerCoding::read<std::int64_t>(at, count, budget_); break;
    }
    return Value{std::move(out)};
}

// Compressed float, double and half arrays: 'i' stores the values as compressed int32s
// (they were all integral); 't' stores a table of distinct values and compressed indices.
Value CrateValueReader::readCompressedReals(const Numeric& numeric, CrateCursor& at, std::uint64_t count) {
    const auto coding = at.read<char>();
    std::vector<std::int32_t> codes;
    std::span<const std::uint8_t> table;
    std::uint32_t tableSize = 0;
    if (coding == 'i') {
        codes = CrateIntegerCoding::read<std::int32_t>(at, count, budget_);
    } else if (coding == 't') {
        tableSize = at.read<std::uint32_t>();
        at.requireElements(tableSize, componentSize(numeric.component));
        table = at.take(std::uint64_t{tableSize} * componentSize(numeric.component));
        codes = CrateIntegerCoding::read<std::int32_t>(at, count, budget_);
    } else {
        throw CrateFormatError("unknown coding '" + std::to_string(static_cast<int>(coding)) + "' of a compressed array");
    }
    const auto element = [&](std::size_t i) -> double {
        if (coding == 'i') return codes[i];
        const auto index = static_cast<std::uint32_t>(codes[i]);
        if (index >= tableSize) throw CrateFormatError("a compressed array indexes past its table");
        return loadReal(numeric.component, table.data() + index * componentSize(numeric.component));
    };
    const auto n = static_cast<std::size_t>(count);
    if (numeric.component == Component::f64) {
        budget_.charge(count * sizeof(double));
        DoubleArray out{1, std::vector<double>(n)};
        for (std::size_t i = 0; i < n; ++i) out.values[i] = element(i);
        return Value{std::move(out)};
    }
    budget_.charge(count * sizeof(float));
    FloatArray out{1, std::vector<float>(n)};
    for (std::size_t i = 0; i < n; ++i) out.values[i] = static_cast<float>(element(i));
    return Value{std::move(out)};
}

// Plain little-endian components, `count` elements of numeric.width each.
Value CrateValueReader::numericValue(const Numeric& numeric, bool isArray, std::span<const std::uint8_t> raw,
                                     std::uint64_t count) {
    const auto n = static_cast<std::size_t>(count) * static_cast<std::size_t>(numeric.width);
    const std::size_t size = componentSize(numeric.component);
    switch (numeric.component) {
    case Component::f32: {
        if (storage_ == Storage::viewFloats) return Value{FloatArray{numeric.width, {}, isArray, raw.first(n * sizeof(float))}};
        budget_.charge(n * sizeof(float));
        return Value{FloatArray{numeric.width, copyPlain<float>(raw, n), isArray}};
    }
    case Component::f64: {
        budget_.charge(n * sizeof(double));
        return Value{DoubleArray{numeric.width, copyPlain<double>(raw, n), isArray}};
    }
    case Component::f16: {
        budget_.charge(n * sizeof(float));
        FloatArray out{numeric.width, std::vector<float>(n), isArray};
        for (std::size_t i = 0; i < n; ++i) out.values[i] = halfToFloat(load<std::uint16_t>(raw.data() + i * size));
        return Value{std::move(out)};
    }
    case Component::u8:
    case Component::i32: {
        budget_.charge(n * sizeof(std::int32_t));
        IntArray::Narrow values(n);
        for (std::size_t i = 0; i < n; ++i) values[i] = static_cast<std::int32_t>(loadInteger(numeric.component, raw.data() + i * size));
        return Value{IntArray{std::move(values), isArray}};
    }
    default: {
        budget_.charge(n * sizeof(std::int64_t));
        IntArray::Wide values(n);
        for (std::size_t i = 0; i < n; ++i) values[i] = loadInteger(numeric.component, raw.data() + i * size);
        return Value{IntArray{std::move(values), isArray}};
    }
    }
}

// A value behind an int64 jump counted from the jump's own position; the jump skips the
// value's out-of-line data, which the writer puts right before its representation. Reading
// goes on after the representation.
Value CrateValueReader::unpackAfterJump(CrateCursor& at, int depth) {
    const std::size_t from = at.tell();
    at.jump(from, at.read<std::int64_t>());
    return unpack(at.read<std::uint64_t>(), depth + 1);
}

// uint64 count, then per entry a string index and a jump to the entry's value representation.
Dictionary CrateValueReader::readDictionary(CrateCursor& at, int depth) {
    const auto count = at.read<std::uint64_t>();
    at.requireElements(count, 20);
    Dictionary dictionary;
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::string& key = tables_.string(at.read<std::uint32_t>());
        dictionary.entries.insert_or_assign(key, std::make_shared<const Value>(unpackAfterJump(at, depth)));
    }
    return dictionary;
}

// A jump to the times' representation (a double vector); right after it a second jump to the
// sample count and the samples' representations.
TimeSamples CrateValueReader::readTimeSamples(CrateCursor& at, int depth) {
    CrateCursor times(file_, at.tell());
    const Value timesValue = unpackAfterJump(times, depth);
    const auto* timeArray = timesValue.get<DoubleArray>();
    if (timeArray == nullptr || timeArray->width != 1) throw CrateFormatError("time samples without a list of times");

    CrateCursor values(file_);
    const std::size_t from = times.tell();
    values.jump(from, times.read<std::int64_t>());
    const auto count = values.read<std::uint64_t>();
    if (count != timeArray->values.size()) {
        throw CrateFormatError("time samples have " + std::to_string(count) + " values for " +
                               std::to_string(timeArray->values.size()) + " times");
    }
    TimeSamples samples;
    samples.samples.reserve(static_cast<std::size_t>(count));
    for (std::uint64_t i = 0; i < count; ++i) {
        samples.samples.emplace_back(timeArray->values[i],
                                     std::make_shared<const Value>(unpack(values.read<std::uint64_t>(), depth + 1)));
    }
    return samples;
}

ReferenceArray CrateValueReader::readReferences(CrateCursor& at, bool payloads, bool listOp, int depth) {
    const auto item = [&](CrateCursor& c) { return readReference(c, payloads, depth); };
    if (listOp) return readListOp<Reference>(at, 8, item);
    return ReferenceArray{item(at)};
}

// Asset path (string index), prim path (path index), then a layer offset (two doubles) for
// references and for payloads from 0.8.0, and custom data for references.
Reference CrateValueReader::readReference(CrateCursor& at, bool payload, int depth) {
    Reference reference;
    reference.assetPath = tables_.string(at.read<std::uint32_t>());
    const auto primPath = at.read<std::uint32_t>();
    // An empty prim path (the default prim) is written as an index that names no path.
    if (primPath < tables_.paths.size()) reference.primPath = tables_.paths[primPath];
    if (!payload || tables_.fileVersion >= CrateTables::version(0, 8, 0)) at.take(2 * sizeof(double));
    if (!payload) readDictionary(at, depth + 1);
    return reference;
}

template <class T, class ReadItem>
void CrateValueReader::readVector(CrateCursor& at, std::size_t itemSize, std::vector<T>& out, ReadItem&& item) {
    const auto count = at.read<std::uint64_t>();
    at.requireElements(count, itemSize);
    budget_.charge(count * sizeof(T));
    out.reserve(out.size() + static_cast<std::size_t>(count));
    for (std::uint64_t i = 0; i < count; ++i) out.push_back(item(at));
}

// A header byte of flags, then one vector per list present, in the order explicit, added,
// prepended, appended, deleted, ordered. The result holds the items that end up in the list:
// explicit, added, prepended and appended items, in that order.
template <class T, class ReadItem>
std::vector<T> CrateValueReader::readListOp(CrateCursor& at, std::size_t itemSize, ReadItem&& item) {
    constexpr std::uint8_t hasExplicit = 1u << 1, hasAdded = 1u << 2, hasPrepended = 1u << 5, hasAppended = 1u << 6;
    const auto header = at.read<std::uint8_t>();
    std::vector<T> out;
    for (const std::uint8_t list : {hasExplicit, hasAdded, hasPrepended, hasAppended}) {
        if (header & list) readVector(at, itemSize, out, item);
    }
    return out;
}

} // namespace orvanta::import::usd
