// The kit's public entry, driven as a host and a guest would: through RestaurantSDK, and by
// mouse clicks and key presses on the window.
#include "entry/ContentViewContainer.h"
#include "render/GlSupport.h"
#include <OrvantaARFoodSDK/HostingController.h>
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <OrvantaARFoodSDK/OrvantaARParam.h>
#include <OrvantaARFoodSDK/RestaurantExperienceWidget.h>
#include <OrvantaARFoodSDK/RestaurantSDK.h>
#include "screens/ImagePreviewView.h"
#include "support/TestModels.h"
#include "ui/ActivityViewController.h"

#include <QAccessible>
#include <QDir>
#include <QFile>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTest>
#include <gtest/gtest.h>

namespace orvanta {
namespace {

Restaurant fourDishes() {
    return Restaurant("Corner", {Food("Soup", "", "http://127.0.0.1:9/soup.usdz", 4.5),
                                 Food("Cake", "", "http://127.0.0.1:9/cake.usdz", 3.0),
                                 Food("Pizza", "", "http://127.0.0.1:9/pizza.usdz", 9.999),
                                 Food("Tea", "", "http://127.0.0.1:9/tea.glb", 0)});
}

class RestaurantExperienceTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!render::GlSupport::canCreateContext()) GTEST_SKIP() << render::GlSupport::unavailableReason();
        window_.resize(400, 760);
    }
    // The view goes while it is shown, then the window, as when a host closes both at once.
    void TearDown() override { view_.reset(); }

    void show(QQuickItem& item) {
        item.setParentItem(window_.contentItem());
        item.setSize(window_.size());
        item.forceActiveFocus();
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }
    // Waits (bounded) until `done` holds, letting the window draw.
    static bool eventually(const std::function<bool()>& done) {
        return QTest::qWaitFor(done, 20000);
    }
    // The item named `name` in the visual tree under `root` (a view's delegates have no object
    // parent, so the object tree does not hold them).
    static QQuickItem* find(QQuickItem& root, const char* name) {
        for (QQuickItem* child : root.childItems()) {
            if (child->objectName() == QLatin1String(name)) return child;
            if (QQuickItem* found = find(*child, name)) return found;
        }
        return nullptr;
    }
    // A host's own controller at the root of the shown window, to present the kit from.
    ui::ViewController* hostRoot(ui::WindowScene& scene) {
        auto* root = new ui::ViewController;
        (new ui::Window(&scene, &window_))->setRootViewController(root); // the scene owns both
        window_.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
        return root;
    }
    void click(QQuickItem& item) {
        QTest::mouseClick(&window_, Qt::LeftButton, {}, item.mapToScene(QPointF(item.width() / 2, item.height() / 2)).toPoint());
    }

    // The texts shown on screen under `root`, in tree order.
    static QStringList textsShown(QQuickItem& root) {
        QStringList texts;
        for (QQuickItem* child : root.childItems()) {
            if (!child->isVisible() || child->opacity() == 0) continue;
            if (child->inherits("QQuickText")) texts << child->property("text").toString();
            texts << textsShown(*child);
        }
        return texts;
    }

    QQuickWindow window_;
    std::unique_ptr<RestaurantExperienceView> view_;
};

