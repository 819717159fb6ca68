#include "focus/FocusIndicator.h"
#include "focus/FocusIndicatorDelegate.h"
#include "focus/Matrix4x4Extensions.h"

#include "arsession/ARSession.h"
#include "arsession/SimulatedWorld.h"
#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "reality/ARView.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

using namespace orvanta;
using focus::FocusIndicator;
using focus::FocusIndicatorComponent;
using State = FocusIndicator::State;
using PlaneAlignment = arsession::ARPlaneAnchor::Alignment;

namespace {

constexpr double kFrame = 1.0 / 60.0;

std::shared_ptr<core::ManualScheduler> mainQueue() {
    return std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main());
}

void advanceFrames(int frames) {
    for (int i = 0; i < frames; ++i) mainQueue()->advance(kFrame);
}

void runSession(reality::ARView& view) {
    arsession::ARWorldTrackingConfiguration configuration;
    configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
    view.session()->run(configuration);
}

QMatrix4x4 at(const QVector3D& position) {
    QMatrix4x4 m;
    focus::setTranslation(m, position);
    return m;
}

arsession::ARRaycastResult offPlaneHit(const QVector3D& position) {
    arsession::ARRaycastResult hit;
    hit.worldTransform = at(position);
    return hit;
}

arsession::ARRaycastResult planeHit(const QVector3D& position, const QUuid& plane, float extent = 1.0f) {
    arsession::ARRaycastResult hit = offPlaneHit(position);
    hit.target = arsession::ARRaycastQuery::Target::existingPlaneGeometry;
    arsession::ARPlaneAnchor anchor;
    anchor.identifier = plane;
    anchor.extent = QVector3D(extent, 0.0f, extent);
    hit.anchor = anchor;
    return hit;
}

struct RecordingDelegate : focus::FocusIndicatorDelegate {
    struct Update {
        State state;
        std::optional<State> oldState;
    };
    std::vector<Update> updates;
    std::vector<std::pair<std::optional<QUuid>, std::optional<QUuid>>> planeChanges;

    void focusIndicatorTrackingUpdated(FocusIndicator&, const State& state, const State* oldState) override {
        updates.push_back({state, oldState ? std::optional<State>(*oldState) : std::nullopt});
    }
    void focusIndicatorPlaneChanged(FocusIndicator&, const arsession::ARPlaneAnchor* plane,
                                    const arsession::ARPlaneAnchor* oldPlane) override {
        planeChanges.emplace_back(plane ? std::optional(plane->identifier) : std::nullopt,
                                  oldPlane ? std::optional(oldPlane->identifier) : std::nullopt);
    }
};

// The square's normal in world space (the square faces the indicator's +z).
QVector3D squareNormal(const FocusIndicator& indicator) {
    return indicator.orientation().rotatedVector(QVector3D(0, 0, 1));
}

} // namespace

// A view whose session has not run: no frames, identity camera, states set by hand.
class FocusIndicatorStateTest : public ::testing::Test {
protected:
    std::shared_ptr<reality::ARView> view = std::make_shared<reality::ARView>();
    std::shared_ptr<FocusIndicator> indicator = FocusIndicator::make(view, FocusIndicatorComponent::classic());
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();

    void SetUp() override { indicator->setDelegate(delegate); }
};

TEST_F(FocusIndicatorStateTest, StartsInitializingInTheSceneWithItsCameraAnchor) {
    EXPECT_EQ(indicator->name(), "FocusIndicator");
    EXPECT_TRUE(indicator->state().isInitializing());
    EXPECT_TRUE(indicator->isAutoUpdating());
    EXPECT_TRUE(view->scene().anchors().contains(indicator.get()));
    EXPECT_TRUE(view->scene().anchors().contains(indicator->cameraAnchor().get()));
    EXPECT_EQ(indicator->segments().size(), 8u);
    EXPECT_TRUE(indicator->isOpen());
    EXPECT_FLOAT_EQ(indicator->positioningEntity()->scale().x(), 0.1649f);
    EXPECT_TRUE(delegate->updates.empty());
}

TEST_F(FocusIndicatorStateTest, OnlyAChangeOfStateReachesTheDelegate) {
    indicator->setState(State::initializing());
    EXPECT_TRUE(delegate->updates.empty());

    const State tracking = State::tracking(offPlaneHit({0, 0, -1}), std::nullopt);
    indicator->setState(tracking);
    indicator->setState(tracking);
    ASSERT_EQ(delegate->updates.size(), 1u);
    EXPECT_EQ(delegate->updates[0].state, tracking);
    EXPECT_EQ(delegate->updates[0].oldState, State::initializing());

    // A different hit or a different camera is a different state.
    indicator->setState(State::tracking(offPlaneHit({0, 0, -1}), arsession::ARCamera{}));
    indicator->setState(State::initializing());
    ASSERT_EQ(delegate->updates.size(), 3u);
    EXPECT_TRUE(delegate->updates[2].state.isInitializing());
    EXPECT_TRUE(delegate->updates[2].oldState->isTracking());
}

