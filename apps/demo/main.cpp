// orvanta-demo: the sample host app. It serves the sample restaurant (or a menu read from a
// JSON file) over a loopback HTTP server and shows the kit two ways: embedded in its window,
// and full screen through "Open full screen". Without a display, or with --walkthrough, it
// walks one dish from the menu to a saved photo and writes screenshots.
#include "DemoHost.h"
#include "Walkthrough.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QGuiApplication>
#include <QQuick3D>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv) {
    const qint64 startedAtMs = QDateTime::currentMSecsSinceEpoch();
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());
    QGuiApplication::setApplicationName("orvanta-demo");

    QCommandLineParser parser;
    parser.setApplicationDescription("The sample host app of OrvantaARFoodSDK.");
    parser.addHelpOption();
    const QCommandLineOption headless("headless", "Walk one dish through the kit and write screenshots, then quit.");
    const QCommandLineOption walkthrough("walkthrough", "The same walk in a visible window.");
    const QCommandLineOption slow("slow", "Serve the models slowly, to watch the download progress.");
    const QCommandLineOption fail("fail", "Make the model of the dish NAME fail to download.", "NAME");
    const QCommandLineOption menu("menu", "Read the restaurant from a JSON menu file.", "FILE.json");
    const QCommandLineOption clearCache("clear-cache", "Empty the kit's model cache first.");
    const QCommandLineOption out("out", "Folder for the walkthrough's screenshots.", "DIR");
    const QCommandLineOption size("size", "Window size, e.g. 480x900.", "WxH", "480x900");
    parser.addOptions({headless, walkthrough, slow, fail, menu, clearCache, out, size});
    parser.process(app);

    orvanta::demo::DemoHost::Options options;
    options.slow = parser.isSet(slow);
    options.failingDish = parser.value(fail);
    options.menuFile = parser.value(menu);
    options.clearCache = parser.isSet(clearCache);
    const QStringList dimensions = parser.value(size).split('x');
    options.windowSize = QSize(dimensions.value(0).toInt(), dimensions.value(1).toInt());
    options.startedAtMs = startedAtMs;

    orvanta::demo::DemoHost host;
    if (auto started = host.start(options); !started) {
        std::fprintf(stderr, "orvanta-demo: %s\n", started.error().localizedDescription().c_str());
        return 1;
    }
    if (!parser.isSet(headless) && !parser.isSet(walkthrough)) return app.exec();

    const QString folder = parser.isSet(out)
                               ? parser.value(out)
                               : QDir::temp().filePath("orvanta-demo-" + QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss"));
    int result = 1;
    QTimer::singleShot(0, &app, [&] {
        orvanta::demo::Walkthrough walk(host.window(), folder);
        result = walk.run();
        app.quit();
    });
    app.exec();
    return result;
}
