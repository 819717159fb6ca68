#pragma once
// Writes an ImportedScene as a binary glTF 2.0 file through Assimp's exporter. Meshes are
// split per material (glTF primitives draw one material each); images are embedded. What
// glTF through Assimp cannot carry (texture transforms, channels other than glTF's packing,
// opacity maps) is listed in the report.
// Thread: any; no shared state.

#include "core/Result.h"
#include "import/ImportedScene.h"

#include <string>
#include <vector>

namespace orvanta::exporter {

class GlbWriter {
public:
    struct Report {
        std::vector<std::string> notes;  // facts of the scene the file does not carry
    };

    // Writes the file at `path`, replacing it. Thread: any.
    static core::Result<Report> write(const import::ImportedScene& scene, const std::string& path);
};

} // namespace orvanta::exporter
