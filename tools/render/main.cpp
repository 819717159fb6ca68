// orvanta-render MODEL OUT.png [--size WxH] [--ar [--camera PHOTO [--calibration FILE.yml] [--card TEXT]]] [--turn DEGREES]
//   (--help, --version)
// Renders one model file, of any format the kit imports, to a PNG: by default as the 3D
// viewer shows it (its own framing), with --ar placed on the simulated table as a guest sees
// it after placement. With --camera the dish stands on the table card found in PHOTO instead,
// drawn over the photo at the photo's own size (unless --size is given); without --calibration
// a typical laptop camera's lens is assumed, with a warning. --turn turns the model about its
// vertical axis first. It needs a display with OpenGL (run it under
// `xvfb-run -a -s "-screen 0 1280x800x24"` on a machine without one); --help and --version
// need none. Exit status 0 when the picture is written; 1 with the reason on standard error
// when no display or OpenGL context is available, the model does not load or has nothing to
// draw, the photo cannot be read or shows no table card, or the file cannot be written; 2 for
// bad arguments.

#include "ToolCommandLine.h"
#include "ar/ModelPicture.h"
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"
#include "render/GlSupport.h"

#include <OrvantaARFoodSDK/ARSource.h>

#include <QGuiApplication>
#include <QImageReader>
#include <QQuick3D>

#include <cstdio>
#include <optional>

namespace {

using namespace orvanta;

struct Options {
    QString model;
    QString output;
    QSize size{1024, 768};
    bool ar = false;
    float turnDegrees = 0.0f;
    QString cameraPhoto;
    QString calibration;
    QString card;
};

int fail(const std::string& message) {
    std::fprintf(stderr, "orvanta-render: %s\n", message.c_str());
    return 1;
}

int renderModel(const Options& options) {
    const auto picture = ModelPicture::render(options.model.toStdString(),
                                              {.size = options.size,
                                               .ar = options.ar,
                                               .turnDegrees = options.turnDegrees,
                                               .cameraPhoto = options.cameraPhoto,
                                               .calibrationFile = options.calibration,
                                               .tableCard = options.card});
    if (!picture) return fail(picture.error().localizedDescription());
    if (!picture->save(options.output, "PNG")) return fail("cannot write " + options.output.toStdString());
    return 0;
}

// The command line. An option is declared here and read in readOptions.
void declareOptions(QCommandLineParser& parser) {
    tools::ToolCommandLine::prepare(parser, "orvanta-render",
                                    "Renders a model file to a PNG as OrvantaARFoodSDK shows it. It needs a display with "
                                    "OpenGL; without one, run it under xvfb-run -a -s \"-screen 0 1280x800x24\".");
    parser.addPositionalArgument("MODEL", "a USDZ, USDA, USDC, glTF or GLB file");
    parser.addPositionalArgument("OUT.png", "the picture to write");
    parser.addOption({"size", "picture size in pixels (default 1024x768)", "WxH"});
    parser.addOption({"ar", "place the model on the simulated table, as the AR view shows it"});
    parser.addOption({"turn", "turn the model about its vertical axis first", "DEGREES"});
    parser.addOption({"camera", "with --ar: stand the model on the table card in PHOTO, drawn over the photo", "PHOTO"});
    parser.addOption({"calibration", "with --camera: the camera's calibration, OpenCV YAML", "FILE.yml"});
    parser.addOption({"card", QString("with --camera: the table card (default %1)").arg(ARSource::defaultTableCard), "TEXT"});
}

// The options, or the reason the command line is wrong.
std::optional<Options> readOptions(const QCommandLineParser& parser, std::string& wrong) {
    Options options;
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 2) {
        wrong = "a model file and a picture to write are needed (--help for more)";
        return std::nullopt;
    }
    options.model = positional[0];
    options.output = positional[1];
    options.ar = parser.isSet("ar");
    if (parser.isSet("size")) {
        const QStringList parts = parser.value("size").split('x');
        const int w = parts.size() == 2 ? parts[0].toInt() : 0, h = parts.size() == 2 ? parts[1].toInt() : 0;
        if (w <= 0 || h <= 0) {
            wrong = "--size takes WIDTHxHEIGHT, for example 800x600";
            return std::nullopt;
        }
        options.size = QSize(w, h);
    }
    if (parser.isSet("camera")) {
        if (!options.ar) {
            wrong = "--camera needs --ar";
            return std::nullopt;
        }
        options.cameraPhoto = parser.value("camera");
        options.calibration = parser.value("calibration");
        options.card = parser.isSet("card") ? parser.value("card") : QString(ARSource::defaultTableCard);
        // The photo's own size; an unreadable photo leaves it empty and fails before drawing.
        if (!parser.isSet("size")) options.size = QImageReader(options.cameraPhoto).size();
    } else if (parser.isSet("calibration") || parser.isSet("card")) {
        wrong = "--calibration and --card go with --camera";
        return std::nullopt;
    }
    if (parser.isSet("turn")) {
        bool ok = false;
        options.turnDegrees = parser.value("turn").toFloat(&ok);
        if (!ok) {
            wrong = "--turn takes a number of degrees";
            return std::nullopt;
        }
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    // --help and --version answer without a display; drawing then says that there is none.
    render::GlSupport::allowStartWithoutDisplay();
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());

    QCommandLineParser parser;
    declareOptions(parser);
    parser.process(app);
    std::string wrong;
    const std::optional<Options> options = readOptions(parser, wrong);
    if (!options) return fail(wrong), 2;
    if (!render::GlSupport::canCreateContext())
        return fail("no display or OpenGL context is available: " + render::GlSupport::unavailableReason());

    if (options->size.isEmpty()) return fail("cannot read " + options->cameraPhoto.toStdString());
    if (!options->cameraPhoto.isEmpty() && options->calibration.isEmpty())
        std::fprintf(stderr, "orvanta-render: warning: no --calibration given: assuming %s; the dish may stand a "
                             "little off the card\n", qPrintable(ModelPicture::defaultLensDescription()));

    core::Dispatch::setMain(std::make_shared<core::EventLoopScheduler>(&app));
    const int status = renderModel(*options);
    core::Dispatch::setMain(nullptr);
    return status;
}
