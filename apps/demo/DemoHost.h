#pragma once
// The sample host: what a restaurant's app would do to show the kit. It gets its restaurant
// (the sample one, or one read from a JSON menu, whose local model files it serves the same
// way: over a loopback server, so that the kit downloads and caches them), opens a window
// with the restaurant's name and a button "Open full screen", embeds the kit's view below
// them, and presents the kit full screen from its root controller when the button is pressed.
// Its AR source is the kit's simulated room, or a camera, a video file, a folder of pictures
// or the sample video of a table card (made on first use, SampleTableVideo).
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
        // The AR source: none for the simulated room; otherwise a camera id (empty for the
        // default camera), a video file, a folder of numbered pictures or `sampleVideo`.
        std::optional<QString> camera;
        QString tableCard;       // the card the camera looks for; empty for the kit's default
        QString calibrationFile; // the camera's lens; empty for the lens the kit assumes
        QSize windowSize{480, 800}; // fits the 1280x800 screen of the documented Xvfb
        // When the program started (ms since the epoch), for the time to the first menu frame.
        qint64 startedAtMs = 0;
    };

    // The `camera` option's value that plays the sample video.
    static constexpr const char* sampleVideo = "sample";

    // Whether `camera` (see Options) can be filmed from: a file, a folder, the sample video or
    // a camera this machine has. Cheap: it opens nothing.
    static core::Result<bool> checkCamera(const QString& camera);

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
    static QString cacheRoot();
    core::Result<Restaurant> sampleRestaurant();
    // The menu file's restaurant, its local models served by the loopback server.
    core::Result<Restaurant> menuRestaurant(const QString& menuFile);
    // Makes the server slow or one dish's model fail, as the options ask, and removes those
    // models from the kit's cache so that they are downloaded.
    core::Result<bool> serveForWatching(const Restaurant& restaurant, const Options& options);
    static core::Result<bool> clearKitCache();
    // Makes the options' camera the kit's AR source (writing the sample video if needed).
    static core::Result<bool> useCamera(const Options& options);
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
