#include "ar/ModelPicture.h"

#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"
#include "arsession/SimulatedWorld.h"
#include "import/SceneImporter.h"
#include "models/DrawingBudgetCheck.h"
#include "models/Reality3DViewItem.h"
#include "reality/ModelEntity.h"
#include "render/ARViewItem.h"
#include "render/DrawnFrames.h"
#include "render/GlSupport.h"
#include "render/ItemSnapshotRenderer.h"
#include "scenegraph/SceneNodeBuilder.h"

#include <QQuickWindow>
#include <QtMath>

#include <functional>

namespace orvanta {

namespace {

core::Error pictureError(int code, const std::string& message) {
    return core::Error("ModelPictureError", code, message);
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

} // namespace

core::Result<QImage> ModelPicture::render(const std::string& modelPath, const Options& options) {
    if (!render::GlSupport::canCreateContext())
        return pictureError(1, "cannot draw: " + render::GlSupport::unavailableReason());
    auto imported = import::SceneImporter::importFile(modelPath);
    std::optional<core::Error> refused = imported ? DrawingBudgetCheck::check(imported.value()) : std::nullopt;
    if (!imported || refused) {
        const auto& error = refused ? *refused : imported.error();
        return pictureError(2, modelPath + ": domain " + error.domain() + ", code " + std::to_string(error.code()) +
                                   ": " + error.localizedDescription());
    }
    if (imported->triangleCount() == 0) return pictureError(5, modelPath + ": no geometry to draw");
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

    if (!render::DrawnFrames::waitUntil(window, ready, 30.0))
        return pictureError(3, "the model did not appear within 30 s");
    auto image = render::ItemSnapshotRenderer(shown).grab(false);
    if (!image) return pictureError(4, "the window could not be captured");
    return std::move(*image);
}

} // namespace orvanta
