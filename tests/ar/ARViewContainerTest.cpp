#include "ar/ARSourceSetting.h"
#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"

#include "arsession/ARSessionError.h"
#include "arsession/SimulatedWorld.h"
#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "reality/MeshResource.h"
#include "reality/SimpleMaterial.h"
#include "support/LogCapture.h"
#include "support/TestModels.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace orvanta;
using arsession::TrackingState;

namespace {

std::shared_ptr<core::ManualScheduler> mainQueue() {
    return std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main());
}

void advance(double seconds) {
    constexpr double kFrame = 1.0 / 60.0;
    for (double t = 0.0; t < seconds; t += kFrame) mainQueue()->advance(kFrame);
}

std::shared_ptr<reality::ModelEntity> makeDish() {
    return std::make_shared<reality::ModelEntity>(reality::MeshResource::generateBox(0.2f),
                                                  std::vector<reality::Material>{reality::SimpleMaterial{}});
}

} // namespace

// The dish screen around a container on the simulated room: shown once, then given models.
class ARViewContainerTest : public ::testing::Test {
protected:
    Binding<std::shared_ptr<reality::ModelEntity>> modelEntity = Binding<std::shared_ptr<reality::ModelEntity>>::cell();
    Binding<bool> isModelLoaded = Binding<bool>::cell(false);
    Binding<std::shared_ptr<reality::ARView>> arView = Binding<std::shared_ptr<reality::ARView>>::cell();
    Binding<std::optional<TrackingStateEnum>> trackingState = Binding<std::optional<TrackingStateEnum>>::cell();
    arsession::SimulatedWorld::Script script;
    std::vector<arsession::SimulatedWorld::Surface> room = arsession::SimulatedWorld::defaultRoom();
    orvanta::testing::LogCapture log;
    ARViewContainer::Context context;
    std::shared_ptr<reality::ARView> view;

    ARViewContainer container() {
        return ARViewContainer(modelEntity, isModelLoaded, arView, trackingState,
                               [this] { return std::make_unique<arsession::SimulatedWorld>(script, room); });
    }
    void show() {
        context.coordinator = container().makeCoordinator();
        view = container().makeUIView(context);
        mainQueue()->runPending();
    }
    // Sets the model and lets the deferred placement run.
    void place(const std::shared_ptr<reality::ModelEntity>& model) {
        modelEntity.set(model);
        container().updateUIView(view, context);
        mainQueue()->runPending();
    }
};

