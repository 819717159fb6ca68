// orvanta-inspect FILE...
// Imports each file the way the kit does (format sniffed from the bytes) and prints what it
// holds: format, node, mesh, vertex, triangle, material and texture counts, bounds in metres
// and the time the import took. Exit status 0 when every file loads, 1 otherwise; each
// failure is reported on standard error with its domain, code and message.

#include "import/SceneImporter.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace {

using orvanta::import::ImportedScene;
using orvanta::import::SceneImporter;

void printScene(const std::string& path, const ImportedScene& scene, double milliseconds) {
    std::printf("%s\n", path.c_str());
    std::printf("  format: %s\n", scene.format.c_str());
    std::printf("  nodes: %zu\n", scene.nodes.size());
    std::printf("  meshes: %zu\n", scene.meshes.size());
    std::printf("  vertices: %zu\n", scene.vertexCount());
    std::printf("  triangles: %zu\n", scene.triangleCount());
    std::printf("  materials: %zu\n", scene.materials.size());
    std::printf("  textures: %zu\n", scene.textures.size());
    const auto bounds = scene.bounds();
    if (bounds.empty) {
        std::printf("  bounds: empty\n");
    } else {
        const auto size = bounds.max - bounds.min;
        std::printf("  bounds (m): min (%g, %g, %g) max (%g, %g, %g) size (%g, %g, %g)\n", bounds.min.x(),
                    bounds.min.y(), bounds.min.z(), bounds.max.x(), bounds.max.y(), bounds.max.z(), size.x(),
                    size.y(), size.z());
    }
    std::printf("  load time: %.3f ms\n", milliseconds);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FILE...\n", argv[0]);
        return 2;
    }
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string path = argv[i];
        const auto start = std::chrono::steady_clock::now();
        const auto result = SceneImporter::importFile(path);
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
        if (result) {
            printScene(path, result.value(), elapsed.count());
        } else {
            const auto& error = result.error();
            std::fprintf(stderr, "%s: error: domain %s, code %d: %s\n", path.c_str(), error.domain().c_str(),
                         error.code(), error.localizedDescription().c_str());
            status = 1;
        }
        std::fflush(stdout);
    }
    return status;
}
