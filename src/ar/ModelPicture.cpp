#include "ar/ModelPicture.h"

#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"
#include "ar/StillCameraBackend.h"
#include "arsession/SimulatedWorld.h"
#include "arsession/camera/CardLocator.h"
#include "import/SceneImporter.h"
#include "models/DrawingBudgetCheck.h"
#include "models/Reality3DViewItem.h"
#include "reality/ModelEntity.h"
#include "render/ARViewItem.h"
#include "render/DrawnFrames.h"
#include "render/GlSupport.h"
#include "render/ItemSnapshotRenderer.h"
#include "scenegraph/SceneNodeBuilder.h"

#include <OrvantaARFoodSDK/ARSource.h>

#include <QQuickWindow>
#include <QtMath>

#include <cmath>
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

// The backend of a dish on the table card of a photo: the camera the card gives, still. An
// error when the photo cannot be read, the card text or the calibration file is wrong, or the
// photo shows no card.
core::Result<ARViewContainer::BackendFactory> photoTable(const ModelPicture::Options& options) {
    using namespace arsession::camera;
    const std::string path = options.cameraPhoto.toStdString();
    auto photo = std::make_shared<const QImage>(options.cameraPhoto);
    if (photo->isNull()) return pictureError(5, "cannot read " + path);
    const auto card = TableCard::parse(options.tableCard.toStdString());
    if (!card) return pictureError(6, card.error().localizedDescription());
    std::optional<CameraCalibration> calibration;
    if (!options.calibrationFile.isEmpty()) {
        auto loaded = CameraCalibration::load(options.calibrationFile);
        if (!loaded) return pictureError(6, loaded.error().localizedDescription());
        calibration = std::move(loaded).value();
    }
    const auto located = CardLocator::locateInPicture(*photo, card.value(), calibration);
    if (!located) return pictureError(7, "no table card found in " + path);
    const QSizeF table = ARSource::simulated().tableSize().expandedTo(card->size());
    return ARViewContainer::BackendFactory([camera = located.value(), photo, table] {
        return std::make_unique<StillCameraBackend>(camera, std::vector<std::shared_ptr<const QImage>>{photo}, table);
    });
}

} // namespace

QString ModelPicture::defaultLensDescription() {
    const QSize size(1280, 720);
    const auto lens = arsession::camera::CameraCalibration::defaultLens(size).intrinsics;
    const double diagonal = 2.0 * std::atan(std::hypot(size.width(), size.height()) / (2.0 * lens.fx));
    return QString("a typical laptop camera's lens (%1° diagonal field of view, no distortion)")
        .arg(qRound(qRadiansToDegrees(diagonal)));
}

core::Result<QImage> ModelPicture::render(const std::string& modelPath, const Options& options) {
    if (!render::GlSupport::canCreateContext())
        return pictureError(1, "cannot draw: " + render::GlSupport::unavailableReason());
    ARViewContainer::BackendFactory backend = quickTableWorld;
    if (options.ar && !options.cameraPhoto.isEmpty()) {
        auto onPhoto = photoTable(options);
        if (!onPhoto) return onPhoto.error();
        backend = std::move(onPhoto).value();
    }
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
                                  Binding<std::optional<TrackingStateEnum>>::cell(std::nullopt), backend);
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
