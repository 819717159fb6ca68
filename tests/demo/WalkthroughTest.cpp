// The sample app's headless walkthrough, run as a user runs it, in the simulated room and on
// the sample camera video: every step's screenshot is there and shows what the step is about,
// the dish stands on the card in the camera's picture, and the saved photo is the captured one
// and stays out of the user's Pictures folder; a dish made to fail ends the walk at its failure
// message, even when the kit has its model cached.
#include "DishModels.h"
#include "core/TemporaryDirectory.h"
#include "support/ToolRun.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>

namespace orvanta::testing {
namespace {

// How many of the picture's pixels have a colour for which `matches` holds.
int pixelsWhere(const QImage& image, bool (*matches)(const QColor&)) {
    int count = 0;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) count += matches(rgb.pixelColor(x, y));
    return count;
}

// The pizza's tomato: strong red, little green or blue (nothing in the room is).
bool isTomato(const QColor& c) { return c.red() > 150 && c.green() < 90 && c.blue() < 90; }
int tomatoPixels(const QImage& image) { return pixelsWhere(image, isTomato); }

// Pixels of the pizza's baked crust, a texture: orange-brown (the 3D mode's background is grey).
int crustPixels(const QImage& image) {
    return pixelsWhere(image, [](const QColor& c) {
        return c.red() > 140 && c.green() > 80 && c.green() < 170 && c.blue() < 110 && c.red() - c.blue() > 70;
    });
}

// Whether the middle of the tomato's pixels lies within the box around the card's printed
// black (dark and grey, unlike the brown table): the dish stands on the card.
bool dishOnTheCard(const QImage& image) {
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    QPointF tomato;
    int tomatoes = 0;
    QRect card;
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) {
            const QColor c = rgb.pixelColor(x, y);
            if (isTomato(c)) tomato += QPointF(x, y), ++tomatoes;
            const int darkest = std::min({c.red(), c.green(), c.blue()}), brightest = std::max({c.red(), c.green(), c.blue()});
            if (brightest < 70 && brightest - darkest < 25) card |= QRect(x, y, 1, 1);
        }
    const bool cardAlone = card.width() * card.height() < rgb.width() * rgb.height() * 4 / 5; // not the whole table
    return tomatoes > 40 && cardAlone && card.contains((tomato / tomatoes).toPoint());
}

// How many of the picture's pixels differ from its first one: a blank picture has none.
int pixelsUnlikeTheFirst(const QImage& image) {
    int count = 0;
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); y += 2)
        for (int x = 0; x < image.width(); x += 2) count += image.pixel(x, y) != first;
    return count;
}

