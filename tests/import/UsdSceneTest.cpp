#include "support/FuzzRegressions.h"
#include "import/ImportError.h"
#include "import/usd/UsdImporter.h"
#include "support/Corpus.h"
#include "export/CrateWriter.h"
#include "export/ZipWriter.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <cmath>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace orvanta::import::usd {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A USDZ package of stored, aligned entries.
std::shared_ptr<Bytes> package(const std::vector<std::pair<std::string, std::string>>& files) {
    exporter::ZipWriter zip;
    for (const auto& [name, data] : files) zip.add(name, data);
    return std::make_shared<Bytes>(zip.build());
}

core::Result<ImportedScene> importText(const std::string& text, const std::string& name = "/nowhere/test.usda") {
    return UsdImporter::importBytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, nullptr, name);
}

ImportedScene importOk(const core::Result<ImportedScene>& result) {
    EXPECT_TRUE(result.ok()) << (result.ok() ? "" : result.error().localizedDescription());
    return result.ok() ? result.value() : ImportedScene{};
}

const ImportedMesh* meshNamed(const ImportedScene& scene, const std::string& name) {
    for (const ImportedMesh& mesh : scene.meshes)
        if (mesh.name == name) return &mesh;
    return nullptr;
}

// The node's transform to root space, root conversion included.
QMatrix4x4 toRoot(const ImportedScene& scene, int node) {
    QMatrix4x4 m;
    for (int at = node; at >= 0; at = scene.nodes[static_cast<std::size_t>(at)].parent)
        m = scene.nodes[static_cast<std::size_t>(at)].localTransform * m;
    return m;
}

int nodeNamed(const ImportedScene& scene, const std::string& name) {
    for (std::size_t i = 0; i < scene.nodes.size(); ++i)
        if (scene.nodes[i].name == name) return static_cast<int>(i);
    return -1;
}

void expectNear(const QVector3D& actual, const QVector3D& expected) {
    EXPECT_NEAR(actual.x(), expected.x(), 1e-4f) << "x";
    EXPECT_NEAR(actual.y(), expected.y(), 1e-4f) << "y";
    EXPECT_NEAR(actual.z(), expected.z(), 1e-4f) << "z";
}

const std::string pngBytes = std::string("\x89PNG\r\n\x1a\n", 8) + "not really pixels";

TEST(UsdSceneTest, CorpusFilesImportWithTheirCounts) {
    struct Expected {
        const char* file;
        const char* format;
        std::size_t meshes, materials, textures, vertices, triangles;
    };
    // Vertices are per face corner wherever normals or texture coordinates are faceVarying.
    const Expected cases[] = {
        {"usda/UtahTeapot.usd", "usda", 1, 0, 0, 4944, 2472},            // 1286 points, 1236 quads
        {"usdz/USDLogo.usdz", "usdz", 5, 4, 1, 172, 86},                  // 43 quads, one PNG shared
        {"usdz/TextureTransformTest.usdz", "usdz", 12, 9, 5, 48, 24},     // 12 quads of 2 triangles
        {"usdc/crate-0.8.0_TextureTransformTest.usdc", "usdc", 12, 9, 0, 48, 24},  // PNGs live in the package
        {"usdz/RoughnessTest.usdz", "usdz", 6, 6, 2, 1008, 504},          // a PNG and a TGA
        {"usdz/AnimatedMorphCube.usdz", "usdz", 1, 1, 0, 24, 12},
        {"usdz/AnimatedTriangle.usdz", "usdz", 1, 1, 0, 3, 1},
        {"usdz/BoxAnimated.usdz", "usdz", 2, 2, 0, 320, 254},
        {"usdz/openusd_simpleMaterial.usdz", "usdz", 1, 1, 1, 4, 2},
        {"usdz/openusd_single_usda.usdz", "usdz", 0, 0, 0, 0, 0},
        {"usdz/openusd_single_usdc.usdz", "usdz", 0, 0, 0, 0, 0},
        {"usdc/crate-0.9.0_model.usdc", "usdc", 0, 0, 0, 0, 0},          // meshes without geometry
    };
    for (const Expected& e : cases) {
        ORVANTA_CORPUS_FILE(path, e.file);
        SCOPED_TRACE(e.file);
        const ImportedScene scene = importOk(UsdImporter::importFile(path.string()));
        EXPECT_EQ(scene.format, e.format);
        EXPECT_EQ(scene.meshes.size(), e.meshes);
        EXPECT_EQ(scene.materials.size(), e.materials);
        EXPECT_EQ(scene.textures.size(), e.textures);
        EXPECT_EQ(scene.vertexCount(), e.vertices);
        EXPECT_EQ(scene.triangleCount(), e.triangles);
        for (const ImportedMesh& mesh : scene.meshes) {
            EXPECT_TRUE(mesh.normals.empty() || mesh.normals.size() == mesh.positions.size());
            EXPECT_TRUE(mesh.texCoords.empty() || mesh.texCoords.size() == mesh.positions.size());
            for (std::uint32_t i : mesh.indices) EXPECT_LT(i, mesh.positions.size());
        }
    }
}

