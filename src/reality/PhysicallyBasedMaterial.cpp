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

// The scale a texture reference applies to the texel component an input reads (for a
// colour, its red, green and blue). A renderer multiplies texels by the material's factor,
// so folding the scale into that factor reproduces `texel * scale` exactly when the
// reference has no bias, as files that give a factor beside a texture write it.
QVector3D colourScale(const std::optional<import::ImportedTextureRef>& ref) {
    return ref ? ref->scale.toVector3D() : QVector3D(1.0f, 1.0f, 1.0f);
}
float channelScale(const std::optional<import::ImportedTextureRef>& ref) {
    if (!ref) return 1.0f;
    switch (ref->channel) {
    case import::TextureChannel::g: return ref->scale.y();
    case import::TextureChannel::b: return ref->scale.z();
    case import::TextureChannel::a: return ref->scale.w();
    default: return ref->scale.x();
    }
}

} // namespace

PhysicallyBasedMaterial PhysicallyBasedMaterial::fromImported(const import::ImportedScene& scene,
                                                              const import::ImportedMaterial& material) {
    PhysicallyBasedMaterial result;
    const QVector3D base = material.baseColorFactor.toVector3D() * colourScale(material.baseColorTexture);
    const float alpha = material.alphaMode == import::AlphaMode::opaque
                            ? 1.0f
                            : unit(material.baseColorFactor.w() * material.opacity * channelScale(material.opacityTexture));
    result.baseColorTint = QColor::fromRgbF(srgbFromLinear(base.x()), srgbFromLinear(base.y()), srgbFromLinear(base.z()), alpha);
    result.baseColorTexture = texture(scene, material.baseColorTexture);
    result.metallic = unit(material.metallic * channelScale(material.metallicTexture));
    result.metallicTexture = texture(scene, material.metallicTexture);
    result.roughness = unit(material.roughness * channelScale(material.roughnessTexture));
    result.roughnessTexture = texture(scene, material.roughnessTexture);
    result.normalTexture = texture(scene, material.normalTexture);
    result.normalScale = material.normalScale;
    result.occlusionTexture = texture(scene, material.occlusionTexture);
    result.occlusionStrength = unit(material.occlusionStrength);
    // Strengths above one keep their brightness in the intensity, the colour in its hue.
    const QVector3D emissive = material.emissiveFactor * colourScale(material.emissiveTexture);
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