TEST_F(ARViewContainerTest, CoordinatorMapsEveryTrackingStateAndPrintsIt) {
    const auto coordinator = container().makeCoordinator();
    arsession::ARSession& session = *std::make_shared<reality::ARView>()->session();
    using Reason = TrackingState::Reason;
    using Enum = TrackingStateEnum;
    const auto limited = [](Reason reason) { return TrackingState::limited(reason); };
    const struct {
        TrackingState state;
        Enum expected;
        std::string line;
    } cases[] = {
        {TrackingState::notAvailable(), Enum::notTracking, "Tracking state: notAvailable"},
        {limited(Reason::initializing), Enum::notTracking, "Tracking state: limited(initializing)"},
        {limited(Reason::excessiveMotion), Enum::notTracking, "Tracking state: limited(excessiveMotion)"},
        {limited(Reason::insufficientFeatures), Enum::notTracking, "Tracking state: limited(insufficientFeatures)"},
        {limited(Reason::relocalizing), Enum::notTracking, "Tracking state: limited(relocalizing)"},
        {TrackingState::normal(), Enum::normal, "Tracking is normal, ready to place objects"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const std::size_t before = log.lines().size();
        arsession::ARCamera camera;
        camera.trackingState = c.state;
        coordinator->sessionCameraDidChangeTrackingState(session, camera);
        EXPECT_EQ(trackingState.get(), c.expected);
        ASSERT_EQ(log.lines().size(), before + 1);
        EXPECT_EQ(log.lines().back(), c.line);
    }
}

TEST_F(ARViewContainerTest, ModelIsAnchoredOnceALargeEnoughPlaneAppearsAndASecondReplacesIt) {
    show();
    const auto dish = makeDish();
    place(dish);
    EXPECT_TRUE(isModelLoaded.get());
    ASSERT_EQ(view->scene().anchors().size(), 1u); // the focus square went with the old anchors
    auto anchor = view->scene().anchors()[0];
    EXPECT_EQ(dish->parent(), anchor);
    EXPECT_EQ(anchor->scale(), QVector3D(0.5f, 0.5f, 0.5f)); // half size, on the anchor
    EXPECT_EQ(dish->scale(), QVector3D(1.0f, 1.0f, 1.0f));
    EXPECT_FALSE(anchor->isAnchored());

    // Tracking is normal at 1.2 s and the table is seen from 1.7 s, but only 0.1 m wide.
    advance(1.8);
    EXPECT_FALSE(anchor->isAnchored());
    advance(3.0);
    EXPECT_TRUE(anchor->isAnchored());
    EXPECT_NEAR(anchor->position().y(), 0.75f, 1e-5f);
    EXPECT_TRUE(dish->isActive());

    // Two more models in one turn: one anchor, holding the last.
    anchor.reset();
    const auto second = makeDish(), third = makeDish();
    modelEntity.set(second);
    container().updateUIView(view, context);
    place(third);
    ASSERT_EQ(view->scene().anchors().size(), 1u);
    EXPECT_EQ(third->parent(), view->scene().anchors()[0]);
    EXPECT_EQ(second->parent(), nullptr);
    EXPECT_EQ(dish->parent(), nullptr); // its anchor left the scene, which alone held it
}

// The dish waits for a horizontal plane of at least 0.2 m × 0.2 m: a room whose only surface
// is a table of the given size, seen at full size at once.
TEST_F(ARViewContainerTest, TheDishTakesATableOfTwentyCentimetresOrMore) {
    using Classification = arsession::ARPlaneAnchor::Classification;
    const auto table = *std::find_if(room.begin(), room.end(), [](const auto& s) { return s.classification == Classification::table; });
    script.initialPlaneSize = 1.0f;
    for (const auto& [edge, takesIt] : {std::pair{0.3f, true}, std::pair{0.15f, false}}) {
        SCOPED_TRACE(edge);
        room = {table};
        room[0].width = room[0].depth = edge;
        show();
        place(makeDish());
        advance(3.0);
        ASSERT_EQ(view->scene().anchors().size(), 1u);
        EXPECT_EQ(view->scene().anchors()[0]->isAnchored(), takesIt);
    }
}

TEST_F(ARViewContainerTest, SessionFailureResetsTheSessionAndClearsTheAnchors) {
    script.failures.push_back({mainQueue()->now() + 4.0, arsession::ARSessionError::make(
                                                             arsession::ARSessionError::worldTrackingFailed)});
    show();
    place(makeDish());
    advance(3.5);
    ASSERT_EQ(view->scene().anchors().size(), 1u);
    EXPECT_TRUE(view->scene().anchors()[0]->isAnchored());

    advance(1.0);
    const auto lines = log.lines();
    const std::vector<std::string> failThenReset{"ARSession failed: World tracking failed.", "resetARSession"};
    EXPECT_NE(std::search(lines.begin(), lines.end(), failThenReset.begin(), failThenReset.end()), lines.end());
    EXPECT_TRUE(view->scene().anchors().empty()); // the model and the new focus square alike
    EXPECT_TRUE(view->session()->isRunning());
    EXPECT_EQ(trackingState.get(), TrackingStateEnum::notTracking); // tracking starts over
}

TEST_F(ARViewContainerTest, PlaneDiscoveryCoachesInOrderAndAnInterruptionPausesTheSession) {
    const double start = mainQueue()->now();
    script.interruptions.push_back({start + 5.0, start + 6.0});
    show();
    advance(4.0); // tracking normal and the table found
    std::vector<std::string> coaching = log.lines();
    std::erase_if(coaching, [](const std::string& line) { return line.rfind("Coaching session", 0) != 0; });
    EXPECT_EQ(coaching, (std::vector<std::string>{"Coaching session will activate", "Coaching session activated",
                                                  "Coaching session will deactivate", "Coaching session deactivated"}));

    advance(1.5);
    EXPECT_EQ(log.lines().back(), "ARSession was interrupted");
    EXPECT_FALSE(view->session()->isRunning());
}

TEST(ARSourceSetting, AMistakeNamesItsFieldAndKeepsTheCurrentSource) {
    QTemporaryDir folder;
    const QString calibration = folder.filePath("lens.yml");
    orvanta::testing::TestModels::write(
        calibration.toStdString(),
        "%YAML:1.0\n---\nimage_width: 640\nimage_height: 480\n"
        "camera_matrix: !!opencv-matrix {rows: 3, cols: 3, dt: d, data: [600., 0., 320., 0., 600., 240., 0., 0., 1.]}\n"
        "distortion_coefficients: !!opencv-matrix {rows: 1, cols: 5, dt: d, data: [-0.1, 0.01, 0., 0., 0.]}\n");
    const ARSource good = ARSource::camera("video0").withCalibration(calibration).withTableSize(QSizeF(0.8, 0.5));
    ASSERT_TRUE(ARSourceSetting::choose(good)) << ARSourceSetting::choose(good).error().localizedDescription();
    EXPECT_EQ(ARSourceSetting::current(), good);

    const std::pair<ARSource, std::string> mistakes[] = {
        {ARSource::camera().withTableCard("charuco:5x7:0.04:0.02:DICT_NOPE"), "table card"},
        {ARSource::camera().withTableCard("qr:-1"), "table card"},
        {ARSource::camera().withCalibration(folder.filePath("missing.yml")), "calibration"},
        {ARSource::camera().withTableSize(QSizeF(0, 0.6)), "table size"},
        {ARSource::videoFile(folder.filePath("missing.avi")), "video file"},
        {ARSource::pictureFolder(folder.filePath("missing")), "picture folder"},
        {ARSource::pictureFolder(folder.path(), 0.0), "picture folder"},
    };
    for (const auto& [source, field] : mistakes) {
        const auto chosen = ARSourceSetting::choose(source);
        ASSERT_FALSE(chosen) << field;
        EXPECT_EQ(chosen.error().domain(), ARSourceSetting::errorDomain);
        EXPECT_EQ(chosen.error().localizedDescription().rfind(field + ": ", 0), 0u) << chosen.error().localizedDescription();
        EXPECT_EQ(ARSourceSetting::current(), good);
    }

    // A camera source gives views a camera backend; the simulated room leaves them the view's own.
    EXPECT_NE(ARSourceSetting::makeBackend(), nullptr);
    ASSERT_TRUE(ARSourceSetting::choose(ARSource::simulated()));
    EXPECT_EQ(ARSourceSetting::makeBackend(), nullptr);
}