TEST(UsdSceneTest, CorpusDetailsSurviveComposition) {
    ORVANTA_CORPUS_FILE(logo, "usdz/USDLogo.usdz");
    const ImportedScene scene = importOk(UsdImporter::importFile(logo.string()));
    // The payload's meshes bind materials that a variant-held reference fills in, with
    // connections rewritten from /PreviewSurface to /USDLogo.
    const ImportedMesh* text = meshNamed(scene, "TextUSD");
    ASSERT_NE(text, nullptr);
    const ImportedMaterial& gray = scene.materials.at(static_cast<std::size_t>(text->subsets.at(0).material));
    EXPECT_EQ(gray.name, "MatGrayLight");
    ASSERT_TRUE(gray.baseColorTexture.has_value());
    EXPECT_EQ(scene.textures.at(static_cast<std::size_t>(gray.baseColorTexture->texture)).uri, "1/USDLogoLrgWithAlpha.png");
    EXPECT_EQ(text->texCoords.size(), 4u);  // read through the material's varname "UVW"
    const ImportedMaterial& blue = scene.materials.at(static_cast<std::size_t>(meshNamed(scene, "StrongestLayer")->subsets.at(0).material));
    EXPECT_NEAR(blue.baseColorFactor.z(), 0.6307574f, 1e-6f);
    EXPECT_NEAR(blue.roughness, 0.43431458f, 1e-6f);
    EXPECT_FALSE(scene.textures.front().decode().isNull());

    ORVANTA_CORPUS_FILE(arrows, "usdz/TextureTransformTest.usdz");
    const ImportedScene spaced = importOk(UsdImporter::importFile(arrows.string()));
    std::vector<std::string> uris;
    for (const ImportedTexture& t : spaced.textures) uris.push_back(t.uri);
    EXPECT_NE(std::find(uris.begin(), uris.end(), "0/TextureTransformTest UV_244266e87c0f006acef7f70b1ae83a8f.png"), uris.end());
    // Centimetres with a 100x root scale: the quads end up about a metre wide.
    EXPECT_NEAR(spaced.bounds().max.x(), 1.6f, 1e-4f);

    ORVANTA_CORPUS_FILE(teapot, "usda/UtahTeapot.usd");
    const ImportedScene pot = importOk(UsdImporter::importFile(teapot.string()));
    EXPECT_NEAR(pot.bounds().max.y(), 0.22956148f, 1e-6f);  // metersPerUnit 1, Y up
}

TEST(UsdSceneTest, TextAndCrateOfTheSameSceneAgree) {
    ORVANTA_CORPUS_FILE(text, "usdz/TextureTransformTest.usdz");
    ORVANTA_CORPUS_FILE(crate, "usdc/crate-0.8.0_TextureTransformTest.usdc");
    const ImportedScene a = importOk(UsdImporter::importFile(text.string()));
    const ImportedScene b = importOk(UsdImporter::importFile(crate.string()));
    ASSERT_EQ(a.meshes.size(), b.meshes.size());
    for (const ImportedMesh& mesh : a.meshes) {
        SCOPED_TRACE(mesh.name);
        const ImportedMesh* other = meshNamed(b, mesh.name);
        ASSERT_NE(other, nullptr);
        EXPECT_EQ(mesh.positions, other->positions);
        EXPECT_EQ(mesh.indices, other->indices);
        EXPECT_EQ(mesh.texCoords, other->texCoords);
        EXPECT_EQ(mesh.normals, other->normals);
        EXPECT_EQ(toRoot(a, nodeNamed(a, mesh.name)), toRoot(b, nodeNamed(b, mesh.name)));
    }
}

