#include "import/usd/UsdzArchive.h"

#include "import/ImportError.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>

namespace orvanta::import::usd {

namespace {

constexpr std::uint32_t localHeaderSignature = 0x04034b50;
constexpr std::uint32_t centralHeaderSignature = 0x02014b50;
constexpr std::uint32_t endOfCentralDirectorySignature = 0x06054b50;
constexpr std::uint32_t dataDescriptorSignature = 0x08074b50;
constexpr std::size_t localHeaderSize = 30;
constexpr std::size_t centralHeaderSize = 46;
constexpr std::size_t endOfCentralDirectorySize = 22;
constexpr std::size_t maxCommentSize = 0xffff;
constexpr std::uint32_t zip64Marker = 0xffffffff;
constexpr std::uint16_t flagEncrypted = 1u << 0;
constexpr std::uint16_t flagDataDescriptor = 1u << 3;
constexpr std::uint16_t methodStored = 0;
constexpr std::uint16_t methodDeflated = 8;
// Deflate cannot expand data by more than about 1032:1; a larger declared size is a lie.
constexpr std::uint64_t maxDeflateRatio = 1032;
// Inflated entries of one package, all together: far beyond any dish, small enough to
// refuse zip bombs before allocating.
constexpr std::uint64_t maxInflatedBytes = 512ull << 20;

using Bytes = std::span<const std::uint8_t>;

std::uint16_t le16(Bytes b, std::size_t at) {
    return static_cast<std::uint16_t>(b[at] | (b[at + 1] << 8));
}
std::uint32_t le32(Bytes b, std::size_t at) {
    return static_cast<std::uint32_t>(b[at]) | (static_cast<std::uint32_t>(b[at + 1]) << 8) |
           (static_cast<std::uint32_t>(b[at + 2]) << 16) | (static_cast<std::uint32_t>(b[at + 3]) << 24);
}
bool hasSignature(Bytes b, std::size_t at, std::uint32_t signature) {
    return at <= b.size() && b.size() - at >= 4 && le32(b, at) == signature;
}

core::Error malformed(std::string message) {
    return importError(ImportErrorCode::malformedData, "USDZ package: " + std::move(message));
}
core::Error unsupported(std::string message) {
    return importError(ImportErrorCode::unsupportedFeature, "USDZ package: " + std::move(message));
}

std::string normalise(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    std::size_t start = 0;
    while (true) {
        if (path.compare(start, 2, "./") == 0) start += 2;
        else if (path.compare(start, 1, "/") == 0) start += 1;
        else break;
    }
    return path.substr(start);
}

bool isLayerName(const std::string& path) {
    const auto dot = path.rfind('.');
    if (dot == std::string::npos) return false;
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == "usda" || extension == "usdc" || extension == "usd";
}

// One record of the central directory, keyed by the offset of its local header.
struct CentralRecord {
    std::uint64_t localHeaderOffset;
    std::uint32_t crc;
    std::uint32_t compressedSize;
    std::uint32_t size;
    bool operator<(const CentralRecord& other) const { return localHeaderOffset < other.localHeaderOffset; }
};

// The central directory's records sorted by local header offset, or an error when the end record is missing or the
// directory does not fit the file (a truncated download ends up here).
core::Result<std::vector<CentralRecord>> readCentralDirectory(Bytes bytes) {
    if (bytes.size() < endOfCentralDirectorySize) return malformed("no end of central directory record (truncated?)");
    const std::size_t lowest = bytes.size() > endOfCentralDirectorySize + maxCommentSize
                                   ? bytes.size() - endOfCentralDirectorySize - maxCommentSize
                                   : 0;
    std::size_t end = bytes.size() - endOfCentralDirectorySize;
    while (!(le32(bytes, end) == endOfCentralDirectorySignature &&
             end + endOfCentralDirectorySize + le16(bytes, end + 20) == bytes.size())) {
        if (end == lowest) return malformed("no end of central directory record (truncated?)");
        --end;
    }
    const std::uint16_t count = le16(bytes, end + 10);
    const std::uint32_t directorySize = le32(bytes, end + 12);
    const std::uint32_t directoryOffset = le32(bytes, end + 16);
    if (count == 0xffff || directorySize == zip64Marker || directoryOffset == zip64Marker) {
        return unsupported("Zip64 archives are not supported");
    }
    if (directoryOffset > end || end - directoryOffset < directorySize) {
        return malformed("the central directory lies outside the file");
    }
    std::vector<CentralRecord> records;
    records.reserve(std::min<std::size_t>(count, directorySize / centralHeaderSize));
    std::size_t at = directoryOffset;
    const std::size_t directoryEnd = directoryOffset + directorySize;
    for (std::uint16_t i = 0; i < count; ++i) {
        if (directoryEnd - at < centralHeaderSize || le32(bytes, at) != centralHeaderSignature) {
            return malformed("central directory record " + std::to_string(i) + " is broken");
        }
        const std::size_t variable = std::size_t{le16(bytes, at + 28)} + le16(bytes, at + 30) + le16(bytes, at + 32);
        if (directoryEnd - at - centralHeaderSize < variable) {
            return malformed("central directory record " + std::to_string(i) + " is truncated");
        }
        records.push_back({le32(bytes, at + 42), le32(bytes, at + 16), le32(bytes, at + 20), le32(bytes, at + 24)});
        at += centralHeaderSize + variable;
    }
    std::sort(records.begin(), records.end());
    return records;
}

// Inflates a raw deflate stream that must yield exactly `size` bytes with checksum `crc`.
core::Result<std::vector<std::uint8_t>> inflateEntry(const std::string& name, Bytes compressed, std::uint32_t size,
                                                     std::uint32_t crc) {
    std::vector<std::uint8_t> out(size);
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
        return importError(ImportErrorCode::limitExceeded, "USDZ package: cannot start inflating '" + name + "'");
    }
    // The stream owns zlib state; end it on every path.
    const std::unique_ptr<z_stream, int (*)(z_stream*)> guard(&stream, inflateEnd);
    stream.next_in = const_cast<Bytef*>(compressed.data());
    stream.avail_in = static_cast<uInt>(compressed.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    const int status = inflate(&stream, Z_FINISH);
    if (status != Z_STREAM_END || stream.total_out != size) {
        return malformed("entry '" + name + "' does not inflate to its declared " + std::to_string(size) + " bytes");
    }
    if (crc32(0L, out.data(), static_cast<uInt>(out.size())) != crc) {
        return malformed("entry '" + name + "' fails its checksum");
    }
    return out;
}

// Keeps the caller's bytes and the inflated entries alive behind one owner.
struct InflatedStorage {
    std::shared_ptr<const void> outer;
    std::vector<std::vector<std::uint8_t>> buffers;
};

} // namespace

core::Result<UsdzArchive> UsdzArchive::open(Bytes bytes, std::shared_ptr<const void> owner) {
    if (bytes.empty()) {
        return importError(ImportErrorCode::unrecognisedFormat, "USDZ package: the file is empty");
    }
    if (!hasSignature(bytes, 0, localHeaderSignature)) {
        return importError(ImportErrorCode::unrecognisedFormat,
                           "USDZ package: not a zip archive (no local file header at byte 0)");
    }
    auto directoryResult = readCentralDirectory(bytes);
    if (!directoryResult) return directoryResult.error();
    const std::vector<CentralRecord>& directory = directoryResult.value();
    const auto recordAt = [&](std::uint64_t offset) -> const CentralRecord* {
        const auto it = std::lower_bound(directory.begin(), directory.end(), CentralRecord{offset, 0, 0, 0});
        return it != directory.end() && it->localHeaderOffset == offset ? &*it : nullptr;
    };

    UsdzArchive archive;
    std::shared_ptr<InflatedStorage> inflated;
    std::uint64_t inflatedTotal = 0;
    std::vector<CentralRecord> walked;  // what the local headers say, to compare with the directory
    std::size_t at = 0;
    while (hasSignature(bytes, at, localHeaderSignature)) {
        if (bytes.size() - at < localHeaderSize) return malformed("local header at " + std::to_string(at) + " is truncated");
        const std::uint16_t flags = le16(bytes, at + 6);
        const std::uint16_t method = le16(bytes, at + 8);
        std::uint32_t crc = le32(bytes, at + 14);
        std::uint32_t compressedSize = le32(bytes, at + 18);
        std::uint32_t size = le32(bytes, at + 22);
        const std::size_t nameLength = le16(bytes, at + 26);
        const std::size_t extraLength = le16(bytes, at + 28);
        const std::size_t nameAt = at + localHeaderSize;
        if (bytes.size() - nameAt < nameLength + extraLength) {
            return malformed("local header at " + std::to_string(at) + " is truncated");
        }
        const std::string name(reinterpret_cast<const char*>(bytes.data() + nameAt), nameLength);
        if (flags & flagEncrypted) return unsupported("entry '" + name + "' is encrypted");
        if (flags & flagDataDescriptor) {
            // Sizes follow the data; the central directory has them up front.
            const CentralRecord* record = recordAt(at);
            if (record == nullptr) return malformed("entry '" + name + "' is missing from the central directory");
            crc = record->crc;
            compressedSize = record->compressedSize;
            size = record->size;
        }
        if (compressedSize == zip64Marker || size == zip64Marker) {
            return unsupported("entry '" + name + "' needs Zip64, which is not supported");
        }
        const std::size_t dataAt = nameAt + nameLength + extraLength;
        if (bytes.size() - dataAt < compressedSize) {
            return malformed("entry '" + name + "' declares " + std::to_string(compressedSize) + " bytes but the file ends " +
                             std::to_string(bytes.size() - dataAt) + " bytes later");
        }
        const Bytes stored = bytes.subspan(dataAt, compressedSize);
        Bytes data;
        if (method == methodStored) {
            if (compressedSize != size) return malformed("stored entry '" + name + "' has two different sizes");
            data = stored;
        } else if (method == methodDeflated) {
            if (size > std::uint64_t{compressedSize} * maxDeflateRatio + 1024) {
                return malformed("entry '" + name + "' declares an impossible inflated size of " + std::to_string(size) +
                                 " bytes");
            }
            inflatedTotal += size;
            if (inflatedTotal > maxInflatedBytes) {
                return importError(ImportErrorCode::limitExceeded,
                                   "USDZ package: compressed entries inflate to more than " +
                                       std::to_string(maxInflatedBytes >> 20) + " MiB");
            }
            auto buffer = inflateEntry(name, stored, size, crc);
            if (!buffer) return buffer.error();
            if (!inflated) inflated = std::make_shared<InflatedStorage>(InflatedStorage{owner, {}});
            inflated->buffers.push_back(std::move(buffer).value());
            data = inflated->buffers.back();
        } else {
            return unsupported("entry '" + name + "' uses compression method " + std::to_string(method));
        }
        walked.push_back({at, crc, compressedSize, size});
        at = dataAt + compressedSize;
        if (flags & flagDataDescriptor) at += hasSignature(bytes, at, dataDescriptorSignature) ? 16 : 12;

        std::string path = normalise(name);
        if (path.empty() || (path.back() == '/' && data.empty())) continue;  // a directory
        archive.index_.try_emplace(path, archive.entries_.size());
        archive.entries_.push_back({std::move(path), data});
    }

    // Every central record must name one of the entries just walked, with the same sizes.
    if (directory.size() != walked.size()) {
        return malformed("the central directory lists " + std::to_string(directory.size()) + " entries, the archive holds " +
                         std::to_string(walked.size()));
    }
    for (std::size_t i = 0; i < directory.size(); ++i) {
        if (directory[i].localHeaderOffset != walked[i].localHeaderOffset) {
            return malformed("the central directory names an entry at " + std::to_string(directory[i].localHeaderOffset) +
                             " where there is none");
        }
        if (directory[i].compressedSize != walked[i].compressedSize || directory[i].size != walked[i].size) {
            return malformed("the central directory and the local header at " +
                             std::to_string(walked[i].localHeaderOffset) + " disagree on the entry's size");
        }
    }
    if (archive.entries_.empty()) return malformed("the package holds no files");
    if (!isLayerName(archive.entries_.front().path)) {
        return malformed("the first entry '" + archive.entries_.front().path +
                         "' is not a USD layer (.usda, .usdc or .usd), so the package has no default layer");
    }
    archive.owner_ = inflated ? std::shared_ptr<const void>(std::move(inflated)) : std::move(owner);
    return archive;
}

const UsdzEntry* UsdzArchive::find(const std::string& path) const {
    const auto it = index_.find(normalise(path));
    return it == index_.end() ? nullptr : &entries_[it->second];
}

std::optional<std::string> UsdzArchive::resolve(const std::string& fromEntry, const std::string& assetPath) {
    std::string asset = assetPath;
    std::replace(asset.begin(), asset.end(), '\\', '/');
    if (asset.empty()) return std::nullopt;
    std::string joined;
    if (asset.front() != '/') {
        std::string base = fromEntry;
        std::replace(base.begin(), base.end(), '\\', '/');
        const auto slash = base.rfind('/');
        joined = slash == std::string::npos ? std::string() : base.substr(0, slash + 1);
    }
    joined += asset;

    std::vector<std::string> segments;
    std::size_t start = 0;
    while (start <= joined.size()) {
        const std::size_t end = std::min(joined.find('/', start), joined.size());
        const std::string segment = joined.substr(start, end - start);
        if (segment == "..") {
            if (segments.empty()) return std::nullopt;
            segments.pop_back();
        } else if (!segment.empty() && segment != ".") {
            segments.push_back(segment);
        }
        start = end + 1;
    }
    if (segments.empty() || joined.back() == '/') return std::nullopt;
    std::string resolved = segments.front();
    for (std::size_t i = 1; i < segments.size(); ++i) resolved += '/' + segments[i];
    return resolved;
}

} // namespace orvanta::import::usd
