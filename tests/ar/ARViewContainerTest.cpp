#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"

#include "arsession/ARSessionError.h"
#include "arsession/SimulatedWorld.h"
#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "reality/MeshResource.h"
#include "reality/SimpleMaterial.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace orvanta;
using arsession::TrackingState;

namespace {

constexpr double kFrame = 1.0 / 60.0;

std::shared_ptr<core::ManualScheduler> mainQueue() {
    return std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main());
}

void advance(double seconds) {
    for (double t = 0.0; t < seconds; t += kFrame) mainQueue()->advance(kFrame);
}

std::shared_ptr<reality::ModelEntity> makeDish(const std::string& name) {
    return std::make_shared<reality::ModelEntity>(reality::MeshResource::generateBox(0.2f),
                                                  std::vector<reality::Material>{reality::SimpleMaterial{}}, name);
}

bool contains(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

} // namespace

class ARViewContainerTest : public ::testing::Test {
protected:
    Binding<std::shared_ptr<reality::ModelEntity>> modelEntity = Binding<std::shared_ptr<reality::ModelEntity>>::cell();
    Binding<bool> isModelLoaded = Binding<bool>::cell(false);
    Binding<std::shared_ptr<reality::ARView>> arView = Binding<std::shared_ptr<reality::ARView>>::cell();
    Binding<std::optional<TrackingStateEnum>> trackingState = Binding<std::optional<TrackingStateEnum>>::cell();
    arsession::SimulatedWorld::Script script;
    orvanta::testing::LogCapture log;

    ARViewContainer container() {
        return ARViewContainer(modelEntity, isModelLoaded, arView, trackingState,
                               [this] { return std::make_unique<arsession::SimulatedWorld>(script); });
    }
    // The screen's first showing: coordinator, view, and the deferred binding write.
    std::shared_ptr<reality::ARView> show(ARViewContainer::Context& context) {
        const ARViewContainer shown = container();
        context.coordinator = shown.makeCoordinator();
        auto view = shown.makeUIView(context);
        mainQueue()->runPending();
        return view;
    }
    void place(const std::shared_ptr<reality::ModelEntity>& model, const std::shared_ptr<reality::ARView>& view,
               const ARViewContainer::Context& context) {
        modelEntity.set(model);
        container().updateUIView(view, context);
    }
};

TEST_F(ARViewContainerTest, MakeUIViewStartsTheSessionAndFillsTheViewBindingOneTurnLater) {
    const ARViewContainer shown = container();
    ARViewContainer::Context context{shown.makeCoordinator()};
    const auto view = shown.makeUIView(context);

    EXPECT_EQ(arView.get(), nullptr); // written on the next turn of the main queue
    mainQueue()->runPending();
    EXPECT_EQ(arView.get(), view);

    ASSERT_TRUE(context.coordinator->focusIndicator);
    EXPECT_TRUE(view->scene().anchors().contains(context.coordinator->focusIndicator.get()));
    EXPECT_TRUE(context.coordinator->focusIndicator->focus().classicStyle());
    EXPECT_TRUE(view->session()->isRunning());
    EXPECT_EQ(view->session()->configuration().planeDetection, arsession::ARWorldTrackingConfiguration::horizontal);
    EXPECT_EQ(view->session()->delegate(), context.coordinator);

    const auto& overlay = context.coordinator->coachingOverlay;
    ASSERT_TRUE(overlay);
    EXPECT_EQ(overlay->goal(), arsession::ARCoachingOverlayView::Goal::horizontalPlane);
    EXPECT_EQ(overlay->autoresizingMask, 18u);
    EXPECT_EQ(overlay->session(), view->session());
}

