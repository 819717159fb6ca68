// Pictures written into the user's Pictures folder, and the PNG files behind them.
#include "EventWait.h"
#include "ui/PhotoAlbum.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <optional>

using namespace orvanta;
using namespace orvanta::ui;
using orvanta::testing::runEventsUntil;

namespace {

QImage picture(QColor color) {
    QImage image(32, 24, QImage::Format_ARGB32);
    image.fill(color);
    image.setPixelColor(3, 5, Qt::white);
    return image;
}

// Points the desktop's Pictures folder at a folder of the test's own, not yet made.
class PhotoAlbumTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home_.isValid());
        previousConfig_ = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", home_.path().toLocal8Bit());
        QFile dirs(home_.filePath("user-dirs.dirs"));
        ASSERT_TRUE(dirs.open(QIODevice::WriteOnly));
        dirs.write("XDG_PICTURES_DIR=\"" + pictures().toLocal8Bit() + "\"\n");
        dirs.close();
        ASSERT_EQ(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation), pictures());
    }
    void TearDown() override { qputenv("XDG_CONFIG_HOME", previousConfig_); }

    QString pictures() const { return home_.filePath("Pictures"); }

    // Writes `image` into the album and waits for the report, checking it comes on the main thread.
    core::Result<QString> write(QImage image) {
        std::optional<core::Result<QString>> outcome;
        PhotoAlbum::writeImage(std::move(image), [&](core::Result<QString> result) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            outcome = std::move(result);
        });
        EXPECT_TRUE(runEventsUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(core::Error("test", 0, "no report"));
    }

    QTemporaryDir home_;
    QByteArray previousConfig_;
};

TEST_F(PhotoAlbumTest, EachPictureBecomesItsOwnDecodablePng) {
    const QImage red = picture(Qt::red), blue = picture(Qt::blue);
    const auto first = write(red);
    const auto second = write(blue);
    ASSERT_TRUE(first.ok()) << first.error().description();
    ASSERT_TRUE(second.ok()) << second.error().description();

    EXPECT_NE(first.value(), second.value());
    EXPECT_EQ(QFileInfo(first.value()).dir().path(), pictures());
    EXPECT_EQ(QImage(first.value(), "PNG").convertToFormat(QImage::Format_ARGB32), red);
    EXPECT_EQ(QImage(second.value(), "PNG").convertToFormat(QImage::Format_ARGB32), blue);
}

TEST_F(PhotoAlbumTest, FailuresAreReportedNotHidden) {
    struct Case {
        const char* name;
        QImage image;
        bool picturesIsAFile;
        PngFile::ErrorCode code;
    };
    for (const Case& c : {Case{"empty picture", QImage(), false, PngFile::emptyImage},
                          Case{"Pictures is a file", picture(Qt::red), true, PngFile::folderUnusable}}) {
        SCOPED_TRACE(c.name);
        if (c.picturesIsAFile) {
            QFile blocker(pictures());
            ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
        }
        const auto outcome = write(c.image);
        ASSERT_FALSE(outcome.ok());
        EXPECT_EQ(outcome.error().domain(), "PngFileError");
        EXPECT_EQ(outcome.error().code(), c.code);
        EXPECT_FALSE(QFileInfo(pictures()).isDir() && !QDir(pictures()).isEmpty()) << "no file was left behind";
    }
}

TEST(PngFile, ATakenNameIsNeverOverwritten) {
    QTemporaryDir folder;
    QFile earlier(folder.filePath("Dish.png"));
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
    earlier.write("an earlier picture");
    earlier.close();

    const auto second = PngFile::createUnique(picture(Qt::green), folder.path(), "Dish");
    const auto third = PngFile::createUnique(picture(Qt::green), folder.path(), "Dish");
    ASSERT_TRUE(second.ok() && third.ok());
    EXPECT_EQ(second.value(), folder.filePath("Dish 2.png"));
    EXPECT_EQ(third.value(), folder.filePath("Dish 3.png"));
    ASSERT_TRUE(earlier.open(QIODevice::ReadOnly));
    EXPECT_EQ(earlier.readAll(), "an earlier picture");
}

} // namespace
