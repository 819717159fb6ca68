#include "import/usd/UsdImporter.h"

#include "import/ImportError.h"
#include "import/usd/CrateFormatError.h"
#include "import/FileBytes.h"
#include "import/usd/UsdSceneBuilder.h"
#include "import/usd/UsdStage.h"

#include <algorithm>
#include <new>
#include <string_view>

namespace orvanta::import::usd {

namespace {

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view magic) {
    return bytes.size() >= magic.size() && std::equal(magic.begin(), magic.end(), bytes.begin(),
                                                      [](char m, std::uint8_t b) { return static_cast<std::uint8_t>(m) == b; });
}

} // namespace

core::Result<ImportedScene> UsdImporter::importFile(const std::string& path) {
    auto file = FileBytes::open(path);
    if (!file) return file.error();
    const auto bytes = file.value()->bytes();
    return importBytes(bytes, std::move(file).value(), path);
}

core::Result<ImportedScene> UsdImporter::importBytes(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner,
                                                     std::string name) {
    std::string format;
    core::Result<UsdStage> stage = importError(ImportErrorCode::unrecognisedFormat, name + " is no USD file");
    if (startsWith(bytes, std::string_view("PK\x03\x04", 4))) {
        format = "usdz";
        stage = UsdStage::openPackage(bytes, std::move(owner), name);
    } else if (startsWith(bytes, "PXR-USDC")) {
        format = "usdc";
        stage = UsdStage::openLayer(bytes, name);
    } else if (startsWith(bytes, "#usda")) {
        format = "usda";
        stage = UsdStage::openLayer(bytes, name);
    }
    if (!stage) return stage.error();
    try {
        ImportedScene scene = UsdSceneBuilder::build(std::move(stage).value());
        scene.format = std::move(format);
        return scene;
    } catch (const CrateFormatError& error) {  // a broken array, found when the scene read it
        return importError(error.code(), error.what());
    } catch (const std::bad_alloc&) {
        return importError(ImportErrorCode::limitExceeded, name + ": out of memory");
    }
}

} // namespace orvanta::import::usd
