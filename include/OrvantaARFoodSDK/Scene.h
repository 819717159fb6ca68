#pragma once
// A connected scene of the application: one instance of the app's interface. It connects to
// its application when made and disconnects when destroyed. This base kind holds no windows
// (a scene shown elsewhere, such as on an external display); WindowScene does.
// Thread: main thread, every method.

#include <OrvantaARFoodSDK/Application.h>

#include <QObject>

namespace orvanta::ui {


class Scene : public QObject {
    Q_OBJECT

public:
    // Connects to `application`. Main thread.
    explicit Scene(Application& application = Application::shared(), QObject* parent = nullptr);
    ~Scene() override;

    // The application this scene is connected to, or null once that is gone. Main thread.
    Application* application() const;

private:
    friend class Application;
    Application* application_;
};

} // namespace orvanta::ui
