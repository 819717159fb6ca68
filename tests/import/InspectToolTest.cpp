// The orvanta-inspect command-line tool, run as a separate process on a GLB written here
// and on files that are no model.
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

TEST(InspectToolTest, PrintsWhatEachModelHoldsAndFailsOnFilesThatAreNone) {
    QTemporaryDir dir;
    const QString glb = dir.filePath("three.glb"), page = dir.filePath("page.usdz"), absent = dir.filePath("absent.glb");
    testing::TestModels::write(glb.toStdString(), testing::TestModels::glbWithNodes(3));
    testing::TestModels::write(page.toStdString(), "<html><body>Not found</body></html>\n");

    const ToolRun run = inspect({glb});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
    EXPECT_TRUE(run.out.startsWith(glb + "\n"));
    // Three nodes under a root, each drawing the same 0.1 m triangle 1 m further along X.
    for (const char* line : {"  format: glb\n", "  nodes: 4\n", "  meshes: 1\n", "  vertices: 3\n", "  triangles: 1\n",
                             "  materials: 1\n", "  textures: 0\n", "  meshes with vertex colours: 0\n", "    alpha: opaque\n",
                             "  bounds (m): min (0, 0, 0) max (2.1, 0.1, 0) size (2.1, 0.1, 0)\n"})
        EXPECT_TRUE(run.out.contains(line)) << line << " missing from:\n" << run.out.toStdString();
    EXPECT_TRUE(run.out.contains(QRegularExpression("  load time: [0-9]+\\.[0-9]{3} ms\n")));
    EXPECT_TRUE(run.out.contains(QRegularExpression("  material 0 \"[^\"]*\":\n    base colour: \\([0-9., ]+\\)\n")));

    const ToolRun bad = inspect({page});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_TRUE(bad.out.isEmpty()) << bad.out.toStdString();
    EXPECT_EQ(bad.err, page + ": error: domain ModelImportError, code 2: Not a model file: " + page + "\n");
    // One bad file among good ones: the good ones are still reported.
    const ToolRun mixed = inspect({glb, page, absent});
    EXPECT_EQ(mixed.exitCode, 1);
    EXPECT_TRUE(mixed.out.contains("  vertices: 3\n"));
    EXPECT_TRUE(mixed.err.contains(page + ": error: domain ModelImportError, code 2:"));
    EXPECT_TRUE(mixed.err.contains(absent + ": error: domain ModelImportError, code 1:"));

    const ToolRun usage = inspect({});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_TRUE(usage.err.contains("usage:"));
}

#endif

} // namespace
} // namespace orvanta
