#include "render/ContactShadow.h"

#include "reality/MeshResource.h"

#include <QBuffer>
#include <QImage>
#include <QtQuick3D/private/qquick3dmodel_p.h>

#include <algorithm>
#include <cmath>

namespace orvanta::render {

namespace {

// How far the patch reaches past the footprint, as a factor of its size.
constexpr float kSpread = 1.6f;
// Height above the surface (the anchor's y = 0), in the anchor's space, that keeps the patch
// clear of the surface's own depth.
constexpr float kLift = 0.002f;

// Black with an alpha that falls off smoothly from the centre to the edge.
reality::Material shadowMaterial() {
    static const import::ImportedTexture falloff = [] {
        constexpr int size = 64;
        QImage image(size, size, QImage::Format_RGBA8888);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const float dx = (x + 0.5f) / size * 2.0f - 1.0f, dy = (y + 0.5f) / size * 2.0f - 1.0f;
                const float r = std::min(1.0f, std::sqrt(dx * dx + dy * dy));
                const float alpha = 0.75f * std::pow(1.0f - r * r, 1.5f);
                image.setPixelColor(x, y, QColor::fromRgbF(0.0f, 0.0f, 0.0f, alpha));
            }
        }
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return import::ImportedTexture{"contact-shadow", png, nullptr};
    }();
    reality::PhysicallyBasedMaterial material;
    material.baseColorTint = Qt::black;
    material.baseColorTexture = reality::MaterialTexture::of(falloff, import::TextureChannel::rgba);
    material.unlit = true;
    material.alphaMode = import::AlphaMode::blend; // it only darkens what lies under it
    return material;
}

} // namespace

ContactShadow::ContactShadow(RenderResources& resources, QQuick3DNode* anchorNode)
    : quad_(resources, anchorNode, reality::MeshResource::generatePlane(1.0f, 1.0f)->sharedMesh(), {shadowMaterial()}) {}

void ContactShadow::follow(const reality::Entity& anchor) {
    reality::BoundingBox footprint;
    for (const auto& child : anchor.children()) footprint.add(child->visualBounds(true, &anchor));
    QQuick3DModel* model = quad_.model();
    model->setVisible(!footprint.isEmpty);
    if (footprint.isEmpty) return;
    const QVector3D centre = footprint.center();
    const QVector3D size = footprint.extents() * kSpread;
    model->setPosition(QVector3D(centre.x(), kLift, centre.z()));
    model->setScale(QVector3D(size.x(), 1.0f, size.z()));
}

} // namespace orvanta::render
