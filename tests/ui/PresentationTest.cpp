// Modal presentation, navigation stacks and the scene → window → controller queries.
#include "support/EventLoopWait.h"
#include "ShownWindow.h"
#include "support/LogCapture.h"
#include <OrvantaARFoodSDK/HostingController.h>
#include <OrvantaARFoodSDK/NavigationController.h>

#include <QQuickItem>

#include <gtest/gtest.h>

using namespace orvanta;
using namespace orvanta::ui;
using orvanta::testing::EventLoopWait;
using orvanta::testing::ShownWindow;

namespace {

ViewController* named(ViewController* controller, const char* name) {
    controller->setObjectName(name);
    return controller;
}

QRectF sceneRect(QQuickItem* item) { return item->mapRectToScene(QRectF(QPointF(0, 0), item->size())); }

TEST(Presentation, PlacesTheViewByStyleAndFollowsResizes) {
    using Style = ModalPresentationStyle;
    for (const auto& [style, fullHeight] : {std::pair{Style::fullScreen, true}, {Style::overFullScreen, true},
                                            {Style::pageSheet, false}, {Style::automatic, false}}) {
        SCOPED_TRACE(static_cast<int>(style));
        ShownWindow shown;
        auto* hosted = new QQuickItem;
        auto* hosting = new HostingController(std::unique_ptr<QQuickItem>(hosted));
        hosting->setModalPresentationStyle(style);
        bool completed = false;
        shown.root->present(hosting, false, [&] { completed = true; });

        EXPECT_TRUE(completed);
        EXPECT_EQ(shown.root->presentedViewController(), hosting);
        EXPECT_EQ(hosting->presentingViewController(), shown.root);
        EXPECT_EQ(hosted->window(), shown.window->quickWindow());
        for (QSize size : {QSize(400, 300), QSize(520, 360)}) {
            shown.window->quickWindow()->resize(size);
            ASSERT_TRUE(EventLoopWait::until([&] { return shown.window->quickWindow()->contentItem()->size() == size; }));
            const QRectF rect = sceneRect(hosted);
            EXPECT_EQ(rect.left(), 0);
            EXPECT_EQ(rect.width(), size.width());
            EXPECT_EQ(rect.bottom(), size.height());
            if (fullHeight)
                EXPECT_EQ(rect.top(), 0);
            else
                EXPECT_GT(rect.top(), 20) << "a page sheet leaves the presenter's top visible";
        }
    }
}

// An animated present slides up and completes at the end; a second present is then refused.
TEST(Presentation, AnimatedPresentSlidesUpAndASecondPresentIsRefusedWithAWarning) {
    ShownWindow shown;
    orvanta::testing::LogCapture log;
    ViewController* dish = named(new ViewController, "dish");
    dish->setModalPresentationStyle(ModalPresentationStyle::fullScreen);
    bool completed = false;
    shown.root->present(dish, true, [&] { completed = true; });
    EXPECT_FALSE(completed);
    EXPECT_GE(sceneRect(dish->view()).top(), 250) << "starts below the window";
    ASSERT_TRUE(EventLoopWait::until([&] { return completed; }));
    EXPECT_EQ(sceneRect(dish->view()), QRectF(0, 0, 400, 300));

    std::unique_ptr<ViewController> share(named(new ViewController, "share"));
    completed = false;
    shown.root->present(share.get(), false, [&] { completed = true; });
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Warning: root cannot present share: it already presents dish."});
    EXPECT_EQ(shown.root->presentedViewController(), dish);
    EXPECT_EQ(share->presentingViewController(), nullptr);
    EXPECT_EQ(share->parent(), nullptr);
    EXPECT_FALSE(completed);
}

TEST(Presentation, DismissFromEitherSideRemovesAndDeletesThePresented) {
    for (bool fromPresented : {false, true}) {
        for (bool animated : {false, true}) {
            SCOPED_TRACE(::testing::Message() << "from presented " << fromPresented << ", animated " << animated);
            ShownWindow shown;
            auto* presented = new ViewController;
            shown.root->present(presented, false);
            QPointer<ViewController> watched(presented);
            QPointer<QQuickItem> view(presented->view());
            bool completed = false;
            (fromPresented ? presented : shown.root)->dismiss(animated, [&] { completed = true; });

            EXPECT_EQ(shown.root->presentedViewController(), nullptr);
            EXPECT_EQ(completed, !animated);
            ASSERT_TRUE(EventLoopWait::until([&] { return completed && !watched; }));
            EXPECT_FALSE(view) << "the view goes with its controller";
            EXPECT_EQ(shown.window->quickWindow()->contentItem()->childItems(),
                      QList<QQuickItem*>{shown.root->view()});
        }
    }
}

TEST(Presentation, WithoutAWindowTheRelationIsKeptAndShownOnceThereIsOne) {
    ShownWindow shown;
    auto* host = new ViewController;
    auto* presented = new ViewController;
    bool completed = false;
    host->present(presented, true, [&] { completed = true; });

    EXPECT_EQ(host->presentedViewController(), presented);
    EXPECT_EQ(presented->view()->window(), nullptr);
    EXPECT_FALSE(completed);
    shown.window->setRootViewController(host);
    EXPECT_TRUE(completed);
    EXPECT_EQ(presented->view()->window(), shown.window->quickWindow());
    EXPECT_EQ(presented->window(), shown.window);
}

TEST(Navigation, PushPopAndTop) {
    ShownWindow shown;
    ViewController* menu = named(new ViewController, "menu");
    auto* navigation = new NavigationController(menu);
    shown.window->setRootViewController(navigation);
    EXPECT_EQ(navigation->topViewController(), menu);
    EXPECT_EQ(navigation->popViewController(true), nullptr) << "the root stays";

    ViewController* dish = named(new ViewController, "dish");
    navigation->pushViewController(dish, true);
    EXPECT_EQ(navigation->viewControllers(), (std::vector<ViewController*>{menu, dish}));
    EXPECT_EQ(navigation->topViewController(), dish);
    EXPECT_EQ(dish->parentViewController(), navigation);
    EXPECT_EQ(dish->window(), shown.window);
    ASSERT_TRUE(EventLoopWait::until([&] { return !menu->view()->isVisible(); })) << "the covered screen hides";
    EXPECT_EQ(sceneRect(dish->view()), QRectF(0, 0, 400, 300));

    QPointer<ViewController> watched(dish);
    EXPECT_EQ(navigation->popViewController(true), dish);
    EXPECT_EQ(navigation->topViewController(), menu);
    EXPECT_TRUE(menu->view()->isVisible());
    ASSERT_TRUE(EventLoopWait::until([&] { return !watched; }));
}

TEST(Navigation, AStackedScreenDismissesTheStackItIsIn) {
    ShownWindow shown;
    auto* top = new ViewController;
    auto* navigation = new NavigationController(new ViewController);
    navigation->pushViewController(top, false);
    shown.root->present(navigation, false);
    QPointer<ViewController> watched(navigation);

    EXPECT_EQ(top->presentingViewController(), shown.root);
    top->dismiss(false);
    EXPECT_EQ(shown.root->presentedViewController(), nullptr);
    ASSERT_TRUE(EventLoopWait::until([&] { return !watched; }));
}

// The queries a screen walks to find the controller to present from (the walk itself is the
// image preview's): connected scenes and a window scene's windows in order, as they come and go.
TEST(ConnectedScenes, ScenesAndWindowsComeAndGoInOrder) {
    Application application;
    {
        Scene elsewhere(application);
        WindowScene later(application);
        EXPECT_EQ(application.connectedScenes(), (std::vector<Scene*>{&elsewhere, &later}));
        EXPECT_EQ(qobject_cast<WindowScene*>(application.connectedScenes().front()), nullptr);
    }
    EXPECT_TRUE(application.connectedScenes().empty()) << "scenes disconnect when they go";

    WindowScene scene(application);
    auto* window = new Window(&scene);
    auto* second = new Window(&scene);
    EXPECT_EQ(scene.windows(), (std::vector<Window*>{window, second}));
    EXPECT_EQ(window->rootViewController(), nullptr);

    auto* root = new ViewController;
    window->setRootViewController(root);
    auto* presented = new ViewController;
    root->present(presented, false);
    auto* navigation = new NavigationController(nullptr);
    presented->present(navigation, false);
    EXPECT_EQ(navigation->topViewController(), nullptr) << "an empty stack has no top";
    auto* screen = new ViewController;
    navigation->pushViewController(screen, false);
    EXPECT_EQ(screen->window(), window);
    EXPECT_EQ(ViewController::owning(new QQuickItem(screen->view())), screen);
    EXPECT_EQ(ViewController::owning(window->quickWindow()->contentItem()), nullptr);

    QPointer<ViewController> watched(screen);
    root->dismiss(false);
    EXPECT_EQ(root->presentedViewController(), nullptr) << "dismissing takes down the whole chain above";
    EXPECT_TRUE(EventLoopWait::until([&] { return !watched; }));
    delete second;
    EXPECT_EQ(scene.windows(), std::vector<Window*>{window});
}

} // namespace
