#pragma once
// Reads a USD model, USDZ package, USDC crate or USDA text, told apart by its first bytes,
// into an ImportedScene (format "usdz", "usdc" or "usda"). References, payloads and
// textures resolve inside the package; a loose layer's resolve relative to its folder on
// disk. Textures of a package point into its bytes, kept alive by the scene's textures.
// Thread: any; no shared state, so imports may run side by side.

#include "core/Result.h"
#include "import/ImportedScene.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace orvanta::import::usd {

class UsdImporter {
public:
    // Maps the file at `path` and imports it. Thread: any.
    static core::Result<ImportedScene> importFile(const std::string& path);
    // Imports `bytes`, which `owner` keeps alive; `name` is the file's path (it anchors the
    // references of a loose layer) or any name for messages. Thread: any.
    static core::Result<ImportedScene> importBytes(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner,
                                                   std::string name);
};

} // namespace orvanta::import::usd
