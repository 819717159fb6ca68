#include "reality/PhysicallyBasedMaterial.h"

#include <algorithm>

namespace orvanta::reality {

namespace {

float unit(float value) { return std::clamp(value, 0.0f, 1.0f); }

std::optional<import::ImportedTexture> texture(const import::ImportedScene& scene,
                                               const std::optional<import::ImportedTextureRef>& ref) {
    if (!ref || ref->texture < 0 || std::size_t(ref->texture) >= scene.textures.size()) return std::nullopt;
    return scene.textures[std::size_t(ref->texture)];
}

} // namespace

PhysicallyBasedMaterial PhysicallyBasedMaterial::fromImported(const import::ImportedScene& scene,
                                                              const import::ImportedMaterial& material) {
    PhysicallyBasedMaterial result;
    const QVector4D& base = material.baseColorFactor;
    result.baseColorTint = QColor::fromRgbF(unit(base.x()), unit(base.y()), unit(base.z()), unit(base.w() * material.opacity));
    result.baseColorTexture = texture(scene, material.baseColorTexture);
    result.metallic = unit(material.metallic);
    result.roughness = unit(material.roughness);
    // Both maps usually share one image (G roughness, B metallic).
    result.metallicRoughnessTexture = texture(scene, material.roughnessTexture ? material.roughnessTexture : material.metallicTexture);
    const QVector3D& emissive = material.emissiveFactor;
    result.emissiveColor = QColor::fromRgbF(unit(emissive.x()), unit(emissive.y()), unit(emissive.z()));
    result.emissiveTexture = texture(scene, material.emissiveTexture);
    result.normalTexture = texture(scene, material.normalTexture);
    return result;
}

} // namespace orvanta::reality
