#include "import/usd/UsdStageLayers.h"

#include "import/ImportError.h"
#include "import/usd/CrateReader.h"
#include "import/FileBytes.h"
#include "import/usd/UsdaParser.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace orvanta::import::usd {

namespace {

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic) {
    return bytes.size() >= magic.size() && std::equal(magic.begin(), magic.end(), bytes.begin(),
                                                      [](char m, std::uint8_t b) { return static_cast<std::uint8_t>(m) == b; });
}

bool isPackage(std::span<const std::uint8_t> bytes) { return startsWith(bytes, std::string_view("PK\x03\x04", 4)); }

core::Result<Layer> parseLayer(std::span<const std::uint8_t> bytes, const std::string& identifier) {
    if (startsWith(bytes, "#usda"))
        return UsdaParser::parse(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), identifier);
    // The stage keeps the bytes alive, so large arrays can wait until the scene reads them.
    if (startsWith(bytes, "PXR-USDC")) return CrateReader::read(bytes, identifier, CrateReader::Arrays::decodeWhenRead);
    return importError(ImportErrorCode::unrecognisedFormat, identifier + " is no USD layer");
}

} // namespace

core::Result<int> UsdStageLayers::openPackage(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner,
                                              const std::string& name) {
    auto archive = UsdzArchive::open(bytes, std::move(owner));
    if (!archive) return archive.error();
    if (archive->entries().empty()) return importError(ImportErrorCode::malformedData, name + " holds no layer");
    packages_.push_back(std::make_unique<UsdzArchive>(std::move(archive).value()));
    packageNesting_.push_back(0);
    return loadAt(Location{0, packages_.front()->entries().front().path}, 0);
}

core::Result<int> UsdStageLayers::openLayer(std::span<const std::uint8_t> bytes, const std::string& diskPath) {
    auto layer = parseLayer(bytes, diskPath);
    if (!layer) return layer.error();
    Location location{-1, diskPath};
    layerByKey_[location.key()] = 0;
    loaded_.push_back(std::make_unique<Loaded>(Loaded{std::move(layer).value(), std::move(location)}));
    return 0;
}

core::Result<std::optional<int>> UsdStageLayers::load(int from, const std::string& assetPath) {
    const Location& base = loaded_[static_cast<std::size_t>(from)]->location;
    const int nesting = base.package < 0 ? 0 : packageNesting_[static_cast<std::size_t>(base.package)];
    const auto location = locate(base, assetPath, nesting);
    if (!location) return std::optional<int>();
    auto index = loadAt(*location, nesting);
    if (!index) return index.error();
    return std::optional<int>(index.value());
}

std::optional<UsdStageLayers::Asset> UsdStageLayers::asset(int from, const std::string& assetPath) {
    const Location& base = loaded_[static_cast<std::size_t>(from)]->location;
    const int nesting = base.package < 0 ? 0 : packageNesting_[static_cast<std::size_t>(base.package)];
    const auto location = locate(base, assetPath, nesting);
    if (!location) return std::nullopt;
    return read(*location);
}

core::Result<int> UsdStageLayers::loadAt(const Location& location, int nesting) {
    const std::string key = location.key();
    if (const auto it = layerByKey_.find(key); it != layerByKey_.end()) return it->second;
    if (loaded_.size() >= maxLayers)
        return importError(ImportErrorCode::limitExceeded, "more than " + std::to_string(maxLayers) + " layers");
    const auto bytes = read(location);
    if (!bytes) return importError(ImportErrorCode::unreadableFile, "cannot read " + location.path);
    if (isPackage(bytes->bytes)) {
        // A referenced package stands for its default layer.
        auto package = openNestedPackage(*bytes, nesting + 1);
        if (!package) return package.error();
        const auto& entries = packages_[static_cast<std::size_t>(package.value())]->entries();
        auto index = loadAt(Location{package.value(), entries.front().path}, nesting + 1);
        if (index) layerByKey_[key] = index.value();
        return index;
    }
    auto layer = parseLayer(bytes->bytes, location.path);
    if (!layer) return layer.error();
    const int index = static_cast<int>(loaded_.size());
    loaded_.push_back(std::make_unique<Loaded>(Loaded{std::move(layer).value(), location}));
    layerByKey_[key] = index;
    return index;
}

core::Result<int> UsdStageLayers::openNestedPackage(const Asset& bytes, int nesting) {
    if (const auto it = packageByKey_.find(bytes.key); it != packageByKey_.end()) return it->second;
    if (nesting > maxPackageNesting)
        return importError(ImportErrorCode::limitExceeded, "packages nested more than " + std::to_string(maxPackageNesting) + " deep");
    auto archive = UsdzArchive::open(bytes.bytes, bytes.owner);
    if (!archive) return archive.error();
    if (archive->entries().empty()) return importError(ImportErrorCode::malformedData, bytes.key + " holds no layer");
    const int index = static_cast<int>(packages_.size());
    packages_.push_back(std::make_unique<UsdzArchive>(std::move(archive).value()));
    packageNesting_.push_back(nesting);
    packageByKey_[bytes.key] = index;
    return index;
}

std::optional<UsdStageLayers::Location> UsdStageLayers::locate(const Location& from, const std::string& assetPath,
                                                               int nesting) {
    if (assetPath.empty()) return std::nullopt;
    // "outer.usdz[inner/path]": an entry of a nested package.
    if (assetPath.back() == ']') {
        const std::size_t open = assetPath.find('[');
        if (open == std::string::npos || open == 0) return std::nullopt;
        const auto outer = locate(from, assetPath.substr(0, open), nesting);
        const auto bytes = outer ? read(*outer) : std::nullopt;
        if (!bytes || !isPackage(bytes->bytes)) return std::nullopt;
        const auto package = openNestedPackage(*bytes, nesting + 1);
        if (!package) return std::nullopt;
        const UsdzEntry* entry = packages_[static_cast<std::size_t>(package.value())]->find(
            assetPath.substr(open + 1, assetPath.size() - open - 2));
        if (!entry) return std::nullopt;
        return Location{package.value(), entry->path};
    }
    if (from.package >= 0) {
        const UsdzArchive& archive = *packages_[static_cast<std::size_t>(from.package)];
        for (const std::string& anchor : {from.path, std::string()}) {
            const auto path = UsdzArchive::resolve(anchor, assetPath);
            if (const UsdzEntry* entry = path ? archive.find(*path) : nullptr) return Location{from.package, entry->path};
        }
        return std::nullopt;
    }
    std::filesystem::path path(assetPath);
    if (path.is_relative()) path = std::filesystem::path(from.path).parent_path() / path;
    path = path.lexically_normal();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    return Location{-1, path.string()};
}

std::optional<UsdStageLayers::Asset> UsdStageLayers::read(const Location& location) {
    if (location.package >= 0) {
        const UsdzArchive& archive = *packages_[static_cast<std::size_t>(location.package)];
        const UsdzEntry* entry = archive.find(location.path);
        if (!entry) return std::nullopt;
        return Asset{location.key(), entry->path, entry->data, archive.owner()};
    }
    auto& file = diskFiles_[location.path];
    if (!file) {
        auto mapped = FileBytes::open(location.path);
        if (!mapped) return std::nullopt;
        file = mapped.value();
    }
    return Asset{location.key(), location.path, file->bytes(), file};
}

} // namespace orvanta::import::usd
