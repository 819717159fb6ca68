#include "ScreenTestSupport.h"

#include "screens/ImagePreviewView.h"
#include "support/LogCapture.h"
#include <OrvantaARFoodSDK/Application.h>
#include <OrvantaARFoodSDK/NavigationController.h>
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <QDir>
#include <QImageReader>
#include <QStandardPaths>

namespace orvanta::testing {
namespace {

class ImagePreviewViewTest : public ScreenTest {
protected:
    void SetUp() override {
        ScreenTest::SetUp();
        QStandardPaths::setTestModeEnabled(true);
        pictures_ = QDir(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
        pictures_.removeRecursively();
    }
    void TearDown() override {
        pictures_.removeRecursively();
        QStandardPaths::setTestModeEnabled(false);
        ScreenTest::TearDown();
    }
    QStringList savedPictures() const { return pictures_.entryList({"*.png"}, QDir::Files); }
    // Pictures whose writing has finished (the album writes off the main thread).
    int decodablePictures() const {
        int count = 0;
        for (const QString& name : savedPictures()) count += QImageReader(pictures_.filePath(name)).canRead() ? 1 : 0;
        return count;
    }

    QDir pictures_;
};

// Each save prints one line and writes a new picture; Done leaves the held picture, and Share
// without a controller to present from does nothing.
TEST_F(ImagePreviewViewTest, SaveWritesANewPictureEachTimeDoneAndShareLeaveItHeld) {
    ImagePreview holder;
    holder.updateImage(picture(Qt::magenta));
    ImagePreviewView preview;
    preview.setImagePreview(&holder);
    int dismissed = 0;
    QObject::connect(&preview, &ImagePreviewView::dismissRequested, [&] { ++dismissed; });
    preview.done();
    EXPECT_EQ(dismissed, 1);
    preview.shareImage(); // the process has no connected scene
    EXPECT_TRUE(ui::Application::shared().connectedScenes().empty());
    LogCapture log;
    preview.saveImageToPhotos();
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Image saved to Photos!"}) << "printed at once";
    preview.saveImageToPhotos();
    EXPECT_EQ(log.lines().size(), 2u);

    ASSERT_TRUE(main_->runUntil([&] { return decodablePictures() == 2; }, std::chrono::seconds(30)));
    for (const QString& name : savedPictures()) {
        QImage saved(pictures_.filePath(name));
        ASSERT_FALSE(saved.isNull()) << name.toStdString();
        EXPECT_EQ(saved.size(), holder.image().size());
        EXPECT_EQ(saved.pixelColor(3, 3), QColor(Qt::magenta));
    }
}

TEST_F(ImagePreviewViewTest, TheTopControllerFollowsTheFirstWindowsPresentationChain) {
    ui::Application application;
    EXPECT_EQ(ImagePreviewView::getTopViewController(application), nullptr) << "no scene";

    ui::WindowScene scene(application);
    EXPECT_EQ(ImagePreviewView::getTopViewController(application), nullptr) << "no window";
    ui::Window window(&scene);
    EXPECT_EQ(ImagePreviewView::getTopViewController(application), nullptr) << "no root controller";

    auto* root = new ui::ViewController;
    window.setRootViewController(root); // the window owns it
    EXPECT_EQ(ImagePreviewView::getTopViewController(application), root);

    auto* presented = new ui::ViewController;
    root->present(presented, false);
    auto* top = new ui::ViewController;
    auto* navigation = new ui::NavigationController(top);
    presented->present(navigation, false);
    EXPECT_EQ(ImagePreviewView::getTopViewController(application), top);

    navigation->popViewController(false); // the root of a navigation stack stays
    EXPECT_EQ(ImagePreviewView::getTopViewController(application), top);
}

} // namespace
} // namespace orvanta::testing