TEST(UsdSceneTest, GeneratedPackageResolvesLayersAndTexturesInPlace) {
    const std::string root = R"(#usda 1.0
( defaultPrim = "Dish" metersPerUnit = 1 upAxis = "Y" )
def Xform "Dish" ( prepend references = @./parts/plate.usda@</Plate> )
{
    def Mesh "Garnish" (
        references = </Dish/Looks>
    ) { }
}
)";
    const std::string plate = R"(#usda 1.0
def Xform "Plate"
{
    def Mesh "Body"
    {
        point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 0, 1), (0, 0, 1)]
        int[] faceVertexCounts = [4]
        int[] faceVertexIndices = [0, 1, 2, 3]
        texCoord2f[] primvars:uv = [(0, 0), (1, 0), (1, 1), (0, 1)] ( interpolation = "vertex" )
        rel material:binding = </Plate/Looks/Glaze>
    }
    def Scope "Looks"
    {
        def Material "Glaze"
        {
            token outputs:surface.connect = </Plate/Looks/Glaze/Surface.outputs:surface>
            def Shader "Surface"
            {
                uniform token info:id = "UsdPreviewSurface"
                color3f inputs:diffuseColor.connect = </Plate/Looks/Glaze/Image.outputs:rgb>
                float inputs:metallic = 0.25
            }
            def Shader "Image"
            {
                uniform token info:id = "UsdUVTexture"
                asset inputs:file = @../textures/glaze texture.png@
                float2 inputs:st.connect = </Plate/Looks/Glaze/Reader.outputs:result>
            }
            def Shader "Reader"
            {
                uniform token info:id = "UsdPrimvarReader_float2"
                string inputs:varname = "uv"
            }
        }
    }
}
)";
    auto zip = package({{"dish.usda", root}, {"parts/plate.usda", plate}, {"textures/glaze texture.png", pngBytes}});
    const std::weak_ptr<Bytes> watch = zip;
    const ImportedScene scene = importOk(UsdImporter::importBytes(*zip, zip, "dish.usdz"));
    EXPECT_EQ(scene.format, "usdz");
    const ImportedMesh* body = meshNamed(scene, "Body");
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(body->indices, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(body->texCoords.at(2), QVector2D(1, 1));
    ASSERT_EQ(scene.materials.size(), 1u);
    EXPECT_EQ(scene.materials[0].metallic, 0.25f);
    ASSERT_EQ(scene.textures.size(), 1u);
    const ImportedTexture& texture = scene.textures[0];
    EXPECT_EQ(texture.uri, "textures/glaze texture.png");
    EXPECT_EQ(texture.encoded.toStdString(), pngBytes);
    // Zero copy: the bytes are the package's own, kept alive by the texture.
    const auto* begin = reinterpret_cast<const char*>(zip->data());
    EXPECT_GE(texture.encoded.constData(), begin);
    EXPECT_LT(texture.encoded.constData(), begin + zip->size());
    zip.reset();
    EXPECT_FALSE(watch.expired());  // the texture keeps the package alive
    EXPECT_EQ(body->subsets.at(0).material, 0);
    EXPECT_EQ(meshNamed(scene, "Garnish"), nullptr);  // the internal reference names nothing
}

