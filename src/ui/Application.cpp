#include <OrvantaARFoodSDK/Application.h>

#include <OrvantaARFoodSDK/Scene.h>

#include <algorithm>

namespace orvanta::ui {

Application::~Application() {
    for (Scene* scene : scenes_) scene->application_ = nullptr;
}

Application& Application::shared() {
    static Application application;
    return application;
}

const std::vector<Scene*>& Application::connectedScenes() const { return scenes_; }

void Application::connectScene(Scene* scene) {
    scenes_.push_back(scene);
    emit connectedScenesChanged();
}

void Application::disconnectScene(Scene* scene) {
    std::erase(scenes_, scene);
    emit connectedScenesChanged();
}

} // namespace orvanta::ui
