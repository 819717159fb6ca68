#pragma once
// The process's application: it knows the scenes that are connected, in the order they
// connected. Scenes connect themselves when made and disconnect when destroyed. Callers that
// want "any" scene take the first, connectedScenes().front(). Tests make their own instance.
// Thread: main thread, every method.

#include <QObject>

#include <vector>

namespace orvanta::ui {

class Scene;

class Application : public QObject {
    Q_OBJECT

public:
    Application() = default;
    ~Application() override;

    // The process's instance, made on first use. Main thread.
    static Application& shared();

    // The connected scenes, oldest first. Main thread.
    const std::vector<Scene*>& connectedScenes() const;

signals:
    void connectedScenesChanged();

private:
    friend class Scene;
    void connectScene(Scene* scene);
    void disconnectScene(Scene* scene);

    std::vector<Scene*> scenes_;
};

} // namespace orvanta::ui
