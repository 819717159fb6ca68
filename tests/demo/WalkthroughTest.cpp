// The sample app's headless walkthrough, run as a user runs it: every step's screenshot is
// there and shows what the step is about, and the saved photo is the captured one.
#include "support/ToolRun.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace orvanta::testing {
namespace {

// Pixels of the pizza's tomato: strong red, little green or blue (nothing in the room is).
int tomatoPixels(const QImage& image) {
    int count = 0;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) {
            const QColor c = rgb.pixelColor(x, y);
            count += c.red() > 150 && c.green() < 90 && c.blue() < 90;
        }
    return count;
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
    QTemporaryDir out;
    const ToolRun run = ToolRun::of(ORVANTA_DEMO, {"--headless", "--out", out.path()});
    ASSERT_EQ(run.exitCode, 0) << run.out.toStdString() << run.err.toStdString();
    EXPECT_TRUE(run.out.trimmed().endsWith("screenshots: " + QDir(out.path()).absolutePath())) << "names its folder last";

    const QStringList steps = {"01-menu", "02-dish-opened", "03-dish-on-the-table", "04-captured", "05-thumbnail",
                               "06-preview", "07-saved-to-photos", "08-share-sheet", "09-copied-to-clipboard",
                               "10-back-in-3d", "11-closed", "12-full-screen", "13-full-screen-closed"};
    for (const QString& step : steps) {
        const QImage shot(QDir(out.path()).filePath(step + ".png"));
        ASSERT_FALSE(shot.isNull()) << step.toStdString();
        EXPECT_GT(pixelsUnlikeTheFirst(shot), shot.width() * shot.height() / 40) << step.toStdString() << " is blank";
        EXPECT_TRUE(run.out.contains(QString("step %1 %2: ").arg(steps.indexOf(step) + 1).arg(step.mid(3))));
    }
    for (const char* dishStep : {"03-dish-on-the-table", "10-back-in-3d"})
        EXPECT_GT(tomatoPixels(QImage(QDir(out.path()).filePath(QString(dishStep) + ".png"))), 40) << dishStep;

    const QImage captured(QDir(out.path()).filePath("captured.png"));
    const QImage saved(QDir(out.path()).filePath("saved-photo.png"));
    ASSERT_FALSE(saved.isNull());
    EXPECT_EQ(saved.size(), captured.size());
    EXPECT_EQ(saved.convertToFormat(QImage::Format_RGB32), captured.convertToFormat(QImage::Format_RGB32));
    EXPECT_GT(tomatoPixels(saved), 40) << "the photo shows the dish";
}

} // namespace
} // namespace orvanta::testing