TEST_F(FocusIndicatorStateTest, PlaneChangesAreReportedOncePerPlane) {
    const QUuid table = QUuid::createUuid();
    const QUuid floor = QUuid::createUuid();
    indicator->setState(State::tracking(planeHit({0, 0.75f, -1}, table, 0.1f), std::nullopt));
    indicator->setState(State::tracking(planeHit({0, 0.75f, -1}, table, 0.5f), std::nullopt)); // grown
    indicator->setState(State::tracking(planeHit({0, 0, -1}, floor), std::nullopt));
    EXPECT_EQ(delegate->updates.size(), 3u);
    ASSERT_EQ(delegate->planeChanges.size(), 2u);
    EXPECT_EQ(delegate->planeChanges[0], std::make_pair(std::optional(table), std::optional<QUuid>()));
    EXPECT_EQ(delegate->planeChanges[1], std::make_pair(std::optional(floor), std::optional(table)));
    EXPECT_EQ(indicator->currentPlaneAnchor()->extent.x(), 1.0f);
    EXPECT_EQ(indicator->anchorsOfVisitedPlanes().size(), 2u);
    EXPECT_TRUE(indicator->onPlane());
    EXPECT_TRUE(indicator->anchoring().has_value());
}

TEST_F(FocusIndicatorStateTest, StandsAtTheMeanOfTheLastTenHits) {
    for (int i = 0; i < 11; ++i) {
        indicator->setState(State::tracking(offPlaneHit({float(i), -1.0f, float(-2 * i)}), std::nullopt));
    }
    // Hits 1…10; hit 0 has left the mean.
    EXPECT_EQ(indicator->position(), QVector3D(5.5f, -1.0f, -11.0f));
}

TEST_F(FocusIndicatorStateTest, ScalesWithTheDistanceFromTheCamera) {
    // No frame yet: the camera stands at the origin.
    indicator->setState(State::tracking(offPlaneHit({0, 0, -2}), std::nullopt));
    EXPECT_FLOAT_EQ(indicator->scale().x(), 1.325f);
    EXPECT_EQ(indicator->scale(), QVector3D(1.325f, 1.325f, 1.325f));

    arsession::ARCamera near;
    near.transform = at({0, 0, -1.65f});
    EXPECT_NEAR(indicator->scaleBasedOnDistance(&near), 0.5f, 1e-5f);
    EXPECT_FLOAT_EQ(indicator->scaleBasedOnDistance(nullptr), 1.0f);

    indicator->setScaleEntityBasedOnDistance(false);
    indicator->setState(State::tracking(offPlaneHit({0, 0, -0.35f}), std::nullopt));
    EXPECT_FLOAT_EQ(indicator->scale().x(), 1.325f);
}

TEST_F(FocusIndicatorStateTest, ClassicBarsCloseOnAPlaneOnceAndOpenOffIt) {
    std::vector<QVector3D> closedPositions;
    for (const auto& bar : indicator->segments()) closedPositions.push_back(bar->position());

    const QUuid plane = QUuid::createUuid();
    indicator->setState(State::tracking(planeHit({0, 0, -1}, plane), std::nullopt));
    EXPECT_FALSE(indicator->isOpen());
    indicator->setState(State::tracking(planeHit({0, 0, -1.1f}, plane), std::nullopt));
    EXPECT_FALSE(indicator->isOpen());
    for (std::size_t i = 0; i < closedPositions.size(); ++i) EXPECT_EQ(indicator->segments()[i]->position(), closedPositions[i]);

    indicator->setState(State::tracking(offPlaneHit({0, 0, -1}), std::nullopt));
    EXPECT_TRUE(indicator->isOpen());
    EXPECT_FLOAT_EQ(indicator->positioningEntity()->scale().x(), 0.17f);
    EXPECT_FLOAT_EQ(indicator->segments()[0]->scale().x(), 0.2f);
    EXPECT_NE(indicator->segments()[0]->position(), closedPositions[0]);

    indicator->setState(State::tracking(planeHit({0, 0, -1}, plane), std::nullopt));
    for (std::size_t i = 0; i < closedPositions.size(); ++i) EXPECT_EQ(indicator->segments()[i]->position(), closedPositions[i]);
}

