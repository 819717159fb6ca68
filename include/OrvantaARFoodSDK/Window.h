#pragma once
// A window of a window scene: a Qt Quick window, made and owned here or borrowed from the host
// (a host that already shows a window hands it in). Its root controller's view fills the
// window's content and follows its resizes; what controllers present goes over it.
// Thread: main thread, every method.

#include <QObject>
#include <QPointer>

#include <memory>

class QQuickWindow;

namespace orvanta::ui {

class ViewController;
class WindowScene;

class Window : public QObject {
    Q_OBJECT

public:
    // Joins the end of `scene`'s window list; the scene owns this window from now on. Makes
    // its own Qt window when `borrowed` is null; a borrowed one stays the host's. Main thread.
    explicit Window(WindowScene* scene, QQuickWindow* borrowed = nullptr);
    // Leaves the scene's list; deletes the root controller, then an own Qt window.
    ~Window() override;

    // Null only when a borrowed window was destroyed by its owner. Main thread.
    QQuickWindow* quickWindow() const;
    // The scene this window belongs to. Main thread.
    WindowScene* scene() const;

    // Null until set. Main thread.
    ViewController* rootViewController() const;
    // Takes ownership of `controller` (placed nowhere yet; null for none) and shows its view
    // under anything presented; the previous root leaves the window and is deleted later.
    // Main thread.
    void setRootViewController(ViewController* controller);

signals:
    void rootViewControllerChanged();

private:
    WindowScene* scene_;
    std::unique_ptr<QQuickWindow> owned_;
    QPointer<QQuickWindow> window_;
    QPointer<ViewController> root_;
};

} // namespace orvanta::ui
