// Every material and vertex fact both importers read: UsdPreviewSurface inputs with their
// texture channels, transforms, wrap modes, colour spaces, scale and bias; displayColor at
// each interpolation; glTF's extensions, alpha modes, second UV set, colours and tangents;
// and the corpus files that carry such facts.
#include "ImportTestHelpers.h"
#include "support/Corpus.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstring>

namespace orvanta::import {
namespace {

TEST(MaterialFidelityTest, UsdPreviewSurfaceValuesSetTheAlphaMode) {
    const ImportedScene scene = importOk(importUsda(R"(#usda 1.0
def Mesh "UsesPlain" { rel material:binding = </Plain> }
def Mesh "UsesGlass" { rel material:binding = </Glass> }
def Material "Plain" {
    token outputs:surface.connect = </Plain/Surface.outputs:surface>
    def Shader "Surface" {
        uniform token info:id = "UsdPreviewSurface"
        color3f inputs:diffuseColor = (0.25, 0.5, 0.75)  color3f inputs:emissiveColor = (0.1, 0.2, 0.3)
        float inputs:metallic = 0.9  float inputs:roughness = 0.2  float inputs:opacity = 0.8  float inputs:opacityThreshold = 0.4
    }
}
def Material "Glass" {
    token outputs:surface.connect = </Glass/Surface.outputs:surface>
    def Shader "Surface" { uniform token info:id = "UsdPreviewSurface" float inputs:opacity = 0.3 }
}
)"));
    ASSERT_NE(named(scene.materials, "Plain"), nullptr);
    const ImportedMaterial& plain = *named(scene.materials, "Plain");
    EXPECT_EQ(plain.baseColorFactor, QVector4D(0.25f, 0.5f, 0.75f, 1.0f));
    EXPECT_EQ(plain.emissiveFactor, QVector3D(0.1f, 0.2f, 0.3f));
    EXPECT_FLOAT_EQ(plain.metallic, 0.9f);
    EXPECT_FLOAT_EQ(plain.roughness, 0.2f);
    EXPECT_FLOAT_EQ(plain.opacity, 0.8f);
    EXPECT_EQ(plain.alphaMode, AlphaMode::mask);
    EXPECT_FLOAT_EQ(plain.alphaCutoff, 0.4f);
    ASSERT_NE(named(scene.materials, "Glass"), nullptr);
    EXPECT_EQ(named(scene.materials, "Glass")->alphaMode, AlphaMode::blend);
    EXPECT_EQ(named(scene.materials, "Glass")->baseColorFactor.w(), 1.0f);  // the opacity is not folded into the colour
}

TEST(MaterialFidelityTest, DisplayColorFollowsEachInterpolationUnlessAMaterialIsBound) {
    const ImportedScene scene = importOk(importUsda("#usda 1.0\ndef Mesh \"Constant\" {" + triangleMesh + R"(
    color3f[] primvars:displayColor = [(1, 0, 0)] ( interpolation = "constant" )
    float[] primvars:displayOpacity = [0.5] ( interpolation = "constant" )
}
def Mesh "Uniform" {
    point3f[] points = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (1, 1, 0)] int[] faceVertexCounts = [3, 3] int[] faceVertexIndices = [0, 1, 2, 1, 3, 2]
    color3f[] primvars:displayColor = [(1, 0, 0), (0, 1, 0)] ( interpolation = "uniform" )
}
def Mesh "Vertex" {)" + triangleMesh + R"(
    color3f[] primvars:displayColor = [(1, 0, 0), (0, 1, 0), (0, 0, 1)] ( interpolation = "vertex" )
    float[] primvars:displayOpacity = [1, 0.5, 0.25] ( interpolation = "vertex" )
}
def Mesh "FaceVarying" {)" + triangleMesh + R"(
    color3f[] primvars:displayColor = [(0, 0, 1), (1, 1, 1)] ( interpolation = "faceVarying" )
    int[] primvars:displayColor:indices = [1, 0, 1]
}
def Mesh "Bound" {)" + triangleMesh + R"(
    rel material:binding = </Red>
    color3f[] primvars:displayColor = [(1, 0, 0)] ( interpolation = "constant" )
    uniform bool doubleSided = 1
}
def Material "Red" {}
)"));
    const QVector4D red(1, 0, 0, 1), green(0, 1, 0, 1), blue(0, 0, 1, 1), white(1, 1, 1, 1);
    const std::pair<const char*, std::vector<QVector4D>> cases[] = {  // per vertex, in vertex order
        {"Constant", {{1, 0, 0, 0.5f}, {1, 0, 0, 0.5f}, {1, 0, 0, 0.5f}}},
        {"Uniform", {red, red, red, green, green, green}},  // one vertex per face corner
        {"Vertex", {red, {0, 1, 0, 0.5f}, {0, 0, 1, 0.25f}}},
        {"FaceVarying", {white, blue, white}},
        {"Bound", {}},
    };
    for (const auto& [name, colors] : cases) {
        ASSERT_NE(named(scene.meshes, name), nullptr) << name;
        EXPECT_EQ(named(scene.meshes, name)->colors, colors) << name;
    }
    EXPECT_TRUE(named(scene.meshes, "Bound")->doubleSided);
    EXPECT_FALSE(named(scene.meshes, "Vertex")->doubleSided);
}

// One triangle with two UV sets, colours and tangents, and a material using every
// texture slot and the material extensions the importer reads (Debian's Assimp has no
// KHR_materials_emissive_strength).
QByteArray gltfWithEveryMaterialFact() {
    QJsonObject gltf = QJsonDocument::fromJson(R"({
  "asset": {"version": "2.0"}, "extensionsUsed": ["KHR_texture_transform", "KHR_materials_unlit"],
  "scene": 0, "scenes": [{"nodes": [0, 1]}], "nodes": [{"name": "a", "mesh": 0}, {"name": "b", "mesh": 1}],
  "meshes": [{"primitives": [{"material": 0, "attributes": {"POSITION": 0, "NORMAL": 1, "TANGENT": 2,
                                                            "TEXCOORD_0": 3, "TEXCOORD_1": 4, "COLOR_0": 5}}]},
             {"primitives": [{"attributes": {"POSITION": 0}, "material": 1}]}],
  "materials": [{"name": "everything",
                 "pbrMetallicRoughness": {"baseColorFactor": [0.5, 0.5, 0.5, 0.6], "metallicFactor": 0.3, "roughnessFactor": 0.7,
                                          "baseColorTexture": {"index": 0, "extensions": {"KHR_texture_transform":
                                              {"offset": [0.25, 0.5], "rotation": 1.5707963267948966, "scale": [2, 3]}}},
                                          "metallicRoughnessTexture": {"index": 1, "texCoord": 1}},
                 "normalTexture": {"index": 1, "scale": 0.5}, "occlusionTexture": {"index": 1, "strength": 0.25},
                 "emissiveTexture": {"index": 0}, "emissiveFactor": [1, 0.5, 0],
                 "alphaMode": "MASK", "alphaCutoff": 0.3, "doubleSided": true},
                {"name": "flat", "alphaMode": "BLEND", "extensions": {"KHR_materials_unlit": {}}}],
  "samplers": [{"wrapS": 33071, "wrapT": 33648}], "textures": [{"source": 0, "sampler": 0}, {"source": 1}]
})").object();
    // Positions, normals, tangents, two UV sets and colours, one float accessor each.
    const std::pair<const char*, std::vector<float>> streams[] = {
        {"VEC3", {0, 0, 0, 1, 0, 0, 0, 1, 0}}, {"VEC3", {0, 0, 1, 0, 0, 1, 0, 0, 1}},
        {"VEC4", {1, 0, 0, 1, 1, 0, 0, -1, 1, 0, 0, 1}}, {"VEC2", {0, 0, 1, 0, 0, 1}},
        {"VEC2", {0.5f, 0.5f, 1, 0.5f, 0.5f, 1}}, {"VEC4", {1, 0, 0, 1, 0, 1, 0, 0.5f, 0, 0, 1, 1}}};
    QByteArray bin;
    QJsonArray views, accessors;
    for (const auto& [type, values] : streams) {
        const int bytes = int(values.size() * sizeof(float));
        views.append(QJsonObject{{"buffer", 0}, {"byteOffset", bin.size()}, {"byteLength", bytes}});
        QJsonObject accessor{{"bufferView", views.size() - 1}, {"componentType", 5126}, {"count", 3}, {"type", type}};
        if (views.size() == 1) accessor["min"] = QJsonArray{0, 0, 0}, accessor["max"] = QJsonArray{1, 1, 0};
        accessors.append(accessor);
        bin.append(reinterpret_cast<const char*>(values.data()), bytes);
    }
    gltf["images"] = QJsonArray{QJsonObject{{"uri", dataUri("image/png", pngOf(Qt::red))}},
                                QJsonObject{{"uri", dataUri("image/png", pngOf(Qt::blue))}}};
    gltf["buffers"] = QJsonArray{QJsonObject{{"byteLength", bin.size()}, {"uri", dataUri("application/octet-stream", bin)}}};
    gltf["bufferViews"] = views;
    gltf["accessors"] = accessors;
    return QJsonDocument(gltf).toJson();
}

TEST(MaterialFidelityTest, GltfMaterialExtensionsAndVertexStreamsArrive) {
    const ImportedScene scene = importOk(importGltf(gltfWithEveryMaterialFact()));
    ASSERT_EQ(scene.materials.size(), 2u);
    ASSERT_NE(named(scene.materials, "everything"), nullptr);
    const ImportedMaterial& m = *named(scene.materials, "everything");
    EXPECT_EQ(m.baseColorFactor, QVector4D(0.5f, 0.5f, 0.5f, 0.6f));
    EXPECT_FLOAT_EQ(m.opacity, 1.0f);
    EXPECT_FLOAT_EQ(m.metallic, 0.3f);
    EXPECT_FLOAT_EQ(m.roughness, 0.7f);
    EXPECT_EQ(m.alphaMode, AlphaMode::mask);
    EXPECT_FLOAT_EQ(m.alphaCutoff, 0.3f);
    EXPECT_TRUE(m.doubleSided);
    EXPECT_FALSE(m.unlit);
    EXPECT_EQ(m.emissiveFactor, QVector3D(1, 0.5f, 0));
    EXPECT_FLOAT_EQ(m.normalScale, 0.5f);
    EXPECT_FLOAT_EQ(m.occlusionStrength, 0.25f);

    struct Slot {
        const char* name;
        const std::optional<ImportedTextureRef>& ref;
        int texture;
        TextureChannel channel;
        int texCoordSet;
        TextureColorSpace colorSpace;
    };
    const Slot textured[] = {
        {"base colour", m.baseColorTexture, 0, TextureChannel::rgba, 0, TextureColorSpace::srgb},
        {"emissive", m.emissiveTexture, 0, TextureChannel::rgb, 0, TextureColorSpace::srgb},
        {"roughness", m.roughnessTexture, 1, TextureChannel::g, 1, TextureColorSpace::raw},
        {"metallic", m.metallicTexture, 1, TextureChannel::b, 1, TextureColorSpace::raw},
        {"occlusion", m.occlusionTexture, 1, TextureChannel::r, 0, TextureColorSpace::raw},
        {"normal", m.normalTexture, 1, TextureChannel::rgb, 0, TextureColorSpace::raw},
    };
    for (const Slot& slot : textured) {
        SCOPED_TRACE(slot.name);
        ASSERT_TRUE(slot.ref);
        EXPECT_EQ(slot.ref->texture, slot.texture);
        EXPECT_EQ(slot.ref->channel, slot.channel);
        EXPECT_EQ(slot.ref->texCoordSet, slot.texCoordSet);
        EXPECT_EQ(slot.ref->colorSpace, slot.colorSpace);
    }
    EXPECT_EQ(m.normalTexture->scale, QVector4D(2, 2, 2, 1));
    EXPECT_EQ(m.normalTexture->bias, QVector4D(-1, -1, -1, 0));
    EXPECT_EQ(m.baseColorTexture->wrapS, TextureWrap::clamp);
    EXPECT_EQ(m.baseColorTexture->wrapT, TextureWrap::mirror);
    EXPECT_EQ(m.roughnessTexture->wrapS, TextureWrap::repeat);

    // glTF's transform is about the image's top-left corner with v down; in the kit's v-up
    // coordinates a quarter turn becomes a quarter turn the other way, and the offset moves so
    // that every point maps to the same texel: glTF's (0.25, 0.5) + rotate(90, (0, 3)) at the
    // kit's (0, 0), flipped.
    const ImportedTextureTransform& t = m.baseColorTexture->transform;
    EXPECT_NEAR(t.rotationDegrees, -90.0f, 1e-3f);
    expectNear(t.scale, {2, 3});
    expectNear(t.offset, {-2.75f, 0.5f});

    ASSERT_NE(named(scene.materials, "flat"), nullptr);
    EXPECT_TRUE(named(scene.materials, "flat")->unlit);
    EXPECT_EQ(named(scene.materials, "flat")->alphaMode, AlphaMode::blend);

    const ImportedMesh& mesh = scene.meshes.at(0);
    ASSERT_EQ(mesh.texCoords1.size(), 3u);
    expectNear(mesh.texCoords1[1], {1, 0.5f});  // v flipped: 1 - 0.5
    ASSERT_EQ(mesh.colors.size(), 3u);
    EXPECT_EQ(mesh.colors[1], QVector4D(0, 1, 0, 0.5f));
    ASSERT_EQ(mesh.tangents.size(), 3u);
    EXPECT_EQ(mesh.tangents[0].w(), 1.0f);
    EXPECT_EQ(mesh.tangents[1].w(), -1.0f);
}

TEST(MaterialFidelityTest, CorpusTexturesShowTheirTransformsAndWrapModes) {
    ORVANTA_CORPUS_FILE(arrows, "usdz/TextureTransformTest.usdz");
    const ImportedScene transforms = importOk(usd::UsdImporter::importFile(arrows.string()));
    // Each material's transform as its UsdTransform2d states it (checked against the text).
    const std::pair<const char*, ImportedTextureTransform> expected[] = {
        {"Offset_U", {{0.5f, 0}, 0, {1, 1}}},
        {"Offset_V", {{0, -0.5f}, 0, {1, 1}}},
        {"Offset_UV", {{0.5f, -0.5f}, 0, {1, 1}}},
    };
    for (const auto& [prefix, transform] : expected) {
        SCOPED_TRACE(prefix);
        const ImportedMaterial* found = nullptr;
        for (const ImportedMaterial& material : transforms.materials)
            if (material.name.rfind(prefix, 0) == 0 && material.name.size() == std::strlen(prefix) + 6) found = &material;
        ASSERT_NE(found, nullptr);
        ASSERT_TRUE(found->baseColorTexture);
        EXPECT_EQ(found->baseColorTexture->transform, transform);
        EXPECT_EQ(found->baseColorTexture->wrapS, TextureWrap::clamp);
        EXPECT_EQ(found->baseColorTexture->channel, TextureChannel::rgb);
    }

}

} // namespace
} // namespace orvanta::import
