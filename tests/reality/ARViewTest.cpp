// The AR view over a simulated room: placing a model on the table, ray casts from the
// screen, gestures on the model, snapshots and the per-frame update.
#include "reality/ARView.h"

#include "arsession/ARWorldTrackingConfiguration.h"
#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "reality/AnchorEntity.h"
#include "reality/EntityGestures.h"
#include "reality/ModelEntity.h"

#include <gtest/gtest.h>

namespace orvanta::reality {
namespace {

using arsession::ARPlaneAnchor;
using arsession::ARRaycastQuery;

struct ViewTest : ::testing::Test {
    std::shared_ptr<core::ManualScheduler> clock = std::make_shared<core::ManualScheduler>();
    ARView view{QSizeF(400, 800), nullptr, clock};
    std::shared_ptr<AnchorEntity> anchor;
    std::shared_ptr<ModelEntity> model;

    void SetUp() override {
        arsession::ARWorldTrackingConfiguration configuration;
        configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
        view.session()->run(configuration);
    }

    // As the dish screen does: a half-size model on the first table-sized horizontal plane.
    void placeModel() {
        anchor = std::make_shared<AnchorEntity>(AnchoringComponent::plane(
            ARPlaneAnchor::Alignment::horizontal, AnchoringComponent::Classification::any(), QVector2D(0.2f, 0.2f)));
        anchor->setScale({0.5f, 0.5f, 0.5f});
        model = std::make_shared<ModelEntity>(MeshResource::generateBox(0.2f), std::vector<Material>{SimpleMaterial{}});
        anchor->addChild(model);
        view.scene().anchors().append(anchor);
        model->generateCollisionShapes(true);
        view.installGestures(EntityGestures::all, model);
    }

    QPointF onScreen(const QVector3D& world) const {
        return *view.session()->currentFrame()->camera.projectPoint(world, view.frameSize());
    }

