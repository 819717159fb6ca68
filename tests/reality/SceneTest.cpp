// Anchoring rules and the per-frame update event, driven by hand-made frames.
#include "reality/AnchorEntity.h"
#include "reality/Scene.h"

#include <gtest/gtest.h>

#include <utility>

namespace orvanta::reality {
namespace {

using arsession::ARFrame;
using arsession::ARPlaneAnchor;
using Alignment = ARPlaneAnchor::Alignment;
using Classification = ARPlaneAnchor::Classification;

ARPlaneAnchor plane(int id, QVector3D origin, float width, float depth, Alignment alignment = Alignment::horizontal,
                    Classification classification = Classification::table) {
    ARPlaneAnchor p;
    p.identifier = QUuid(id, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    p.transform.translate(origin);
    p.alignment = alignment;
    p.center = QVector3D(0.1f, 0, 0);
    p.extent = QVector3D(width, 0, depth);
    p.classification = classification;
    return p;
}

TEST(SceneTest, PlaneAnchorWaitsForAPlaneLargeEnoughAndShowsNothingUntilThen) {
    Scene scene;
    auto anchor = std::make_shared<AnchorEntity>(AnchoringComponent::plane(
        Alignment::horizontal, AnchoringComponent::Classification::any(), QVector2D(0.2f, 0.2f)));
    anchor->setScale({0.5f, 0.5f, 0.5f});
    auto model = std::make_shared<Entity>("dish");
    anchor->addChild(model);
    scene.anchors().append(anchor);

    scene.update(nullptr, 0.0);
    EXPECT_FALSE(model->isActive());
    ARFrame frame;
    frame.anchors = {plane(1, {0, 0.75f, -0.6f}, 0.3f, 0.15f),                    // too shallow
                     plane(2, {0, 1, -2}, 1.0f, 1.0f, Alignment::vertical, Classification::wall)}; // wrong alignment
    scene.update(&frame, 1.0 / 60);
    EXPECT_FALSE(anchor->isAnchored());
    EXPECT_FALSE(model->isActive());

    frame.anchors[0].extent = QVector3D(0.3f, 0, 0.2f); // exactly the minimum counts
    scene.update(&frame, 1.0 / 60);
    EXPECT_TRUE(model->isActive());
    EXPECT_EQ(anchor->anchorIdentifier(), frame.anchors[0].identifier);
    EXPECT_TRUE(qFuzzyCompare(anchor->position(nullptr), QVector3D(0.1f, 0.75f, -0.6f))); // the plane's centre
    EXPECT_TRUE(qFuzzyCompare(anchor->scale(), QVector3D(0.5f, 0.5f, 0.5f)));              // its own scale kept

    // It stays on its plane while that plane is known, even when a better one appears first in the list.
    frame.anchors.insert(frame.anchors.begin(), plane(3, {0, 0, 0}, 4, 4, Alignment::horizontal, Classification::floor));
    frame.anchors[1].transform.translate(0, 0, 0.05f);
    scene.update(&frame, 1.0 / 60);
    EXPECT_EQ(anchor->anchorIdentifier(), frame.anchors[1].identifier);
    EXPECT_NEAR(anchor->position(nullptr).z(), -0.55f, 1e-6f);

    // When its plane goes, it moves to the next fitting plane.
    frame.anchors.erase(frame.anchors.begin() + 1);
    scene.update(&frame, 1.0 / 60);
    EXPECT_EQ(anchor->anchorIdentifier(), frame.anchors[0].identifier);
    frame.anchors.clear();
    scene.update(&frame, 1.0 / 60);
    EXPECT_FALSE(model->isActive());
}

TEST(SceneTest, CameraAnchorFollowsTheCameraAndWorldAnchorsStandAtOnce) {
    Scene scene;
    auto camera = std::make_shared<AnchorEntity>(AnchoringComponent::camera());
    QMatrix4x4 at;
    at.translate(1, 2, 3);
    auto world = std::make_shared<AnchorEntity>(at);
    scene.addAnchor(camera);
    scene.addAnchor(world);
    EXPECT_TRUE(world->isAnchored());
    EXPECT_FALSE(camera->isAnchored());

    ARFrame frame;
    frame.camera.transform.translate(0, 1.4f, 0.3f);
    frame.camera.transform.rotate(-30, 1, 0, 0);
    scene.update(&frame, 0);
    EXPECT_TRUE(camera->isAnchored());
    // One metre ahead of the camera, in world space.
    const QVector3D ahead = camera->convertPositionTo({0, 0, -1}, nullptr);
    EXPECT_TRUE(qFuzzyCompare(ahead, frame.camera.transform.map({0, 0, -1})));
    EXPECT_TRUE(qFuzzyCompare(world->position(nullptr), QVector3D(1, 2, 3)));
}

TEST(SceneTest, UpdateEventReachesSubscribersUntilCancelled) {
    Scene scene;
    std::vector<std::string> calls;
    core::Cancellable second;
    core::Cancellable late;
    bool subscribedLate = false;
    auto first = scene.subscribeToUpdate([&](const SceneUpdateEvent& e) {
        calls.push_back("first " + std::to_string(e.deltaTime));
        EXPECT_EQ(e.scene, &scene);
        second.cancel(); // cancelled during the update: not called afterwards
        if (!std::exchange(subscribedLate, true)) late = scene.subscribeToUpdate([&](const SceneUpdateEvent&) { calls.push_back("late"); });
    });
    second = scene.subscribeToUpdate([&](const SceneUpdateEvent&) { calls.push_back("second"); });
    scene.update(nullptr, 0.5);
    EXPECT_EQ(calls, (std::vector<std::string>{"first 0.500000"}));
    scene.update(nullptr, 0.25);
    EXPECT_EQ(calls, (std::vector<std::string>{"first 0.500000", "first 0.250000", "late"}));
    first = core::Cancellable(); // dropping it cancels
    late.cancel();
    scene.update(nullptr, 0.25);
    EXPECT_EQ(calls.size(), 3u);
}

} // namespace
} // namespace orvanta::reality
