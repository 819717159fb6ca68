// orvanta-render as a restaurant uses it: a picture for a good model, a clear failure for a
// bad one.
#include "render/GlSupport.h"
#include "support/Corpus.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct ToolRun {
    int status = -1;
    QString errors;
};

ToolRun renderTool(const QStringList& arguments) {
    QProcess process;
    process.start(ORVANTA_RENDER_TOOL, arguments);
    process.waitForFinished(120000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

TEST(RenderTool, WritesAPictureOfTheRequestedSizeInBothViews) {
    if (!orvanta::render::GlSupport::canCreateContext())
        GTEST_SKIP() << "no pixel test: " << orvanta::render::GlSupport::unavailableReason();
    ORVANTA_CORPUS_FILE(model, "glb/Box.glb");
    QTemporaryDir folder;
    for (const QStringList& extra : {QStringList{}, QStringList{"--ar", "--turn", "30"}}) {
        const QString out = folder.filePath("box.png");
        const ToolRun run = renderTool(QStringList{QString::fromStdString(model.string()), out, "--size", "200x150"} << extra);
        ASSERT_EQ(run.status, 0) << run.errors.toStdString();
        const QImage picture(out);
        EXPECT_EQ(picture.size(), QSize(200, 150));
    }
}

TEST(RenderTool, AModelThatDoesNotLoadExitsWithItsError) {
    QTemporaryDir folder;
    const QString bad = folder.filePath("not-a-model.glb");
    QFile file(bad);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("this is no model");
    file.close();
    const ToolRun run = renderTool({bad, folder.filePath("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.errors.contains("orvanta-render:")) << run.errors.toStdString();
    EXPECT_FALSE(QFile::exists(folder.filePath("out.png")));
}
