#pragma once
// A metallic–roughness material with optional textures, made from an imported material
// or by hand. Every input is its factor, multiplied by its texture when it has one.
// Colours are sRGB, as a platform colour is (fromImported converts the file's linear ones).
// Textures stay encoded until the renderer decodes them.
// Thread: a value type (texture bytes are shared, not copied).

#include "import/ImportedScene.h"
#include "reality/MaterialTexture.h"

#include <QColor>

#include <optional>

namespace orvanta::reality {

struct PhysicallyBasedMaterial {
    QColor baseColorTint = Qt::white; // multiplies the base colour texture; alpha is the opacity
    std::optional<MaterialTexture> baseColorTexture;
    float metallic = 0.0f;
    std::optional<MaterialTexture> metallicTexture;
    float roughness = 0.5f;
    std::optional<MaterialTexture> roughnessTexture;
    std::optional<MaterialTexture> normalTexture;
    float normalScale = 1.0f;
    std::optional<MaterialTexture> occlusionTexture;
    float occlusionStrength = 1.0f;
    QColor emissiveColor = Qt::black;
    float emissiveIntensity = 1.0f;
    std::optional<MaterialTexture> emissiveTexture;
    std::optional<MaterialTexture> opacityTexture; // one channel, multiplies the opacity
    // Opaque ignores the opacity unless it is below 1 (a hand-made see-through colour);
    // mask cuts at `alphaCutoff`; blend blends.
    import::AlphaMode alphaMode = import::AlphaMode::opaque;
    float alphaCutoff = 0.5f;
    bool doubleSided = false;
    bool unlit = false; // the base colour shown as it is, whatever the lighting

    // The material `material` of `scene` with its textures.
    static PhysicallyBasedMaterial fromImported(const import::ImportedScene& scene,
                                                const import::ImportedMaterial& material);
};

} // namespace orvanta::reality
