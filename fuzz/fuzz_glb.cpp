// libFuzzer entry: arbitrary bytes as a binary glTF, through the Assimp importer and the
// conversion into an ImportedScene (counts and bounds are computed so every mesh is walked).
#include "import/AssimpImporter.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto result = orvanta::import::AssimpImporter::importBytes(std::span<const std::uint8_t>(data, size), "glb");
    if (result) {
        (void)result->bounds();
        (void)result->vertexCount();
        for (const auto& texture : result->textures) (void)texture.encoded.size();
    }
    return 0;
}
