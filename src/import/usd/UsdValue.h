#pragma once
// A field value of a USD spec, as both readers produce it.
//
// Numbers keep the precision of their declared type: float-based types (float, float2/3/4,
// half*, color3f, normal3f, point3f, texCoord2f, quatf, ...) become FloatArray, double-based
// types (double*, matrix4d, quatd, timecode, ...) become DoubleArray. A scalar of such a type
// is an array of one element with `isArray` false. `width` is the component count of one
// element (1, 2, 3, 4, or 16 for matrix4d; quaternions are stored as (i, j, k, real)).
// Thread: a value type.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace orvanta::import::usd {

struct Token { std::string text; friend bool operator==(const Token&, const Token&) = default; };
struct AssetPath { std::string path; friend bool operator==(const AssetPath&, const AssetPath&) = default; };

// Integer scalars and arrays in the width of their declared type: int, int2-4, uchar and bool
// keep 32 bits a value, so mesh topology (int[]) takes 4 bytes an index; uint, int64 and
// uint64 keep 64 (uint64 as its bit pattern).
struct IntArray {
    using Narrow = std::vector<std::int32_t>;
    using Wide = std::vector<std::int64_t>;
    using Values = std::variant<Narrow, Wide>;
    Values values;
    bool isArray = true;

    std::size_t size() const { return std::visit([](const auto& v) { return v.size(); }, values); }

    // The values as 32-bit integers: a view of narrow storage, or of `scratch` filled from
    // wide storage with every value outside int32 replaced by -1, which is no valid count or
    // index.
    std::span<const std::int32_t> narrow(Narrow& scratch) const {
        if (const auto* n = std::get_if<Narrow>(&values)) return *n;
        const Wide& wide = std::get<Wide>(values);
        scratch.resize(wide.size());
        std::transform(wide.begin(), wide.end(), scratch.begin(), [](std::int64_t v) {
            return std::in_range<std::int32_t>(v) ? static_cast<std::int32_t>(v) : -1;
        });
        return scratch;
    }
};
// Float components, either decoded into `values` or, for large plain arrays of a crate file
// that outlives the value, read in place from `stored`: the file's little-endian float32
// bytes, which may sit at any alignment.
struct FloatArray {
    int width = 1;
    std::vector<float> values;  // element i is components [i*width, i*width+width)
    bool isArray = true;
    std::span<const std::uint8_t> stored = {};  // used instead of `values` when not empty

    std::size_t componentCount() const { return stored.empty() ? values.size() : stored.size() / sizeof(float); }
    float component(std::size_t k) const {
        if (stored.empty()) return values[k];
        float value;
        std::memcpy(&value, stored.data() + k * sizeof(float), sizeof(float));
        return value;
    }
    std::size_t size() const { return width > 0 ? componentCount() / static_cast<std::size_t>(width) : 0; }
};
struct DoubleArray {
    int width = 1;
    std::vector<double> values;
    bool isArray = true;
    std::size_t size() const { return width > 0 ? values.size() / static_cast<std::size_t>(width) : 0; }
};
using TokenArray = std::vector<Token>;
// string[] values; a struct of its own so it never collides with PathArray in Value.
struct StringArray { std::vector<std::string> values; };
using PathArray = std::vector<std::string>;   // "connectionPaths", "targetPaths", path list ops
                                              // (explicit, prepended and appended items in order)
struct Reference {                            // one item of "references" or "payload"
    std::string assetPath;                    // empty: a reference inside the same layer
    std::string primPath;                     // empty: the referenced layer's default prim
};
using ReferenceArray = std::vector<Reference>;
using VariantSelection = std::map<std::string, std::string>;  // variant set -> chosen variant

class CrateLazyArrays;
// A large numeric array of a crate layer, still encoded in the file: `rep` is its value
// representation in that layer, `source` decodes it. The stage replaces it by the decoded
// array when the array is first read.
struct DeferredArray {
    std::shared_ptr<CrateLazyArrays> source;
    std::uint64_t rep = 0;
};

struct Value;
struct TimeSamples { std::vector<std::pair<double, std::shared_ptr<const Value>>> samples; };
struct Dictionary { std::map<std::string, std::shared_ptr<const Value>> entries; };

struct Value {
    std::variant<std::monostate,  // a value the reader skips (unsupported type)
                 bool, std::string, Token, AssetPath, IntArray, FloatArray, DoubleArray,
                 TokenArray, StringArray, PathArray, ReferenceArray, VariantSelection,
                 TimeSamples, Dictionary, DeferredArray>
        data;

    template <class T> const T* get() const { return std::get_if<T>(&data); }
    bool empty() const { return std::holds_alternative<std::monostate>(data); }
};

} // namespace orvanta::import::usd
