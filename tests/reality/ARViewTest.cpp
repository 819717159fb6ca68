// Gestures on a model placed on the simulated room's table, driven by touches on the AR view.
#include "reality/ARView.h"

#include "arsession/ARWorldTrackingConfiguration.h"
#include "core/ManualScheduler.h"
#include "reality/AnchorEntity.h"
#include "reality/EntityGestures.h"
#include "reality/ModelEntity.h"

#include <QLineF>
#include <gtest/gtest.h>

namespace orvanta::reality {
namespace {

using arsession::ARPlaneAnchor;

struct ViewTest : ::testing::Test {
    std::shared_ptr<core::ManualScheduler> clock = std::make_shared<core::ManualScheduler>();
    ARView view{QSizeF(400, 800), nullptr, clock};
    std::shared_ptr<AnchorEntity> anchor;
    std::shared_ptr<ModelEntity> model;

    // As the dish screen does: a half-size model on the first table-sized horizontal plane,
    // shown once the session has found and grown the table.
    void SetUp() override {
        anchor = std::make_shared<AnchorEntity>(AnchoringComponent::plane(
            ARPlaneAnchor::Alignment::horizontal, AnchoringComponent::Classification::any(), QVector2D(0.2f, 0.2f)));
        anchor->setScale({0.5f, 0.5f, 0.5f});
        model = std::make_shared<ModelEntity>(MeshResource::generateBox(0.2f), std::vector<Material>{SimpleMaterial{}});
        anchor->addChild(model);
        view.scene().anchors().append(anchor);
        model->generateCollisionShapes(true);
        view.installGestures(EntityGestures::all, model);
        arsession::ARWorldTrackingConfiguration configuration;
        configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
        view.session()->run(configuration);
        clock->advance(4.0);
    }

    QPointF onScreen(const QVector3D& world) const {
        return *view.session()->currentFrame()->camera.projectPoint(world, view.frameSize());
    }

    void touch(TouchEvent::Phase phase, std::vector<QPointF> touches) { view.handleTouches({phase, std::move(touches)}); }
};

TEST_F(ViewTest, ATapPicksTheNearestOfTwoEntitiesOnItsRay) {
    // A second box on the same line of sight, further from the camera than the model.
    const QVector3D camera = view.session()->currentFrame()->camera.position();
    const QVector3D target = model->position(nullptr);
    auto farther = std::make_shared<ModelEntity>(MeshResource::generateBox(0.2f), std::vector<Material>{SimpleMaterial{}});
    auto world = std::make_shared<AnchorEntity>();
    world->setPosition(target + (target - camera).normalized() * 0.5f);
    world->addChild(farther);
    farther->generateCollisionShapes(true);
    view.scene().anchors().append(world);
    clock->advance(1.0 / 60.0);
    EXPECT_EQ(view.entity(onScreen(target)), model);
}

TEST_F(ViewTest, DragMovesTheModelUnderTheFingerAcrossTheTable) {
    const QPointF start = onScreen(model->position(nullptr));
    EXPECT_EQ(view.entity(start), model);
    const float height = model->position(nullptr).y();

    touch(TouchEvent::Phase::began, {start});
    touch(TouchEvent::Phase::moved, {start + QPointF(20, -10)});
    touch(TouchEvent::Phase::moved, {start + QPointF(60, -40)});
    touch(TouchEvent::Phase::ended, {});
    EXPECT_LT(QLineF(onScreen(model->position(nullptr)), start + QPointF(60, -40)).length(), 0.7);
    EXPECT_NEAR(model->position(nullptr).y(), height, 1e-5f);
    EXPECT_EQ(model->parent(), anchor);

    // Moves after the finger lifted do nothing; a touch beside the model grabs nothing.
    const QVector3D placed = model->position();
    touch(TouchEvent::Phase::moved, {start});
    touch(TouchEvent::Phase::began, {QPointF(10, 10)});
    touch(TouchEvent::Phase::moved, {QPointF(200, 400)});
    touch(TouchEvent::Phase::ended, {});
    EXPECT_EQ(model->position(), placed);
}

TEST_F(ViewTest, TwistTurnsTheModelAboutTheVerticalAxisAndPinchScalesIt) {
    const QPointF c = onScreen(model->position(nullptr));
    touch(TouchEvent::Phase::began, {c - QPointF(30, 0), c + QPointF(30, 0)});
    touch(TouchEvent::Phase::moved, {c - QPointF(21, 21), c + QPointF(21, 21)});
    touch(TouchEvent::Phase::moved, {c - QPointF(0, 30), c + QPointF(0, 30)}); // a quarter turn clockwise
    touch(TouchEvent::Phase::ended, {});
    // Clockwise seen from above is −90° about +y; the fingers kept their distance, so no scaling.
    const QQuaternion expected = QQuaternion::fromAxisAndAngle(0, 1, 0, -90);
    EXPECT_NEAR(std::abs(QQuaternion::dotProduct(model->orientation(nullptr), expected)), 1.0f, 1e-5f);
    EXPECT_LT((model->scale() - QVector3D(1, 1, 1)).length(), 1e-5f);
    EXPECT_LT((model->position() - QVector3D()).length(), 1e-6f); // two fingers do not drag

    // Pinching apart to twice the distance doubles the size.
    touch(TouchEvent::Phase::began, {c - QPointF(20, 0), c + QPointF(20, 0)});
    touch(TouchEvent::Phase::moved, {c - QPointF(40, 0), c + QPointF(40, 0)});
    touch(TouchEvent::Phase::ended, {});
    EXPECT_LT((model->scale() - QVector3D(2, 2, 2)).length(), 1e-5f);
    EXPECT_LT((model->visualBounds(true, nullptr).extents() - QVector3D(0.2f, 0.2f, 0.2f)).length(), 1e-5f);
}

} // namespace
} // namespace orvanta::reality
