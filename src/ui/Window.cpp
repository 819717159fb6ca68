#include <OrvantaARFoodSDK/Window.h>

#include "ui/FillParent.h"
#include <OrvantaARFoodSDK/ViewController.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <QQuickItem>
#include <QQuickWindow>

#include <cassert>

namespace orvanta::ui {

Window::Window(WindowScene* scene, QQuickWindow* borrowed)
    : QObject(scene), scene_(scene), owned_(borrowed ? nullptr : std::make_unique<QQuickWindow>()),
      window_(borrowed ? borrowed : owned_.get()) {
    assert(scene);
    scene_->addWindow(this);
}

Window::~Window() {
    delete root_;
    scene_->removeWindow(this);
}

QQuickWindow* Window::quickWindow() const { return window_; }

WindowScene* Window::scene() const { return scene_; }

ViewController* Window::rootViewController() const { return root_; }

void Window::setRootViewController(ViewController* controller) {
    if (controller == root_) return;
    if (ViewController* old = root_) {
        FillParent::release(old->view());
        old->window_ = nullptr;
        old->deleteLater();
    }
    root_ = controller;
    if (controller) {
        assert(!controller->isPlaced() && "a controller is shown in one place at a time");
        controller->setParent(this);
        controller->window_ = this;
        QQuickItem* content = window_->contentItem();
        QQuickItem* view = controller->view();
        FillParent::apply(view, content);
        view->setPosition(QPointF(0, 0));
    }
    emit rootViewControllerChanged();
}

} // namespace orvanta::ui
