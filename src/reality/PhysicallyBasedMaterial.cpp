#include "reality/PhysicallyBasedMaterial.h"

#include <algorithm>
#include <cmath>

namespace orvanta::reality {

namespace {

float unit(float value) { return std::clamp(value, 0.0f, 1.0f); }

float srgbFromLinear(float c) {
    c = unit(c);
    return c <= 0.0031308f ? c * 12.92f : 1.055f * std::pow(c, 1.0f / 2.4f) - 0.055f;
}

std::optional<MaterialTexture> texture(const import::ImportedScene& scene,
                                       const std::optional<import::ImportedTextureRef>& ref) {
    if (!ref || ref->texture < 0 || std::size_t(ref->texture) >= scene.textures.size()) return std::nullopt;
    return MaterialTexture{scene.textures[std::size_t(ref->texture)], *ref};
}

} // namespace

PhysicallyBasedMaterial PhysicallyBasedMaterial::fromImported(const import::ImportedScene& scene,
                                                              const import::ImportedMaterial& material) {
    PhysicallyBasedMaterial result;
    const QVector4D& base = material.baseColorFactor;
    const float alpha = material.alphaMode == import::AlphaMode::opaque ? 1.0f : unit(base.w() * material.opacity);
    result.baseColorTint = QColor::fromRgbF(srgbFromLinear(base.x()), srgbFromLinear(base.y()), srgbFromLinear(base.z()), alpha);
    result.baseColorTexture = texture(scene, material.baseColorTexture);
    result.metallic = unit(material.metallic);
    result.metallicTexture = texture(scene, material.metallicTexture);
    result.roughness = unit(material.roughness);
    result.roughnessTexture = texture(scene, material.roughnessTexture);
    result.normalTexture = texture(scene, material.normalTexture);
    result.normalScale = material.normalScale;
    result.occlusionTexture = texture(scene, material.occlusionTexture);
    result.occlusionStrength = unit(material.occlusionStrength);
    // Strengths above one keep their brightness in the intensity, the colour in its hue.
    const QVector3D& emissive = material.emissiveFactor;
    const float brightest = std::max({emissive.x(), emissive.y(), emissive.z(), 1.0f});
    result.emissiveColor = QColor::fromRgbF(srgbFromLinear(emissive.x() / brightest), srgbFromLinear(emissive.y() / brightest),
                                            srgbFromLinear(emissive.z() / brightest));
    result.emissiveIntensity = material.emissiveStrength * brightest;
    result.emissiveTexture = texture(scene, material.emissiveTexture);
    result.opacityTexture = material.alphaMode == import::AlphaMode::opaque ? std::nullopt
                                                                            : texture(scene, material.opacityTexture);
    result.alphaMode = material.alphaMode;
    result.alphaCutoff = material.alphaCutoff;
    result.doubleSided = material.doubleSided;
    result.unlit = material.unlit;
    return result;
}

} // namespace orvanta::reality
