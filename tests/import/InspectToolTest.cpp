// The orvanta-inspect command-line tool, run as a separate process on a GLB written here
// and on a file that is no model.
#include "support/TestModels.h"
#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QTemporaryDir>

namespace orvanta {
namespace {

#ifdef ORVANTA_INSPECT_TOOL

using testing::ToolRun;

ToolRun inspect(const QStringList& files) { return ToolRun::of(ORVANTA_INSPECT_TOOL, files); }

class InspectToolTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        testing::TestModels::write(glb.toStdString(), testing::TestModels::glbWithNodes(3));
        testing::TestModels::write(page.toStdString(), "<html><body>Not found</body></html>\n");
    }

    QTemporaryDir dir;
    QString glb = dir.filePath("three.glb");
    QString page = dir.filePath("page.usdz");
};

TEST_F(InspectToolTest, PrintsTheCountsBoundsAndTimeOfAModel) {
    const ToolRun run = inspect({glb});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
    // Three nodes under a root, each drawing the same 0.1 m triangle 1 m further along X.
    for (const char* line : {"  format: glb\n", "  nodes: 4\n", "  meshes: 1\n", "  vertices: 3\n", "  triangles: 1\n",
                             "  materials: 1\n", "  textures: 0\n",
                             "  bounds (m): min (0, 0, 0) max (2.1, 0.1, 0) size (2.1, 0.1, 0)\n"})
        EXPECT_TRUE(run.out.contains(line)) << line << " missing from:\n" << run.out.toStdString();
    EXPECT_TRUE(run.out.startsWith(glb + "\n"));
    EXPECT_TRUE(run.out.contains(QRegularExpression("  load time: [0-9]+\\.[0-9]{3} ms\n")));
    EXPECT_TRUE(run.out.contains("  meshes with vertex colours: 0\n"));
    EXPECT_TRUE(run.out.contains(QRegularExpression("  material 0 \"[^\"]*\":\n    base colour: \\([0-9., ]+\\)\n")));
    EXPECT_TRUE(run.out.contains("    alpha: opaque\n"));
}

TEST_F(InspectToolTest, ANonModelFailsWithTheErrorOnStandardError) {
    const ToolRun run = inspect({page});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
    EXPECT_EQ(run.err, page + ": error: domain ModelImportError, code 2: Not a model file: " + page + "\n");
}

TEST_F(InspectToolTest, OneBadFileAmongGoodOnesStillReportsTheGoodOnesAndFails) {
    const ToolRun run = inspect({glb, page, dir.filePath("absent.glb")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.out.contains("  vertices: 3\n"));
    EXPECT_TRUE(run.err.contains(page + ": error: domain ModelImportError, code 2:"));
    EXPECT_TRUE(run.err.contains(dir.filePath("absent.glb") + ": error: domain ModelImportError, code 1:"));
}

TEST(InspectToolUsageTest, NoArgumentsPrintsUsage) {
    const ToolRun run = inspect({});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains("usage:"));
}

#endif

} // namespace
} // namespace orvanta
