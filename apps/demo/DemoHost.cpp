#include "DemoHost.h"

#include "MenuFile.h"
#include "SampleRestaurant.h"
#include "SampleTableVideo.h"
#include "core/Log.h"
#include "core/TemporaryDirectory.h"
#include <OrvantaARFoodSDK/HostingController.h>

#include <OrvantaARFoodSDK/ARSource.h>
#include <OrvantaARFoodSDK/RestaurantSDK.h>

#include <QCameraDevice>
#include <QDir>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QMediaDevices>
#include <QQmlComponent>
#include <QStandardPaths>

#include <algorithm>
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

QString DemoHost::cacheRoot() { return QStandardPaths::writableLocation(QStandardPaths::CacheLocation); }

core::Result<bool> DemoHost::checkCamera(const QString& camera) {
    if (camera == sampleVideo || QFileInfo(camera).isFile() || QFileInfo(camera).isDir()) return true;
    const QList<QCameraDevice> cameras = QMediaDevices::videoInputs();
    if (cameras.isEmpty())
        return demoError(camera.isEmpty() || camera.startsWith("/dev/")
                             ? "this machine has no camera (--camera sample plays the sample video of a table card)"
                             : "\"" + camera + "\" is no video file, picture folder or camera, and this machine has no camera");
    if (camera.isEmpty()) return true;
    QStringList ids;
    for (const QCameraDevice& device : cameras) {
        if (device.id() == camera.toUtf8()) return true;
        ids << QString::fromUtf8(device.id());
    }
    return demoError("\"" + camera + "\" is no video file, picture folder or camera; this machine's cameras: " + ids.join(", "));
}

core::Result<bool> DemoHost::useCamera(const Options& options) {
    const QString& camera = *options.camera;
    ARSource source = ARSource::camera(camera.toUtf8());
    if (camera == sampleVideo) {
        if (!QFile::exists(SampleTableVideo::path(cacheRoot()))) {
            std::printf("Drawing the sample video of a table card (once): %s\n", qPrintable(SampleTableVideo::path(cacheRoot())));
            std::fflush(stdout);
        }
        auto video = SampleTableVideo::ensure(cacheRoot());
        if (!video) return video.error();
        source = ARSource::videoFile(video.value());
    } else if (QFileInfo(camera).isDir()) {
        source = ARSource::pictureFolder(camera);
    } else if (QFileInfo(camera).isFile()) {
        source = ARSource::videoFile(camera);
    }
    if (!options.tableCard.isEmpty()) source = source.withTableCard(options.tableCard);
    source = source.withCalibration(options.calibrationFile);
    QString whyNot;
    if (!RestaurantSDK::setARSource(source, &whyNot)) return demoError(whyNot);
    return true;
}

core::Result<Restaurant> DemoHost::sampleRestaurant() {
    auto folder = SampleRestaurant::prepare(cacheRoot());
    if (!folder) return folder.error();
    server_ = std::make_unique<LoopbackMenuServer>(folder.value());
    auto base = server_->start();
    if (!base) return base.error();
    return SampleRestaurant::restaurant(base.value());
}

core::Result<Restaurant> DemoHost::menuRestaurant(const QString& menuFile) {
    auto menu = MenuFile::read(menuFile);
    if (!menu) return menu.error();
    for (const QString& warning : menu->warnings) std::fprintf(stderr, "orvanta-demo: warning: %s\n", qPrintable(warning));
    server_ = std::make_unique<LoopbackMenuServer>(QString());
    auto base = server_->start();
    if (!base) return base.error();
    std::vector<Food> foods;
    for (const Food& food : menu->restaurant.foods()) {
        const QUrl model(food.arUSDZLink());
        QString link = food.arUSDZLink();
        if (model.isLocalFile()) {
            server_->addFile(model.fileName(), model.toLocalFile());
            link = base.value() + '/' + QString::fromUtf8(QUrl::toPercentEncoding(model.fileName()));
        }
        foods.emplace_back(food.name(), food.imageURL(), link, food.price());
    }
    return Restaurant(menu->restaurant.name(), std::move(foods));
}

core::Result<bool> DemoHost::serveForWatching(const Restaurant& restaurant, const Options& options) {
    const auto servedName = [this](const Food& food) -> std::optional<QString> {
        const QUrl link(food.arUSDZLink());
        if (!link.toString().startsWith(server_->baseUrl() + '/')) return std::nullopt;
        return link.fileName();
    };
    QStringList uncached;
    server_->setSlow(options.slow);
    if (options.slow)
        for (const Food& food : restaurant.foods())
            if (const auto name = servedName(food)) uncached << *name;
    if (!options.failingDish.isEmpty()) {
        const auto& foods = restaurant.foods();
        const auto dish = std::find_if(foods.begin(), foods.end(), [&](const Food& food) {
            return food.name().compare(options.failingDish, Qt::CaseInsensitive) == 0;
        });
        if (dish == foods.end()) return demoError("there is no dish called \"" + options.failingDish + "\" on the menu");
        const auto name = servedName(*dish);
        if (!name)
            return demoError("the model of \"" + dish->name() + "\" comes from " + dish->arUSDZLink() +
                             ", not from this app: only a model that is a local file can be made to fail");
        server_->setFailing(*name);
        uncached << *name;
        failingDishIndex_ = int(dish - foods.begin());
    }
    if (uncached.isEmpty()) return true;
    const auto cache = core::TemporaryDirectory::url();
    if (!cache) return cache.error();
    const QDir folder(QString::fromStdString(cache->path()));
    for (const QString& name : uncached) QFile::remove(folder.filePath(name));
    return true;
}

core::Result<bool> DemoHost::start(const Options& options) {
    if (options.clearCache) {
        if (auto cleared = clearKitCache(); !cleared) return cleared.error();
    }
    if (options.camera) {
        if (auto used = useCamera(options); !used) return used.error();
    }
    auto restaurant = options.menuFile.isEmpty() ? sampleRestaurant() : menuRestaurant(options.menuFile);
    if (!restaurant) return restaurant.error();
    if (auto served = serveForWatching(restaurant.value(), options); !served) return served.error();
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
