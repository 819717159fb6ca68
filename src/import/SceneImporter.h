#pragma once
// Reads a model file into an ImportedScene. The format is sniffed from the bytes, never
// from the file name: USDZ (zip), USDC (crate), USDA (text), glTF/GLB and the other formats
// Assimp reads.
// Thread: any; no shared state, so imports may run side by side.

#include "core/Result.h"
#include "import/ImportedScene.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanta::import {

enum class ModelFormat { usdz, usdc, usda, glb, gltf, other, unknown };

class SceneImporter {
public:
    // Decides the format from the first bytes of a file.
    static ModelFormat sniff(std::span<const std::uint8_t> head);

    static core::Result<ImportedScene> importFile(const std::string& path);
};

} // namespace orvanta::import
