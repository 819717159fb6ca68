// Timed harness for the kit's screens under Xvfb, on the sample restaurant served from
// loopback (warm caches: every model and picture is fetched once before timing):
//   - makeRestaurantView to the first drawn frame of the menu with its eight dishes;
//   - a tap on a cached dish in the dish screen's strip, in 3D mode, to the first drawn frame
//     that shows its model with its textures.
// Prints the median, fastest and slowest of the timed runs in milliseconds.
#include "LoopbackMenuServer.h"
#include "SampleRestaurant.h"
#include "WindowItems.h"

#include <OrvantaARFoodSDK/RestaurantSDK.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuick3D>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace orvanta;

namespace {

constexpr int kRuns = 9;

void report(const char* what, std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    std::printf("%-58s median %7.1f ms  (fastest %.1f, slowest %.1f, %zu runs)\n", what, ms[ms.size() / 2], ms.front(),
                ms.back(), ms.size());
    std::fflush(stdout);
}

// Waits for the next frame the window draws; false after 20 s.
bool nextFrame(QQuickWindow& window) {
    bool drawn = false;
    const auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped, [&] { drawn = true; });
    window.update();
    const bool ok = QTest::qWaitFor([&] { return drawn; }, 20000);
    QObject::disconnect(connection);
    return ok;
}

QQuickItem* item(QQuickWindow& window, const char* name) {
    return demo::WindowItems::find(window.contentItem(), QString::fromLatin1(name));
}

void click(QQuickWindow& window, QQuickItem* target) {
    QTest::mouseClick(&window, Qt::LeftButton, {}, target->mapToScene({target->width() / 2, target->height() / 2}).toPoint());
}

// makeRestaurantView to the first frame that draws the filled grid.
double menuFirstFrame(QQuickWindow& window, const Restaurant& restaurant) {
    QElapsedTimer clock;
    clock.start();
    auto view = RestaurantSDK::shared().makeRestaurantView(restaurant, "bench");
    view->setParentItem(window.contentItem());
    view->setSize(window.size());
    const bool drawn = QTest::qWaitFor([&] {
        QQuickItem* last = item(window, "card7");
        return last && last->isVisible() && nextFrame(window);
    }, 20000);
    if (!drawn) std::fprintf(stderr, "the menu's grid was not drawn within 20 s\n");
    const double ms = clock.nsecsElapsed() / 1e6;
    view.reset();
    nextFrame(window);
    return ms;
}

} // namespace

int main(int argc, char** argv) {
    // Frames are drawn on the main thread, so each timing ends at a frame the timer saw drawn.
    if (qEnvironmentVariableIsEmpty("QSG_RENDER_LOOP")) qputenv("QSG_RENDER_LOOP", "basic");
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());
    auto folder = demo::SampleRestaurant::prepare(QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    if (!folder) {
        std::fprintf(stderr, "%s\n", folder.error().localizedDescription().c_str());
        return 1;
    }
    demo::LoopbackMenuServer server(folder.value());
    const auto base = server.start();
    if (!base) return 1;
    const Restaurant restaurant = demo::SampleRestaurant::restaurant(base.value());

    QQuickWindow window;
    window.resize(480, 900);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) return 1;

    std::vector<double> menu;
    for (int run = 0; run <= kRuns; ++run) {
        const double ms = menuFirstFrame(window, restaurant);
        if (run > 0) menu.push_back(ms); // the first run warms the caches
    }
    report("makeRestaurantView to the first drawn menu frame (8 dishes)", menu);

    // The dish screen in 3D mode, every model fetched once.
    auto view = RestaurantSDK::shared().makeRestaurantView(restaurant, "bench");
    view->setParentItem(window.contentItem());
    view->setSize(window.size());
    // Waits for a control and clicks it; false when it never shows.
    const auto clickWhenShown = [&](const char* name) {
        if (!QTest::qWaitFor([&] { return item(window, name) && item(window, name)->width() > 0; }, 20000)) return false;
        QTest::qWait(500); // the stack's slide has ended
        click(window, item(window, name));
        return true;
    };
    if (!clickWhenShown("card0") || !clickWhenShown("mode3D") ||
        !QTest::qWaitFor([&] { return item(window, "threeDViewer") != nullptr; }, 20000)) {
        std::fprintf(stderr, "the dish screen did not open in 3D mode\n");
        return 1;
    }
    const auto shownWithTextures = [&] {
        QQuickItem* viewer = item(window, "threeDViewer");
        if (!viewer) return false;
        QObject* screen = viewer->property("screen").value<QObject*>();
        return screen->property("isModelLoaded").toBool() && !screen->property("showsProgress").toBool() &&
               viewer->property("texturesReady").toBool();
    };
    // The dishes whose tiles the strip shows without scrolling at this width.
    constexpr int kTiles = 4;
    std::vector<double> taps;
    for (int run = 0; run < 2 * kTiles + kRuns; ++run) {
        const QString tile = QString("tile%1").arg(run % kTiles);
        QQuickItem* target = item(window, tile.toLatin1().constData());
        if (!target) {
            std::fprintf(stderr, "no %s in the dish strip\n", qPrintable(tile));
            return 1;
        }
        QElapsedTimer clock;
        clock.start();
        click(window, target); // the tap starts the load at once: the model is not shown now
        if (!QTest::qWaitFor([&] { return shownWithTextures() && nextFrame(window); }, 20000)) {
            std::fprintf(stderr, "%s was not shown within 20 s\n", qPrintable(tile));
            return 1;
        }
        if (run >= 2 * kTiles) taps.push_back(clock.nsecsElapsed() / 1e6); // two rounds warm every dish
    }
    report("tap on a cached dish to its first drawn frame in 3D mode", taps);
    view.reset();
    // Quitting through the event loop lets the kit's QML engine go while events still run.
    QTimer::singleShot(0, &app, &QCoreApplication::quit);
    return app.exec();
}