TEST(UsdSceneTest, UpAxisAndUnitsBecomeYUpMetres) {
    const ImportedScene scene = importOk(importText(R"(#usda 1.0
( upAxis = "Z" metersPerUnit = 0.5 )
def Mesh "Tri"
{
    point3f[] points = [(0, 0, 0), (2, 0, 0), (0, 4, 6)]
    int[] faceVertexCounts = [3]
    int[] faceVertexIndices = [0, 1, 2]
}
)"));
    const Bounds b = scene.bounds();
    expectNear(b.min, {0, 0, -2});
    expectNear(b.max, {1, 3, 0});
    // Without metadata: centimetres, Y up.
    const ImportedScene cm = importOk(importText(R"(#usda 1.0
def Mesh "Tri" { point3f[] points = [(0, 0, 0), (100, 0, 0), (0, 200, 0)] int[] faceVertexCounts = [3] int[] faceVertexIndices = [0, 1, 2] }
)"));
    expectNear(cm.bounds().max, {1, 2, 0});
}

TEST(UsdSceneTest, TransformOpsComposeInOrder) {
    const ImportedScene scene = importOk(importText(R"(#usda 1.0
( metersPerUnit = 1 )
def Xform "A"
{
    double3 xformOp:translate = (10, 0, 0)
    float3 xformOp:rotateXYZ = (0, 0, 90)
    float3 xformOp:scale.timeSamples = { 5: (9, 9, 9), 1: (2, 2, 2) }
    float3 xformOp:translate:pivot = (1, 0, 0)
    uniform token[] xformOpOrder = ["xformOp:translate", "xformOp:rotateXYZ", "xformOp:translate:pivot", "xformOp:scale", "!invert!xformOp:translate:pivot"]
    def Xform "B"
    {
        quatf xformOp:orient = (0.70710678, 0.70710678, 0, 0)
        matrix4d xformOp:transform = ( (1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (0, 5, 0, 1) )
        float xformOp:rotateY = 180
        uniform token[] xformOpOrder = ["xformOp:transform", "xformOp:orient", "xformOp:rotateY", "!resetXformStack!"]
    }
    def Xform "C"
    {
        float3 xformOp:rotateZYX = (90, 90, 0)
        uniform token[] xformOpOrder = ["xformOp:rotateZYX"]
    }
}
def Xform "Scaled"
{
    float3 xformOp:scale = (2, 2, 2)
    uniform token[] xformOpOrder = ["xformOp:scale"]
    def Mesh "Moved"
    {
        double3 xformOp:translate = (1, 0, 0)
        uniform token[] xformOpOrder = ["xformOp:translate"]
        point3f[] points = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]
        int[] faceVertexCounts = [3]
        int[] faceVertexIndices = [0, 1, 2]
    }
}
)"));
    // The parent's scale applies after the child's move: x from 2 to 4, not 1 to 3.
    const Bounds bounds = scene.bounds();
    expectNear(bounds.min, {2, 0, 0});
    expectNear(bounds.max, {4, 2, 0});
    const QMatrix4x4 a = scene.nodes.at(static_cast<std::size_t>(nodeNamed(scene, "A"))).localTransform;
    // Scale 2 about the pivot (1,0,0), then 90 degrees about Z, then translate.
    expectNear(a.map(QVector3D(1, 0, 0)), {10, 1, 0});
    expectNear(a.map(QVector3D(2, 0, 0)), {10, 3, 0});
    const QMatrix4x4 b = scene.nodes.at(static_cast<std::size_t>(nodeNamed(scene, "B"))).localTransform;
    // rotateY 180 first, then 90 degrees about X, then up by 5.
    expectNear(b.map(QVector3D(0, 0, 1)), {0, 6, 0});
    expectNear(b.map(QVector3D(1, 0, 0)), {-1, 5, 0});
    // rotateZYX: Z first (nothing here), then Y 90, then X 90: +X -> -Z -> +Y.
    const QMatrix4x4 c = scene.nodes.at(static_cast<std::size_t>(nodeNamed(scene, "C"))).localTransform;
    expectNear(c.map(QVector3D(1, 0, 0)), {0, 1, 0});
}

TEST(UsdSceneTest, MeshStreamsFollowTheirInterpolation) {
    const ImportedScene scene = importOk(importText(R"(#usda 1.0
def Mesh "Fv"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (5, 5, 5)]
    int[] faceVertexCounts = [4, 2, 3, 3]
    int[] faceVertexIndices = [0, 1, 2, 3,  0, 1,  0, 1, 9,  4, 4, 0]
    normal3f[] normals = [(0, 0, 1), (0, 0, -1), (0, 0, -1), (0, 0, -1)] ( interpolation = "uniform" )
    texCoord2f[] primvars:st = [(0, 0), (1, 0), (1, 1), (0, 1)] ( interpolation = "faceVarying" )
    int[] primvars:st:indices = [0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0]
    uniform token orientation = "leftHanded"
}
def Mesh "Indexed"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0)]
    int[] faceVertexCounts = [3, 5]
    int[] faceVertexIndices = [0, 1, 2]
    normal3f[] normals = [(0, 0, 1)] ( interpolation = "constant" )
    texCoord2f[] primvars:st = [(0.5, 0.5), (0, 0)] ( interpolation = "vertex" )
    int[] primvars:st:indices = [1, 0, 1]
}
def Mesh "BadIndices"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0)]
    int[] faceVertexCounts = [3]
    int[] faceVertexIndices = [0, 1, 2]
    texCoord2f[] primvars:st = [(0, 0)] ( interpolation = "vertex" )
    int[] primvars:st:indices = [0, 7, 0]
}
def Mesh "Wide"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)]
    int64[] faceVertexCounts = [3, 3]
    int64[] faceVertexIndices = [0, 1, 2, 0, 2, 4294967299]
}
)"));
    const ImportedMesh* fv = meshNamed(scene, "Fv");
    ASSERT_NE(fv, nullptr);
    // Only the quad survives: the segment, the out-of-range face and the repeated-point
    // triangle are dropped. faceVarying coordinates give one vertex per corner.
    ASSERT_EQ(fv->positions.size(), 4u);
    EXPECT_EQ(fv->indices, (std::vector<std::uint32_t>{0, 2, 1, 0, 3, 2}));  // left-handed, reversed
    EXPECT_EQ(fv->texCoords.at(2), QVector2D(1, 1));
    EXPECT_EQ(fv->normals.size(), 4u);
    EXPECT_EQ(fv->normals.at(0), QVector3D(0, 0, 1));

    const ImportedMesh* indexed = meshNamed(scene, "Indexed");
    ASSERT_NE(indexed, nullptr);
    EXPECT_EQ(indexed->positions.size(), 3u);  // per-point streams keep the points shared
    EXPECT_EQ(indexed->indices, (std::vector<std::uint32_t>{0, 1, 2}));  // a count past the end stops
    EXPECT_EQ(indexed->texCoords, (std::vector<QVector2D>{{0, 0}, {0.5f, 0.5f}, {0, 0}}));
    EXPECT_EQ(indexed->normals, (std::vector<QVector3D>(3, {0, 0, 1})));

    const ImportedMesh* bad = meshNamed(scene, "BadIndices");
    ASSERT_NE(bad, nullptr);
    EXPECT_TRUE(bad->texCoords.empty());  // a stream with an index out of range is left out

    // 64-bit topology reads too; an index past 32 bits is out of range, not cut down to 3.
    const ImportedMesh* wide = meshNamed(scene, "Wide");
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(wide->indices, (std::vector<std::uint32_t>{0, 1, 2}));
}

