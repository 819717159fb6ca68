// A host program built against the installed kit alone: it finds the package, includes the
// public headers, links, and shows the experience in a window of its own; it succeeds once
// the menu shows the restaurant's dishes.
#include <OrvantaARFoodSDK/DownloadLimits.h>
#include <OrvantaARFoodSDK/Food.h>
#include <OrvantaARFoodSDK/Rearranged.h>
#include <OrvantaARFoodSDK/Restaurant.h>
#include <OrvantaARFoodSDK/RestaurantSDK.h>

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const orvanta::Food soup("Soup", "", "https://example.com/soup.usdz", 4.5);
    const orvanta::Food cake("Cake", "", "https://example.com/cake.usdz", 3.0);
    const orvanta::Restaurant restaurant("Corner", {soup, cake});
    if (orvanta::rearranged(restaurant.foods(), cake).front() != cake) return 1;
    orvanta::DownloadLimits::setDefaults({.idleTimeout = std::chrono::seconds(30)});
    if (orvanta::DownloadLimits::defaults().idleTimeout != std::chrono::seconds(30)) return 1;

    QQuickWindow window;
    window.resize(360, 640);
    auto view = orvanta::RestaurantSDK::shared().makeRestaurantView(restaurant, "consumer");
    view->setParentItem(window.contentItem());
    view->setSize(window.size());
    window.show();

    // The menu grid is named so that hosts' tests can find it.
    const QDeadlineTimer deadline(60000);
    QTimer poll;
    int result = 2;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* grid = view->findChild<QQuickItem*>(QStringLiteral("menuGrid"));
        if (grid && grid->property("count").toInt() == 2) {
            std::printf("The menu shows %d dishes\n", grid->property("count").toInt());
            result = 0;
            app.quit();
        } else if (deadline.hasExpired()) {
            std::printf("The menu did not appear\n");
            app.quit();
        }
    });
    poll.start(20);
    app.exec();
    return result;
}
