#pragma once
// Turns the Material prims of a stage into ImportedMaterials and their textures.
//
// A material's surface is the UsdPreviewSurface shader its `outputs:surface` connects to
// (else the first one below it). Of its inputs, diffuseColor, emissiveColor, metallic,
// roughness, opacity and normal are read; an input connected to a UsdUVTexture takes that
// texture (base colour, emissive and normal maps), one connected to an input of the
// material takes that input's value. Textures are the `inputs:file` assets, resolved against
// the layer that wrote them; PNG and JPEG are kept as their encoded bytes without copying,
// other images (TGA, ...) are left out. The texture-coordinate primvar is the `varname` of
// the UsdPrimvarReader_float2 a texture reads through (possibly via a UsdTransform2d).
// Thread: one reader belongs to one import on one thread.

#include "import/ImportedScene.h"
#include "import/usd/UsdStage.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta::import::usd {

class UsdMaterialReader {
public:
    // `stage` and `scene` must outlive the reader; materials and textures are appended to
    // `scene`. Thread: the import's.
    UsdMaterialReader(const UsdStage& stage, ImportedScene& scene) : stage_(stage), scene_(scene) {}

    // The index in scene.materials of the Material prim at `path`, read on first use;
    // -1 when there is no such Material. Thread: the import's.
    int material(const std::string& path);
    // The primvar the textures of material `index` read their coordinates from; empty when
    // the material names none. Thread: the import's.
    const std::string& texCoordPrimvar(int index) const;

private:
    struct Input {
        const Value* value = nullptr;
        int layer = 0;
        const UsdStage::Prim* texture = nullptr;  // the UsdUVTexture shader it reads, if any
    };

    Input resolve(const UsdStage::Prim& prim, const std::string& input, int depth = 0) const;
    const UsdStage::Prim* surfaceOf(const UsdStage::Prim& material) const;
    std::optional<int> texture(const UsdStage::Prim& shader);
    std::string primvarOf(const UsdStage::Prim& texture) const;

    const UsdStage& stage_;
    ImportedScene& scene_;
    std::unordered_map<std::string, int> byPath_;
    std::vector<std::string> primvars_;                   // per material
    std::unordered_map<std::string, int> textureByKey_;
};

} // namespace orvanta::import::usd