TEST_F(ARViewContainerTest, CoordinatorMapsEveryTrackingStateAndPrintsIt) {
    const auto coordinator = container().makeCoordinator();
    arsession::ARSession& session = *std::make_shared<reality::ARView>()->session();
    struct Case {
        TrackingState state;
        TrackingStateEnum expected;
        std::string line;
    };
    const std::vector<Case> cases = {
        {TrackingState::notAvailable(), TrackingStateEnum::notTracking, "Tracking state: notAvailable"},
        {TrackingState::limited(TrackingState::Reason::initializing), TrackingStateEnum::notTracking,
         "Tracking state: limited(initializing)"},
        {TrackingState::limited(TrackingState::Reason::excessiveMotion), TrackingStateEnum::notTracking,
         "Tracking state: limited(excessiveMotion)"},
        {TrackingState::limited(TrackingState::Reason::insufficientFeatures), TrackingStateEnum::notTracking,
         "Tracking state: limited(insufficientFeatures)"},
        {TrackingState::limited(TrackingState::Reason::relocalizing), TrackingStateEnum::notTracking,
         "Tracking state: limited(relocalizing)"},
        {TrackingState::normal(), TrackingStateEnum::normal, "Tracking is normal, ready to place objects"},
    };
    std::vector<std::string> expectedLines;
    for (const Case& c : cases) {
        arsession::ARCamera camera;
        camera.trackingState = c.state;
        coordinator->sessionCameraDidChangeTrackingState(session, camera);
        EXPECT_EQ(trackingState.get(), c.expected) << c.line;
        expectedLines.push_back(c.line);
    }
    EXPECT_EQ(log.lines(), expectedLines);
}

TEST_F(ARViewContainerTest, CoachingAndInterruptionLines) {
    const auto coordinator = container().makeCoordinator();
    arsession::ARCoachingOverlayView overlay;
    coordinator->coachingOverlayViewWillActivate(overlay);
    coordinator->coachingOverlayViewDidActivate(overlay);
    coordinator->coachingOverlayViewWillDeactivate(overlay);
    coordinator->coachingOverlayViewDidDeactivate(overlay);
    arsession::ARSession& session = *std::make_shared<reality::ARView>()->session();
    coordinator->sessionWasInterrupted(session); // no view bound: only the line
    coordinator->sessionInterruptionEnded(session);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Coaching session will activate", "Coaching session activated",
                                                     "Coaching session will deactivate", "Coaching session deactivated",
                                                     "ARSession was interrupted",
                                                     "ARSession interruption ended, resetting session"}));
}

TEST_F(ARViewContainerTest, RunningSessionReportsTrackingAndCoaching) {
    ARViewContainer::Context context;
    show(context);
    advance(0.1);
    EXPECT_EQ(trackingState.get(), TrackingStateEnum::notTracking);
    advance(3.0);
    EXPECT_EQ(trackingState.get(), TrackingStateEnum::normal);
    const auto lines = log.lines();
    EXPECT_TRUE(contains(lines, "Tracking state: notAvailable"));
    EXPECT_TRUE(contains(lines, "Tracking state: limited(initializing)"));
    EXPECT_TRUE(contains(lines, "Tracking is normal, ready to place objects"));
    EXPECT_TRUE(contains(lines, "Coaching session activated"));
    EXPECT_TRUE(contains(lines, "Coaching session deactivated"));
}

