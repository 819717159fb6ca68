// Entry of the GUI tests (rendering and controllers): an application (widgets too) with OpenGL surfaces
// for Quick 3D, the main queue served by its event loop, and a real background queue.
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"

#include <QApplication>
#include <QQuick3D>
#include <QTimer>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());
    testing::InitGoogleTest(&argc, argv);
    orvanta::core::Dispatch::setMain(std::make_shared<orvanta::core::EventLoopScheduler>(&app));
    orvanta::core::Dispatch::setBackground(orvanta::core::EventLoopScheduler::withWorkerThread("background"));
    const int result = RUN_ALL_TESTS();
    // One pass through the event loop before the application goes: what the tests left for
    // later deletion (views taken out of their windows, the kit's QML engine on quitting) goes
    // while Qt still runs events.
    QTimer::singleShot(0, &app, &QCoreApplication::quit);
    app.exec();
    orvanta::core::Dispatch::setBackground(nullptr);
    orvanta::core::Dispatch::setMain(nullptr);
    return result;
}
