#pragma once
// The sample host: what a restaurant's app would do to show the kit. It gets its restaurant
// (the sample one, or one read from a JSON menu, whose local model files it serves the same
// way: over a loopback server, so that the kit downloads and caches them), opens a window
// with the restaurant's name and a button "Open full screen", embeds the kit's view below
// them, and presents the kit full screen from its root controller when the button is pressed.
// Thread: main thread of a QGuiApplication.

#include "LoopbackMenuServer.h"
#include "core/Result.h"
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <OrvantaARFoodSDK/Restaurant.h>
#include <OrvantaARFoodSDK/RestaurantExperienceView.h>

#include <QObject>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSize>
#include <QString>

#include <memory>
#include <optional>

namespace orvanta::demo {

class DemoHost : public QObject {
    Q_OBJECT

public:
    struct Options {
        // Slow downloads and the failing dish's download are watched even when the kit has
        // those models cached: their cached copies are removed first.
        bool slow = false;
        QString failingDish;  // the dish whose model fails to download (case ignored); empty for none
        QString menuFile;     // a JSON menu instead of the sample restaurant
        bool clearCache = false;
        QSize windowSize{480, 800}; // fits the 1280x800 screen of the documented Xvfb
        // When the program started (ms since the epoch), for the time to the first menu frame.
        qint64 startedAtMs = 0;
    };

    DemoHost();
    ~DemoHost() override;

    // Prepares the restaurant and shows the window; an error names what could not be done.
    core::Result<bool> start(const Options& options);
    QQuickWindow& window() { return window_; }
    // The menu position of the dish whose model fails, once started with one.
    std::optional<int> failingDishIndex() const { return failingDishIndex_; }

public slots:
    // The host's button: the kit presents itself full screen over the host's root controller.
    void openFullScreen();

private:
    core::Result<Restaurant> sampleRestaurant();
    // The menu file's restaurant, its local models served by the loopback server.
    core::Result<Restaurant> menuRestaurant(const QString& menuFile);
    // Makes the server slow or one dish's model fail, as the options ask, and removes those
    // models from the kit's cache so that they are downloaded.
    core::Result<bool> serveForWatching(const Restaurant& restaurant, const Options& options);
    static core::Result<bool> clearKitCache();
    void showWindow(const Restaurant& restaurant, QSize size, qint64 startedAtMs);

    QQuickWindow window_;
    QQmlEngine engine_;
    std::unique_ptr<LoopbackMenuServer> server_;
    ui::WindowScene scene_;
    std::unique_ptr<ui::Window> uiWindow_;
    std::unique_ptr<RestaurantExperienceView> embedded_;
    std::optional<Restaurant> restaurant_;
    std::optional<int> failingDishIndex_;
};

} // namespace orvanta::demo
