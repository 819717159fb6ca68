// orvanta-render MODEL OUT.png [--size WxH] [--ar] [--turn DEGREES]
// Renders one model file, of any format the kit imports, to a PNG: by default as the 3D
// viewer shows it (its own framing), with --ar placed on the simulated table as a guest sees
// it after placement. --turn turns the model about its vertical axis first. It needs a
// display with OpenGL (run it under `xvfb-run -a -s "-screen 0 1280x800x24"` on a machine
// without one). Exit status 0 when the picture is written; 1 with the reason on standard
// error when the model does not load, no OpenGL context can be made or the file cannot be
// written; 2 for bad arguments.

#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"
#include "arsession/SimulatedWorld.h"
#include "import/SceneImporter.h"
#include "models/Reality3DViewItem.h"
#include "reality/ModelEntity.h"
#include "render/ARViewItem.h"
#include "render/DrawnFrames.h"
#include "render/GlSupport.h"
#include "render/ItemSnapshotRenderer.h"
#include "scenegraph/SceneNodeBuilder.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQuick3D>
#include <QQuickWindow>

#include <cstdio>
#include <functional>

namespace {

using namespace orvanta;

struct Options {
    QString model;
    QString output;
    QSize size{1024, 768};
    bool ar = false;
    float turnDegrees = 0.0f;
};

int fail(const std::string& message) {
    std::fprintf(stderr, "orvanta-render: %s\n", message.c_str());
    return 1;
}

// A simulated world that finds the table within a fraction of a second, so a render does
// not wait for a hand-held search.
std::unique_ptr<arsession::SessionBackend> quickTableWorld() {
    arsession::SimulatedWorld::Script script;
    script.notAvailableFor = 0.0;
    script.initializingFor = 0.05;
    script.planeGrowthDuration = 0.1;
    script.swayAmplitude = 0.0f;
    return std::make_unique<arsession::SimulatedWorld>(script);
}

int renderModel(const Options& options) {
    if (!render::GlSupport::canCreateContext()) return fail("cannot draw: " + render::GlSupport::unavailableReason());
    auto imported = import::SceneImporter::importFile(options.model.toStdString());
    if (!imported) {
        const auto& error = imported.error();
        return fail(options.model.toStdString() + ": domain " + error.domain() + ", code " +
                    std::to_string(error.code()) + ": " + error.localizedDescription());
    }
    auto scene = std::make_shared<const import::ImportedScene>(std::move(imported).value());

    QQuickWindow window;
    window.resize(options.size);
    window.show();
    QQuickItem* shown = nullptr;
    std::function<bool()> ready;
    std::shared_ptr<ARViewContainer::Coordinator> coordinator; // keeps the AR view's helpers alive

    if (options.ar) {
        auto* item = new render::ARViewItem(window.contentItem());
        item->setSize(options.size);
        auto model = reality::ModelEntity::fromImportedScene(scene);
        model->setOrientation(QQuaternion::fromAxisAndAngle(0, 1, 0, options.turnDegrees));
        auto loaded = Binding<bool>::cell(false);
        ARViewContainer container(Binding<std::shared_ptr<reality::ModelEntity>>::cell(model), loaded,
                                  Binding<std::shared_ptr<reality::ARView>>::cell(nullptr),
                                  Binding<std::optional<TrackingStateEnum>>::cell(std::nullopt), quickTableWorld);
        coordinator = container.makeCoordinator();
        auto view = container.makeUIView({coordinator});
        item->setARView(view);
        item->setCoachingOverlay(coordinator->coachingOverlay);
        container.updateUIView(view, {coordinator});
        ready = [item, loaded, model] {
            return loaded.get() && model->isActive() && item->textures().pendingDecodes() == 0;
        };
        shown = item;
    } else {
        auto* item = new Reality3DViewItem(window.contentItem());
        item->setSize(options.size);
        auto node = scenegraph::SceneNodeBuilder::build(scene).rootNode;
        auto loaded = Binding<bool>::cell(false);
        item->setViewer(Reality3DView(Binding<Reality3DView::SceneNodePtr>::cell(node), loaded));
        ready = [item, loaded, turned = false, turn = options.turnDegrees]() mutable {
            if (!loaded.get()) return false;
            if (!turned) {
                item->sceneView()->defaultPointOfView().orbit(qDegreesToRadians(turn), 0.0f);
                item->sync();
                turned = true;
            }
            return item->textures().pendingDecodes() == 0;
        };
        shown = item;
    }

    if (!render::DrawnFrames::waitUntil(window, ready, 30.0)) return fail("the model did not appear within 30 s");
    const auto image = render::ItemSnapshotRenderer(shown).grab(false);
    if (!image) return fail("the window could not be captured");
    if (!image->save(options.output, "PNG")) return fail("cannot write " + options.output.toStdString());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());
    core::Dispatch::setMain(std::make_shared<core::EventLoopScheduler>(&app));

    QCommandLineParser parser;
    parser.setApplicationDescription("Renders a model file to a PNG as the kit shows it.");
    parser.addHelpOption();
    parser.addPositionalArgument("MODEL", "a USDZ, USDA, USDC, glTF or GLB file");
    parser.addPositionalArgument("OUT.png", "the picture to write");
    parser.addOption({"size", "picture size in pixels (default 1024x768)", "WxH"});
    parser.addOption({"ar", "place the model on the simulated table, as the AR view shows it"});
    parser.addOption({"turn", "turn the model about its vertical axis first", "DEGREES"});
    parser.process(app);

    Options options;
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 2) {
        std::fprintf(stderr, "%s\n", qPrintable(parser.helpText()));
        return 2;
    }
    options.model = positional[0];
    options.output = positional[1];
    options.ar = parser.isSet("ar");
    if (parser.isSet("size")) {
        const QStringList parts = parser.value("size").split('x');
        const int w = parts.size() == 2 ? parts[0].toInt() : 0, h = parts.size() == 2 ? parts[1].toInt() : 0;
        if (w <= 0 || h <= 0) return fail("--size takes WIDTHxHEIGHT, for example 800x600"), 2;
        options.size = QSize(w, h);
    }
    if (parser.isSet("turn")) {
        bool ok = false;
        options.turnDegrees = parser.value("turn").toFloat(&ok);
        if (!ok) return fail("--turn takes a number of degrees"), 2;
    }
    const int status = renderModel(options);
    core::Dispatch::setMain(nullptr);
    return status;
}
