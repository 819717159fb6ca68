#pragma once
// A scene that shows windows: it holds its windows in the order they were made and owns them.
// Thread: main thread, every method.

#include <OrvantaARFoodSDK/Scene.h>

#include <vector>

namespace orvanta::ui {

class Window;

class WindowScene : public Scene {
    Q_OBJECT

public:
    // Connects to `application`, with no windows yet. Main thread.
    explicit WindowScene(Application& application = Application::shared(), QObject* parent = nullptr);
    // Deletes its windows.
    ~WindowScene() override;

    // Oldest first. Main thread.
    const std::vector<Window*>& windows() const;

signals:
    void windowsChanged();

private:
    friend class Window;
    void addWindow(Window* window);
    void removeWindow(Window* window);

    std::vector<Window*> windows_;
};

} // namespace orvanta::ui
