#include "focus/FocusIndicator.h"
#include "focus/FocusIndicatorDelegate.h"
#include "focus/Matrix4x4Extensions.h"

#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "reality/ARView.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

using namespace orvanta;
using focus::FocusIndicator;
using State = FocusIndicator::State;

namespace {

arsession::ARRaycastResult offPlaneHit(const QVector3D& position) {
    arsession::ARRaycastResult hit;
    focus::setTranslation(hit.worldTransform, position);
    return hit;
}

arsession::ARRaycastResult planeHit(const QVector3D& position) {
    arsession::ARRaycastResult hit = offPlaneHit(position);
    hit.target = arsession::ARRaycastQuery::Target::existingPlaneGeometry;
    arsession::ARPlaneAnchor anchor;
    anchor.identifier = QUuid(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    anchor.extent = QVector3D(1.0f, 0.0f, 1.0f);
    hit.anchor = anchor;
    return hit;
}

struct RecordingDelegate : focus::FocusIndicatorDelegate {
    std::vector<std::pair<State, std::optional<State>>> updates;
    std::vector<std::pair<QUuid, QUuid>> planeChanges; // (new, old)
    void focusIndicatorTrackingUpdated(FocusIndicator&, const State& state, const State* oldState) override {
        updates.emplace_back(state, oldState ? std::optional<State>(*oldState) : std::nullopt);
    }
    void focusIndicatorPlaneChanged(FocusIndicator&, const arsession::ARPlaneAnchor* plane,
                                    const arsession::ARPlaneAnchor* oldPlane) override {
        planeChanges.emplace_back(plane ? plane->identifier : QUuid(), oldPlane ? oldPlane->identifier : QUuid());
    }
};

// The square's normal in world space (the square faces the indicator's +z).
QVector3D squareNormal(const FocusIndicator& indicator) {
    return indicator.orientation().rotatedVector(QVector3D(0, 0, 1));
}

} // namespace

// A classic square in a view whose session runs only when a test says so; states can be set
// by hand meanwhile (no frames, identity camera).
class FocusIndicatorTest : public ::testing::Test {
protected:
    std::shared_ptr<reality::ARView> view = std::make_shared<reality::ARView>();
    std::shared_ptr<FocusIndicator> indicator =
        FocusIndicator::make(view, focus::FocusIndicatorComponent::classic());
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();

    void SetUp() override { indicator->setDelegate(delegate); }

    // Runs the session on the simulated room (a table 0.75 m high) for `frames` frames.
    void runFrames(int frames) {
        if (!view->session()->isRunning()) {
            arsession::ARWorldTrackingConfiguration configuration;
            configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
            view->session()->run(configuration);
        }
        const auto main = std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main());
        for (int i = 0; i < frames; ++i) main->advance(1.0 / 60.0);
    }
    // One metre ahead of the current camera.
    QVector3D inFrontOfCamera() const {
        const QMatrix4x4 camera = view->cameraTransform();
        return focus::translation(camera) - camera.column(2).toVector3D();
    }
};

TEST_F(FocusIndicatorTest, OnlyAChangeOfStateReachesTheDelegateAndDestroyFreesTheSquare) {
    indicator->setState(State::initializing());
    EXPECT_TRUE(delegate->updates.empty());

    const State tracking = State::tracking(offPlaneHit({0, 0, -1}), std::nullopt);
    indicator->setState(tracking);
    indicator->setState(tracking);
    ASSERT_EQ(delegate->updates.size(), 1u);
    EXPECT_EQ(delegate->updates[0].first, tracking);
    EXPECT_EQ(delegate->updates[0].second, State::initializing());

    // A different camera is a different state.
    indicator->setState(State::tracking(offPlaneHit({0, 0, -1}), arsession::ARCamera{}));
    EXPECT_EQ(delegate->updates.size(), 2u);

    const std::weak_ptr<FocusIndicator> weak = indicator;
    indicator->destroy();
    EXPECT_TRUE(view->scene().anchors().empty());
    indicator.reset();
    EXPECT_TRUE(weak.expired());
}

// The classic square's bars close on a plane and reopen off it; the plane style's fill takes the state's colour.
TEST_F(FocusIndicatorTest, ClassicBarsCloseOnAPlaneAndTheFillColourFollowsTheState) {
    const auto colored = FocusIndicator::make(view, focus::FocusIndicatorComponent::plane());
    const auto style = *focus::FocusIndicatorComponent::plane().coloredStyle();
    ASSERT_TRUE(colored->fillPlane());
    const auto fillColour = [&] { return std::get<reality::UnlitMaterial>(colored->fillPlane()->model()->materials.at(0)).color; };
    EXPECT_EQ(fillColour(), style.nonTrackingColor);
    const auto setState = [&](const State& state) {
        indicator->setState(state);
        colored->setState(state);
    };
    std::vector<QVector3D> closedPositions;
    for (const auto& bar : indicator->segments()) closedPositions.push_back(bar->position());
    const auto expectClosed = [&] {
        EXPECT_FALSE(indicator->isOpen());
        for (std::size_t i = 0; i < closedPositions.size(); ++i)
            EXPECT_EQ(indicator->segments()[i]->position(), closedPositions[i]) << "bar " << i;
    };
    setState(State::tracking(planeHit({0, 0, -1}), std::nullopt));
    expectClosed();
    EXPECT_EQ(fillColour(), style.onColor);
    setState(State::tracking(offPlaneHit({0, 0, -1}), std::nullopt));
    EXPECT_TRUE(indicator->isOpen());
    EXPECT_NE(indicator->segments()[0]->position(), closedPositions[0]);
    EXPECT_EQ(fillColour(), style.offColor);
    setState(State::tracking(planeHit({0, 0, -1}), std::nullopt));
    expectClosed();
}

