// The USDZ writer: every material input read back equal from both layer kinds, factors
// folded into texture scales, the package's layout, and glTF models converted to USDZ
// importing to the same geometry and materials.
#include "export/UsdzWriter.h"
#include "import/ImportTestHelpers.h"
#include "import/SceneImporter.h"
#include "import/usd/UsdImporter.h"
#include "import/usd/UsdzArchive.h"
#include "support/Corpus.h"

#include <gtest/gtest.h>

#include <QBuffer>

namespace orvanta::exporter {
namespace {

using namespace import;

QByteArray written(const ImportedScene& scene, UsdzWriter::Layer layer, std::vector<std::string>* notes = nullptr) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const auto report = UsdzWriter::write(scene, buffer, layer);
    EXPECT_TRUE(report.ok());
    if (report.ok()) {
        EXPECT_EQ(report->bytes, static_cast<std::uint64_t>(bytes.size()));
        if (notes) *notes = report->notes;
    }
    return bytes;
}

ImportedScene readBack(const QByteArray& package) {
    auto owner = std::make_shared<QByteArray>(package);
    auto result = usd::UsdImporter::importBytes(
        {reinterpret_cast<const std::uint8_t*>(owner->constData()), static_cast<std::size_t>(owner->size())}, owner, "written.usdz");
    EXPECT_TRUE(result.ok()) << (result.ok() ? "" : result.error().localizedDescription());
    return result.ok() ? std::move(result).value() : ImportedScene{};
}

// A quad drawn with two materials, and a material for each way an input can be given.
// Textured inputs carry factor 1, the form USD itself stores, so they read back unchanged.
ImportedScene everyMaterialInput() {
    using C = TextureChannel;
    ImportedScene scene;
    scene.textures = {{"albedo.png", pngOf(Qt::red), nullptr}, {"orm.png", pngOf(Qt::green), nullptr}, {"normal.png", pngOf(Qt::blue), nullptr}};
    const ImportedMaterial constants{.name = "Constants", .baseColorFactor = {0.25f, 0.5f, 0.75f, 1.0f}, .metallic = 0.8f,
                                     .roughness = 0.3f, .emissiveFactor = {0.1f, 0.2f, 0.3f}, .opacity = 0.6f,
                                     .alphaMode = AlphaMode::mask, .alphaCutoff = 0.35f};
    const ImportedMaterial textured{
        .name = "Textured",
        .baseColorTexture = ImportedTextureRef{.texture = 0, .transform = {{0.25f, -0.5f}, 30.0f, {2.0f, 3.0f}},
                                               .wrapS = TextureWrap::clamp, .wrapT = TextureWrap::mirror,
                                               .colorSpace = TextureColorSpace::srgb},
        .metallic = 1.0f,
        .metallicTexture = ImportedTextureRef{.texture = 1, .channel = C::b, .colorSpace = TextureColorSpace::raw},
        .roughness = 1.0f,
        .roughnessTexture = ImportedTextureRef{.texture = 1, .channel = C::g, .texCoordSet = 1},
        .normalTexture = ImportedTextureRef{.texture = 2, .scale = {2, 2, 2, 1}, .bias = {-1, -1, -1, 0}},
        .occlusionTexture = ImportedTextureRef{.texture = 1, .channel = C::r},
        .emissiveFactor = {1, 1, 1},
        .emissiveTexture = ImportedTextureRef{.texture = 0, .wrapS = TextureWrap::black, .wrapT = TextureWrap::black},
        .opacityTexture = ImportedTextureRef{.texture = 0, .channel = C::a},
        .alphaMode = AlphaMode::blend};
    scene.materials = {constants, textured};

    scene.meshes = {{.name = "Quad",
                     .positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}},
                     .normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}},
                     .texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}},
                     .texCoords1 = {{0, 0}, {0.5f, 0}, {0.5f, 0.5f}, {0, 0.5f}},
                     .indices = {0, 1, 2, 0, 2, 3},
                     .subsets = {{0, 3, 0}, {3, 3, 1}},
                     .doubleSided = true}};
    QMatrix4x4 placed;
    placed.translate(0.1f, 0.2f, 0.3f);
    placed.rotate(30, 0, 1, 0);
    scene.nodes = {{"Dish", QMatrix4x4(), -1, {1}, {}}, {"Plate", placed, 0, {}, {0}}};
    return scene;
}

// The material called `name`; a failure, and an empty material, when there is none.
const ImportedMaterial& material(const ImportedScene& scene, const std::string& name) {
    static const ImportedMaterial none;
    const ImportedMaterial* found = named(scene.materials, name);
    EXPECT_NE(found, nullptr) << "no material " << name;
    return found ? *found : none;
}

class UsdzWriterLayers : public ::testing::TestWithParam<UsdzWriter::Layer> {};

