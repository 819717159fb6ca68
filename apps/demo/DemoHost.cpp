#include "DemoHost.h"

#include "MenuFile.h"
#include "SampleRestaurant.h"
#include "core/Log.h"
#include "core/TemporaryDirectory.h"
#include <OrvantaARFoodSDK/HostingController.h>

#include <OrvantaARFoodSDK/RestaurantSDK.h>

#include <QDir>
#include <QDateTime>
#include <QQmlComponent>
#include <QStandardPaths>

#include <cstdio>

namespace orvanta::demo {

namespace {

core::Error demoError(const QString& message) { return core::Error("DemoError", 1, message.toStdString()); }

// Keeps `item` the size of `area`.
void fill(QQuickItem* item, QQuickItem* area) {
    item->setParentItem(area);
    item->setSize(area->size());
    QObject::connect(area, &QQuickItem::widthChanged, item, [item, area] { item->setWidth(area->width()); });
    QObject::connect(area, &QQuickItem::heightChanged, item, [item, area] { item->setHeight(area->height()); });
}

} // namespace

DemoHost::DemoHost() = default;

DemoHost::~DemoHost() {
    // The embedded view leaves the host's layout before the layout goes.
    embedded_.reset();
    uiWindow_.reset();
}

core::Result<bool> DemoHost::clearKitCache() {
    const auto removed = core::TemporaryDirectory::clear();
    if (!removed) return removed.error();
    std::printf("Emptied the kit's cache: %s (%d entries)\n", core::TemporaryDirectory::url()->path().c_str(), removed.value());
    return true;
}

core::Result<Restaurant> DemoHost::sampleRestaurant(const Options& options) {
    const QString cacheRoot = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    auto folder = SampleRestaurant::prepare(cacheRoot);
    if (!folder) return folder.error();
    server_ = std::make_unique<LoopbackMenuServer>(folder.value());
    server_->setSlow(options.slow);
    if (!options.failingDish.isEmpty()) {
        const auto file = SampleRestaurant::modelFileOf(options.failingDish);
        if (!file) return demoError("there is no dish called \"" + options.failingDish + "\" on the sample menu");
        server_->setFailing(*file);
    }
    auto base = server_->start();
    if (!base) return base.error();
    return SampleRestaurant::restaurant(base.value());
}

core::Result<bool> DemoHost::start(const Options& options) {
    if (options.clearCache) {
        if (auto cleared = clearKitCache(); !cleared) return cleared.error();
    }
    auto restaurant = options.menuFile.isEmpty() ? sampleRestaurant(options) : MenuFile::read(options.menuFile);
    if (!restaurant) return restaurant.error();
    restaurant_ = std::move(restaurant).value();
    showWindow(*restaurant_, options.windowSize, options.startedAtMs);
    return true;
}

void DemoHost::showWindow(const Restaurant& restaurant, QSize size, qint64 startedAtMs) {
    window_.setTitle(restaurant.name());
    window_.resize(size);

    QQmlComponent layout(&engine_, QUrl("qrc:/orvanta-demo/HostWindow.qml"));
    std::unique_ptr<QQuickItem> hostView(qobject_cast<QQuickItem*>(layout.create()));
    if (!hostView) {
        core::Log::print("The host's layout could not be built: " + layout.errorString().toStdString());
        std::abort();
    }
    hostView->setProperty("restaurantName", restaurant.name());
    QQuickItem* embedArea = hostView->property("embedArea").value<QQuickItem*>();
    QQuickItem* hostItem = hostView.get();

    auto* root = new ui::HostingController(std::move(hostView)); // owned by the window below
    uiWindow_ = std::make_unique<ui::Window>(&scene_, &window_);
    uiWindow_->setRootViewController(root);

    embedded_ = RestaurantSDK::shared().makeRestaurantView(restaurant, "orvanta-demo");
    fill(embedded_.get(), embedArea);
    embedded_->forceActiveFocus();
    // The layout is QML: its signal is connected by name.
    QObject::connect(hostItem, SIGNAL(openFullScreen()), this, SLOT(openFullScreen()));
    QObject::connect(embedded_.get(), &RestaurantExperienceView::dismissRequested, [] {
        std::printf("The guest left the embedded experience.\n");
    });

    // Times the way from the program's start to the first frame that draws the menu.
    // Frames are told from the render thread; several may be queued before the first is heard.
    auto once = std::make_shared<QMetaObject::Connection>();
    *once = QObject::connect(&window_, &QQuickWindow::frameSwapped, &window_, [startedAtMs, once] {
        if (!*once) return;
        std::printf("First menu frame %lld ms after the program started\n",
                    static_cast<long long>(QDateTime::currentMSecsSinceEpoch() - startedAtMs));
        QObject::disconnect(*once);
        *once = {};
    });
    window_.show();
}

void DemoHost::openFullScreen() {
    RestaurantSDK::shared().startRestaurantExperience(*restaurant_, "orvanta-demo", uiWindow_->rootViewController());
}

} // namespace orvanta::demo
