#include "ImportTestHelpers.h"
#include "import/ImportError.h"
#include "support/Corpus.h"
#include "support/ExpectImportError.h"

#include <QTemporaryDir>

#include <fstream>

namespace orvanta::import::usd {
namespace {

QMatrix4x4 localOf(const ImportedScene& scene, const std::string& name) {
    const ImportedNode* node = named(scene.nodes, name);
    EXPECT_NE(node, nullptr) << name;
    return node ? node->localTransform : QMatrix4x4();
}

const std::string pngBytes = std::string("\x89PNG\r\n\x1a\n", 8) + "not really pixels";

TEST(UsdSceneTest, CorpusFilesImportWithTheirCounts) {
    // Vertices are per face corner wherever normals or texture coordinates are faceVarying.
    const CorpusCounts cases[] = {
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
    for (const CorpusCounts& e : cases) {
        ORVANTA_CORPUS_FILE(path, e.file);
        SCOPED_TRACE(e.file);
        const ImportedScene scene = importOk(UsdImporter::importFile(path.string()));
        expectCounts(scene, e);  // RoughnessTest's TGA decodes too
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
    const ImportedMesh* text = named(scene.meshes, "TextUSD");
    ASSERT_NE(text, nullptr);
    const ImportedMaterial& gray = scene.materials.at(static_cast<std::size_t>(text->subsets.at(0).material));
    EXPECT_EQ(gray.name, "MatGrayLight");
    ASSERT_TRUE(gray.baseColorTexture.has_value());
    EXPECT_EQ(scene.textures.at(static_cast<std::size_t>(gray.baseColorTexture->texture)).uri, "1/USDLogoLrgWithAlpha.png");
    EXPECT_EQ(text->texCoords.size(), 4u);  // read through the material's varname "UVW"
    const ImportedMaterial& blue = scene.materials.at(static_cast<std::size_t>(named(scene.meshes, "StrongestLayer")->subsets.at(0).material));
    EXPECT_NEAR(blue.baseColorFactor.z(), 0.6307574f, 1e-6f);
    EXPECT_NEAR(blue.roughness, 0.43431458f, 1e-6f);

    ORVANTA_CORPUS_FILE(arrows, "usdz/TextureTransformTest.usdz");
    const ImportedScene spaced = importOk(UsdImporter::importFile(arrows.string()));
    std::vector<std::string> uris;
    for (const ImportedTexture& t : spaced.textures) uris.push_back(t.uri);
    EXPECT_NE(std::find(uris.begin(), uris.end(), "0/TextureTransformTest UV_244266e87c0f006acef7f70b1ae83a8f.png"), uris.end());
    // Centimetres with a 100x root scale: the quads end up about a metre wide.
    EXPECT_NEAR(spaced.bounds().max.x(), 1.6f, 1e-4f);

    ORVANTA_CORPUS_FILE(teapot, "usda/UtahTeapot.usd");
    EXPECT_NEAR(importOk(UsdImporter::importFile(teapot.string())).bounds().max.y(), 0.22956148f, 1e-6f);  // metres, Y up
}

TEST(UsdSceneTest, GeneratedPackageResolvesLayersAndTexturesInPlace) {
    const std::string root = R"(#usda 1.0
( defaultPrim = "Dish" metersPerUnit = 1 upAxis = "Y" )
def Xform "Dish" ( prepend references = @./parts/plate.usda@</Plate> ) { def Mesh "Garnish" ( references = </Dish/Looks> ) { } }
)";
    const std::string plate = R"(#usda 1.0
def Xform "Plate" {
  def Mesh "Body" {
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 0, 1), (0, 0, 1)] int[] faceVertexCounts = [4] int[] faceVertexIndices = [0, 1, 2, 3]
    texCoord2f[] primvars:uv = [(0, 0), (1, 0), (1, 1), (0, 1)] ( interpolation = "vertex" )
    rel material:binding = </Plate/Looks/Glaze>
  }
  def Scope "Looks" { def Material "Glaze" {
    token outputs:surface.connect = </Plate/Looks/Glaze/Surface.outputs:surface>
    def Shader "Surface" { uniform token info:id = "UsdPreviewSurface" float inputs:metallic = 0.25
                           color3f inputs:diffuseColor.connect = </Plate/Looks/Glaze/Image.outputs:rgb> }
    def Shader "Image" { uniform token info:id = "UsdUVTexture" asset inputs:file = @../textures/glaze texture.png@
                         float2 inputs:st.connect = </Plate/Looks/Glaze/Reader.outputs:result> }
    def Shader "Reader" { uniform token info:id = "UsdPrimvarReader_float2" string inputs:varname = "uv" }
  } }
}
)";
    auto zip = package({{"dish.usda", root}, {"parts/plate.usda", plate}, {"textures/glaze texture.png", pngBytes}});
    const std::weak_ptr<Bytes> watch = zip;
    const ImportedScene scene = importOk(UsdImporter::importBytes(*zip, zip, "dish.usdz"));
    EXPECT_EQ(scene.format, "usdz");
    const ImportedMesh* body = named(scene.meshes, "Body");
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(body->indices, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(body->texCoords.at(2), QVector2D(1, 1));
    ASSERT_EQ(scene.materials.size(), 1u);
    EXPECT_EQ(scene.materials[0].metallic, 0.25f);
    EXPECT_EQ(body->subsets.at(0).material, 0);
    ASSERT_EQ(scene.textures.size(), 1u);
    const ImportedTexture& texture = scene.textures[0];
    EXPECT_EQ(texture.uri, "textures/glaze texture.png");
    EXPECT_EQ(texture.encoded.toStdString(), pngBytes);
    // Zero copy: the bytes are the package's own, kept alive by the texture.
    const auto* begin = reinterpret_cast<const char*>(zip->data());
    EXPECT_GE(texture.encoded.constData(), begin);
    EXPECT_LT(texture.encoded.constData(), begin + zip->size());
    zip.reset();
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(named(scene.meshes, "Garnish"), nullptr);  // the internal reference names nothing
}

TEST(UsdSceneTest, UpAxisAndUnitsBecomeYUpMetres) {
    const ImportedScene scene = importOk(importUsda(R"(#usda 1.0
( upAxis = "Z" metersPerUnit = 0.5 )
def Mesh "Tri" { point3f[] points = [(0, 0, 0), (2, 0, 0), (0, 4, 6)] int[] faceVertexCounts = [3] int[] faceVertexIndices = [0, 1, 2] }
)"));
    expectNear(scene.bounds().min, {0, 0, -2});
    expectNear(scene.bounds().max, {1, 3, 0});
    // Without metadata: centimetres, Y up.
    const ImportedScene cm = importOk(importUsda(R"(#usda 1.0
def Mesh "Tri" { point3f[] points = [(0, 0, 0), (100, 0, 0), (0, 200, 0)] int[] faceVertexCounts = [3] int[] faceVertexIndices = [0, 1, 2] }
)"));
    expectNear(cm.bounds().max, {1, 2, 0});
}

TEST(UsdSceneTest, TransformOpsComposeInOrder) {
    const ImportedScene scene = importOk(importUsda(R"(#usda 1.0
( metersPerUnit = 1 )
def Xform "A" {
    double3 xformOp:translate = (10, 0, 0)  float3 xformOp:rotateXYZ = (0, 0, 90)
    float3 xformOp:scale.timeSamples = { 5: (9, 9, 9), 1: (2, 2, 2) }  float3 xformOp:translate:pivot = (1, 0, 0)
    uniform token[] xformOpOrder = ["xformOp:translate", "xformOp:rotateXYZ", "xformOp:translate:pivot", "xformOp:scale", "!invert!xformOp:translate:pivot"]
    def Xform "B" {
        quatf xformOp:orient = (0.70710678, 0.70710678, 0, 0)
        matrix4d xformOp:transform = ( (1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (0, 5, 0, 1) )
        float xformOp:rotateY = 180
        uniform token[] xformOpOrder = ["xformOp:transform", "xformOp:orient", "xformOp:rotateY", "!resetXformStack!"]
    }
    def Xform "C" { float3 xformOp:rotateZYX = (90, 90, 0) uniform token[] xformOpOrder = ["xformOp:rotateZYX"] }
}
def Xform "Scaled" {
    float3 xformOp:scale = (2, 2, 2) uniform token[] xformOpOrder = ["xformOp:scale"]
    def Mesh "Moved" { double3 xformOp:translate = (1, 0, 0) uniform token[] xformOpOrder = ["xformOp:translate"] )" +
                                                    triangleMesh + R"( }
}
)"));
    // The parent's scale applies after the child's move: x from 2 to 4, not 1 to 3.
    expectNear(scene.bounds().min, {2, 0, 0});
    expectNear(scene.bounds().max, {4, 2, 0});
    // Scale 2 about the pivot (1,0,0), then 90 degrees about Z, then translate.
    expectNear(localOf(scene, "A").map(QVector3D(1, 0, 0)), {10, 1, 0});
    expectNear(localOf(scene, "A").map(QVector3D(2, 0, 0)), {10, 3, 0});
    // rotateY 180 first, then 90 degrees about X, then up by 5.
    expectNear(localOf(scene, "B").map(QVector3D(0, 0, 1)), {0, 6, 0});
    expectNear(localOf(scene, "B").map(QVector3D(1, 0, 0)), {-1, 5, 0});
    // rotateZYX: Z first (nothing here), then Y 90, then X 90: +X -> -Z -> +Y.
    expectNear(localOf(scene, "C").map(QVector3D(1, 0, 0)), {0, 1, 0});
}

TEST(UsdSceneTest, MeshStreamsFollowTheirInterpolation) {
    const ImportedScene scene = importOk(importUsda(R"(#usda 1.0
def Mesh "Fv" {
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (5, 5, 5)]
    int[] faceVertexCounts = [4, 2, 3, 3]
    int[] faceVertexIndices = [0, 1, 2, 3,  0, 1,  0, 1, 9,  4, 4, 0]
    normal3f[] normals = [(0, 0, 1), (0, 0, -1), (0, 0, -1), (0, 0, -1)] ( interpolation = "uniform" )
    texCoord2f[] primvars:st = [(0, 0), (1, 0), (1, 1), (0, 1)] ( interpolation = "faceVarying" )
    int[] primvars:st:indices = [0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0]
    uniform token orientation = "leftHanded"
}
def Mesh "Indexed" {
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0)] int[] faceVertexCounts = [3, 5] int[] faceVertexIndices = [0, 1, 2]
    normal3f[] normals = [(0, 0, 1)] ( interpolation = "constant" )
    texCoord2f[] primvars:st = [(0.5, 0.5), (0, 0)] ( interpolation = "vertex" )
    int[] primvars:st:indices = [1, 0, 1]
}
def Mesh "BadIndices" {)" + triangleMesh + R"(
    texCoord2f[] primvars:st = [(0, 0)] ( interpolation = "vertex" )
    int[] primvars:st:indices = [0, 7, 0]
}
def Mesh "Wide" {
    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)]
    int64[] faceVertexCounts = [3, 3] int64[] faceVertexIndices = [0, 1, 2, 0, 2, 4294967299]
}
)"));
    const ImportedMesh* fv = named(scene.meshes, "Fv");
    ASSERT_NE(fv, nullptr);
    // Only the quad survives: the segment, the out-of-range face and the repeated-point
    // triangle are dropped. faceVarying coordinates give one vertex per corner.
    ASSERT_EQ(fv->positions.size(), 4u);
    EXPECT_EQ(fv->indices, (std::vector<std::uint32_t>{0, 2, 1, 0, 3, 2}));  // left-handed, reversed
    EXPECT_EQ(fv->texCoords.at(2), QVector2D(1, 1));
    EXPECT_EQ(fv->normals.size(), 4u);
    EXPECT_EQ(fv->normals.at(0), QVector3D(0, 0, 1));

    const ImportedMesh* indexed = named(scene.meshes, "Indexed");
    ASSERT_NE(indexed, nullptr);
    EXPECT_EQ(indexed->positions.size(), 3u);  // per-point streams keep the points shared
    EXPECT_EQ(indexed->indices, (std::vector<std::uint32_t>{0, 1, 2}));  // a count past the end stops
    EXPECT_EQ(indexed->texCoords, (std::vector<QVector2D>{{0, 0}, {0.5f, 0.5f}, {0, 0}}));
    EXPECT_EQ(indexed->normals, (std::vector<QVector3D>(3, {0, 0, 1})));
    // A stream with an index out of range is left out.
    EXPECT_TRUE(named(scene.meshes, "BadIndices")->texCoords.empty());
    // 64-bit topology reads too; an index past 32 bits is out of range, not cut down to 3.
    EXPECT_EQ(named(scene.meshes, "Wide")->indices, (std::vector<std::uint32_t>{0, 1, 2}));
}

TEST(UsdSceneTest, SubsetsSplitTrianglesByMaterial) {
    const ImportedScene scene = importOk(importUsda(R"(#usda 1.0
def Xform "Root" ( prepend apiSchemas = ["MaterialBindingAPI"] ) {
    rel material:binding = </Root/Looks/Base>
    def Mesh "Cake" {
        point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)]
        int[] faceVertexCounts = [3, 3, 3] int[] faceVertexIndices = [0, 1, 2, 0, 2, 3, 1, 2, 3]
        def GeomSubset "Icing" { uniform token elementType = "face" uniform token familyName = "materialBind"
                                 int[] indices = [1] rel material:binding = </Root/Looks/Icing> }
        def GeomSubset "Unbound" { uniform token familyName = "other" int[] indices = [0] }
    }
    def Scope "Looks" { def Material "Base" { } def Material "Icing" { } }
}
)"));
    const ImportedMesh* cake = named(scene.meshes, "Cake");
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
    const ImportedScene scene = importOk(importUsda(R"(#usda 1.0
def Xform "Chosen" ( variants = { string size = "large" } prepend variantSets = "size" ) {
    variantSet "size" = { "small" { def Mesh "Small" { } } "large" ( references = </Shapes> ) { } }
}
def Xform "Fallback" {
    variantSet "look" = { "first" { double3 xformOp:translate = (1, 2, 3) uniform token[] xformOpOrder = ["xformOp:translate"] }
                          "second" { } }
}
def Xform "Inactive" ( active = false references = </Shapes> ) { }
def Xform "Hidden" ( references = </Shapes> ) { token visibility = "invisible" }
def Xform "Missing" ( references = @./no/such/file.usda@ ) { }
class "Shapes" { def Mesh "Tri" {)" + triangleMesh + "} }\n"));
    ASSERT_EQ(scene.meshes.size(), 1u);
    EXPECT_EQ(scene.meshes[0].name, "Tri");
    EXPECT_EQ(scene.nodes.at(static_cast<std::size_t>(named(scene.nodes, "Tri")->parent)).name, "Chosen");
    for (const char* absent : {"Small", "Shapes", "Inactive", "Hidden"}) EXPECT_EQ(named(scene.nodes, absent), nullptr) << absent;
    EXPECT_NE(named(scene.nodes, "Missing"), nullptr);  // a missing layer contributes nothing
    expectNear(localOf(scene, "Fallback").map(QVector3D()), {1, 2, 3});
}

TEST(UsdSceneTest, BrokenLayersEndInClearErrors) {
    using C = ImportErrorCode;
    testing::expectImportError(importUsda("#usda 1.0\ndef \"A\" ( references = </B> ) { }\ndef \"B\" ( references = </A> ) { }\n"),
                               C::malformedData, "reference cycle");
    // A child that references its ancestor grows without end; the namespace cap stops it.
    testing::expectImportError(importUsda("#usda 1.0\ndef \"A\" { def \"B\" ( references = </A> ) { } }\n"), C::limitExceeded, "");
    testing::expectImportError(UsdImporter::importBytes({}, nullptr, "empty"), C::unrecognisedFormat, "");
    testing::expectImportError(importUsda("<!DOCTYPE html><html></html>"), C::unrecognisedFormat, "");
    testing::expectImportError(UsdImporter::importFile("/no/such/file.usdz"), C::unreadableFile, "");
}

TEST(UsdSceneTest, LooseLayerReferencesSiblingFilesOnDisk) {
    QTemporaryDir dir;
    const std::string folder = dir.path().toStdString();
    std::filesystem::create_directories(folder + "/sub folder");
    std::ofstream(folder + "/sub folder/part.usda") << R"(#usda 1.0
( defaultPrim = "Part" )
def Mesh "Part" {)" + triangleMesh + R"(
    rel material:binding = </Part/Mat>
    texCoord2f[] primvars:st = [(0, 0), (1, 0), (0, 1)] ( interpolation = "vertex" )
    def Material "Mat" {
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

TEST(UsdSceneTest, LargeCrateMeshDecodesAsTheSceneReadsIt) {
    const ImportedScene scene = importOk(importPackage({{"grid.usdc", gridCrateLayer(false)}}));
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
    testing::expectImportError(importPackage({{"grid.usdc", gridCrateLayer(true)}}), ImportErrorCode::malformedData,
                               "USDC layer grid.usdc: the array at offset");
}

} // namespace
} // namespace orvanta::import::usd
