#pragma once
// A stack of controllers of which only the top one is shown, filling this controller's view.
// Pushing slides the new top in from the right, popping slides the old top out to the right
// (0.3 s each when animated). The stack owns its controllers; a popped one is deleted later.
// Stacked controllers have this controller as their parent controller, so they share its
// window and its presenter.
// Thread: main thread, every method.

#include <OrvantaARFoodSDK/ViewController.h>

#include <vector>

namespace orvanta::ui {

class NavigationController : public ViewController {
    Q_OBJECT

public:
    // A stack holding `root` (none when null). Main thread.
    explicit NavigationController(ViewController* root, QObject* parent = nullptr);

    // Puts `controller` (not placed anywhere yet) on top and takes ownership of it. Main thread.
    void pushViewController(ViewController* controller, bool animated);
    // Takes the top controller off unless it is the only one (then returns null). The returned
    // controller is deleted later (deleteLater), once its slide has ended. Main thread.
    ViewController* popViewController(bool animated);

    // The controller on top, or null when the stack is empty. Main thread.
    ViewController* topViewController() const;
    // Bottom first. Main thread.
    const std::vector<ViewController*>& viewControllers() const;

signals:
    void viewControllersChanged();

private:
    std::vector<ViewController*> stack_;
};

} // namespace orvanta::ui
