#include "render/SimulatedRoomFeed.h"

#include "reality/MeshResource.h"
#include "reality/Transform.h"

#include <QBuffer>
#include <QImage>
#include <QtQuick3D/private/qquick3ddirectionallight_p.h>
#include <QtQuick3D/private/qquick3dnode_p.h>

#include <cmath>

namespace orvanta::render {

namespace {

using Classification = arsession::ARPlaneAnchor::Classification;

constexpr float kSlabThickness = 0.03f; // table top, floor and wall slabs, metres
constexpr float kLegSize = 0.05f;
constexpr float kLegInset = 0.06f;
// The floor and the wall are drawn this many times wider (and the wall taller) than the
// surfaces the tracker finds, so the room fills the view at any aspect and the floor ends out
// of sight behind the wall.
constexpr float kRoomExtent = 6.0f;

// A smooth value noise in [0, 1], deterministic.
float noise(float x, float y) {
    const auto hash = [](int i, int j) {
        std::uint32_t h = std::uint32_t(i) * 374761393u + std::uint32_t(j) * 668265263u;
        h = (h ^ (h >> 13)) * 1274126177u;
        return float((h ^ (h >> 16)) & 0xffff) / 65535.0f;
    };
    const int xi = int(std::floor(x)), yi = int(std::floor(y));
    const float fx = x - xi, fy = y - yi;
    const float sx = fx * fx * (3 - 2 * fx), sy = fy * fy * (3 - 2 * fy);
    const float a = hash(xi, yi), b = hash(xi + 1, yi), c = hash(xi, yi + 1), d = hash(xi + 1, yi + 1);
    return (a + (b - a) * sx) * (1 - sy) + (c + (d - c) * sx) * sy;
}

QByteArray png(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

reality::PhysicallyBasedMaterial plain(QColor color, float roughness) {
    reality::PhysicallyBasedMaterial material;
    material.baseColorTint = color;
    material.roughness = roughness;
    return material;
}

} // namespace

const import::ImportedTexture& SimulatedRoomFeed::woodTexture() {
    static const import::ImportedTexture wood = [] {
        // Grain runs along u (the table's long side): bands of light and dark wood, bent by noise.
        constexpr int width = 512, height = 256;
        QImage image(width, height, QImage::Format_RGB32);
        const QColor light(196, 140, 92), dark(128, 80, 46);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const float u = float(x) / width, v = float(y) / height;
                const float bend = 3.0f * noise(u * 4.0f, v * 6.0f) + 0.6f * noise(u * 30.0f, v * 40.0f);
                const float rings = 0.5f + 0.5f * std::sin((v * 28.0f + bend) * 3.14159f);
                const float t = std::clamp(0.4f * std::pow(rings, 3.0f) + 0.2f * noise(u * 80.0f, v * 8.0f), 0.0f, 1.0f);
                image.setPixel(x, y, qRgb(int(light.red() + (dark.red() - light.red()) * t),
                                          int(light.green() + (dark.green() - light.green()) * t),
                                          int(light.blue() + (dark.blue() - light.blue()) * t)));
            }
        }
        return import::ImportedTexture{"wood", png(image), nullptr};
    }();
    return wood;
}

SimulatedRoomFeed::SimulatedRoomFeed(std::vector<arsession::SimulatedWorld::Surface> surfaces)
    : surfaces_(std::move(surfaces)) {}

SimulatedRoomFeed::~SimulatedRoomFeed() {
    pieces_.clear();
    for (QQuick3DNode* node : nodes_) {
        node->setParentItem(nullptr);
        delete node;
    }
}

void SimulatedRoomFeed::addBox(RenderResources& resources, QQuick3DNode* parent, const QMatrix4x4& pose,
                               QVector3D size, const reality::Material& material) {
    auto* node = new QQuick3DNode();
    node->setParentItem(parent);
    const reality::Transform transform = reality::Transform::fromMatrix(pose);
    node->setPosition(transform.translation);
    node->setRotation(transform.rotation);
    nodes_.push_back(node);
    pieces_.push_back(std::make_unique<DrawnMesh>(
        resources, node, reality::MeshResource::generateBox(size.x(), size.y(), size.z())->sharedMesh(),
        std::vector<reality::Material>{material}));
}

void SimulatedRoomFeed::attach(RenderResources& resources, QQuick3DNode* world, QQuickItem*) {
    reality::PhysicallyBasedMaterial wood = plain(Qt::white, 0.8f);
    wood.baseColorTexture = reality::MaterialTexture::of(woodTexture());
    // The floor and the wall fill most of the view: they are drawn unlit, in the colours the
    // lights gave them (a flat, matte surface under directional lights shades evenly), which
    // costs a third of a lit surface's fill on a software rasteriser.
    const reality::Material floor = reality::UnlitMaterial{QColor(154, 143, 131)};
    const reality::Material wall = reality::UnlitMaterial{QColor(184, 172, 155)};
    const reality::Material legs = plain(QColor(110, 70, 40), 0.6f);

    for (const auto& surface : surfaces_) {
        // Each surface is a slab whose top face is the surface itself.
        QMatrix4x4 slab = surface.transform;
        slab.translate(0.0f, -kSlabThickness / 2.0f, 0.0f);
        const QVector3D size(surface.width, kSlabThickness, surface.depth);
        switch (surface.classification) {
        case Classification::table: {
            addBox(resources, world, slab, size, wood);
            const float height = surface.transform.column(3).y() - kSlabThickness;
            for (const float sx : {-1.0f, 1.0f}) {
                for (const float sz : {-1.0f, 1.0f}) {
                    QMatrix4x4 leg = surface.transform;
                    leg.translate(sx * (surface.width / 2 - kLegInset), -kSlabThickness - height / 2.0f,
                                  sz * (surface.depth / 2 - kLegInset));
                    addBox(resources, world, leg, QVector3D(kLegSize, height, kLegSize), legs);
                }
            }
            break;
        }
        case Classification::wall: addBox(resources, world, slab, size * QVector3D(kRoomExtent, 1, kRoomExtent), wall); break;
        default: addBox(resources, world, slab, size * QVector3D(kRoomExtent, 1, kRoomExtent), floor); break;
        }
    }

    // A warm key light from above and slightly behind the camera, with a soft ambient fill,
    // like a lamp over a table in a lit room.
    auto* key = new QQuick3DDirectionalLight();
    key->setParentItem(world);
    key->setEulerRotation(QVector3D(-60.0f, -25.0f, 0.0f));
    key->setColor(QColor(255, 244, 228));
    key->setBrightness(1.1f);
    key->setAmbientColor(QColor(92, 90, 96));
    nodes_.push_back(key);
    auto* fill = new QQuick3DDirectionalLight();
    fill->setParentItem(world);
    fill->setEulerRotation(QVector3D(-20.0f, 150.0f, 0.0f));
    fill->setColor(QColor(210, 222, 255));
    fill->setBrightness(0.35f);
    nodes_.push_back(fill);
}

} // namespace orvanta::render