    void touch(TouchEvent::Phase phase, std::vector<QPointF> touches) { view.handleTouches({phase, std::move(touches)}); }
};

void expectNear(QPointF actual, QPointF expected, double tolerance = 0.5) {
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
}

TEST_F(ViewTest, ModelShowsOnTheTableOnlyOnceItsPlaneIsLargeEnough) {
    placeModel();
    clock->advance(1.9); // the table is known from 1.7 s but still shallower than 0.2 m
    EXPECT_FALSE(model->isActive());
    const QPointF centre = view.center();
    touch(TouchEvent::Phase::began, {centre}); // nothing to grab yet
    touch(TouchEvent::Phase::moved, {centre + QPointF(50, 0)});
    touch(TouchEvent::Phase::ended, {});
    EXPECT_EQ(model->position(), QVector3D());

    clock->advance(0.2);
    EXPECT_TRUE(model->isActive());
    EXPECT_LT((model->position(nullptr) - QVector3D(0, 0.75f, -0.6f)).length(), 1e-5f);
    EXPECT_LT((model->visualBounds(true, nullptr).extents() - QVector3D(0.1f, 0.1f, 0.1f)).length(), 1e-5f);
}

TEST_F(ViewTest, CameraAndScreenRaysComeFromTheSessionFrame) {
    EXPECT_EQ(view.cameraTransform(), QMatrix4x4());
    EXPECT_TRUE(view.raycast(view.center(), ARRaycastQuery::Target::estimatedPlane,
                             ARRaycastQuery::TargetAlignment::any)
                    .empty());
    clock->advance(4.0);
    EXPECT_EQ(view.cameraTransform(), view.session()->currentFrame()->camera.transform);
    const auto hits = view.raycast(view.center(), ARRaycastQuery::Target::existingPlaneGeometry,
                                   ARRaycastQuery::TargetAlignment::horizontal);
    ASSERT_FALSE(hits.empty());
    EXPECT_EQ(hits[0].anchor->classification, ARPlaneAnchor::Classification::table);
    EXPECT_NEAR(hits[0].position().y(), 0.75f, 1e-5f);
    // The screen centre's ray is the camera's forward axis.
    const auto ray = view.ray(view.center());
    EXPECT_LT((ray->direction - view.session()->currentFrame()->camera.forward()).length(), 1e-5f);
    view.setFrameSize({});
    EXPECT_FALSE(view.ray({0, 0}));
}

TEST_F(ViewTest, DragMovesTheModelUnderTheFingerAcrossTheTable) {
    placeModel();
    clock->advance(4.0);
    const QPointF start = onScreen(model->position(nullptr));
    EXPECT_EQ(view.entity(start), model);
    const float height = model->position(nullptr).y();

    touch(TouchEvent::Phase::began, {start});
    touch(TouchEvent::Phase::moved, {start + QPointF(20, -10)});
    touch(TouchEvent::Phase::moved, {start + QPointF(60, -40)});
    touch(TouchEvent::Phase::ended, {});
    expectNear(onScreen(model->position(nullptr)), start + QPointF(60, -40));
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

TEST_F(ViewTest, TwistTurnsTheModelAboutTheVerticalAxis) {
    placeModel();
    clock->advance(4.0);
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
}

TEST_F(ViewTest, PinchScalesTheModel) {
    placeModel();
    clock->advance(4.0);
    const QPointF c = onScreen(model->position(nullptr));
    touch(TouchEvent::Phase::began, {c - QPointF(20, 0), c + QPointF(20, 0)});
    touch(TouchEvent::Phase::moved, {c - QPointF(40, 0), c + QPointF(40, 0)});
    touch(TouchEvent::Phase::ended, {});
    EXPECT_LT((model->scale() - QVector3D(2, 2, 2)).length(), 1e-5f);
    EXPECT_LT((model->visualBounds(true, nullptr).extents() - QVector3D(0.2f, 0.2f, 0.2f)).length(), 1e-5f);
}

TEST_F(ViewTest, SnapshotGoesThroughTheInstalledRenderer) {
    auto main = std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main());
    ASSERT_TRUE(main);
    std::vector<std::string> results;
    const auto record = [&](std::optional<QImage> image) {
        results.push_back(image ? std::to_string(image->width()) + "x" + std::to_string(image->height()) : "none");
    };
    view.snapshot(false, record);
    EXPECT_TRUE(results.empty()); // delivered on the main queue, never inside the call
    main->runPending();
    EXPECT_EQ(results, (std::vector<std::string>{"none"}));

    struct Painter : SnapshotRenderer {
        bool hdr = false;
        void renderSnapshot(const ARView& v, bool saveToHDR, Completion completion) override {
            hdr = saveToHDR;
            completion(QImage(v.frameSize().toSize(), QImage::Format_RGBA8888));
        }
    };
    auto painter = std::make_shared<Painter>();
    view.setSnapshotRenderer(painter);
    view.snapshot(true, record);
    EXPECT_EQ(results, (std::vector<std::string>{"none", "400x800"}));
    EXPECT_TRUE(painter->hdr);
}

TEST_F(ViewTest, EachSessionFrameStepsTheSceneWithTheElapsedTime) {
    std::vector<double> deltas;
    auto subscription = view.scene().subscribeToUpdate([&](const SceneUpdateEvent& e) { deltas.push_back(e.deltaTime); });
    clock->advance(0.05 + 1e-9);
    ASSERT_EQ(deltas.size(), 3u);
    EXPECT_EQ(deltas[0], 0.0);
    EXPECT_NEAR(deltas[1], 1.0 / 60, 1e-9);
    EXPECT_NEAR(deltas[2], 1.0 / 60, 1e-9);

    view.setAutomaticUpdates(false); // a renderer drives the steps itself
    clock->advance(0.1);
    EXPECT_EQ(deltas.size(), 3u);
    view.stepFrame();
    ASSERT_EQ(deltas.size(), 4u);
    EXPECT_NEAR(deltas[3], 0.1, 1e-6);
}

} // namespace
} // namespace orvanta::reality
