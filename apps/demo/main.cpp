// orvanta-demo: the sample host app. It serves the sample restaurant (or a menu read from a
// JSON file) over a loopback HTTP server and shows the kit two ways: embedded in its window,
// and full screen through "Open full screen". With --headless (what `./run demo` uses
// without a display) or --walkthrough, it walks one dish from the menu to a saved photo and
// writes screenshots. With --camera its AR source is a camera, a video file, a folder of
// pictures or the sample video instead of the simulated room. --help and --version need no
// display, nor does a camera that is not there; anything else needs a display with OpenGL and
// exits 1 saying so when there is none.
#include "DemoHost.h"
#include "ToolCommandLine.h"
#include "Walkthrough.h"
#include "render/GlSupport.h"
#include <OrvantaARFoodSDK/ARSource.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQuick3D>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

// The kit's photo album is the Pictures folder the desktop names in user-dirs.dirs under
// XDG_CONFIG_HOME. This points it at `folder` for this process through a configuration
// folder of its own, which lives as long as the returned object.
std::unique_ptr<QTemporaryDir> usePicturesFolder(const QString& folder) {
    auto config = std::make_unique<QTemporaryDir>();
    QFile dirs(config->filePath("user-dirs.dirs"));
    if (!config->isValid() || !QDir().mkpath(folder) || !dirs.open(QIODevice::WriteOnly)) return nullptr;
    QString escaped = QDir(folder).absolutePath();
    escaped.replace('\\', "\\\\").replace('"', "\\\"");
    dirs.write("XDG_PICTURES_DIR=\"" + escaped.toUtf8() + "\"\n");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config->path()));
    return config;
}

} // namespace

int main(int argc, char** argv) {
    const qint64 startedAtMs = QDateTime::currentMSecsSinceEpoch();
    orvanta::render::GlSupport::allowStartWithoutDisplay();
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());

    QCommandLineParser parser;
    orvanta::tools::ToolCommandLine::prepare(parser, "orvanta-demo",
                                             "The sample host app of OrvantaARFoodSDK. It needs a display with OpenGL; "
                                             "`./run demo` runs it under Xvfb with --headless when there is none.");
    const QCommandLineOption headless("headless", "Walk one dish through the kit and write screenshots, then quit.");
    const QCommandLineOption walkthrough("walkthrough", "The same walk in a visible window.");
    const QCommandLineOption slow("slow", "Serve the models slowly, to watch the download progress.");
    const QCommandLineOption fail("fail", "Make the model of the dish NAME fail to download; the walk opens that dish "
                                          "and ends at its failure message.", "NAME");
    const QCommandLineOption menu("menu", "Read the restaurant from a JSON menu file.", "FILE.json");
    const QCommandLineOption clearCache("clear-cache", "Empty the kit's model cache first.");
    const QCommandLineOption out("out", "Folder for the walk's screenshots (default: a new orvanta-demo-<time> folder "
                                        "in the temporary directory).", "DIR");
    const QCommandLineOption pictures("pictures", "The photo album's folder (default: your Pictures folder, except for "
                                                  "a walk, which saves into DIR/pictures of --out).", "DIR");
    const QCommandLineOption size("size", "Window size (default 480x800, which fits a 1280x800 screen).", "WxH", "480x800");
    const QCommandLineOption camera(
        "camera", "AR through a camera instead of the simulated room: the default camera, or the one SOURCE names "
                  "(a camera id such as /dev/video0), a video file, a folder of numbered pictures, or `sample`: a "
                  "video of the default table card, made on first use.");
    const QCommandLineOption card("card",
                                  QString("With --camera: the table card (default %1).").arg(orvanta::ARSource::defaultTableCard),
                                  "TEXT");
    const QCommandLineOption calibration(
        "calibration", "With --camera: the camera's calibration, OpenCV YAML (default: a typical laptop camera's lens).",
        "FILE.yml");
    parser.addOptions({headless, walkthrough, slow, fail, menu, clearCache, out, pictures, size, camera, card, calibration});
    parser.addPositionalArgument("SOURCE", "With --camera: what it films (see --camera).", "[SOURCE]");
    parser.process(app);

    const QStringList dimensions = parser.value(size).split('x');
    const QSize windowSize(dimensions.value(0).toInt(), dimensions.value(1).toInt());
    if (dimensions.size() != 2 || windowSize.isEmpty()) {
        std::fprintf(stderr, "orvanta-demo: --size takes WIDTHxHEIGHT, for example 480x800\n");
        return 2;
    }
    const QStringList positional = parser.positionalArguments();
    const bool cameraOnly = parser.isSet(card) || parser.isSet(calibration);
    if (positional.size() > (parser.isSet(camera) ? 1 : 0) || (cameraOnly && !parser.isSet(camera))) {
        std::fprintf(stderr, "orvanta-demo: a SOURCE, --card and --calibration go with --camera (see --help)\n");
        return 2;
    }
    const QString cameraSource = positional.value(0);
    if (parser.isSet(camera)) {
        if (auto there = orvanta::demo::DemoHost::checkCamera(cameraSource); !there) {
            std::fprintf(stderr, "orvanta-demo: %s\n", there.error().localizedDescription().c_str());
            return 1;
        }
    }
    if (!orvanta::render::GlSupport::canCreateContext()) {
        std::fprintf(stderr, "orvanta-demo: no display or OpenGL context is available: %s\n",
                     orvanta::render::GlSupport::unavailableReason().c_str());
        return 1;
    }

    const bool walks = parser.isSet(headless) || parser.isSet(walkthrough);
    const QString folder = parser.isSet(out)
                               ? parser.value(out)
                               : QDir::temp().filePath("orvanta-demo-" + QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss"));
    // A walk saves a photo: it goes beside the screenshots unless a folder is asked for.
    std::unique_ptr<QTemporaryDir> picturesConfig;
    if (parser.isSet(pictures) || walks) {
        const QString album = parser.isSet(pictures) ? parser.value(pictures) : QDir(folder).filePath("pictures");
        picturesConfig = usePicturesFolder(album);
        if (!picturesConfig) {
            std::fprintf(stderr, "orvanta-demo: the pictures folder %s cannot be made\n", qPrintable(album));
            return 1;
        }
    }

    orvanta::demo::DemoHost::Options options;
    options.slow = parser.isSet(slow);
    options.failingDish = parser.value(fail);
    options.menuFile = parser.value(menu);
    options.clearCache = parser.isSet(clearCache);
    options.windowSize = windowSize;
    options.startedAtMs = startedAtMs;
    if (parser.isSet(camera)) options.camera = cameraSource;
    options.tableCard = parser.value(card);
    options.calibrationFile = parser.value(calibration);

    orvanta::demo::DemoHost host;
    if (auto started = host.start(options); !started) {
        std::fprintf(stderr, "orvanta-demo: %s\n", started.error().localizedDescription().c_str());
        return 1;
    }
    if (!walks) return app.exec();

    const orvanta::demo::Walkthrough::Route route{host.failingDishIndex().value_or(0), host.failingDishIndex().has_value(),
                                                  options.camera.has_value()};
    int result = 1;
    QTimer::singleShot(0, &app, [&] {
        orvanta::demo::Walkthrough walk(host.window(), folder, route);
        result = walk.run();
        app.quit();
    });
    app.exec();
    return result;
}