TEST_F(FocusIndicatorStateTest, FirstAlignmentTurnsSmoothlyAndEndsByItself) {
    // The square starts facing +z (no camera yet); the first floor hit turns it to lie flat.
    int frames = 0;
    do {
        indicator->setState(State::tracking(offPlaneHit({0, 0, -1.0f - 0.01f * frames}), std::nullopt));
        if (frames == 0) {
            EXPECT_EQ(indicator->currentAlignment(), PlaneAlignment::horizontal);
            EXPECT_TRUE(indicator->isChangingAlignment());
            EXPECT_LT(squareNormal(*indicator).y(), 0.5f); // 15 % of the way, not a jump
        }
        ASSERT_LT(++frames, 100);
    } while (indicator->isChangingAlignment());
    EXPECT_GT(frames, 20);
    EXPECT_GT(squareNormal(*indicator).y(), 0.998f); // within the done threshold
    // Once the turn has ended, the next hit sets the rotation outright.
    indicator->setState(State::tracking(offPlaneHit({0, 0, -0.5f}), std::nullopt));
    EXPECT_NEAR(squareNormal(*indicator).y(), 1.0f, 1e-5f);

    // A turn to where the square already is ends after one frame.
    indicator->performAlignmentAnimation(indicator->orientation());
    EXPECT_FALSE(indicator->isChangingAlignment());
}

TEST_F(FocusIndicatorStateTest, AlignmentVoteNeedsABareMajorityForAWall) {
    QMatrix4x4 wall = at({0, 0, -2});
    wall.rotate(90.0f, 1, 0, 0); // y (the normal) → +z, facing the camera
    arsession::ARRaycastResult wallHit = offPlaneHit({0, 0, -2});
    wallHit.worldTransform = wall;
    wallHit.targetAlignment = arsession::ARRaycastQuery::TargetAlignment::vertical;

    for (int i = 0; i < 40; ++i) indicator->setState(State::tracking(offPlaneHit({0, 0, -1.0f - 0.01f * i}), std::nullopt));
    EXPECT_EQ(indicator->currentAlignment(), PlaneAlignment::horizontal);
    EXPECT_FALSE(indicator->isChangingAlignment());

    for (int i = 0; i < 10; ++i) {
        wallHit.distance = float(i); // each hit a new state
        indicator->setState(State::tracking(wallHit, std::nullopt));
    }
    EXPECT_EQ(indicator->currentAlignment(), PlaneAlignment::horizontal); // 10 of 20 is no majority
    // Outside an alignment turn the square follows each hit's surface at once.
    EXPECT_NEAR(squareNormal(*indicator).z(), 1.0f, 1e-5f);
    wallHit.distance = 10.0f;
    indicator->setState(State::tracking(wallHit, std::nullopt)); // 11 of 20
    EXPECT_EQ(indicator->currentAlignment(), PlaneAlignment::vertical);
    EXPECT_FALSE(indicator->isChangingAlignment()); // already there
}

TEST_F(FocusIndicatorStateTest, DestroyTakesTheSquareOutOfItsScene) {
    std::weak_ptr<FocusIndicator> weak = indicator;
    indicator->destroy();
    EXPECT_FALSE(indicator->isAutoUpdating());
    EXPECT_TRUE(view->scene().anchors().empty());
    EXPECT_TRUE(indicator->children().empty());
    EXPECT_EQ(indicator->cameraAnchor(), nullptr);
    indicator.reset();
    EXPECT_TRUE(weak.expired());
}

TEST(FocusIndicatorComponent, DefaultsAndReadyMadeValues) {
    const FocusIndicatorComponent classic = FocusIndicatorComponent::classic();
    EXPECT_TRUE(classic.isOpen);
    EXPECT_TRUE(classic.segments.empty());
    EXPECT_EQ(classic.allowedRaycasts, (std::vector{arsession::ARRaycastQuery::Target::existingPlaneGeometry,
                                                    arsession::ARRaycastQuery::Target::estimatedPlane}));
    ASSERT_TRUE(classic.classicStyle());
    EXPECT_EQ(classic.classicStyle()->color, QColor::fromRgbF(1.0f, 0.8f, 0.0f, 1.0f));
    EXPECT_FALSE(classic.coloredStyle());

    const FocusIndicatorComponent plane = FocusIndicatorComponent::plane();
    EXPECT_FALSE(plane.classicStyle());
    ASSERT_TRUE(plane.coloredStyle());
    EXPECT_EQ(plane.coloredStyle()->mesh, FocusIndicatorComponent::defaultPlane());
    EXPECT_FLOAT_EQ(plane.coloredStyle()->nonTrackingColor.alphaF(), 0.2f);
}

