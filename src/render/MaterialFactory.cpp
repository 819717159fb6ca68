#include "render/MaterialFactory.h"

#include <QtQuick3D/private/qquick3dprincipledmaterial_p.h>
#include <QtQuick3D/private/qquick3dtexture_p.h>

#include <algorithm>
#include <cmath>

namespace orvanta::render {

namespace {

float linearFromSrgb(float c) { return c <= 0.04045f ? c / 12.92f : std::pow((c + 0.055f) / 1.055f, 2.4f); }

QQuick3DPrincipledMaterial* principled(QQuick3DObject* parent) {
    auto* material = new QQuick3DPrincipledMaterial(parent);
    material->setParentItem(parent);
    return material;
}

void setOpacity(QQuick3DPrincipledMaterial& material, const QColor& color) {
    material.setOpacity(float(color.alphaF()));
    if (color.alphaF() < 1.0) material.setAlphaMode(QQuick3DPrincipledMaterial::Blend);
}

struct MaterialVisitor {
    TextureCache& textures;
    QQuick3DObject* parent;
    std::vector<TextureCache::Handle>& keep;

    QQuick3DTexture* use(const std::optional<import::ImportedTexture>& image) const {
        if (!image || image->encoded.isEmpty()) return nullptr;
        keep.push_back(textures.texture(*image));
        return keep.back().get();
    }

    QQuick3DMaterial* operator()(const reality::PhysicallyBasedMaterial& pbr) const {
        auto* m = principled(parent);
        m->setBaseColor(pbr.baseColorTint);
        m->setBaseColorMap(use(pbr.baseColorTexture));
        m->setMetalness(pbr.metallic);
        m->setRoughness(pbr.roughness);
        if (auto* packed = use(pbr.metallicRoughnessTexture)) {
            // glTF packing: roughness in green, metalness in blue.
            m->setRoughnessMap(packed);
            m->setRoughnessChannel(QQuick3DMaterial::G);
            m->setMetalnessMap(packed);
            m->setMetalnessChannel(QQuick3DMaterial::B);
        }
        m->setEmissiveFactor(MaterialFactory::emissiveFactor(pbr.emissiveColor, pbr.emissiveIntensity));
        if (auto* emissive = use(pbr.emissiveTexture)) {
            m->setEmissiveMap(emissive);
            // A map without a factor would be multiplied by black.
            if (m->emissiveFactor().isNull()) m->setEmissiveFactor(QVector3D(1.0f, 1.0f, 1.0f) * pbr.emissiveIntensity);
        }
        m->setNormalMap(use(pbr.normalTexture));
        setOpacity(*m, pbr.baseColorTint);
        return m;
    }

    QQuick3DMaterial* operator()(const reality::SimpleMaterial& simple) const {
        auto* m = principled(parent);
        m->setBaseColor(simple.color);
        m->setRoughness(simple.roughness);
        m->setMetalness(simple.isMetallic ? 1.0f : 0.0f);
        setOpacity(*m, simple.color);
        return m;
    }

    QQuick3DMaterial* operator()(const reality::UnlitMaterial& unlit) const {
        auto* m = principled(parent);
        m->setLighting(QQuick3DPrincipledMaterial::NoLighting);
        m->setBaseColor(unlit.color);
        setOpacity(*m, unlit.color);
        return m;
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
