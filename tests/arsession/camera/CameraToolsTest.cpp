// The camera tools: the printed card is found at its true size, and a calibration from
// views of a card gives back the lens they were taken through.
#include "arsession/camera/CameraCalibration.h"
#include "arsession/camera/CardLocator.h"
#include "arsession/camera/TableCard.h"
#include "support/SyntheticCameraFrames.h"
#include "support/ToolRun.h"
#include "VideoFileWriting.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace orvanta::arsession::camera {
namespace {

using testing::SyntheticCameraFrames;
using testing::ToolRun;

// What a tool says when it refuses: its exit code and a piece of what it printed.
struct Refusal {
    QStringList arguments;
    int exitCode;
    const char* message;
};

void expectRefusals(const QString& tool, const QString& output, const std::vector<Refusal>& refusals,
                    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    for (const Refusal& r : refusals) {
        SCOPED_TRACE(r.arguments.join(' ').toStdString());
        const ToolRun run = ToolRun::of(tool, QStringList{output} + r.arguments, environment);
        EXPECT_EQ(run.exitCode, r.exitCode);
        EXPECT_TRUE((run.err + run.out).contains(r.message)) << (run.err + run.out).toStdString();
    }
}

struct PrintCase {
    const char* card;
    const char* file;
    QStringList arguments;
};

// The page as a picture and its pixels per metre: the PNG itself, or the PDF rasterised.
std::pair<QImage, double> pagePicture(const QTemporaryDir& dir, const QString& file) {
    if (file.endsWith(".png")) return {QImage(dir.filePath(file)), 300.0 / 0.0254};
    constexpr int dpi = 300;
    const ToolRun raster = ToolRun::of("pdftoppm", {"-r", QString::number(dpi), "-png", "-singlefile",
                                                    dir.filePath(file), dir.filePath("raster")});
    EXPECT_EQ(raster.exitCode, 0) << raster.err.toStdString();
    return {QImage(dir.filePath("raster.png")), dpi / 0.0254};
}

TEST(CameraToolsTest, PrintedCardIsFoundAtItsTrueSize) {
    const std::vector<PrintCase> cases = {
        {TableCard::defaultText, "card.pdf", {"--title", "Table 12"}},
        {TableCard::defaultText, "card.png", {"--page", "Letter"}},
        {"aruco:DICT_4X4_50:7:0.12", "card.png", {}},
        {"qr:0.1", "card.pdf", {"--text", "https://menu.example/table/12"}},
    };
    for (const PrintCase& c : cases) {
        SCOPED_TRACE(std::string(c.card) + " " + c.file);
        const QTemporaryDir dir;
        const ToolRun run = ToolRun::of(ORVANTA_CARD_TOOL, QStringList{dir.filePath(c.file), "--card", c.card} + c.arguments);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const auto [page, pixelsPerMetre] = pagePicture(dir, c.file);
        ASSERT_FALSE(page.isNull());
        if (QString(c.file).endsWith(".png")) {
            EXPECT_NEAR(page.dotsPerMeterX(), pixelsPerMetre, 1.0);
        }

        // A camera straight above the page sees the card's metres at f / height pixels each;
        // the locator takes the card to be its requested size, so a card printed at another
        // size shows up as another height.
        CameraCalibration lens;
        const float focal = 1000.0f;
        lens.intrinsics = {focal, focal, (page.width() - 1) * 0.5f, (page.height() - 1) * 0.5f};
        lens.imageSize = page.size();
        const TableCard card = TableCard::parse(c.card).value();
        CardLocator locator(card, lens);
        const auto sighting = locator.locate(page);
        ASSERT_TRUE(sighting) << "the card is not found on the page";
        const double height = sighting->cameraTransform.column(3).y();
        const double measuredOverRequested = focal / (height * pixelsPerMetre);
        EXPECT_NEAR(measuredOverRequested, 1.0, 0.01);
    }
}

TEST(CameraToolsTest, CardToolRefusesWhatItCannotPrint) {
    const QTemporaryDir dir;
    expectRefusals(ORVANTA_CARD_TOOL, dir.filePath("card.pdf"),
                   {{{"--card", "charuco:5x7:0.04:0.02:DICT_6X6_250"}, 1,
                     "does not fit on A4: it is 26 mm too wide and 37.9 mm too tall"},
                    {{"--card", "qr:0.1"}, 2, "a qr: card needs --text"},
                    {{"--page", "A3"}, 2, "--page takes A4 or Letter"},
                    {{"--version"}, 0, "0.1.0"}});
}

// Views of the default card through `lens`, as careful calibration photos are taken (even
// light, sharp, little noise; uneven light and blur in the synthetic pictures move the fitted
// principal point by 3 to 4 px): from all around, tilted 35° to 56°, near and far,
// the camera rolled (tilts about one picture axis only would leave the principal point
// unsettled along the other), the card in every part of the picture.
std::vector<QImage> calibrationViews(const CameraCalibration& lens, int count) {
    const TableCard card = TableCard::parse(TableCard::defaultText).value();
    std::vector<QImage> views;
    for (int i = 0; i < count; ++i) {
        const float azimuth = 360.0f * float(i) / float(count);
        const float elevation = 35.0f + 7.0f * float(i % 4);
        const float distance = 0.3f + 0.04f * float(i % 3);
        // Looking past the card's centre puts the card off the picture's centre.
        const float a = azimuth * float(M_PI) / 180.0f + 1.3f;
        const QVector3D aside(0.07f * std::cos(a), 0.0f, 0.07f * std::sin(a));
        QMatrix4x4 camera = SyntheticCameraFrames::lookingAt(distance, elevation, azimuth, aside);
        camera.rotate(float((i * 53) % 180 - 90), 0.0f, 0.0f, 1.0f);
        views.push_back(SyntheticCameraFrames(card, camera, lens, {.noise = 0.5, .blur = 0.0, .unevenLight = 0.0}).frame(unsigned(i)));
    }
    return views;
}

TEST(CameraToolsTest, CalibrationGivesBackTheLensOfTheViews) {
    // The test lens's radial distortion; its tangential terms trade against the principal point
    // in OpenCV's fit by a few pixels.
    CameraCalibration truth = SyntheticCameraFrames::testLens(QSize(800, 600));
    truth.distortion[2] = truth.distortion[3] = 0.0;
    const std::vector<QImage> views = calibrationViews(truth, 20);
    const QTemporaryDir dir;
    QDir().mkpath(dir.filePath("photos"));
    for (std::size_t i = 0; i < views.size(); ++i)
        ASSERT_TRUE(views[i].save(dir.filePath(QString("photos/view%1.png").arg(i, 2, 10, QChar('0')))));
    // A picture of the table without the card is passed over.
    SyntheticCameraFrames(TableCard::parse(TableCard::defaultText).value(), SyntheticCameraFrames::lookingAt(0.4f, 60, 0),
                          truth, {.showCard = false})
        .frame(0)
        .save(dir.filePath("photos/empty.png"));
    writeVideo(dir.filePath("views.avi"), views, 10.0);

    for (const QStringList& source : {QStringList{"--photos", dir.filePath("photos")},
                                      QStringList{"--video", dir.filePath("views.avi")}}) {
        SCOPED_TRACE(source.join(' ').toStdString());
        const QString output = dir.filePath("lens.yml");
        const ToolRun run = ToolRun::of(ORVANTA_CALIBRATE_TOOL, QStringList{output} + source);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        EXPECT_TRUE(run.out.contains("20 of ")) << run.out.toStdString();
        const auto lens = CameraCalibration::load(output);
        ASSERT_TRUE(lens) << lens.error().localizedDescription();
        EXPECT_EQ(lens->imageSize, truth.imageSize);
        EXPECT_NEAR(lens->intrinsics.fx / truth.intrinsics.fx, 1.0, 0.01);
        EXPECT_NEAR(lens->intrinsics.fy / truth.intrinsics.fy, 1.0, 0.01);
        EXPECT_NEAR(lens->intrinsics.cx, truth.intrinsics.cx, 2.0);
        EXPECT_NEAR(lens->intrinsics.cy, truth.intrinsics.cy, 2.0);
    }
}

TEST(CameraToolsTest, CalibrationRefusesWithoutEnoughToGoOn) {
    const QTemporaryDir dir;
    QDir().mkpath(dir.filePath("few"));
    const std::vector<QImage> views = calibrationViews(SyntheticCameraFrames::testLens(QSize(640, 480)), 3);
    for (std::size_t i = 0; i < views.size(); ++i) views[i].save(dir.filePath(QString("few/%1.png").arg(i)));
    // Without a screen the camera path still runs; this machine has no camera.
    QProcessEnvironment offscreen = QProcessEnvironment::systemEnvironment();
    offscreen.insert("QT_QPA_PLATFORM", "offscreen");
    expectRefusals(ORVANTA_CALIBRATE_TOOL, dir.filePath("lens.yml"),
                   {{{"--photos", dir.filePath("few")}, 1, "only 3 usable views of the card (at least 5 are needed)"},
                    {{"--camera"}, 1, "No camera is available. Connect a camera, or calibrate from photos"},
                    {{"--photos", dir.filePath("few"), "--card", "qr:0.1"}, 2, "calibration needs a charuco: card"},
                    {{"--photos", dir.filePath("few"), "--camera"}, 2, "give one of --camera [DEVICE], --photos DIR or --video FILE"}},
                   offscreen);
}

} // namespace
} // namespace orvanta::arsession::camera
