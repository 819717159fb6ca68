// The kit's public entry, driven as a host and a guest would: through RestaurantSDK, and by
// mouse clicks and key presses on the window.
#include "entry/ContentViewContainer.h"
#include "render/DrawnFrames.h"
#include "render/GlSupport.h"
#include <OrvantaARFoodSDK/HostingController.h>
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <OrvantaARFoodSDK/OrvantaARParam.h>
#include <OrvantaARFoodSDK/RestaurantSDK.h>

#include <QQuickWindow>
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
    void click(QQuickItem& item) {
        QTest::mouseClick(&window_, Qt::LeftButton, {}, item.mapToScene(QPointF(item.width() / 2, item.height() / 2)).toPoint());
    }

    QQuickWindow window_;
    std::unique_ptr<RestaurantExperienceView> view_;
};

TEST_F(RestaurantExperienceTest, TheMenuFillsOnAppearanceAndCarriesTheClientIdUnread) {
    EXPECT_EQ(&RestaurantSDK::shared(), &RestaurantSDK::shared());
    const Restaurant restaurant = fourDishes();
    const OrvantaARParam param("client-7", restaurant);
    auto& view = view_ = RestaurantSDK::shared().makeRestaurantView(param.restaurant(), param.clientId());
    auto* container = qobject_cast<ContentViewContainer*>(view->container());
    ASSERT_NE(container, nullptr);
    EXPECT_EQ(view->clientId(), "client-7");
    EXPECT_EQ(container->clientId(), "client-7");
    show(*view);
    ASSERT_TRUE(eventually([&] { return container->foodVM()->foods() == restaurant.foods(); }));
    EXPECT_TRUE(container->foodVM()->rearrangedFoods().empty());
    EXPECT_FALSE(container->foodVM()->selectedFood().has_value());
    auto* grid = find(*view, "menuGrid");
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->property("count").toInt(), 4);
}

TEST_F(RestaurantExperienceTest, AClickOpensTheDishAndEscapeComesBackToTheMenu) {
    auto& view = view_ = RestaurantSDK::shared().makeRestaurantView(fourDishes(), "client");
    auto* container = qobject_cast<ContentViewContainer*>(view->container());
    show(*view);
    auto* stack = find(*view, "navigationStack");
    QQuickItem* third = nullptr;
    ASSERT_TRUE(eventually([&] { return (third = find(*view, "card2")) && third->width() > 0; }));

    click(*third);
    const auto& foods = container->foodVM()->foods();
    EXPECT_EQ(container->foodVM()->rearrangedFoods(), (std::vector<Food>{foods[2], foods[0], foods[1], foods[3]}));
    ASSERT_TRUE(eventually([&] { return stack->property("depth").toInt() == 2 && !stack->property("busy").toBool(); }));
    EXPECT_NE(find(*view, "arView"), nullptr) << "the dish screen opens in AR mode";

    // The dish screen's mode control switches to the 3D viewer.
    auto* threeD = find(*view, "mode3D");
    ASSERT_NE(threeD, nullptr);
    click(*threeD);
    ASSERT_TRUE(eventually([&] { return find(*view, "threeDViewer") != nullptr; }));

    QTest::keyClick(&window_, Qt::Key_Escape);
    ASSERT_TRUE(eventually([&] { return stack->property("depth").toInt() == 1 && !stack->property("busy").toBool(); }));
    QTest::keyClick(&window_, Qt::Key_Down); // arrow keys move through the grid, Enter opens
    QTest::keyClick(&window_, Qt::Key_Return);
    ASSERT_TRUE(eventually([&] { return stack->property("depth").toInt() == 2; }));
    EXPECT_EQ(container->foodVM()->selectedFood(), foods[2]);
}

TEST_F(RestaurantExperienceTest, TheExperiencePresentsFullScreenFromTheGivenControllerAndBackCloses) {
    ui::WindowScene scene;
    ui::Window window(&scene, &window_);
    auto* root = new ui::ViewController;
    window.setRootViewController(root); // the window owns it
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));

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

} // namespace
} // namespace orvanta