TEST(UsdSceneTest, PointIndexedFaceVaryingStreamKeepsPointsAndCornerValues) {
    // Two quads sharing an edge; "PerPoint" indexes its faceVarying coordinates by the
    // corners' own points, "PerCorner" writes the same value at every corner unindexed.
    const ImportedScene scene = importOk(importText(R"(#usda 1.0
def Mesh "PerPoint"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (2, 0, 0), (0, 1, 0), (1, 1, 0), (2, 1, 0)]
    int[] faceVertexCounts = [4, 4]
    int[] faceVertexIndices = [0, 1, 4, 3, 1, 2, 5, 4]
    texCoord2f[] primvars:st = [(0, 0), (0.5, 0), (1, 0), (0, 1), (0.5, 1), (1, 1)] ( interpolation = "faceVarying" )
    int[] primvars:st:indices = [0, 1, 4, 3, 1, 2, 5, 4]
}
def Mesh "PerCorner"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (2, 0, 0), (0, 1, 0), (1, 1, 0), (2, 1, 0)]
    int[] faceVertexCounts = [4, 4]
    int[] faceVertexIndices = [0, 1, 4, 3, 1, 2, 5, 4]
    texCoord2f[] primvars:st = [(0, 0), (0.5, 0), (0.5, 1), (0, 1), (0.5, 0), (1, 0), (1, 1), (0.5, 1)] ( interpolation = "faceVarying" )
}
)"));
    const ImportedMesh* perPoint = meshNamed(scene, "PerPoint");
    const ImportedMesh* perCorner = meshNamed(scene, "PerCorner");
    ASSERT_NE(perPoint, nullptr);
    ASSERT_NE(perCorner, nullptr);
    EXPECT_EQ(perPoint->positions.size(), 6u);  // the points stay shared
    EXPECT_EQ(perCorner->positions.size(), 8u);
    ASSERT_EQ(perPoint->indices.size(), perCorner->indices.size());
    for (std::size_t i = 0; i < perPoint->indices.size(); ++i) {
        EXPECT_EQ(perPoint->positions.at(perPoint->indices[i]), perCorner->positions.at(perCorner->indices[i])) << i;
        EXPECT_EQ(perPoint->texCoords.at(perPoint->indices[i]), perCorner->texCoords.at(perCorner->indices[i])) << i;
    }
}

