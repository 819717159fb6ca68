#include "import/usd/CrateReader.h"

#include "import/ImportError.h"
#include "import/usd/CrateBudget.h"
#include "import/usd/CrateCursor.h"
#include "import/usd/CrateIntegerCoding.h"
#include "import/usd/CrateLazyArrays.h"
#include "import/usd/CrateTables.h"
#include "import/usd/CrateValueReader.h"
#include "import/usd/Lz4Framing.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

namespace orvanta::import::usd {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view magic = "PXR-USDC";
constexpr std::size_t headerSize = 88;
constexpr std::uint32_t oldestVersion = CrateTables::version(0, 4, 0);
constexpr std::uint32_t newestVersion = CrateTables::version(0, 11, 0);
constexpr std::uint32_t fieldSetEnd = 0xffffffffu;
// Memory one layer may decode into: generous against real files, whose decoded data is a
// few times their size, yet bounded for files that claim far more than they hold.
constexpr std::uint64_t budgetBase = 64ull << 20;
constexpr std::uint64_t budgetPerFileByte = 32;

std::string versionText(std::uint32_t version) {
    return std::to_string(version >> 16) + "." + std::to_string((version >> 8) & 0xff) + "." +
           std::to_string(version & 0xff);
}

SpecType specType(std::uint32_t type) {
    switch (type) {
    case 1: return SpecType::attribute;
    case 6: return SpecType::prim;
    case 7: return SpecType::pseudoRoot;
    case 8: return SpecType::relationship;
    case 10: return SpecType::variant;
    case 11: return SpecType::variantSet;
    default: return SpecType::other;
    }
}

// The structural sections of one crate file, read into tables, then turned into specs.
class CrateStructure {
public:
    // `store` holds the tables and budget the structure fills and charges; with `defer`, the
    // layer's large arrays are left to it to decode later.
    CrateStructure(std::shared_ptr<CrateLazyArrays> store, bool defer)
        : file_(store->file()), budget_(store->budget()), tables_(store->tables()), store_(std::move(store)), defer_(defer) {}

    Layer read(std::string identifier);

private:
    struct Field { std::uint32_t token; std::uint64_t rep; };

    CrateCursor section(const char* name) const;
    void readTableOfContents();
    void readTokens();
    void readStrings();
    void readFields();
    void readFieldSets();
    void readPaths();
    Layer readSpecs(std::string identifier);
    template <class Int> std::vector<Int> compressedInts(CrateCursor& at, std::uint64_t count) {
        return CrateIntegerCoding::read<Int>(at, count, budget_);
    }