TEST(FocusIndicatorColored, FillColourFollowsTheState) {
    auto view = std::make_shared<reality::ARView>();
    const auto indicator = FocusIndicator::make(view, FocusIndicatorComponent::plane());
    const auto style = *FocusIndicatorComponent::plane().coloredStyle();
    const auto fillColour = [&] {
        return std::get<reality::UnlitMaterial>(indicator->fillPlane()->model()->materials.at(0)).color;
    };
    ASSERT_TRUE(indicator->fillPlane());
    EXPECT_TRUE(indicator->segments().empty());
    EXPECT_EQ(fillColour(), style.nonTrackingColor);
    indicator->setState(State::tracking(planeHit({0, 0, -1}, QUuid::createUuid()), std::nullopt));
    EXPECT_EQ(fillColour(), style.onColor);
    indicator->setState(State::tracking(offPlaneHit({0, 0, -1}), std::nullopt));
    EXPECT_EQ(fillColour(), style.offColor);
    indicator->setState(State::initializing());
    EXPECT_EQ(fillColour(), style.nonTrackingColor);
}

// A session on the simulated room: the camera looks down at a table 0.75 m high.
class FocusIndicatorSessionTest : public ::testing::Test {
protected:
    std::shared_ptr<reality::ARView> view = std::make_shared<reality::ARView>();
    std::shared_ptr<FocusIndicator> indicator = FocusIndicator::make(view, FocusIndicatorComponent::classic());
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();

    void SetUp() override {
        indicator->setDelegate(delegate);
        runSession(*view);
    }
    // One metre ahead of the current camera.
    QVector3D inFrontOfCamera() const {
        const QMatrix4x4 camera = view->cameraTransform();
        return focus::translation(camera) - camera.column(2).toVector3D();
    }
};

TEST_F(FocusIndicatorSessionTest, WithNoRaycastTargetsTheSquareStaysInFrontOfTheCamera) {
    indicator->setAllowedRaycasts({});
    advanceFrames(300); // tracking normal and the table found long since
    ASSERT_TRUE(view->session()->currentFrame()->camera.trackingState.isNormal());
    EXPECT_FALSE(indicator->smartRaycast());
    EXPECT_TRUE(indicator->state().isInitializing());
    EXPECT_LT(indicator->position().distanceToPoint(inFrontOfCamera()), 0.01f);
    EXPECT_TRUE(delegate->updates.empty());
    // Facing the camera: the square's normal points back along the view.
    EXPECT_GT(QVector3D::dotProduct(squareNormal(*indicator), view->cameraTransform().column(2).toVector3D()), 0.99f);
}

TEST_F(FocusIndicatorSessionTest, FromStartToASquareLyingOnTheTable) {
    advanceFrames(30); // tracking not normal yet
    EXPECT_FALSE(view->session()->currentFrame()->camera.trackingState.isNormal());
    EXPECT_TRUE(indicator->state().isInitializing());
    EXPECT_LT(indicator->position().distanceToPoint(inFrontOfCamera()), 0.01f);

    advanceFrames(270); // 5 s: tracking normal at 1.2 s, table found at 1.7 s and grown
    ASSERT_TRUE(indicator->state().isTracking());
    EXPECT_TRUE(indicator->onPlane());
    ASSERT_TRUE(indicator->currentPlaneAnchor());
    EXPECT_EQ(indicator->currentPlaneAnchor()->classification, arsession::ARPlaneAnchor::Classification::table);
    EXPECT_EQ(indicator->currentAlignment(), PlaneAlignment::horizontal);
    EXPECT_FALSE(indicator->isChangingAlignment());
    EXPECT_FALSE(indicator->isOpen());
    EXPECT_NEAR(indicator->position().y(), 0.75f, 1e-4f);
    EXPECT_LT(indicator->position().distanceToPoint({0, 0.75f, -0.6f}), 0.05f);
    EXPECT_NEAR(squareNormal(*indicator).y(), 1.0f, 1e-4f);
    const float distance = focus::translation(view->cameraTransform()).distanceToPoint(indicator->position());
    EXPECT_NEAR(indicator->scale().x(), 0.25f * distance + 0.825f, 1e-4f);
    EXPECT_TRUE(indicator->isActive());

    // The delegate heard the way there: estimated surface first or the table directly, then
    // a new state every frame the swaying camera moves.
    ASSERT_FALSE(delegate->updates.empty());
    EXPECT_TRUE(delegate->updates.front().oldState->isInitializing());
    ASSERT_FALSE(delegate->planeChanges.empty());
    EXPECT_EQ(delegate->planeChanges.front().second, std::nullopt);
}
