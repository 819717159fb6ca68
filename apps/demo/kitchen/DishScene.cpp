#include "DishScene.h"

#include "ProceduralTextures.h"

#include <cassert>
#include <cmath>
#include <random>

namespace orvanta::demo {

namespace {

float linear(float srgb) {
    return srgb <= 0.04045f ? srgb / 12.92f : std::pow((srgb + 0.055f) / 1.055f, 2.4f);
}

} // namespace

DishScene::DishScene(std::string name) {
    scene_.format = "procedural";
    import::ImportedNode root;
    root.name = std::move(name);
    scene_.nodes.push_back(std::move(root));
}

int DishScene::material(std::string name, const QColor& color, float roughness, float metallic) {
    import::ImportedMaterial material;
    material.name = std::move(name);
    material.baseColorFactor = {linear(color.redF()), linear(color.greenF()), linear(color.blueF()), 1.0f};
    material.roughness = roughness;
    material.metallic = metallic;
    scene_.materials.push_back(std::move(material));
    return int(scene_.materials.size()) - 1;
}

int DishScene::texturedMaterial(std::string name, const QImage& texture, float roughness) {
    const int index = material(name, Qt::white, roughness);
    import::ImportedTexture encoded;
    encoded.uri = "textures/" + name + ".png";
    encoded.encoded = ProceduralTextures::png(texture);
    scene_.textures.push_back(std::move(encoded));
    import::ImportedTextureRef reference;
    reference.texture = int(scene_.textures.size()) - 1;
    scene_.materials[index].baseColorTexture = reference;
    return index;
}

void DishScene::makeTranslucent(int material, float opacity) {
    auto& m = scene_.materials.at(std::size_t(material));
    m.baseColorFactor.setW(opacity);
    m.alphaMode = import::AlphaMode::blend;
    m.doubleSided = true;
}

int DishScene::mesh(import::ImportedMesh mesh, int material) {
    assert(material >= 0 && std::size_t(material) < scene_.materials.size());
    for (auto& subset : mesh.subsets) subset.material = material;
    scene_.meshes.push_back(std::move(mesh));
    return int(scene_.meshes.size()) - 1;
}

void DishScene::place(int mesh, const QMatrix4x4& transform) {
    const int index = int(scene_.nodes.size());
    import::ImportedNode node;
    node.name = scene_.meshes.at(std::size_t(mesh)).name + "_" + std::to_string(index);
    node.localTransform = transform;
    node.parent = 0;
    node.meshes = {mesh};
    scene_.nodes.push_back(std::move(node));
    scene_.nodes[0].children.push_back(index);
}

void DishScene::scatter(int mesh, int count, const QVector3D& centre, float radius, float tiltDegrees,
                        std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int i = 0; i < count; ++i) {
        // Square root of a uniform number: spots spread evenly over the disc, not crowded in its middle.
        const float distance = radius * std::sqrt(unit(random));
        const float angle = 2.0f * float(M_PI) * unit(random);
        QMatrix4x4 transform;
        transform.translate(centre + QVector3D(distance * std::sin(angle), 0.0f, distance * std::cos(angle)));
        transform.rotate(360.0f * unit(random), 0, 1, 0);
        transform.rotate(tiltDegrees * (2.0f * unit(random) - 1.0f), 1, 0, 0);
        place(mesh, transform);
    }
}

} // namespace orvanta::demo