TEST(Walkthrough, EveryStepLeavesAScreenshotOfWhatItShowsAndTheSavedPhotoIsTheCapturedOne) {
    const struct {
        QStringList arguments;
        QString placed; // the step that stands the dish on the table
    } walks[] = {{{}, "03-dish-on-the-table"}, {{"--camera", "sample"}, "03-dish-on-the-card"}};
    for (const auto& walk : walks) {
        SCOPED_TRACE(walk.placed.toStdString());
        QTemporaryDir out;
        const ToolRun run = ToolRun::of(ORVANTA_DEMO, QStringList{"--headless", "--out", out.path()} + walk.arguments);
        ASSERT_EQ(run.exitCode, 0) << run.out.toStdString() << run.err.toStdString();
        EXPECT_TRUE(run.out.trimmed().endsWith("screenshots: " + QDir(out.path()).absolutePath())) << "names its folder last";

        const QStringList steps = {"01-menu", "02-dish-opened", walk.placed, "04-captured", "05-thumbnail",
                                   "06-preview", "07-saved-to-photos", "08-share-sheet", "09-copied-to-clipboard",
                                   "10-back-in-3d", "11-closed", "12-full-screen", "13-full-screen-closed"};
        for (const QString& step : steps) {
            const QImage shot(QDir(out.path()).filePath(step + ".png"));
            ASSERT_FALSE(shot.isNull()) << step.toStdString();
            EXPECT_GT(pixelsUnlikeTheFirst(shot), shot.width() * shot.height() / 40) << step.toStdString() << " is blank";
            EXPECT_TRUE(run.out.contains(QString("step %1 %2: ").arg(steps.indexOf(step) + 1).arg(step.mid(3))));
        }
        for (const QString& dishStep : {walk.placed, QString("10-back-in-3d")})
            EXPECT_GT(tomatoPixels(QImage(QDir(out.path()).filePath(dishStep + ".png"))), 40) << dishStep.toStdString();
        // The 3D mode's screenshot waits for the textures, not only for the model (untextured, the
        // crust is white: about a tenth of these pixels).
        EXPECT_GT(crustPixels(QImage(QDir(out.path()).filePath("10-back-in-3d.png"))), 5000);

        const QImage captured(QDir(out.path()).filePath("captured.png"));
        const QImage saved(QDir(out.path()).filePath("saved-photo.png"));
        ASSERT_FALSE(saved.isNull());
        EXPECT_EQ(saved.size(), captured.size());
        EXPECT_EQ(saved.convertToFormat(QImage::Format_RGB32), captured.convertToFormat(QImage::Format_RGB32));
        EXPECT_GT(tomatoPixels(saved), 40) << "the photo shows the dish";
        if (!walk.arguments.isEmpty()) {
            EXPECT_TRUE(dishOnTheCard(saved)) << "the photo shows the dish on the card";
        }
        EXPECT_EQ(QDir(out.filePath("pictures")).entryList({"*.png"}, QDir::Files).size(), 1) << "the album is beside the screenshots";
        EXPECT_TRUE(run.out.contains(QRegularExpression(
            "\nwalkthrough finished in [0-9.]+ s, of which scripted waits 5.50 s \\(the dish screen's 5 s first-load check, "
            "the thumbnail's 0.5 s animation\\)\n")))
            << run.out.toStdString();
    }
}

TEST(Walkthrough, AFailingDishEndsAtItsFailureMessageEvenWhenTheKitHasItsModelCached) {
    QTemporaryDir tmpdir, out, kitchen;
    // The last dish of the menu, below the first screenful, already in the kit's cache.
    const std::string sundae = "strawberry-sundae-v" + std::to_string(demo::DishModels::generatorVersion) + ".usdz";
    ASSERT_TRUE(demo::DishModels::ensure(kitchen.path().toStdString()).ok());
    const auto cache = core::TemporaryDirectory::privateDirectoryUnder(tmpdir.path().toStdString());
    ASSERT_TRUE(cache.ok());
    const QString cached = QDir(QString::fromStdString(cache->path())).filePath(QString::fromStdString(sundae));
    ASSERT_TRUE(QFile::copy(kitchen.filePath(QString::fromStdString(sundae)), cached));

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TMPDIR", tmpdir.path());
    const ToolRun run =
        ToolRun::of(ORVANTA_DEMO, {"--headless", "--fail", "strawberry SUNDAE", "--out", out.path()}, environment);
    ASSERT_EQ(run.exitCode, 0) << run.out.toStdString() << run.err.toStdString();
    for (const char* step : {"step 1 menu: ", "step 2 dish-opened: ", "step 3 load-failed: "})
        EXPECT_TRUE(run.out.contains(step)) << step << " missing from:\n" << run.out.toStdString();
    EXPECT_TRUE(run.out.contains(QRegularExpression(
        "\nwalkthrough finished in [0-9.]+ s, of which scripted waits 5.00 s \\(the dish screen's 5 s first-load check\\)\n")))
        << run.out.toStdString();
    const QImage failed(QDir(out.path()).filePath("03-load-failed.png"));
    ASSERT_FALSE(failed.isNull());
    EXPECT_GT(pixelsUnlikeTheFirst(failed), failed.width() * failed.height() / 40);
    EXPECT_FALSE(QFile::exists(cached)) << "the cached copy was set aside, and the cut download stored nothing";

    const ToolRun unknown = ToolRun::of(ORVANTA_DEMO, {"--headless", "--fail", "Spaghetti", "--out", out.path()}, environment);
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.err, "orvanta-demo: there is no dish called \"Spaghetti\" on the menu\n");
}

} // namespace
} // namespace orvanta::testing