TEST_F(FocusIndicatorTest, WithNoRaycastTargetsTheSquareStaysInFrontOfTheCamera) {
    indicator->setAllowedRaycasts({});
    runFrames(300); // tracking normal and the table found long since
    ASSERT_TRUE(view->session()->currentFrame()->camera.trackingState.isNormal());
    EXPECT_TRUE(indicator->state().isInitializing());
    EXPECT_LT(indicator->position().distanceToPoint(inFrontOfCamera()), 0.01f);
    EXPECT_TRUE(delegate->updates.empty());
    // Facing the camera: the square's normal points back along the view.
    EXPECT_GT(QVector3D::dotProduct(squareNormal(*indicator), view->cameraTransform().column(2).toVector3D()), 0.99f);
}

TEST_F(FocusIndicatorTest, FromStartToASquareLyingOnTheTable) {
    runFrames(300); // 5 s: tracking normal at 1.2 s, table found at 1.7 s and grown
    ASSERT_TRUE(indicator->state().isTracking());
    ASSERT_TRUE(indicator->currentPlaneAnchor());
    EXPECT_EQ(indicator->currentPlaneAnchor()->classification, arsession::ARPlaneAnchor::Classification::table);
    EXPECT_EQ(indicator->currentAlignment(), arsession::ARPlaneAnchor::Alignment::horizontal);
    EXPECT_FALSE(indicator->isChangingAlignment());
    EXPECT_FALSE(indicator->isOpen());
    EXPECT_NEAR(indicator->position().y(), 0.75f, 1e-4f);
    EXPECT_LT(indicator->position().distanceToPoint({0, 0.75f, -0.6f}), 0.05f);
    EXPECT_NEAR(squareNormal(*indicator).y(), 1.0f, 1e-4f);
    const float distance = focus::translation(view->cameraTransform()).distanceToPoint(indicator->position());
    EXPECT_NEAR(indicator->scale().x(), 0.25f * distance + 0.825f, 1e-4f);
    ASSERT_FALSE(delegate->updates.empty());
    EXPECT_TRUE(delegate->updates.front().second->isInitializing());
}

TEST_F(FocusIndicatorTest, OffAPlaneTheSquareEasesTowardsTheHitInsteadOfJumping) {
    // Settle the square flat on an estimated horizontal surface, then show it facing the camera.
    for (int i = 0; i < 200; ++i) indicator->setState(State::tracking(offPlaneHit({0, 0, -1}), std::nullopt));
    const QQuaternion flat = indicator->orientation();
    indicator->setState(State::initializing());
    indicator->setOrientation(QQuaternion::fromAxisAndAngle(1, 0, 0, 90)); // standing up, like a billboard
    const float before = QVector3D::dotProduct(squareNormal(*indicator), flat.rotatedVector(QVector3D(0, 0, 1)));

    indicator->setState(State::tracking(offPlaneHit({0, 0, -1.01f}), std::nullopt));
    const float after = QVector3D::dotProduct(squareNormal(*indicator), flat.rotatedVector(QVector3D(0, 0, 1)));
    EXPECT_GT(after, before);   // it turned towards the surface…
    EXPECT_LT(after, 0.999f);   // …without getting there in one frame
    EXPECT_TRUE(indicator->isChangingAlignment());
}

TEST_F(FocusIndicatorTest, PlaneChangesReportNewThenOldAndOneVerticalHitDoesNotFlipTheSquare) {
    auto onA = planeHit({0, 0, -1});
    auto onB = planeHit({0, 0, -1.1f});
    onB.anchor->identifier = QUuid(2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    indicator->setState(State::tracking(onA, std::nullopt));
    indicator->setState(State::tracking(onB, std::nullopt));
    ASSERT_EQ(delegate->planeChanges.size(), 2u);
    EXPECT_EQ(delegate->planeChanges[1], std::make_pair(onB.anchor->identifier, onA.anchor->identifier));

    for (int i = 0; i < 20; ++i) indicator->setState(State::tracking(offPlaneHit({0, 0, -1.0f - 0.001f * i}), std::nullopt));
    ASSERT_EQ(indicator->currentAlignment(), arsession::ARPlaneAnchor::Alignment::horizontal);
    auto vertical = offPlaneHit({0, 0, -1.5f});
    vertical.targetAlignment = arsession::ARRaycastQuery::TargetAlignment::vertical;
    indicator->setState(State::tracking(vertical, std::nullopt));
    EXPECT_EQ(indicator->currentAlignment(), arsession::ARPlaneAnchor::Alignment::horizontal);
}
