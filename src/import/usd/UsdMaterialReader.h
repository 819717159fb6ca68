#pragma once
// Turns the Material prims of a stage into ImportedMaterials and their textures.
//
// A material's surface is the UsdPreviewSurface shader its `outputs:surface` connects to
// (else the first one below it). Of its inputs, diffuseColor, emissiveColor, metallic,
// roughness, opacity, opacityThreshold, normal and occlusion are read; an input connected
// to a UsdUVTexture takes that texture through the output it names (r, g, b, a or rgb), one
// connected to an input of the material takes that input's value. A texture brings its
// wrapS/wrapT, sourceColorSpace, scale and bias, and the UsdTransform2d its coordinates pass
// through. Textures are the `inputs:file` assets, resolved against the layer that wrote
// them; PNG, JPEG and TGA are kept as their encoded bytes without copying, other files are
// left out. The texture-coordinate primvars are the `varname`s of the UsdPrimvarReader_float2
// the textures read through: the first one named is set 0, the second set 1.
// A diffuseColor read from the displayColor primvar leaves the base colour white and lets
// the meshes' colours show. opacityThreshold above 0 makes the material masked; an opacity below 1 or from a texture
// makes it blended.
// Thread: one reader belongs to one import on one thread.

#include "import/ImportedScene.h"
#include "import/usd/UsdStage.h"

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta::import::usd {

class UsdMaterialReader {
public:
    // The primvars texture-coordinate sets 0 and 1 read; empty names for sets not used.
    using TexCoordPrimvars = std::array<std::string, 2>;

    // `stage` and `scene` must outlive the reader; materials and textures are appended to
    // `scene`. Thread: the import's.
    UsdMaterialReader(const UsdStage& stage, ImportedScene& scene) : stage_(stage), scene_(scene) {}

    // The index in scene.materials of the Material prim at `path`, read on first use;
    // -1 when there is no such Material. Thread: the import's.
    int material(const std::string& path);
    // The primvars the textures of material `index` read their coordinates from.
    // Thread: the import's.
    const TexCoordPrimvars& texCoordPrimvars(int index) const;
    // Whether material `index` takes its diffuse colour from the mesh's displayColor
    // primvar (a UsdPrimvarReader_float3 of it); false for -1. Thread: the import's.
    bool readsDisplayColor(int index) const;

private:
    struct Input {
        const Value* value = nullptr;
        int layer = 0;
        const UsdStage::Prim* texture = nullptr;  // the UsdUVTexture shader it reads, if any
        std::string output;                       // the texture's output it reads
        const UsdStage::Prim* primvarReader = nullptr;  // the UsdPrimvarReader it reads, if any
    };

    Input resolve(const UsdStage::Prim& prim, const std::string& input, int depth = 0) const;
    const UsdStage::Prim* surfaceOf(const UsdStage::Prim& material) const;
    std::optional<ImportedTextureRef> textureRef(const Input& input, TexCoordPrimvars& primvars);
    int texture(const UsdStage::Prim& shader);
    // The UsdTransform2d and the primvar reader the texture's coordinates come from.
    std::pair<const UsdStage::Prim*, std::string> coordinatesOf(const UsdStage::Prim& texture) const;

    const UsdStage& stage_;
    ImportedScene& scene_;
    std::unordered_map<std::string, int> byPath_;
    std::vector<TexCoordPrimvars> primvars_;  // per material
    std::vector<bool> readsDisplayColor_;     // per material
    std::unordered_map<std::string, int> textureByKey_;
};

} // namespace orvanta::import::usd
