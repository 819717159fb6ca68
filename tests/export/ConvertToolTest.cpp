// The orvanta-convert command-line tool, run as a separate process: a GLB to USDZ (crate and
// text) and back to GLB, the notes it prints, and its failures.
#include "export/ZipWriter.h"
#include "import/SceneImporter.h"
#include "support/TestModels.h"
#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace orvanta {
namespace {

#ifdef ORVANTA_CONVERT_TOOL

using testing::ToolRun;

ToolRun convert(const QStringList& arguments) { return ToolRun::of(ORVANTA_CONVERT_TOOL, arguments); }

// Triangles as drawn: a mesh counts once for every node that draws it.
std::size_t drawnTriangles(const import::ImportedScene& scene) {
    std::size_t n = 0;
    for (const import::ImportedNode& node : scene.nodes)
        for (int mesh : node.meshes) n += scene.meshes[std::size_t(mesh)].triangleCount();
    return n;
}

class ConvertToolTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Its JSON declares an extension the importer ignores.
        testing::TestModels::write(glb.toStdString(), testing::TestModels::glbWithNodes(3, {"EXT_future"}));
    }

    QTemporaryDir dir;
    QString glb = dir.filePath("three.glb");
};

TEST_F(ConvertToolTest, GlbBecomesUsdzOfEitherLayerAndComesBack) {
    const auto source = import::SceneImporter::importFile(glb.toStdString());
    ASSERT_TRUE(source.ok());
    for (const QStringList& flags : {QStringList{}, QStringList{"--text"}}) {
        SCOPED_TRACE(flags.join(" ").toStdString());
        const QString usdz = dir.filePath("three.usdz"), back = dir.filePath("back.glb");
        const ToolRun toUsdz = convert(flags + QStringList{glb, usdz});
        EXPECT_EQ(toUsdz.exitCode, 0) << toUsdz.err.toStdString();
        EXPECT_TRUE(toUsdz.out.startsWith(glb + " -> " + usdz + ": 1 mesh, 1 material, 0 textures\n")) << toUsdz.out.toStdString();
        EXPECT_TRUE(toUsdz.out.contains("  not carried over: glTF extension EXT_future is not read\n")) << toUsdz.out.toStdString();
        const ToolRun toGlb = convert({usdz, back});
        EXPECT_EQ(toGlb.exitCode, 0) << toGlb.err.toStdString();
        for (const QString& file : {usdz, back}) {
            const auto result = import::SceneImporter::importFile(file.toStdString());
            ASSERT_TRUE(result.ok()) << file.toStdString();
            EXPECT_EQ(drawnTriangles(result.value()), drawnTriangles(source.value()));
            EXPECT_EQ(result->meshes.size(), 1u);  // the three nodes still share one mesh
            EXPECT_TRUE(qFuzzyCompare(result->bounds().max, source->bounds().max));
        }
    }
}

// A package whose root layer references a layer holding the mesh and its one material: the
// GLB carries the same triangles and the same one material (no unused extra).
TEST_F(ConvertToolTest, AReferencedLayersMaterialsCarryOverOneForOne) {
    const QString usdz = dir.filePath("nested.usdz"), back = dir.filePath("nested.glb");
    exporter::ZipWriter zip;
    zip.add("root.usda", "#usda 1.0\n( defaultPrim = \"Dish\" )\ndef Xform \"Dish\" ( references = @./plate.usda@ ) {}\n");
    zip.add("plate.usda", R"(#usda 1.0
( defaultPrim = "Plate" )
def Xform "Plate" {
    def Mesh "Surface" ( prepend apiSchemas = ["MaterialBindingAPI"] ) {
        point3f[] points = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (1, 1, 0)] int[] faceVertexCounts = [3, 3]
        int[] faceVertexIndices = [0, 1, 2, 2, 1, 3] rel material:binding = </Plate/Glaze>
    }
    def Material "Glaze" { token outputs:surface.connect = </Plate/Glaze/Surface.outputs:surface>
        def Shader "Surface" { uniform token info:id = "UsdPreviewSurface" color3f inputs:diffuseColor = (0.8, 0.1, 0.1) } }
}
)");
    const std::vector<std::uint8_t> bytes = zip.build();
    testing::TestModels::write(usdz.toStdString(), QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())));
    const ToolRun run = convert({usdz, back});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const auto source = import::SceneImporter::importFile(usdz.toStdString());
    const auto result = import::SceneImporter::importFile(back.toStdString());
    ASSERT_TRUE(source.ok() && result.ok());
    EXPECT_EQ(drawnTriangles(result.value()), drawnTriangles(source.value()));
    ASSERT_EQ(source->materials.size(), 1u);
    ASSERT_EQ(result->materials.size(), 1u);
    EXPECT_TRUE(qFuzzyCompare(result->materials[0].baseColorFactor, source->materials[0].baseColorFactor));
}

TEST_F(ConvertToolTest, FailuresAndWrongCommandLines) {
    const QString empty = dir.filePath("empty.usda");
    testing::TestModels::write(empty.toStdString(), "#usda 1.0\n");
    // 60,000 seeds of 98 triangles: over the drawing budget once multiplied out.
    const QString heavy = dir.filePath("heavy.usda");
    testing::TestModels::write(heavy.toStdString(), testing::TestModels::seedScatterUsda(60'000, 7));
    const struct {
        QStringList arguments;
        int exitCode;
        const char* message;
    } cases[] = {
        {{dir.filePath("absent.glb"), dir.filePath("out.usdz")}, 1, "error: domain ModelImportError, code 1"},
        {{glb, dir.filePath("missing-folder/out.usdz")}, 1, "error: domain ModelExportError"},
        {{glb, dir.filePath("out.obj")}, 2, "must end in .usdz or .glb"},
        {{empty, dir.filePath("empty.glb")}, 1, "empty.usda: nothing to convert: the model has no triangles"},
        {{glb}, 2, "usage:"},
        {{heavy, dir.filePath("heavy.glb")}, 1, "The model is too heavy to draw: 5,880,000 triangles after instancing"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(" ").toStdString());
        const ToolRun run = convert(c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode);
        EXPECT_TRUE(run.err.contains(c.message)) << run.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(dir.filePath("empty.glb")));
    EXPECT_FALSE(QFile::exists(dir.filePath("heavy.glb")));
}

#endif

} // namespace
} // namespace orvanta