// The menu fills on appearance, the client id rides along unread; a click opens a dish, keys
// bring the guest back and open the next one.
TEST_F(RestaurantExperienceTest, TheMenuFillsAClickOpensTheDishAndEscapeComesBack) {
    const OrvantaARParam param("client-7", fourDishes());
    auto& view = view_ = RestaurantSDK::shared().makeRestaurantView(param.restaurant(), param.clientId());
    auto* container = qobject_cast<ContentViewContainer*>(view->container());
    ASSERT_NE(container, nullptr);
    EXPECT_EQ(view->clientId(), "client-7");
    EXPECT_EQ(container->clientId(), "client-7");
    show(*view);
    const auto& foods = container->foodVM()->foods();
    ASSERT_TRUE(eventually([&] { return foods == param.restaurant().foods(); }));
    EXPECT_TRUE(container->foodVM()->rearrangedFoods().empty());
    EXPECT_FALSE(container->foodVM()->selectedFood().has_value());
    EXPECT_EQ(find(*view, "menuGrid")->property("count").toInt(), 4);
    auto* stack = find(*view, "navigationStack");
    QQuickItem* third = nullptr;
    ASSERT_TRUE(eventually([&] { return (third = find(*view, "card2")) && third->width() > 0; }));

    click(*third);
    EXPECT_EQ(container->foodVM()->rearrangedFoods(), (std::vector<Food>{foods[2], foods[0], foods[1], foods[3]}));
    EXPECT_NE(find(*view, "arView"), nullptr) << "the dish screen opens in AR mode";

    // The mode control switches to the 3D viewer, also when tapped the moment it shows.
    QQuickItem* threeD = nullptr;
    ASSERT_TRUE(eventually([&] { return (threeD = find(*view, "mode3D")) && threeD->width() > 0; }));
    click(*threeD);
    ASSERT_TRUE(eventually([&] { return find(*view, "threeDViewer") != nullptr; }));
    EXPECT_EQ(container->foodVM()->selectedFood(), foods[2]);

    QTest::keyClick(&window_, Qt::Key_Escape);
    ASSERT_TRUE(eventually([&] { return stack->property("depth").toInt() == 1 && !stack->property("busy").toBool(); }));
    QTest::keyClick(&window_, Qt::Key_Down); // arrow keys move through the grid, Enter opens
    QTest::keyClick(&window_, Qt::Key_Return);
    ASSERT_TRUE(eventually([&] { return stack->property("depth").toInt() == 2; }));
    EXPECT_EQ(container->foodVM()->selectedFood(), foods[2]);
}

TEST_F(RestaurantExperienceTest, TheExperiencePresentsFullScreenFromTheGivenControllerAndBackCloses) {
    ui::WindowScene scene;
    auto* root = hostRoot(scene);
    RestaurantSDK::shared().startRestaurantExperience(fourDishes(), "client", root);
    auto* hosting = qobject_cast<ui::HostingController*>(root->presentedViewController());
    ASSERT_NE(hosting, nullptr);
    EXPECT_EQ(hosting->modalPresentationStyle(), ui::ModalPresentationStyle::fullScreen);
    auto* view = qobject_cast<RestaurantExperienceView*>(hosting->rootView());
    ASSERT_NE(view, nullptr);
    QQuickItem* back = nullptr;
    ASSERT_TRUE(eventually([&] {
        back = find(*view, "backButton");
        return back && view->width() == window_.width() && back->isVisible();
    }));
    QPointer<ui::HostingController> presented(hosting);
    ASSERT_TRUE(eventually([&] { return qFuzzyCompare(view->mapToScene({0, 0}).y() + 1, 1); })) << "slid into place";
    click(*back);
    ASSERT_TRUE(eventually([&] { return root->presentedViewController() == nullptr && presented.isNull(); }));
}

TEST_F(RestaurantExperienceTest, TheGuestReadsTheScreensWordsAndThePhotoShrinksToTheLowerLeft) {
    QStandardPaths::setTestModeEnabled(true);
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    QDir(pictures).removeRecursively();
    testing::TestModels::write(pictures.toStdString(), ""); // a file where the Pictures folder should be: saving fails

    for (const QSize size : {QSize(360, 640), QSize(1200, 760)}) {
        SCOPED_TRACE(size.width());
        window_.resize(size);
        view_ = RestaurantSDK::shared().makeRestaurantView(fourDishes(), "client");
        show(*view_);
        auto* stack = find(*view_, "navigationStack");
        QQuickItem* card = nullptr;
        ASSERT_TRUE(eventually([&] { return (card = find(*view_, "card0")) && card->width() > 0; }));
        for (const char* text : {"Our Menu", "Soup", "£4.50", "£3.00", "£10.00", "£0.00"})
            EXPECT_TRUE(textsShown(*view_).contains(QString::fromUtf8(text))) << text;

        click(*card);
        QQuickItem* ar = nullptr;
        ASSERT_TRUE(eventually([&] { return (ar = find(*view_, "arView")) && !stack->property("busy").toBool(); }));
        EXPECT_TRUE(textsShown(*view_).contains("Aim at Your Table / Flat Surface"));

        // The photo shows full size, then its centre settles 50 pt from the left and 100 pt
        // above the bottom.
        QObject* screen = ar->property("screen").value<QObject*>();
        QMetaObject::invokeMethod(screen, "takeScreenshot");
        QQuickItem* thumbnail = find(*view_, "thumbnail");
        ASSERT_TRUE(eventually([&] { return thumbnail->isVisible() && qFuzzyCompare(thumbnail->scale(), 0.2); }));
        const QPointF centre = thumbnail->mapToScene(QPointF(thumbnail->width() / 2, thumbnail->height() / 2));
        EXPECT_NEAR(centre.x(), 50.0, 1.0);
        EXPECT_NEAR(centre.y(), size.height() - 100.0, 1.0);

        QTest::mouseClick(&window_, Qt::LeftButton, {}, centre.toPoint());
        QQuickItem* save = nullptr;
        ASSERT_TRUE(eventually([&] { return (save = find(*view_, "saveButton")) && !stack->property("busy").toBool(); }));
        for (const char* text : {"Done", "Share", "Save to Photos"}) EXPECT_TRUE(textsShown(*view_).contains(text)) << text;

        click(*save);
        ASSERT_TRUE(eventually([&] { return textsShown(*view_).contains("The photo could not be saved to Photos."); }));
        view_.reset();
    }
    QFile::remove(pictures);
    QStandardPaths::setTestModeEnabled(false);
}

