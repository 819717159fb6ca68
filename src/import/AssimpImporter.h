#pragma once
// Imports glTF 2.0 (JSON and binary), OBJ, PLY, STL, FBX and the other formats the scene
// import library reads, into an ImportedScene.
// Thread: any; each call uses its own importer.

#include "core/Result.h"
#include "import/ImportedScene.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanta::import {

class AssimpImporter {
public:
    // External buffers and images resolve relative to the file's folder.
    static core::Result<ImportedScene> importFile(const std::string& path, std::string formatName);
    // Self-contained data only (GLB with embedded buffers, say); `extensionHint` such as "glb".
    static core::Result<ImportedScene> importBytes(std::span<const std::uint8_t> bytes, const std::string& extensionHint);
};

} // namespace orvanta::import
