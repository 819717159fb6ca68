#include "export/CrateWriter.h"

#include <lz4.h>

#include <cstring>
#include <limits>
#include <type_traits>
#include <unordered_map>

namespace orvanta::exporter {

using namespace crate;
using Bytes = CrateWriter::Bytes;

namespace {

Bytes lz4Framed(const Bytes& raw) {
    Bytes out(1 + static_cast<std::size_t>(LZ4_compressBound(static_cast<int>(raw.size()))), 0);
    const int n = LZ4_compress_default(reinterpret_cast<const char*>(raw.data()), reinterpret_cast<char*>(out.data() + 1),
                                       static_cast<int>(raw.size()), static_cast<int>(out.size() - 1));
    out.resize(1 + static_cast<std::size_t>(n));
    return out;
}

// Integer coding as the format describes it: the most common delta, 2-bit codes, and the
// smallest delta width that holds each other delta.
template <class Int> Bytes encodeInts(const std::vector<Int>& values) {
    using Small = std::conditional_t<sizeof(Int) == 4, std::int8_t, std::int16_t>;
    using Medium = std::conditional_t<sizeof(Int) == 4, std::int16_t, std::int32_t>;
    std::vector<Int> deltas;
    deltas.reserve(values.size());
    std::unordered_map<Int, std::size_t> frequency;
    Int previous = 0;
    for (Int v : values) { deltas.push_back(v - previous); ++frequency[v - previous]; previous = v; }
    Int common = 0;
    std::size_t best = 0;
    for (auto [delta, n] : frequency)
        if (n > best || (n == best && delta < common)) { best = n; common = delta; }
    Bytes out;
    CrateWriter::append(out, common);
    Bytes codes((values.size() + 3) / 4, 0), wide;
    for (std::size_t i = 0; i < deltas.size(); ++i) {
        const Int d = deltas[i];
        unsigned code = 3;
        if (d == common) code = 0;
        else if (d >= std::numeric_limits<Small>::min() && d <= std::numeric_limits<Small>::max()) { code = 1; CrateWriter::append(wide, static_cast<Small>(d)); }
        else if (d >= std::numeric_limits<Medium>::min() && d <= std::numeric_limits<Medium>::max()) { code = 2; CrateWriter::append(wide, static_cast<Medium>(d)); }
        else CrateWriter::append(wide, d);
        codes[i / 4] = static_cast<std::uint8_t>(codes[i / 4] | (code << (2 * (i % 4))));
    }
    out.insert(out.end(), codes.begin(), codes.end());
    out.insert(out.end(), wide.begin(), wide.end());
    return out;
}

template <class Int> void appendCompressedInts(Bytes& out, const std::vector<Int>& values) {
    const Bytes framed = lz4Framed(encodeInts(values));
    CrateWriter::append(out, std::uint64_t{framed.size()});
    out.insert(out.end(), framed.begin(), framed.end());
}

} // namespace

CrateWriter::CrateWriter(unsigned minor, unsigned major) : minor_(minor), file_(88, 0) {
    std::memcpy(file_.data(), "PXR-USDC", 8);
    file_[8] = static_cast<std::uint8_t>(major);
    file_[9] = static_cast<std::uint8_t>(minor);
    token("");  // index 0 cannot be negated, so no property name may use it
}

std::uint32_t CrateWriter::token(const std::string& text) {
    const auto [it, added] = tokenIndex_.try_emplace(text, static_cast<std::uint32_t>(tokens_.size()));
    if (added) tokens_.push_back(text);
    return it->second;
}

std::uint32_t CrateWriter::string(const std::string& text) {
    strings_.push_back(token(text));
    return static_cast<std::uint32_t>(strings_.size() - 1);
}

std::uint32_t CrateWriter::path(const std::string& p) {
    addPath(p);
    return pathIndex_.at(p);
}

std::uint64_t CrateWriter::arrayCount(std::uint64_t n) {
    const auto at = here();
    if (minor_ < 5) put(std::uint32_t{1});
    if (minor_ < 7) put(static_cast<std::uint32_t>(n)); else put(n);
    return at;
}

void CrateWriter::putCompressedInts(const std::vector<std::int32_t>& values) { appendCompressedInts(file_, values); }
void CrateWriter::putCompressedInts(const std::vector<std::int64_t>& values) { appendCompressedInts(file_, values); }

std::uint64_t CrateWriter::compressedArray(std::uint8_t type, const std::vector<std::int32_t>& values) {
    const auto at = arrayCount(values.size());
    putCompressedInts(values);
    return rep(type, at, isArray | isCompressed);
}

std::uint64_t CrateWriter::compressedArray(std::uint8_t type, const std::vector<std::int64_t>& values) {
    const auto at = arrayCount(values.size());
    putCompressedInts(values);
    return rep(type, at, isArray | isCompressed);
}

std::uint64_t CrateWriter::tokenVector(const std::vector<std::string>& items) {
    const auto at = put(std::uint64_t{items.size()});
    for (const auto& t : items) put(token(t));
    return rep(tTokenVector, at);
}

std::uint64_t CrateWriter::listOp(std::uint8_t type, std::uint8_t header, const std::vector<std::uint32_t>& items) {
    const auto at = put(header);
    put(std::uint64_t{items.size()});
    putAll(items);
    return rep(type, at);
}

void CrateWriter::spec(const std::string& p, std::uint32_t type,
                       const std::vector<std::pair<std::string, std::uint64_t>>& fields) {
    specs_.push_back({path(p), type, static_cast<std::uint32_t>(fieldSets_.size())});
    for (const auto& [name, value] : fields) {
        fieldSets_.push_back(static_cast<std::int32_t>(fieldNames_.size()));
        fieldNames_.push_back(static_cast<std::int32_t>(token(name)));
        fieldReps_.push_back(value);
    }
    fieldSets_.push_back(-1);
}

Bytes CrateWriter::build() {
    Bytes out = std::move(file_);
    std::vector<std::pair<std::string, std::pair<std::uint64_t, std::uint64_t>>> toc;
    const auto section = [&](const char* name, const Bytes& body) {
        toc.push_back({name, {out.size(), body.size()}});
        out.insert(out.end(), body.begin(), body.end());
    };
    Bytes tokens, text;
    for (const auto& t : tokens_) { text.insert(text.end(), t.begin(), t.end()); text.push_back(0); }
    const Bytes framedText = lz4Framed(text);
    append(tokens, std::uint64_t{tokens_.size()}); append(tokens, std::uint64_t{text.size()});
    append(tokens, std::uint64_t{framedText.size()});
    tokens.insert(tokens.end(), framedText.begin(), framedText.end());
    section("TOKENS", tokens);

    Bytes strings;
    append(strings, std::uint64_t{strings_.size()});
    for (auto s : strings_) append(strings, s);
    section("STRINGS", strings);

    Bytes fields, reps;
    append(fields, std::uint64_t{fieldNames_.size()});
    appendCompressedInts(fields, fieldNames_);
    for (auto r : fieldReps_) append(reps, r);
    const Bytes framedReps = lz4Framed(reps);
    append(fields, std::uint64_t{framedReps.size()});
    fields.insert(fields.end(), framedReps.begin(), framedReps.end());
    section("FIELDS", fields);

    Bytes sets;
    append(sets, std::uint64_t{fieldSets_.size()});
    appendCompressedInts(sets, fieldSets_);
    section("FIELDSETS", sets);

    section("PATHS", encodePaths());

    Bytes specs;
    std::vector<std::int32_t> specPaths, specSets, specTypes;
    for (const auto& s : specs_) {
        specPaths.push_back(static_cast<std::int32_t>(s.path));
        specSets.push_back(static_cast<std::int32_t>(s.fieldSet));
        specTypes.push_back(static_cast<std::int32_t>(s.type));
    }
    append(specs, std::uint64_t{specs_.size()});
    appendCompressedInts(specs, specPaths); appendCompressedInts(specs, specSets); appendCompressedInts(specs, specTypes);
    section("SPECS", specs);

    const std::uint64_t tocOffset = out.size();
    append(out, std::uint64_t{toc.size()});
    for (const auto& [name, range] : toc) {
        char padded[16] = {};
        std::memcpy(padded, name.data(), name.size());
        append(out, padded); append(out, range.first); append(out, range.second);
    }
    std::memcpy(out.data() + 16, &tocOffset, 8);
    return out;
}

// "/A/B.c" -> ("/A/B", "c", property); "/A{v=x}" -> ("/A", "{v=x}"); "/A{v=x}B" -> ("/A{v=x}", "B").
std::tuple<std::string, std::string, bool> CrateWriter::split(const std::string& p) {
    if (p.back() == '}') { const auto brace = p.rfind('{'); return {p.substr(0, brace), p.substr(brace), false}; }
    const auto sep = p.find_last_of("/}");
    const auto dot = p.rfind('.');
    if (dot != std::string::npos && dot > sep) return {p.substr(0, dot), p.substr(dot + 1), true};
    if (p[sep] == '/') return {sep == 0 ? "/" : p.substr(0, sep), p.substr(sep + 1), false};
    return {p.substr(0, sep + 1), p.substr(sep + 1), false};
}

void CrateWriter::addPath(const std::string& p) {
    if (pathIndex_.count(p)) return;
    std::int32_t element = 0;
    if (p != "/") {
        const auto [parent, name, property] = split(p);
        addPath(parent);
        nodes_[parent].children.push_back(p);
        element = property ? -static_cast<std::int32_t>(token(name)) : static_cast<std::int32_t>(token(name));
    }
    pathIndex_[p] = static_cast<std::uint32_t>(pathIndex_.size());
    nodes_[p].path = p;
    nodes_[p].element = element;
}

void CrateWriter::emitPath(const std::string& p, bool hasSibling, std::vector<std::int32_t>& indices,
                       std::vector<std::int32_t>& elements, std::vector<std::int32_t>& jumps) const {
    const std::size_t at = indices.size();
    const PathNode& node = nodes_.at(p);
    indices.push_back(static_cast<std::int32_t>(pathIndex_.at(p)));
    elements.push_back(node.element);
    jumps.push_back(0);
    for (std::size_t i = 0; i < node.children.size(); ++i) {
        emitPath(node.children[i], i + 1 < node.children.size(), indices, elements, jumps);
    }
    const bool hasChild = !node.children.empty();
    jumps[at] = hasChild && hasSibling ? static_cast<std::int32_t>(indices.size() - at)
                : hasChild             ? -1
                : hasSibling           ? 0
                                       : -2;
}

Bytes CrateWriter::encodePaths() const {
    std::vector<std::int32_t> indices, elements, jumps;
    emitPath("/", false, indices, elements, jumps);
    Bytes out;
    append(out, std::uint64_t{indices.size()});
    append(out, std::uint64_t{indices.size()});
    appendCompressedInts(out, indices); appendCompressedInts(out, elements); appendCompressedInts(out, jumps);
    return out;
}

} // namespace orvanta::exporter
