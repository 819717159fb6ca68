// The sample app and the command-line tools as a newcomer first meets them: every program
// answers --help and --version anywhere, and the programs that draw say so when there is no
// display or OpenGL context, instead of aborting; so does the sample app asked for a camera
// the machine does not have.
#include "support/ToolRun.h"

#include <QCameraDevice>
#include <QMediaDevices>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace orvanta::testing {
namespace {

struct Program {
    const char* name;
    const char* path;
};

constexpr Program programs[] = {{"orvanta-demo", ORVANTA_DEMO},
                                {"orvanta-inspect", ORVANTA_INSPECT_TOOL},
                                {"orvanta-convert", ORVANTA_CONVERT_TOOL},
                                {"orvanta-render", ORVANTA_RENDER_TOOL}};

TEST(CommandLine, EveryProgramAnswersHelpAndVersionWithoutADisplay) {
    for (const Program& program : programs) {
        SCOPED_TRACE(program.name);
        const ToolRun help = ToolRun::of(program.path, {"--help"}, ToolRun::withoutDisplay());
        EXPECT_EQ(help.exitCode, 0) << help.err.toStdString();
        EXPECT_TRUE(help.out.contains(QString("Usage: ") + program.path)) << help.out.toStdString();
        EXPECT_TRUE(help.out.contains("--version")) << help.out.toStdString();
        const ToolRun version = ToolRun::of(program.path, {"--version"}, ToolRun::withoutDisplay());
        EXPECT_EQ(version.exitCode, 0) << version.err.toStdString();
        EXPECT_EQ(version.out, QString("%1 %2\n").arg(program.name, ORVANTA_VERSION));
    }
}

TEST(CommandLine, ProgramsThatCannotRunSayWhyAndExit1) {
    QTemporaryDir folder;
    constexpr const char* noDisplay = ": no display or OpenGL context is available: ";
    constexpr const char* noCamera =
        "orvanta-demo: this machine has no camera (--camera sample plays the sample video of a table card)\n";
    const struct {
        const char* path;
        QStringList arguments;
        const char* says;
    } runs[] = {
        {ORVANTA_DEMO, {}, noDisplay},
        {ORVANTA_DEMO, {"--headless", "--out", folder.path()}, noDisplay},
        {ORVANTA_RENDER_TOOL, {folder.filePath("dish.glb"), folder.filePath("dish.png")}, noDisplay},
        {ORVANTA_DEMO, {"--camera"}, noCamera},
        {ORVANTA_DEMO, {"--headless", "--camera", "/dev/video0", "--out", folder.path()}, noCamera},
    };
    const bool machineHasACamera = !QMediaDevices::videoInputs().isEmpty();
    for (const auto& run : runs) {
        SCOPED_TRACE(run.path + (" " + run.arguments.join(' ')).toStdString());
        if (run.says == noCamera && machineHasACamera) continue;
        const ToolRun result = ToolRun::of(run.path, run.arguments, ToolRun::withoutDisplay());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.contains(run.says)) << result.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(folder.filePath("dish.png")));
}

} // namespace
} // namespace orvanta::testing
