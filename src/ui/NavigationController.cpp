#include <OrvantaARFoodSDK/NavigationController.h>

#include "ui/FillParent.h"
#include "ui/Slide.h"

#include <QQuickItem>

#include <cassert>

namespace orvanta::ui {

NavigationController::NavigationController(ViewController* root, QObject* parent) : ViewController(parent) {
    if (root) pushViewController(root, false);
}

void NavigationController::pushViewController(ViewController* controller, bool animated) {
    assert(controller && controller != this);
    assert(!controller->isPlaced() && "a controller is shown in one place at a time");
    ViewController* covered = topViewController();
    controller->setParent(this);
    controller->parentController_ = this;
    stack_.push_back(controller);

    QQuickItem* entering = controller->view();
    FillParent::apply(entering, view());
    entering->setVisible(true);
    entering->forceActiveFocus();
    QPointer<QQuickItem> hidden = covered ? covered->view() : nullptr;
    auto hideCovered = [hidden] {
        if (hidden) hidden->setVisible(false);
    };
    if (animated && covered) {
        Slide::start(entering, "x", view()->width(), 0, true, hideCovered);
    } else {
        entering->setPosition(QPointF(0, 0));
        hideCovered();
    }
    emit viewControllersChanged();
}

ViewController* NavigationController::popViewController(bool animated) {
    if (stack_.size() < 2) return nullptr;
    ViewController* leaving = stack_.back();
    stack_.pop_back();
    ViewController* uncovered = stack_.back();
    uncovered->view()->setPosition(QPointF(0, 0));
    uncovered->view()->setVisible(true);
    uncovered->view()->forceActiveFocus();

    auto remove = [leaving = QPointer<ViewController>(leaving)] {
        if (leaving) leaving->deleteLater();
    };
    if (animated) {
        QQuickItem* sliding = leaving->view();
        Slide::start(sliding, "x", sliding->x(), view()->width(), false, remove);
    } else {
        leaving->view()->setVisible(false);
        remove();
    }
    emit viewControllersChanged();
    return leaving;
}

ViewController* NavigationController::topViewController() const { return stack_.empty() ? nullptr : stack_.back(); }

const std::vector<ViewController*>& NavigationController::viewControllers() const { return stack_; }

} // namespace orvanta::ui
