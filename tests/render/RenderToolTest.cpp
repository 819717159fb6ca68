// orvanta-render as a restaurant uses it: a picture for a good model, a clear failure for a
// bad one or one with nothing to draw.
#include "render/GlSupport.h"
#include "support/Corpus.h"
#include "support/TestModels.h"
#include "support/ToolRun.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using orvanta::testing::ToolRun;

ToolRun renderTool(const QStringList& arguments) { return ToolRun::of(ORVANTA_RENDER_TOOL, arguments); }

TEST(RenderTool, WritesAPictureOfTheRequestedSizeInBothViews) {
    if (!orvanta::render::GlSupport::canCreateContext())
        GTEST_SKIP() << "no pixel test: " << orvanta::render::GlSupport::unavailableReason();
    ORVANTA_CORPUS_FILE(model, "glb/Box.glb");
    QTemporaryDir folder;
    for (const QStringList& extra : {QStringList{}, QStringList{"--ar", "--turn", "30"}}) {
        const QString out = folder.filePath("box.png");
        const ToolRun run = renderTool(QStringList{QString::fromStdString(model.string()), out, "--size", "200x150"} << extra);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QImage picture(out);
        EXPECT_EQ(picture.size(), QSize(200, 150));
    }
}

TEST(RenderTool, AModelThatDoesNotLoadOrHasNothingToDrawExitsWithItsReason) {
    if (!orvanta::render::GlSupport::canCreateContext())
        GTEST_SKIP() << "the tool stops earlier without OpenGL: " << orvanta::render::GlSupport::unavailableReason();
    QTemporaryDir folder;
    const QString text = folder.filePath("not-a-model.glb"), empty = folder.filePath("empty.usda");
    orvanta::testing::TestModels::write(text.toStdString(), "this is no model");
    orvanta::testing::TestModels::write(empty.toStdString(), "#usda 1.0\n");
    for (const auto& [model, reason] : {std::pair{text, QString(": not a glTF binary")}, {empty, ": no geometry to draw"}}) {
        SCOPED_TRACE(model.toStdString());
        const ToolRun run = renderTool({model, folder.filePath("out.png")});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(run.err.startsWith("orvanta-render: ") && run.err.contains(model + reason)) << run.err.toStdString();
        EXPECT_FALSE(QFile::exists(folder.filePath("out.png")));
    }
}

} // namespace
