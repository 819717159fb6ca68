// Pictures written into the user's Pictures folder, and the PNG files behind them.
#include "support/EventLoopWait.h"
#include "support/TestModels.h"
#include "ui/PhotoAlbum.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <optional>

using namespace orvanta;
using namespace orvanta::ui;
using orvanta::testing::EventLoopWait;

namespace {

QImage picture(QColor color) {
    QImage image(32, 24, QImage::Format_ARGB32);
    image.fill(color);
    image.setPixelColor(3, 5, Qt::white);
    return image;
}

QImage decoded(const QString& path) { return QImage(path, "PNG").convertToFormat(QImage::Format_ARGB32); }

// Points the desktop's Pictures folder at <home>/Pictures, not made yet.
class PhotoAlbumTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME"}) saved_.emplace_back(name, qgetenv(name));
        qputenv("HOME", home_.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home_.filePath(".config").toLocal8Bit());
        ASSERT_EQ(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation), pictures());
    }
    void TearDown() override {
        for (const auto& [name, value] : saved_) qputenv(name, value);
    }
    QString pictures() const { return home_.filePath("Pictures"); }

    // Writes `image` into the album and waits for the report, which comes on the main thread.
    core::Result<QString> write(QImage image) {
        std::optional<core::Result<QString>> outcome;
        PhotoAlbum::writeImage(std::move(image), [&](core::Result<QString> result) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            outcome = std::move(result);
        });
        EXPECT_TRUE(EventLoopWait::until([&] { return outcome.has_value(); }));
        return outcome.value_or(core::Error("test", 0, "no report"));
    }

    QTemporaryDir home_;
    std::vector<std::pair<const char*, QByteArray>> saved_;
};

TEST_F(PhotoAlbumTest, EachPictureBecomesItsOwnDecodablePng) {
    const auto first = write(picture(Qt::red)), second = write(picture(Qt::blue));
    ASSERT_TRUE(first.ok() && second.ok());
    EXPECT_NE(first.value(), second.value());
    EXPECT_EQ(QFileInfo(first.value()).dir().path(), pictures());
    EXPECT_EQ(decoded(first.value()), picture(Qt::red));
    EXPECT_EQ(decoded(second.value()), picture(Qt::blue));
}

TEST_F(PhotoAlbumTest, FailuresAreReportedAndLeaveNoFile) {
    auto empty = write(QImage());
    ASSERT_FALSE(empty.ok());
    EXPECT_EQ(empty.error().code(), PngFile::emptyImage);
    EXPECT_FALSE(QFileInfo::exists(pictures()));

    orvanta::testing::TestModels::write(pictures().toStdString(), "");  // a file where the folder should be
    auto unusable = write(picture(Qt::red));
    ASSERT_FALSE(unusable.ok());
    EXPECT_EQ(unusable.error().domain(), "PngFileError");
    EXPECT_EQ(unusable.error().code(), PngFile::folderUnusable);
}

TEST(PngFile, ATakenNameIsNeverOverwritten) {
    QTemporaryDir folder;
    orvanta::testing::TestModels::write(folder.filePath("Dish.png").toStdString(), "an earlier picture");

    const auto second = PngFile::createUnique(picture(Qt::green), folder.path(), "Dish");
    const auto third = PngFile::createUnique(picture(Qt::green), folder.path(), "Dish");
    ASSERT_TRUE(second.ok() && third.ok());
    EXPECT_EQ(second.value(), folder.filePath("Dish 2.png"));
    EXPECT_EQ(third.value(), folder.filePath("Dish 3.png"));
    QFile earlier(folder.filePath("Dish.png"));
    ASSERT_TRUE(earlier.open(QIODevice::ReadOnly));
    EXPECT_EQ(earlier.readAll(), "an earlier picture");
}

} // namespace