TEST(UsdSceneTest, SubsetsSplitTrianglesByMaterial) {
    const ImportedScene scene = importOk(importText(R"(#usda 1.0
def Xform "Root" ( prepend apiSchemas = ["MaterialBindingAPI"] )
{
    rel material:binding = </Root/Looks/Base>
    def Mesh "Cake"
    {
        point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)]
        int[] faceVertexCounts = [3, 3, 3]
        int[] faceVertexIndices = [0, 1, 2, 0, 2, 3, 1, 2, 3]
        def GeomSubset "Icing"
        {
            uniform token elementType = "face"
            uniform token familyName = "materialBind"
            int[] indices = [1]
            rel material:binding = </Root/Looks/Icing>
        }
        def GeomSubset "Unbound" { uniform token familyName = "other" int[] indices = [0] }
    }
    def Scope "Looks"
    {
        def Material "Base" { }
        def Material "Icing" { }
    }
}
)"));
    const ImportedMesh* cake = meshNamed(scene, "Cake");
    ASSERT_NE(cake, nullptr);
    ASSERT_EQ(cake->subsets.size(), 2u);
    EXPECT_EQ(scene.materials.at(static_cast<std::size_t>(cake->subsets[0].material)).name, "Icing");
    EXPECT_EQ(cake->subsets[0].indexCount, 3u);
    EXPECT_EQ(std::vector<std::uint32_t>(cake->indices.begin(), cake->indices.begin() + 3), (std::vector<std::uint32_t>{0, 2, 3}));
    EXPECT_EQ(scene.materials.at(static_cast<std::size_t>(cake->subsets[1].material)).name, "Base");
    EXPECT_EQ(cake->subsets[1].firstIndex, 3u);
    EXPECT_EQ(cake->subsets[1].indexCount, 6u);
}

TEST(UsdSceneTest, VariantsAndReferencesCompose) {
    const std::string layer = R"(#usda 1.0
def Xform "Chosen" ( variants = { string size = "large" } prepend variantSets = "size" )
{
    variantSet "size" = {
        "small" { def Mesh "Small" { } }
        "large" ( references = </Shapes> ) { }
    }
}
def Xform "Fallback"
{
    variantSet "look" = {
        "first" { double3 xformOp:translate = (1, 2, 3) uniform token[] xformOpOrder = ["xformOp:translate"] }
        "second" { }
    }
}
def Xform "Inactive" ( active = false references = </Shapes> ) { }
def Xform "Hidden" ( references = </Shapes> ) { token visibility = "invisible" }
def Xform "Missing" ( references = @./no/such/file.usda@ ) { }
class "Shapes"
{
    def Mesh "Tri"
    {
        point3f[] points = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]
        int[] faceVertexCounts = [3]
        int[] faceVertexIndices = [0, 1, 2]
    }
}
)";
    const ImportedScene scene = importOk(importText(layer));
    ASSERT_EQ(scene.meshes.size(), 1u);
    EXPECT_EQ(scene.meshes[0].name, "Tri");
    const ImportedNode& tri = scene.nodes.at(static_cast<std::size_t>(nodeNamed(scene, "Tri")));
    EXPECT_EQ(scene.nodes.at(static_cast<std::size_t>(tri.parent)).name, "Chosen");
    EXPECT_EQ(nodeNamed(scene, "Small"), -1);
    EXPECT_EQ(nodeNamed(scene, "Shapes"), -1);  // classes are abstract
    EXPECT_EQ(nodeNamed(scene, "Inactive"), -1);
    EXPECT_EQ(nodeNamed(scene, "Hidden"), -1);
    EXPECT_NE(nodeNamed(scene, "Missing"), -1);  // a missing layer contributes nothing
    const int fallback = nodeNamed(scene, "Fallback");
    expectNear(scene.nodes.at(static_cast<std::size_t>(fallback)).localTransform.map(QVector3D()), {1, 2, 3});

    const auto cycle = importText(R"(#usda 1.0
def "A" ( references = </B> ) { }
def "B" ( references = </A> ) { }
)");
    ASSERT_FALSE(cycle.ok());
    EXPECT_NE(cycle.error().localizedDescription().find("reference cycle"), std::string::npos);
    // A child that references its ancestor grows without end; the namespace cap stops it.
    const auto recursive = importText("#usda 1.0\ndef \"A\" { def \"B\" ( references = </A> ) { } }\n");
    ASSERT_FALSE(recursive.ok());
    EXPECT_EQ(recursive.error().code(), static_cast<int>(ImportErrorCode::limitExceeded));
}

