#include <OrvantaARFoodSDK/WindowScene.h>

#include <OrvantaARFoodSDK/Window.h>

#include <algorithm>

namespace orvanta::ui {

WindowScene::WindowScene(Application& application, QObject* parent) : Scene(application, parent) {}

WindowScene::~WindowScene() {
    // Before the list goes away: each window leaves it as it is deleted.
    while (!windows_.empty()) delete windows_.back();
}

const std::vector<Window*>& WindowScene::windows() const { return windows_; }

void WindowScene::addWindow(Window* window) {
    windows_.push_back(window);
    emit windowsChanged();
}

void WindowScene::removeWindow(Window* window) {
    std::erase(windows_, window);
    emit windowsChanged();
}

} // namespace orvanta::ui
