#include "render/DrawnFrames.h"

#include <QEventLoop>
#include <QQuickWindow>
#include <QTimer>

namespace orvanta::render {

namespace {

// Frames drawn after the condition held: the state that met it reaches the screen within two,
// and the views' progressive antialiasing smooths a still picture over the next few.
constexpr int kSettlingFrames = 6;

} // namespace

bool DrawnFrames::waitUntil(QQuickWindow& window, const std::function<bool()>& ready, double timeoutSeconds) {
    QEventLoop loop;
    int framesAfterReady = -1;
    bool drawn = false;
    const auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, [&] {
        if (framesAfterReady < 0 && ready()) framesAfterReady = 0;
        if (framesAfterReady >= 0 && ++framesAfterReady > kSettlingFrames) {
            drawn = true;
            loop.quit();
            return;
        }
        window.update();
    }, Qt::QueuedConnection);
    QTimer::singleShot(int(timeoutSeconds * 1000), &loop, &QEventLoop::quit);
    window.update();
    loop.exec();
    QObject::disconnect(connection);
    return drawn;
}

} // namespace orvanta::render
