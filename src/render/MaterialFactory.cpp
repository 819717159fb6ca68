#include "render/MaterialFactory.h"

#include "render/ImagePixels.h"

#include <QtQuick3D/private/qquick3dprincipledmaterial_p.h>
#include <QtQuick3D/private/qquick3dtexture_p.h>

#include <algorithm>
#include <cmath>

namespace orvanta::render {

namespace {

float linearFromSrgb(float c) { return c <= 0.04045f ? c / 12.92f : std::pow((c + 0.055f) / 1.055f, 2.4f); }

QQuick3DTexture::TilingMode tiling(import::TextureWrap wrap) {
    switch (wrap) {
    case import::TextureWrap::repeat: return QQuick3DTexture::Repeat;
    case import::TextureWrap::mirror: return QQuick3DTexture::MirroredRepeat;
    case import::TextureWrap::clamp:
    case import::TextureWrap::black: return QQuick3DTexture::ClampToEdge;
    }
    return QQuick3DTexture::Repeat;
}

QQuick3DMaterial::TextureChannelMapping channel(import::TextureChannel c) {
    switch (c) {
    case import::TextureChannel::r: return QQuick3DMaterial::R;
    case import::TextureChannel::g: return QQuick3DMaterial::G;
    case import::TextureChannel::b: return QQuick3DMaterial::B;
    case import::TextureChannel::a: return QQuick3DMaterial::A;
    default: return QQuick3DMaterial::R;
    }
}

// Builds one principled material; each texture input gets a texture object of its own
// (sampling differs per input) over the image's shared pixels.
struct MaterialVisitor {
    TextureCache& textures;
    QQuick3DObject* owner;
    std::vector<TextureCache::Handle>& keep;

    QQuick3DPrincipledMaterial* principled() const {
        auto* material = new QQuick3DPrincipledMaterial(owner);
        material->setParentItem(owner);
        return material;
    }

    QQuick3DTexture* use(QQuick3DObject* material, const std::optional<reality::MaterialTexture>& input) const {
        if (!input || input->image.encoded.isEmpty()) return nullptr;
        keep.push_back(textures.pixels(input->image));
        auto* texture = new QQuick3DTexture(material);
        texture->setParentItem(material);
        texture->setTextureData(keep.back().get());
        texture->setGenerateMipmaps(true);
        texture->setMipFilter(QQuick3DTexture::Linear);
        // Imported texture coordinates put (0, 0) at the image's bottom-left corner, as
        // Quick 3D does for images it loads itself; decoded rows come top row first.
        texture->setFlipV(true);
        const import::ImportedTextureRef& sampling = input->sampling;
        texture->setIndexUV(sampling.texCoordSet);
        texture->setHorizontalTiling(tiling(sampling.wrapS));
        texture->setVerticalTiling(tiling(sampling.wrapT));
        const import::ImportedTextureTransform& t = sampling.transform;
        if (!t.isIdentity()) {
            texture->setScaleU(t.scale.x());
            texture->setScaleV(t.scale.y());
            texture->setRotationUV(t.rotationDegrees);
            texture->setPositionU(t.offset.x());
            texture->setPositionV(t.offset.y());
        }
        return texture;
    }

    QQuick3DMaterial* operator()(const reality::PhysicallyBasedMaterial& pbr) const {
        auto* m = principled();
        m->setLighting(pbr.unlit ? QQuick3DPrincipledMaterial::NoLighting : QQuick3DPrincipledMaterial::FragmentLighting);
        m->setBaseColor(pbr.baseColorTint);
        m->setBaseColorMap(use(m, pbr.baseColorTexture));
        m->setMetalness(pbr.metallic);
        if (auto* map = use(m, pbr.metallicTexture)) {
            m->setMetalnessMap(map);
            m->setMetalnessChannel(channel(pbr.metallicTexture->sampling.channel));
        }
        m->setRoughness(pbr.roughness);
        if (auto* map = use(m, pbr.roughnessTexture)) {
            m->setRoughnessMap(map);
            m->setRoughnessChannel(channel(pbr.roughnessTexture->sampling.channel));
        }
        if (auto* map = use(m, pbr.normalTexture)) {
            m->setNormalMap(map);
            m->setNormalStrength(pbr.normalScale);
        }
        if (auto* map = use(m, pbr.occlusionTexture)) {
            m->setOcclusionMap(map);
            m->setOcclusionChannel(channel(pbr.occlusionTexture->sampling.channel));
            m->setOcclusionAmount(pbr.occlusionStrength);
        }
        m->setEmissiveFactor(MaterialFactory::emissiveFactor(pbr.emissiveColor, pbr.emissiveIntensity));
        if (auto* map = use(m, pbr.emissiveTexture)) {
            m->setEmissiveMap(map);
            // A map without a factor would be multiplied by black.
            if (m->emissiveFactor().isNull()) m->setEmissiveFactor(QVector3D(1.0f, 1.0f, 1.0f) * pbr.emissiveIntensity);
        }
        if (auto* map = use(m, pbr.opacityTexture)) {
            m->setOpacityMap(map);
            m->setOpacityChannel(channel(pbr.opacityTexture->sampling.channel));
        }
        m->setOpacity(float(pbr.baseColorTint.alphaF()));
        switch (pbr.alphaMode) {
        case import::AlphaMode::mask:
            m->setAlphaMode(QQuick3DPrincipledMaterial::Mask);
            m->setAlphaCutoff(pbr.alphaCutoff);
            break;
        case import::AlphaMode::blend: m->setAlphaMode(QQuick3DPrincipledMaterial::Blend); break;
        case import::AlphaMode::opaque:
            m->setAlphaMode(pbr.baseColorTint.alphaF() < 1.0 ? QQuick3DPrincipledMaterial::Blend
                                                             : QQuick3DPrincipledMaterial::Opaque);
            break;
        }
        if (pbr.doubleSided) m->setCullMode(QQuick3DMaterial::NoCulling);
        return m;
    }

    QQuick3DMaterial* operator()(const reality::SimpleMaterial& simple) const {
        auto* m = principled();
        m->setBaseColor(simple.color);
        m->setRoughness(simple.roughness);
        m->setMetalness(simple.isMetallic ? 1.0f : 0.0f);
        see(*m, simple.color);
        return m;
    }

    QQuick3DMaterial* operator()(const reality::UnlitMaterial& unlit) const {
        auto* m = principled();
        m->setLighting(QQuick3DPrincipledMaterial::NoLighting);
        m->setBaseColor(unlit.color);
        see(*m, unlit.color);
        return m;
    }

    // A colour's alpha is its opacity: below 1 the material blends.
    static void see(QQuick3DPrincipledMaterial& material, const QColor& color) {
        material.setOpacity(float(color.alphaF()));
        if (color.alphaF() < 1.0) material.setAlphaMode(QQuick3DPrincipledMaterial::Blend);
    }
};

} // namespace

QQuick3DMaterial* MaterialFactory::make(const reality::Material& material, QQuick3DObject* owner,
                                        std::vector<TextureCache::Handle>& keep) const {
    return std::visit(MaterialVisitor{textures_, owner, keep}, material);
}

QVector3D MaterialFactory::emissiveFactor(const QColor& color, float intensity) {
    QVector3D linear(linearFromSrgb(float(color.redF())), linearFromSrgb(float(color.greenF())),
                     linearFromSrgb(float(color.blueF())));
    linear *= intensity;
    const float brightest = std::max({linear.x(), linear.y(), linear.z()});
    return brightest > 1.0f ? linear / brightest : linear;
}

} // namespace orvanta::render