TEST_P(UsdzWriterLayers, EveryMaterialInputReadsBackEqual) {
    const ImportedScene scene = everyMaterialInput();
    const ImportedScene back = readBack(written(scene, GetParam()));
    ASSERT_EQ(back.materials.size(), 2u);

    const ImportedMaterial& constants = material(back, "Constants");
    EXPECT_EQ(constants.baseColorFactor, scene.materials[0].baseColorFactor);
    EXPECT_EQ(constants.emissiveFactor, scene.materials[0].emissiveFactor);
    EXPECT_FLOAT_EQ(constants.metallic, 0.8f);
    EXPECT_FLOAT_EQ(constants.roughness, 0.3f);
    EXPECT_FLOAT_EQ(constants.opacity, 0.6f);
    EXPECT_EQ(constants.alphaMode, AlphaMode::mask);
    EXPECT_FLOAT_EQ(constants.alphaCutoff, 0.35f);

    const ImportedMaterial& expected = scene.materials[1];
    const ImportedMaterial& textured = material(back, "Textured");
    EXPECT_EQ(textured.alphaMode, AlphaMode::blend);
    const std::pair<const char*, std::optional<ImportedTextureRef> ImportedMaterial::*> inputs[] = {
        {"base colour", &ImportedMaterial::baseColorTexture}, {"emissive", &ImportedMaterial::emissiveTexture},
        {"metallic", &ImportedMaterial::metallicTexture},     {"roughness", &ImportedMaterial::roughnessTexture},
        {"occlusion", &ImportedMaterial::occlusionTexture},   {"normal", &ImportedMaterial::normalTexture},
        {"opacity", &ImportedMaterial::opacityTexture},
    };
    for (const auto& [name, member] : inputs) {
        SCOPED_TRACE(name);
        const auto& want = expected.*member;
        const auto& got = textured.*member;
        ASSERT_TRUE(got);
        // Texture indices may differ; the images may not.
        EXPECT_EQ(back.textures.at(std::size_t(got->texture)).encoded, scene.textures.at(std::size_t(want->texture)).encoded);
        ImportedTextureRef comparable = *got;
        comparable.texture = want->texture;
        EXPECT_EQ(comparable, *want);
    }
    EXPECT_FLOAT_EQ(textured.metallic, 1.0f);
    EXPECT_FLOAT_EQ(textured.roughness, 1.0f);
    EXPECT_EQ(textured.emissiveFactor, QVector3D(1, 1, 1));

    ASSERT_EQ(back.meshes.size(), 1u);
    const ImportedMesh& quad = back.meshes[0];
    EXPECT_EQ(quad.positions, scene.meshes[0].positions);
    EXPECT_EQ(quad.normals, scene.meshes[0].normals);
    EXPECT_EQ(quad.texCoords, scene.meshes[0].texCoords);
    EXPECT_EQ(quad.texCoords1, scene.meshes[0].texCoords1);
    EXPECT_EQ(quad.indices, scene.meshes[0].indices);
    EXPECT_TRUE(quad.doubleSided);
    ASSERT_EQ(quad.subsets.size(), 2u);
    EXPECT_EQ(back.materials.at(std::size_t(quad.subsets[1].material)).name, "Textured");
    EXPECT_TRUE(qFuzzyCompare(back.bounds().max, scene.bounds().max));
    EXPECT_TRUE(qFuzzyCompare(back.bounds().min + QVector3D(1, 1, 1), scene.bounds().min + QVector3D(1, 1, 1)));
}

// On a plain white material the vertex colours are the base colour.
TEST_P(UsdzWriterLayers, VertexColoursOnAWhiteMaterialReadBack) {
    ImportedScene scene = everyMaterialInput();
    scene.meshes[0].colors = {{1, 0, 0, 1}, {0, 1, 0, 0.5f}, {0, 0, 1, 1}, {1, 1, 1, 1}};
    scene.meshes[0].subsets = {{0, 6, 0}};
    scene.materials[0].baseColorFactor = {1, 1, 1, 1};
    const ImportedScene back = readBack(written(scene, GetParam()));
    ASSERT_EQ(back.meshes.size(), 1u);
    EXPECT_EQ(back.meshes[0].colors, scene.meshes[0].colors);
    EXPECT_EQ(back.materials.at(std::size_t(back.meshes[0].subsets.at(0).material)).baseColorFactor, QVector4D(1, 1, 1, 1));
}

INSTANTIATE_TEST_SUITE_P(, UsdzWriterLayers, ::testing::Values(UsdzWriter::Layer::crate, UsdzWriter::Layer::text),
                         [](const auto& info) { return info.param == UsdzWriter::Layer::crate ? "crate" : "text"; });

