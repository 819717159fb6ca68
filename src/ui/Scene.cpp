#include <OrvantaARFoodSDK/Scene.h>

namespace orvanta::ui {

Scene::Scene(Application& application, QObject* parent) : QObject(parent), application_(&application) {
    application.connectScene(this);
}

Scene::~Scene() {
    if (application_) application_->disconnectScene(this);
}

Application* Scene::application() const { return application_; }

} // namespace orvanta::ui