TEST_F(ARViewContainerTest, ModelSetBeforeAnyPlaneIsAnchoredOnceALargeEnoughPlaneAppears) {
    ARViewContainer::Context context;
    const auto view = show(context);
    const auto dish = makeDish("dish");

    container().updateUIView(view, context); // no model: nothing happens
    EXPECT_FALSE(view->scene().anchors().empty());
    EXPECT_TRUE(log.lines().empty());

    place(dish, view, context);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"updateARSession"});
    EXPECT_TRUE(view->scene().anchors().empty()); // cleared at once, the focus square with them
    EXPECT_FALSE(isModelLoaded.get());

    mainQueue()->runPending();
    EXPECT_TRUE(isModelLoaded.get());
    ASSERT_EQ(view->scene().anchors().size(), 1u);
    const auto anchor = view->scene().anchors()[0];
    EXPECT_EQ(dish->parent(), anchor);
    EXPECT_EQ(anchor->scale(), QVector3D(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(dish->scale(), QVector3D(1, 1, 1));
    ASSERT_TRUE(anchor->anchoring());
    EXPECT_EQ(anchor->anchoring()->kind(), reality::AnchoringComponent::Kind::plane);
    EXPECT_EQ(anchor->anchoring()->minimumBounds(), QVector2D(0.2f, 0.2f));
    EXPECT_TRUE(dish->collision());
    EXPECT_FALSE(anchor->isAnchored());

    // Tracking is normal at 1.2 s and the table is seen from 1.7 s, but only 0.1 m wide.
    advance(1.8);
    EXPECT_FALSE(anchor->isAnchored());
    advance(3.0);
    EXPECT_TRUE(anchor->isAnchored());
    EXPECT_NEAR(anchor->position().y(), 0.75f, 1e-5f);
    EXPECT_TRUE(dish->isActive());
}

TEST_F(ARViewContainerTest, SettingASecondModelLeavesOneAnchor) {
    ARViewContainer::Context context;
    const auto view = show(context);
    const auto first = makeDish("first");
    const auto second = makeDish("second");

    place(first, view, context);
    mainQueue()->runPending();
    place(second, view, context);
    mainQueue()->runPending();
    ASSERT_EQ(view->scene().anchors().size(), 1u);
    EXPECT_EQ(second->parent(), view->scene().anchors()[0]);
    EXPECT_EQ(first->parent(), nullptr); // its anchor left the scene, which alone held it

    // Two updates within one turn: the later placement supersedes the earlier one.
    place(first, view, context);
    place(second, view, context);
    mainQueue()->runPending();
    ASSERT_EQ(view->scene().anchors().size(), 1u);
    EXPECT_EQ(second->parent(), view->scene().anchors()[0]);
}

TEST_F(ARViewContainerTest, SessionFailureResetsTheSessionAndClearsTheAnchors) {
    script.failures.push_back({mainQueue()->now() + 4.0, arsession::ARSessionError::make(
                                                             arsession::ARSessionError::worldTrackingFailed)});
    ARViewContainer::Context context;
    const auto view = show(context);
    place(makeDish("dish"), view, context);
    mainQueue()->runPending();
    advance(3.5);
    ASSERT_EQ(view->scene().anchors().size(), 1u);
    EXPECT_TRUE(view->scene().anchors()[0]->isAnchored());

    advance(1.0);
    const auto lines = log.lines();
    const auto failed = std::find(lines.begin(), lines.end(), "ARSession failed: World tracking failed.");
    ASSERT_NE(failed, lines.end());
    ASSERT_NE(failed + 1, lines.end());
    EXPECT_EQ(*(failed + 1), "resetARSession");
    EXPECT_TRUE(view->scene().anchors().empty()); // the model and the new focus square alike
    EXPECT_TRUE(view->session()->isRunning());
    EXPECT_TRUE(context.coordinator->focusIndicator); // the first square stays with the coordinator
    EXPECT_EQ(trackingState.get(), TrackingStateEnum::notTracking); // tracking starts over
}

TEST_F(ARViewContainerTest, SessionFailureWithoutABoundViewOnlyPrints) {
    const auto coordinator = container().makeCoordinator();
    const auto view = std::make_shared<reality::ARView>();
    coordinator->sessionDidFailWithError(*view->session(),
                                         arsession::ARSessionError::make(arsession::ARSessionError::sensorFailed));
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0].rfind("ARSession failed: ", 0), 0u);
}

TEST_F(ARViewContainerTest, InterruptionPausesAndItsEndLeavesTheSessionPaused) {
    const double now = mainQueue()->now();
    script.interruptions.push_back({now + 2.0, now + 3.0});
    ARViewContainer::Context context;
    const auto view = show(context);
    advance(2.1);
    EXPECT_TRUE(contains(log.lines(), "ARSession was interrupted"));
    EXPECT_FALSE(view->session()->isRunning());
    advance(1.0);
    EXPECT_TRUE(contains(log.lines(), "ARSession interruption ended, resetting session"));
    EXPECT_FALSE(view->session()->isRunning());
    EXPECT_FALSE(contains(log.lines(), "resetARSession"));
}