TEST(UsdzWriterTest, FactorsBesideTexturesFoldIntoTheTextureScale) {
    ImportedScene scene = everyMaterialInput();
    ImportedMaterial& m = scene.materials[1];
    m.baseColorFactor = {0.5f, 0.25f, 1.0f, 1.0f};
    m.roughness = 0.5f;
    m.normalScale = 0.5f;
    m.occlusionStrength = 0.25f;
    m.emissiveStrength = 2.0f;
    m.unlit = true;
    std::vector<std::string> notes;
    const ImportedScene back = readBack(written(scene, UsdzWriter::Layer::crate, &notes));
    const ImportedMaterial& t = material(back, "Textured");
    EXPECT_EQ(t.baseColorFactor, QVector4D(1, 1, 1, 1));
    EXPECT_EQ(t.baseColorTexture->scale, QVector4D(0.5f, 0.25f, 1.0f, 1.0f));
    EXPECT_EQ(t.roughnessTexture->scale, QVector4D(0.5f, 0.5f, 0.5f, 0.5f));
    EXPECT_EQ(t.emissiveTexture->scale, QVector4D(2, 2, 2, 1));
    EXPECT_EQ(t.normalTexture->scale, QVector4D(1, 1, 2, 1));
    EXPECT_EQ(t.normalTexture->bias, QVector4D(-0.5f, -0.5f, -1, 0));
    // occlusion 1 + 0.25 (o - 1) = 0.25 o + 0.75
    EXPECT_EQ(t.occlusionTexture->scale, QVector4D(0.25f, 0.25f, 0.25f, 0.25f));
    EXPECT_EQ(t.occlusionTexture->bias, QVector4D(0.75f, 0.75f, 0.75f, 0.75f));
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_NE(notes[0].find("unlit"), std::string::npos);
}

TEST(UsdzWriterTest, PackageHoldsTheLayerFirstAndAlignedStoredEntries) {
    const QByteArray package = written(everyMaterialInput(), UsdzWriter::Layer::crate);
    const std::span<const std::uint8_t> bytes(reinterpret_cast<const std::uint8_t*>(package.constData()),
                                              static_cast<std::size_t>(package.size()));
    const auto archive = usd::UsdzArchive::open(bytes, nullptr);
    ASSERT_TRUE(archive.ok());
    ASSERT_EQ(archive->entries().size(), 4u);  // the layer and three images
    EXPECT_EQ(archive->entries().front().path, "scene.usdc");
    for (const auto& entry : archive->entries()) EXPECT_EQ((entry.data.data() - bytes.data()) % 64, 0) << entry.path;
    // Y up in metres: no conversion on the way back in.
    EXPECT_TRUE(readBack(package).nodes.at(0).localTransform.isIdentity());
}

// The meshes in drawing order: each node's children first, then its own meshes (the order
// the writer lays prims out in).
void drawn(const ImportedScene& scene, int node, std::vector<const ImportedMesh*>& out) {
    for (int child : scene.nodes[std::size_t(node)].children) drawn(scene, child, out);
    for (int mesh : scene.nodes[std::size_t(node)].meshes) out.push_back(&scene.meshes[std::size_t(mesh)]);
}

// Positions, indices, coordinates, colours and material values of a glTF model and of its
// USDZ conversion.
void expectSameModel(const ImportedScene& gltf, const ImportedScene& usdz) {
    EXPECT_EQ(usdz.meshes.size(), gltf.meshes.size());  // a mesh several nodes draw is still one mesh
    std::vector<const ImportedMesh*> a, b;
    drawn(gltf, 0, a);
    drawn(usdz, 0, b);
    ASSERT_EQ(b.size(), a.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        SCOPED_TRACE(a[i]->name);
        EXPECT_EQ(b[i]->positions, a[i]->positions);
        EXPECT_EQ(b[i]->indices, a[i]->indices);
        EXPECT_EQ(b[i]->texCoords, a[i]->texCoords);
        EXPECT_EQ(b[i]->colors, a[i]->colors);
    }
    ASSERT_EQ(usdz.materials.size(), gltf.materials.size());
    for (std::size_t i = 0; i < gltf.materials.size(); ++i) {
        const ImportedMaterial& a = gltf.materials[i];
        const ImportedMaterial& b = usdz.materials[i];
        SCOPED_TRACE(a.name);
        const QVector4D tint = b.baseColorTexture ? b.baseColorTexture->scale : QVector4D(1, 1, 1, 1);
        EXPECT_TRUE(qFuzzyCompare(b.baseColorFactor.toVector3D() * tint.toVector3D(), a.baseColorFactor.toVector3D()));
        EXPECT_EQ(b.baseColorTexture.has_value(), a.baseColorTexture.has_value());
        EXPECT_FLOAT_EQ(b.metallic, a.metallic);
        EXPECT_FLOAT_EQ(b.roughness, a.roughness);
    }
}

TEST(UsdzWriterTest, CorpusGltfAndItsConversionImportTheSame) {
    for (const char* file : {"glb/Box.glb", "glb/Duck.glb", "gltf/CesiumMilkTruck/CesiumMilkTruck.gltf"}) {
        ORVANTA_CORPUS_FILE(path, file);
        SCOPED_TRACE(file);
        auto gltf = SceneImporter::importFile(path.string());
        ASSERT_TRUE(gltf.ok());
        expectSameModel(gltf.value(), readBack(written(gltf.value(), UsdzWriter::Layer::crate)));
    }
}

} // namespace
} // namespace orvanta::exporter
