#pragma once
// Writes crate (binary USD) layers: values go out of line as they are added, the structural
// sections and the table of contents at build(). Callers lay out values themselves (the
// layer writer for scenes; tests also write files that lie on purpose).
// Thread: one writer per thread.

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace orvanta::exporter {

// Crate value type numbers, spec types and value representation flags used by callers.
namespace crate {
enum : std::uint8_t {
    tBool = 1, tUChar = 2, tInt = 3, tUInt = 4, tInt64 = 5, tHalf = 7, tFloat = 8, tDouble = 9, tString = 10,
    tToken = 11, tAsset = 12, tMatrix4d = 15, tQuatf = 17, tVec2f = 20, tVec3f = 24, tVec4f = 28, tDictionary = 31,
    tTokenListOp = 32, tStringListOp = 33, tPathListOp = 34, tReferenceListOp = 35, tTokenVector = 41,
    tSpecifier = 42, tVariability = 44, tVariantSelection = 45, tTimeSamples = 46, tPayload = 47,
    tDoubleVector = 48, tPayloadListOp = 55,
};
enum : std::uint32_t { sAttribute = 1, sPrim = 6, sPseudoRoot = 7, sRelationship = 8, sVariant = 10, sVariantSet = 11 };
constexpr unsigned isArray = 1, isInlined = 2, isCompressed = 4;
constexpr std::uint8_t prepended = 1u << 5, explicitItems = (1u << 0) | (1u << 1);

// A value representation: flags, type and a payload (an offset or an inlined value).
constexpr std::uint64_t rep(std::uint8_t type, std::uint64_t payload, unsigned flags = 0) {
    return (flags & isArray ? 1ull << 63 : 0) | (flags & isInlined ? 1ull << 62 : 0) |
           (flags & isCompressed ? 1ull << 61 : 0) | (std::uint64_t{type} << 48) | payload;
}
} // namespace crate

class CrateWriter {
public:
    using Bytes = std::vector<std::uint8_t>;

    explicit CrateWriter(unsigned minor, unsigned major = 0);

    std::uint32_t token(const std::string& text);
    std::uint32_t string(const std::string& text);
    std::uint32_t path(const std::string& p);

    std::uint64_t here() const { return file_.size(); }
    template <class T> std::uint64_t put(const T& value) {
        const auto at = here();
        append(file_, value);
        return at;
    }
    template <class T> std::uint64_t putAll(const std::vector<T>& values) {
        const auto at = here();
        const auto* p = reinterpret_cast<const std::uint8_t*>(values.data());
        file_.insert(file_.end(), p, p + values.size() * sizeof(T));
        return at;
    }
    // An array's element count, in the form this file's version writes it.
    std::uint64_t arrayCount(std::uint64_t n);
    // An uncompressed array of `values.size() / width` elements; returns its representation.
    template <class T> std::uint64_t array(std::uint8_t type, const std::vector<T>& values, int width = 1) {
        return array(type, values.data(), values.size() / static_cast<std::size_t>(width), sizeof(T) * static_cast<std::size_t>(width));
    }
    // An uncompressed array of `count` elements of `elementBytes` each, copied from `data`.
    std::uint64_t array(std::uint8_t type, const void* data, std::size_t count, std::size_t elementBytes) {
        const auto at = arrayCount(count);
        const auto* p = static_cast<const std::uint8_t*>(data);
        file_.insert(file_.end(), p, p + count * elementBytes);
        return crate::rep(type, at, crate::isArray);
    }
    // Room for `bytes` more bytes of values, so large layers grow their buffer once.
    void reserve(std::size_t bytes) { file_.reserve(file_.size() + bytes); }
    // Integers delta coded and LZ4 framed, preceded by their framed size.
    void putCompressedInts(const std::vector<std::int32_t>& values);
    void putCompressedInts(const std::vector<std::int64_t>& values);
    std::uint64_t compressedArray(std::uint8_t type, const std::vector<std::int32_t>& values);
    std::uint64_t compressedArray(std::uint8_t type, const std::vector<std::int64_t>& values);
    std::uint64_t tokenVector(const std::vector<std::string>& items);
    std::uint64_t listOp(std::uint8_t type, std::uint8_t header, const std::vector<std::uint32_t>& items);
    std::uint64_t tokenInline(const std::string& t) { return crate::rep(crate::tToken, token(t), crate::isInlined); }

    void spec(const std::string& p, std::uint32_t type, const std::vector<std::pair<std::string, std::uint64_t>>& fields);

    // The finished layer. The writer's buffer becomes the layer, so it is not copied; the
    // writer is spent afterwards.
    Bytes build();

    template <class T> static void append(Bytes& out, const T& value) {
        const std::size_t at = out.size();
        out.resize(at + sizeof(T));
        std::memcpy(out.data() + at, &value, sizeof(T));
    }

private:
    struct SpecRecord { std::uint32_t path, type, fieldSet; };
    struct PathNode { std::string path; std::int32_t element; std::vector<std::string> children; };

    static std::tuple<std::string, std::string, bool> split(const std::string& p);
    void addPath(const std::string& p);
    void emitPath(const std::string& p, bool hasSibling, std::vector<std::int32_t>& indices, std::vector<std::int32_t>& elements,
              std::vector<std::int32_t>& jumps) const;
    Bytes encodePaths() const;

    unsigned minor_;
    Bytes file_;
    std::vector<std::string> tokens_;
    std::map<std::string, std::uint32_t> tokenIndex_;
    std::vector<std::uint32_t> strings_;
    std::map<std::string, std::uint32_t> pathIndex_;
    std::map<std::string, PathNode> nodes_;
    std::vector<std::int32_t> fieldNames_, fieldSets_;
    std::vector<std::uint64_t> fieldReps_;
    std::vector<SpecRecord> specs_;
};

} // namespace orvanta::exporter