TEST(UsdSceneTest, LooseLayerReferencesSiblingFilesOnDisk) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string folder = dir.path().toStdString();
    std::filesystem::create_directories(folder + "/sub folder");
    std::ofstream(folder + "/sub folder/part.usda") << R"(#usda 1.0
( defaultPrim = "Part" )
def Mesh "Part"
{
    point3f[] points = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]
    int[] faceVertexCounts = [3]
    int[] faceVertexIndices = [0, 1, 2]
    rel material:binding = </Part/Mat>
    texCoord2f[] primvars:st = [(0, 0), (1, 0), (0, 1)] ( interpolation = "vertex" )
    def Material "Mat"
    {
        token outputs:surface.connect = </Part/Mat/S.outputs:surface>
        def Shader "S" { uniform token info:id = "UsdPreviewSurface" color3f inputs:diffuseColor.connect = </Part/Mat/T.outputs:rgb> }
        def Shader "T" { uniform token info:id = "UsdUVTexture" asset inputs:file = @./skin.png@ }
    }
}
)";
    std::ofstream(folder + "/sub folder/skin.png", std::ios::binary) << pngBytes;
    std::ofstream(folder + "/dish.usda") << "#usda 1.0\n( metersPerUnit = 1 )\ndef \"Dish\" ( references = @sub folder/part.usda@ ) { }\n";
    const ImportedScene scene = importOk(UsdImporter::importFile(folder + "/dish.usda"));
    EXPECT_EQ(scene.format, "usda");
    ASSERT_EQ(scene.meshes.size(), 1u);
    EXPECT_EQ(scene.meshes[0].texCoords.size(), 3u);  // no material varname: primvars:st
    ASSERT_EQ(scene.textures.size(), 1u);
    EXPECT_EQ(scene.textures[0].encoded.toStdString(), pngBytes);
}

// A crate layer with one 64 x 64 grid mesh, large enough that its arrays are decoded only
// when the scene reads them: points, vertex normals, face-varying texture coordinates indexed
// by the corners' points, and compressed topology. With `brokenIndices` the index block is
// not valid LZ4.
std::string gridCrateLayer(bool brokenIndices) {
    using namespace exporter::crate;
    exporter::CrateWriter w(8);
    constexpr std::int32_t side = 64;
    std::vector<float> points, normals, st;
    for (std::int32_t z = 0; z < side; ++z)
        for (std::int32_t x = 0; x < side; ++x) {
            points.insert(points.end(), {float(x), 0.0f, float(z)});
            normals.insert(normals.end(), {0.0f, 1.0f, 0.0f});
            st.insert(st.end(), {float(x) / side, float(z) / side});
        }
    std::vector<std::int32_t> indices;
    for (std::int32_t z = 0; z + 1 < side; ++z)
        for (std::int32_t x = 0; x + 1 < side; ++x) {
            const std::int32_t v = z * side + x;
            indices.insert(indices.end(), {v, v + side, v + 1, v + 1, v + side, v + side + 1});
        }
    const auto indicesRep = [&] {
        if (!brokenIndices) return w.compressedArray(tInt, indices);
        const auto at = w.arrayCount(indices.size());
        w.put(std::uint64_t{4});
        w.putAll<std::uint8_t>({0, 0xff, 0xff, 0xff});
        return rep(tInt, at, isArray | isCompressed);
    }();
    const std::vector<std::pair<std::string, std::uint64_t>> attributes{
        {"points", w.array(tVec3f, points, 3)},
        {"normals", w.array(tVec3f, normals, 3)},
        {"faceVertexCounts", w.compressedArray(tInt, std::vector<std::int32_t>(indices.size() / 3, 3))},
        {"faceVertexIndices", indicesRep},
        {"primvars:st", w.array(tVec2f, st, 2)},
        {"primvars:st:indices", w.compressedArray(tInt, indices)}};
    std::vector<std::string> names;
    for (const auto& [name, value] : attributes) names.push_back(name);
    w.spec("/", sPseudoRoot, {{"defaultPrim", w.tokenInline("Grid")}, {"primChildren", w.tokenVector({"Grid"})}});
    w.spec("/Grid", sPrim, {{"specifier", rep(tSpecifier, 0, isInlined)}, {"typeName", w.tokenInline("Mesh")},
                            {"properties", w.tokenVector(names)}});
    for (const auto& [name, value] : attributes) {
        std::vector<std::pair<std::string, std::uint64_t>> fields{{"default", value}};
        if (name == "primvars:st") fields.push_back({"interpolation", w.tokenInline("faceVarying")});
        w.spec("/Grid." + name, sAttribute, fields);
    }
    const auto layer = w.build();
    return {layer.begin(), layer.end()};
}

