// Frame sources: a still photo paced by the session clock, a folder of numbered pictures in
// numeric order, a video file through Qt Multimedia, and their failures.
#include "arsession/camera/CardLocator.h"
#include "arsession/camera/PictureFolderSource.h"
#include "arsession/camera/StillPictureSource.h"
#include "arsession/camera/VideoFileSource.h"
#include "support/EventLoopWait.h"
#include "support/SyntheticCameraFrames.h"
#include "support/TestModels.h"
#include "VideoFileWriting.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

namespace orvanta::arsession::camera {
namespace {

using orvanta::testing::SyntheticCameraFrames;

// Keeps what a source delivers: each picture's first pixel (the tests paint it to tell
// pictures apart), its time, and failures. Sources may deliver from their own threads.
class CollectingSink final : public FrameSink {
public:
    void takeFrame(const QImage& picture, double seconds) override {
        std::lock_guard lock(mutex_);
        marks.push_back(qRed(picture.pixel(0, 0)));
        times.push_back(seconds);
        last = picture.copy();
        arrived_.notify_all();
    }
    void sourceFailed(const core::Error& error) override {
        std::lock_guard lock(mutex_);
        failures.push_back(error.localizedDescription());
        arrived_.notify_all();
    }
    void waitFor(std::size_t events) {
        std::unique_lock lock(mutex_);
        arrived_.wait(lock, [&] { return marks.size() + failures.size() >= events; });
    }
    std::size_t count() {
        std::lock_guard lock(mutex_);
        return marks.size();
    }

    std::vector<int> marks;
    std::vector<double> times;
    std::vector<std::string> failures;
    QImage last;

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
};

QImage marked(int mark) {
    QImage picture(8, 8, QImage::Format_RGB32);
    picture.fill(qRgb(mark, 0, 0));
    return picture;
}

TEST(FrameSourcesTest, AStillPhotoRepeatsAtItsFrameRate) {
    StillPictureSource source(marked(7), 30.0);
    CollectingSink sink;
    source.advance(0.0); // not started: nothing
    source.start(sink);
    for (double seconds : {0.0, 0.01, 0.0334, 0.05, 0.2}) source.advance(seconds);
    EXPECT_EQ(sink.marks, (std::vector<int>{7, 7, 7}));
    EXPECT_EQ(sink.times, (std::vector<double>{0.0, 1.0 / 30, 6.0 / 30})); // the newest due picture only
    EXPECT_FALSE(StillPictureSource::open("/nonexistent/photo.png"));
}

TEST(FrameSourcesTest, AFolderPlaysItsPicturesInNumericOrderOnce) {
    QTemporaryDir dir;
    for (int n : {1, 2, 10}) ASSERT_TRUE(marked(n).save(dir.filePath(QString("frame%1.png").arg(n))));
    auto opened = PictureFolderSource::open(dir.path(), 10.0);
    ASSERT_TRUE(opened);
    PictureFolderSource& source = *opened.value();
    CollectingSink sink;
    source.start(sink);
    for (std::size_t i = 0; i < 5; ++i) {
        source.advance(0.1 * double(i)); // the fourth and fifth steps are past the end
        if (i < 3) sink.waitFor(i + 1);
    }
    EXPECT_EQ(sink.marks, (std::vector<int>{1, 2, 10}));

    // A picture that cannot be read is a failure; a folder without pictures an error.
    const QString broken = dir.filePath("frame11.png");
    orvanta::testing::TestModels::write(broken.toStdString(), "not a picture");
    PictureFolderSource withBroken(QStringList{broken}, 10.0);
    CollectingSink failing;
    withBroken.start(failing);
    withBroken.advance(0.0);
    failing.waitFor(1);
    EXPECT_EQ(failing.failures, std::vector<std::string>{"Picture " + broken.toStdString() + " cannot be read"});
    QTemporaryDir empty;
    const auto none = PictureFolderSource::open(empty.path(), 10.0);
    ASSERT_FALSE(none);
    EXPECT_EQ(none.error().localizedDescription(), "Folder " + empty.path().toStdString() + " holds no PNG or JPEG pictures");
}

TEST(FrameSourcesTest, AVideoFileDeliversItsFramesAndTheCardIsFoundInThem) {
    const TableCard card = TableCard::parse(TableCard::defaultText).value();
    const SyntheticCameraFrames scene(card, SyntheticCameraFrames::lookingAt(0.5f, 60.0f, -20.0f),
                                      SyntheticCameraFrames::testLens(QSize(640, 480)));
    QTemporaryDir dir;
    const QString path = dir.filePath("table.avi");
    std::vector<QImage> pictures;
    for (unsigned i = 0; i < 10; ++i) pictures.push_back(scene.frame(i));
    writeVideo(path, pictures, 30.0);
    VideoFileSource source(path);
    CollectingSink sink;
    source.start(sink);
    ASSERT_TRUE(testing::EventLoopWait::until([&] { return sink.count() >= 5; }));
    source.stop();
    EXPECT_TRUE(sink.failures.empty());
    CardLocator locator(card, scene.lens());
    EXPECT_TRUE(locator.locate(sink.last));

    VideoFileSource missing(dir.filePath("missing.avi"));
    CollectingSink failing;
    missing.start(failing);
    ASSERT_TRUE(testing::EventLoopWait::until([&] { return !failing.failures.empty(); }));
}

} // namespace
} // namespace orvanta::arsession::camera
