// orvanta-render as a restaurant uses it: a picture for a good model, a clear failure for a
// bad one or one with nothing to draw, and a dish drawn on the table card of a photo.
#include "arsession/camera/TableCard.h"
#include "export/GlbWriter.h"
#include "reality/MeshResource.h"
#include "render/GlSupport.h"
#include "support/SyntheticCameraFrames.h"
#include "support/TestModels.h"
#include "support/ToolRun.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using orvanta::testing::ToolRun;

ToolRun renderTool(const QStringList& arguments) { return ToolRun::of(ORVANTA_RENDER_TOOL, arguments); }

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
        EXPECT_TRUE(run.err.contains("orvanta-render: " + model) && run.err.contains(model + reason)) << run.err.toStdString();
        EXPECT_FALSE(QFile::exists(folder.filePath("out.png")));
    }
}

TEST(RenderTool, TheViewerDrawsAtTheAskedSizeAndOnAPhotoTheDishStandsOnTheCard) {
    if (!orvanta::render::GlSupport::canCreateContext())
        GTEST_SKIP() << "no pixel test: " << orvanta::render::GlSupport::unavailableReason();
    using namespace orvanta;
    QTemporaryDir folder;
    // A red box 8 cm across (4 cm once placed at half size).
    import::ImportedScene dish;
    dish.meshes.push_back(reality::MeshResource::generateBox(0.08f)->mesh());
    import::ImportedMaterial red;
    red.baseColorFactor = QVector4D(0.8f, 0.05f, 0.05f, 1.0f);
    dish.materials.push_back(red);
    dish.meshes[0].subsets.front().material = 0;
    dish.nodes.push_back(import::ImportedNode{});
    dish.nodes[0].meshes = {0};
    const QString model = folder.filePath("dish.glb");
    ASSERT_TRUE(exporter::GlbWriter::write(dish, model.toStdString()));

    const auto card = arsession::camera::TableCard::parse(arsession::camera::TableCard::defaultText).value();
    const QSize size(800, 600);
    const auto lens = orvanta::testing::SyntheticCameraFrames::testLens(size);
    const QMatrix4x4 pose = orvanta::testing::SyntheticCameraFrames::lookingAt(0.5f, 55.0f, 25.0f);
    const QString photo = folder.filePath("table.png"), bare = folder.filePath("bare.png");
    ASSERT_TRUE(orvanta::testing::SyntheticCameraFrames(card, pose, lens).frame(1).save(photo));
    orvanta::testing::SyntheticLook noCard;
    noCard.showCard = false;
    ASSERT_TRUE(orvanta::testing::SyntheticCameraFrames(card, pose, lens, noCard).frame(1).save(bare));
    const QString calibration = folder.filePath("lens.yml");
    {
        QFile file(calibration);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        const auto& k = lens.intrinsics;
        const auto& d = lens.distortion;
        file.write(QString("%YAML:1.0\n---\nimage_width: %1\nimage_height: %2\n"
                           "camera_matrix: !!opencv-matrix\n   rows: 3\n   cols: 3\n   dt: d\n"
                           "   data: [ %3, 0., %4, 0., %5, %6, 0., 0., 1. ]\n"
                           "distortion_coefficients: !!opencv-matrix\n   rows: 1\n   cols: 5\n   dt: d\n"
                           "   data: [ %7, %8, %9, %10, %11 ]\n")
                       .arg(size.width()).arg(size.height()).arg(k.fx).arg(k.cx).arg(k.fy).arg(k.cy)
                       .arg(d[0]).arg(d[1]).arg(d[2]).arg(d[3]).arg(d[4]).toUtf8());
    }

    const QString out = folder.filePath("out.png");
    const ToolRun run = renderTool({model, out, "--ar", "--camera", photo, "--calibration", calibration});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_FALSE(run.err.contains("warning")) << run.err.toStdString();
    const QImage drawn = QImage(out).convertToFormat(QImage::Format_RGB32);
    const QImage taken = QImage(photo).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(drawn.size(), size);
    // Only the dish and its shadow change the photo, around the card's centre.
    QRect changed;
    int reds = 0;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const QRgb a = drawn.pixel(x, y), b = taken.pixel(x, y);
            if (std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b)) > 6)
                changed |= QRect(x, y, 1, 1);
            if (qRed(a) > 120 && qRed(a) > 2 * qGreen(a) && qRed(a) > 2 * qBlue(a)) ++reds;
        }
    EXPECT_GT(reds, 500) << "no dish drawn";
    EXPECT_LT(changed.width() * changed.height(), size.width() * size.height() / 10) << "the photo changed elsewhere";
    const QVector3D centre = pose.inverted().map(QVector3D(0, 0, 0));
    const QPointF cardCentre(lens.intrinsics.cx + lens.intrinsics.fx * centre.x() / -centre.z(),
                             lens.intrinsics.cy - lens.intrinsics.fy * centre.y() / -centre.z());
    EXPECT_TRUE(changed.contains(cardCentre.toPoint())) << "the dish is not on the card";

    // Both views without a photo, at the size asked for.
    for (const QStringList& view : {QStringList{}, QStringList{"--ar", "--turn", "30"}}) {
        const ToolRun viewer = renderTool(QStringList{model, out, "--size", "200x150"} + view);
        EXPECT_EQ(viewer.exitCode, 0) << viewer.err.toStdString();
        EXPECT_EQ(QImage(out).size(), QSize(200, 150));
    }

    // Without a calibration a default lens is assumed, with a warning.
    const ToolRun guessed = renderTool({model, out, "--ar", "--camera", photo, "--size", "400x300"});
    EXPECT_EQ(guessed.exitCode, 0) << guessed.err.toStdString();
    EXPECT_TRUE(guessed.err.contains("warning: no --calibration given")) << guessed.err.toStdString();
    EXPECT_EQ(QImage(out).size(), QSize(400, 300));

    // A photo without the card: nothing is written.
    QFile::remove(out);
    const ToolRun missing = renderTool({model, out, "--ar", "--camera", bare, "--calibration", calibration});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.contains("no table card found in " + bare)) << missing.err.toStdString();
    EXPECT_FALSE(QFile::exists(out));
}
} // namespace