TEST(UsdSceneTest, LargeCrateMeshDecodesAsTheSceneReadsIt) {
    const auto bytes = package({{"grid.usdc", gridCrateLayer(false)}});
    const ImportedScene scene = importOk(UsdImporter::importBytes(*bytes, bytes, "grid.usdz"));
    ASSERT_EQ(scene.meshes.size(), 1u);
    const ImportedMesh& mesh = scene.meshes.front();
    ASSERT_EQ(mesh.positions.size(), 64u * 64u);
    ASSERT_EQ(mesh.triangleCount(), 63u * 63u * 2u);
    ASSERT_EQ(mesh.normals.size(), mesh.positions.size());
    ASSERT_EQ(mesh.texCoords.size(), mesh.positions.size());
    for (std::size_t p : {std::size_t{0}, std::size_t{65}, std::size_t{64 * 64 - 1}}) {
        expectNear(mesh.positions[p], QVector3D(float(p % 64), 0, float(p / 64)));
        expectNear(mesh.normals[p], QVector3D(0, 1, 0));
        EXPECT_EQ(mesh.texCoords[p], QVector2D(float(p % 64) / 64, float(p / 64) / 64));
    }
    EXPECT_EQ((std::vector<std::uint32_t>(mesh.indices.end() - 3, mesh.indices.end())),
              (std::vector<std::uint32_t>{64 * 63 - 1, 64 * 64 - 2, 64 * 64 - 1}));

    const auto broken = package({{"grid.usdc", gridCrateLayer(true)}});
    const auto result = UsdImporter::importBytes(*broken, broken, "broken.usdz");
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.error().code(), static_cast<int>(ImportErrorCode::malformedData));
    EXPECT_NE(result.error().localizedDescription().find("USDC layer grid.usdc: the array at offset"), std::string::npos)
        << result.error().localizedDescription();
}

TEST(UsdSceneTest, BrokenInputEndsInAnErrorNeverACrash) {
    const auto code = [](const core::Result<ImportedScene>& r) { return r.ok() ? 0 : r.error().code(); };
    EXPECT_EQ(code(UsdImporter::importBytes({}, nullptr, "empty")), static_cast<int>(ImportErrorCode::unrecognisedFormat));
    EXPECT_EQ(code(importText("<!DOCTYPE html><html></html>")), static_cast<int>(ImportErrorCode::unrecognisedFormat));
    EXPECT_EQ(code(UsdImporter::importFile("/no/such/file.usdz")), static_cast<int>(ImportErrorCode::unreadableFile));
    ORVANTA_CORPUS_FILE(bad, "usdz-bad/openusd_first_file_not_usd.usdz");
    EXPECT_FALSE(UsdImporter::importFile(bad.string()).ok());
    ORVANTA_CORPUS_FILE(corrupt, "usdc/crate-bad_corrupt.usd");
    EXPECT_FALSE(UsdImporter::importFile(corrupt.string()).ok());

    // Every truncation and a spread of bit flips of a real package: errors or scenes, nothing else.
    ORVANTA_CORPUS_FILE(logo, "usdz/USDLogo.usdz");
    std::ifstream in(logo, std::ios::binary);
    const Bytes original((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (std::size_t n = 0; n < original.size(); n += 97) {
        auto copy = std::make_shared<Bytes>(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(n));
        (void)UsdImporter::importBytes(*copy, copy, "cut.usdz");
    }
    for (std::size_t at = 0; at < original.size(); at += 61) {
        auto copy = std::make_shared<Bytes>(original);
        (*copy)[at] ^= static_cast<std::uint8_t>(1u << (at % 8));
        (void)UsdImporter::importBytes(*copy, copy, "flipped.usdz");
    }
}

TEST(UsdSceneTest, FuzzRegressionsReplayCleanly) {
    const auto inputs = orvanta::testing::fuzzRegressions("fuzz_usda");
    if (inputs.empty()) GTEST_SKIP() << "no regressions recorded";
    for (const auto& input : inputs) {
        SCOPED_TRACE(input.name);
        const std::string text(input.bytes.begin(), input.bytes.end());
        (void)importText(text.starts_with("#usda") ? text : "#usda 1.0\n" + text, "/nonexistent-fuzz-folder/replay.usda");
    }
}

} // namespace
} // namespace orvanta::import::usd
