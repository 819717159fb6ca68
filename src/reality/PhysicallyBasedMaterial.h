#pragma once
// A metallic–roughness material with optional textures, made from an imported material
// or by hand. Textures stay encoded until the renderer decodes them.
// Thread: a value type (texture bytes are shared, not copied).

#include "import/ImportedScene.h"

#include <QColor>

#include <optional>

namespace orvanta::reality {

struct PhysicallyBasedMaterial {
    QColor baseColorTint = Qt::white; // multiplies the base colour texture; alpha is the opacity
    std::optional<import::ImportedTexture> baseColorTexture;
    float metallic = 0.0f;
    float roughness = 0.5f;
    std::optional<import::ImportedTexture> metallicRoughnessTexture; // G roughness, B metallic
    QColor emissiveColor = Qt::black;
    float emissiveIntensity = 1.0f;
    std::optional<import::ImportedTexture> emissiveTexture;
    std::optional<import::ImportedTexture> normalTexture;

    // The material `material` of `scene` with its textures.
    static PhysicallyBasedMaterial fromImported(const import::ImportedScene& scene,
                                                const import::ImportedMaterial& material);
};

} // namespace orvanta::reality
