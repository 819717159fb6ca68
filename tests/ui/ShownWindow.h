#pragma once
// A window scene of a test's own application with one shown window whose root controller is
// a plain controller named "root".

#include "support/EventLoopWait.h"
#include <OrvantaARFoodSDK/Application.h>
#include <OrvantaARFoodSDK/ViewController.h>
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <QQuickWindow>

#include <memory>

namespace orvanta::testing {

struct ShownWindow {
    explicit ShownWindow(QSize size = QSize(400, 300)) {
        window->quickWindow()->resize(size);
        window->quickWindow()->show();
        root->setObjectName("root");
        window->setRootViewController(root);
        window->quickWindow()->requestActivate();
        EventLoopWait::until([this] { return window->quickWindow()->isExposed(); });
    }

    ui::Application application;
    std::unique_ptr<ui::WindowScene> scene = std::make_unique<ui::WindowScene>(application);
    ui::Window* window = new ui::Window(scene.get());
    ui::ViewController* root = new ui::ViewController;
};

} // namespace orvanta::testing