    Bytes file_;
    CrateBudget& budget_;
    CrateTables& tables_;
    std::shared_ptr<CrateLazyArrays> store_;
    bool defer_;
    std::vector<std::pair<std::string, Bytes>> sections_;
    std::vector<Field> fields_;
    std::vector<std::uint32_t> fieldSets_;
};

Layer CrateStructure::read(std::string identifier) {
    if (file_.size() < headerSize || std::memcmp(file_.data(), magic.data(), magic.size()) != 0) {
        throw CrateFormatError("not a USDC crate file (no PXR-USDC header)", ImportErrorCode::unrecognisedFormat);
    }
    tables_.fileVersion = CrateTables::version(file_[8], file_[9], file_[10]);
    if (tables_.fileVersion < oldestVersion || tables_.fileVersion > (newestVersion | 0xff)) {
        throw CrateFormatError("crate version " + versionText(tables_.fileVersion) + " is not supported (reads " +
                                   versionText(oldestVersion) + " to " + versionText(newestVersion) + ")",
                               ImportErrorCode::unsupportedFeature);
    }
    readTableOfContents();
    readTokens();
    readStrings();
    readFields();
    readFieldSets();
    readPaths();
    return readSpecs(std::move(identifier));
}

// uint64 section count, then 32-byte entries: a NUL-padded name, int64 start and size.
void CrateStructure::readTableOfContents() {
    CrateCursor at(file_, CrateCursor(file_, 16).read<std::uint64_t>());
    const auto count = at.read<std::uint64_t>();
    at.requireElements(count, 32);
    for (std::uint64_t i = 0; i < count; ++i) {
        const Bytes rawName = at.take(16);
        const auto nameEnd = std::find(rawName.begin(), rawName.end(), std::uint8_t{0});
        std::string name(rawName.begin(), nameEnd);
        const auto start = at.read<std::uint64_t>();
        const auto size = at.read<std::uint64_t>();
        if (start > file_.size() || size > file_.size() - start) {
            throw CrateFormatError("section " + name + " lies outside the file");
        }
        sections_.emplace_back(std::move(name), file_.subspan(start, size));
    }
}

CrateCursor CrateStructure::section(const char* name) const {
    const auto it = std::find_if(sections_.begin(), sections_.end(), [&](const auto& s) { return s.first == name; });
    if (it == sections_.end()) throw CrateFormatError(std::string("the ") + name + " section is missing");
    return CrateCursor(it->second);
}

// uint64 count, uncompressed and compressed sizes, then LZ4-framed NUL-terminated strings.
void CrateStructure::readTokens() {
    CrateCursor at = section("TOKENS");
    const auto count = at.read<std::uint64_t>();
    const auto size = at.read<std::uint64_t>();
    const Bytes framed = at.take(at.read<std::uint64_t>());
    if (size > framed.size() * Lz4Framing::maxExpansion || count > size) {
        throw CrateFormatError("the token table claims more than its data can hold");
    }
    budget_.charge(size + count * sizeof(std::string));
    std::vector<std::uint8_t> text(static_cast<std::size_t>(size));
    if (Lz4Framing::decompress(framed, text) != size) throw CrateFormatError("the token table is shorter than declared");
    tables_.tokens.reserve(static_cast<std::size_t>(count));
    const char* const begin = reinterpret_cast<const char*>(text.data());
    const char* const end = begin + text.size();
    for (const char* p = begin; tables_.tokens.size() < count;) {
        const char* nul = std::find(p, end, '\0');
        if (nul == end) throw CrateFormatError("the token table holds fewer tokens than declared");
        tables_.tokens.emplace_back(p, nul);
        p = nul + 1;
    }
}

// uint64 count, then uint32 token indices.
void CrateStructure::readStrings() {
    CrateCursor at = section("STRINGS");
    const auto count = at.read<std::uint64_t>();
    at.requireElements(count, 4);
    budget_.charge(count * 4);
    tables_.strings.resize(static_cast<std::size_t>(count));
    if (count != 0) std::memcpy(tables_.strings.data(), at.take(count * 4).data(), count * 4);
}

// uint64 count; compressed token indices of the field names; then an LZ4 blob of the value
// representations.
void CrateStructure::readFields() {
    CrateCursor at = section("FIELDS");
    const auto count = at.read<std::uint64_t>();
    const std::vector<std::int32_t> names = compressedInts<std::int32_t>(at, count);
    const Bytes framed = at.take(at.read<std::uint64_t>());
    if (count > framed.size() * Lz4Framing::maxExpansion / 8) throw CrateFormatError("the field table is truncated");
    budget_.charge(count * (8 + sizeof(Field)));
    std::vector<std::uint64_t> reps(static_cast<std::size_t>(count));
    const std::span<std::uint8_t> repBytes(reinterpret_cast<std::uint8_t*>(reps.data()), reps.size() * 8);
    if (Lz4Framing::decompress(framed, repBytes) != repBytes.size()) {
        throw CrateFormatError("the field values are shorter than declared");
    }
    fields_.reserve(reps.size());
    for (std::size_t i = 0; i < reps.size(); ++i) fields_.push_back({static_cast<std::uint32_t>(names[i]), reps[i]});
}

// uint64 count, then compressed field indices in runs, each run ended by 0xffffffff.
void CrateStructure::readFieldSets() {
    CrateCursor at = section("FIELDSETS");
    const auto count = at.read<std::uint64_t>();
    const std::vector<std::int32_t> sets = compressedInts<std::int32_t>(at, count);
    fieldSets_.assign(sets.begin(), sets.end());
}

// uint64 path count, uint64 encoded count, then compressed path indices, element token
// indices (negative for property names) and jumps. A jump of -2 ends a branch, -1 says only
// a child follows, 0 only a sibling, and a positive jump says the child follows and the
// sibling sits that many entries further on.
void CrateStructure::readPaths() {
    CrateCursor at = section("PATHS");
    const auto pathCount = at.read<std::uint64_t>();
    const auto encoded = at.read<std::uint64_t>();
    const auto indices = compressedInts<std::int32_t>(at, encoded);
    const auto elements = compressedInts<std::int32_t>(at, encoded);
    const auto jumps = compressedInts<std::int32_t>(at, encoded);
    if (pathCount > encoded) throw CrateFormatError("the path table declares more paths than it encodes");
    budget_.charge(pathCount * sizeof(std::string) + encoded);
    tables_.paths.assign(static_cast<std::size_t>(pathCount), std::string());
    if (encoded == 0) return;

    std::vector<bool> visited(static_cast<std::size_t>(encoded), false);
    // Pending subtrees: where a sibling chain starts and the index of its parent's path.
    std::vector<std::pair<std::size_t, std::optional<std::uint32_t>>> pending{{0, std::nullopt}};
    while (!pending.empty()) {
        auto [i, parent] = pending.back();
        pending.pop_back();
        while (true) {
            if (i >= encoded || visited[i]) throw CrateFormatError("the path tree is inconsistent");
            visited[i] = true;
            const auto index = static_cast<std::uint32_t>(indices[i]);
            if (index >= pathCount || !tables_.paths[index].empty()) throw CrateFormatError("the path tree is inconsistent");
            std::string path;
            if (!parent) {
                path = "/";
            } else {
                const std::string& parentPath = tables_.paths[*parent];
                const std::int32_t element = elements[i];
                const std::string& name =
                    tables_.token(element < 0 ? 0ull - static_cast<std::uint64_t>(std::int64_t{element}) : static_cast<std::uint64_t>(element));
                if (name.empty()) throw CrateFormatError("a path element is empty");
                budget_.charge(parentPath.size() + name.size() + 1);
                if (element < 0) path = parentPath + "." + name;
                else if (parentPath == "/") path = "/" + name;
                else if (name.front() == '{' || name.front() == '[' || parentPath.back() == '}') path = parentPath + name;
                else path = parentPath + "/" + name;
            }
            tables_.paths[index] = std::move(path);
            const std::int32_t jump = jumps[i];
            const bool hasChild = jump > 0 || jump == -1;
            const bool hasSibling = jump >= 0;
            if (hasChild && hasSibling) pending.emplace_back(i + static_cast<std::size_t>(jump), parent);
            if (hasChild) parent = index;
            else if (!hasSibling) break;
            ++i;
        }
    }
}

// uint64 count, then compressed path indices, field set indices and spec types.
Layer CrateStructure::readSpecs(std::string identifier) {
    CrateCursor at = section("SPECS");
    const auto count = at.read<std::uint64_t>();
    const auto paths = compressedInts<std::int32_t>(at, count);
    const auto sets = compressedInts<std::int32_t>(at, count);
    const auto types = compressedInts<std::int32_t>(at, count);

    Layer layer;
    layer.identifier = std::move(identifier);
    layer.specs.reserve(static_cast<std::size_t>(count));
    CrateValueReader values(file_, tables_, budget_,
                            defer_ ? CrateValueReader::Storage::deferLargeArrays : CrateValueReader::Storage::copies, store_);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const std::string& path = tables_.path(static_cast<std::uint32_t>(paths[i]));
        auto [it, inserted] = layer.specs.try_emplace(path);
        if (!inserted) throw CrateFormatError("two specs share the path " + path);
        Spec& spec = it->second;
        spec.type = specType(static_cast<std::uint32_t>(types[i]));
        const auto first = static_cast<std::uint32_t>(sets[i]);
        if (first >= fieldSets_.size()) throw CrateFormatError("field set " + std::to_string(first) + " out of range");
        const auto begin = fieldSets_.begin() + first;
        const auto end = std::find(begin, fieldSets_.end(), fieldSetEnd);
        if (end == fieldSets_.end()) throw CrateFormatError("a field set runs past the end of its table");
        // Charged so that many specs sharing one long field set stay bounded.
        budget_.charge(static_cast<std::uint64_t>(end - begin) * 16);
        spec.fields.reserve(static_cast<std::size_t>(end - begin));
        for (auto f = begin; f != end; ++f) {
            if (*f >= fields_.size()) throw CrateFormatError("field index " + std::to_string(*f) + " out of range");
            const std::string& name = tables_.token(fields_[*f].token);
            try {
                spec.fields.insert_or_assign(name, values.unpack(fields_[*f].rep));
            } catch (const CrateFormatError& error) {
                throw CrateFormatError(path + " field " + name + ": " + error.what(), error.code());
            }
        }
    }
    return layer;
}

} // namespace

core::Result<Layer> CrateReader::read(Bytes bytes, std::string identifier, Arrays arrays) {
    const std::string name = identifier;
    try {
        auto store = std::make_shared<CrateLazyArrays>(bytes, name, budgetBase + budgetPerFileByte * bytes.size());
        return CrateStructure(std::move(store), arrays == Arrays::decodeWhenRead).read(std::move(identifier));
    } catch (const CrateFormatError& error) {
        return importError(error.code(), "USDC layer " + name + ": " + error.what());
    } catch (const std::bad_alloc&) {
        return importError(ImportErrorCode::limitExceeded, "USDC layer " + name + ": out of memory");
    }
}

} // namespace orvanta::import::usd
