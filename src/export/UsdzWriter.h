#pragma once
// Writes an ImportedScene as a USDZ package: the layer first (crate or text), then the
// textures it names, every entry stored and 64-byte aligned. The layer says metersPerUnit 1
// and upAxis "Y", the kit's own conventions, so the scene's numbers go out unchanged; every
// material becomes a UsdPreviewSurface with its textures (see UsdLayerPlan). The package is
// streamed to its destination, so besides the scene only the layer is held in memory.
// Thread: any; no shared state.

#include "core/Result.h"
#include "import/ImportedScene.h"

#include <QIODevice>

#include <string>
#include <vector>

namespace orvanta::exporter {

class UsdzWriter {
public:
    enum class Layer { crate, text };

    struct Report {
        std::uint64_t bytes = 0;         // the package's size
        std::vector<std::string> notes;  // facts of the scene the package does not carry
    };

    // Writes the package to `out`, which must be open for writing. Thread: any.
    static core::Result<Report> write(const import::ImportedScene& scene, QIODevice& out, Layer layer);
    // Writes the package to the file at `path`, replacing it. Thread: any.
    static core::Result<Report> write(const import::ImportedScene& scene, const std::string& path, Layer layer);
};

} // namespace orvanta::exporter