TEST_F(RestaurantExperienceTest, ScreenReadersHearEachDishOnceAsAButton) {
    QAccessible::setActive(true);
    const Restaurant pictured("Corner", {Food("Soup", "http://127.0.0.1:9/soup.png", "http://127.0.0.1:9/soup.usdz", 4.5),
                                         Food("Cake", "", "http://127.0.0.1:9/cake.usdz", 3.0)});
    view_ = RestaurantSDK::shared().makeRestaurantView(pictured, "client");
    show(*view_);
    QQuickItem* card = nullptr;
    ASSERT_TRUE(eventually([&] { return (card = find(*view_, "card1")) && card->width() > 0; }));
    for (const char* name : {"card0", "card1"}) {
        QAccessibleInterface* button = QAccessible::queryAccessibleInterface(find(*view_, name));
        ASSERT_NE(button, nullptr);
        EXPECT_EQ(button->role(), QAccessible::Button);
        EXPECT_EQ(button->text(QAccessible::Name), std::string(name) == "card0" ? "Soup, £4.50" : "Cake, £3.00");
        // Nothing inside the button is read on its own: no picture, no label, no spinner.
        EXPECT_EQ(button->childCount(), 0) << name;
    }
    // A card without a picture is only as tall as its name and price.
    EXPECT_LT(find(*view_, "card1")->height(), 100);
    EXPECT_GT(find(*view_, "card0")->height(), 150);
}

TEST_F(RestaurantExperienceTest, ShareOpensItsSheetOverTheKitInEveryWayAHostShowsIt) {
    enum class Shown { embeddedItem, widget, fullScreen };
    for (const Shown way : {Shown::embeddedItem, Shown::widget, Shown::fullScreen}) {
        SCOPED_TRACE(int(way));
        std::unique_ptr<RestaurantExperienceWidget> widget;
        std::unique_ptr<ui::WindowScene> hostScene;
        QQuickWindow* kitWindow = &window_;
        if (way == Shown::embeddedItem) {
            view_ = RestaurantSDK::shared().makeRestaurantView(fourDishes(), "client");
            show(*view_);
        } else if (way == Shown::widget) {
            widget = std::make_unique<RestaurantExperienceWidget>(RestaurantSDK::shared().makeRestaurantView(fourDishes(), "client"));
            widget->resize(400, 700);
            widget->show();
            kitWindow = widget->quickWindow();
            ASSERT_TRUE(QTest::qWaitForWindowExposed(kitWindow));
        } else {
            hostScene = std::make_unique<ui::WindowScene>();
            RestaurantSDK::shared().startRestaurantExperience(fourDishes(), "client", hostRoot(*hostScene));
        }

        ImagePreview holder;
        ImagePreviewView preview;
        preview.setImagePreview(&holder);
        preview.shareImage();
        auto* sheet = qobject_cast<ui::ActivityViewController*>(
            ImagePreviewView::getTopViewController(ui::Application::shared()));
        ASSERT_NE(sheet, nullptr) << "no share sheet";
        EXPECT_EQ(sheet->view()->window(), kitWindow);
        ASSERT_TRUE(eventually([&] { return sheet->view()->isVisible() && sheet->view()->mapToScene({0, 0}).y() < kitWindow->height(); }));

        view_.reset();
        widget.reset();
        hostScene.reset();
        EXPECT_TRUE(ui::Application::shared().connectedScenes().empty()) << "the kit's own scene goes with its view";
        window_.hide();
    }
}

} // namespace
} // namespace orvanta
