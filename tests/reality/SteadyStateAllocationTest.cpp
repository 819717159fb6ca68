// Once planes have stopped growing, a frame (session step, anchor update, update event) and
// a ray cast into a reused result list make no heap allocation; nor does a camera session's
// frame once its picture pool has grown.
#include "arsession/ARSessionDelegate.h"
#include "arsession/SteppedClock.h"
#include "arsession/camera/CameraBackend.h"
#include "arsession/camera/StillPictureSource.h"
#include "reality/ARView.h"
#include "reality/AnchorEntity.h"
#include "reality/ModelEntity.h"
#include "support/CountingAllocator.h"
#include "support/SyntheticCameraFrames.h"

#include <gtest/gtest.h>



namespace orvanta::reality {
namespace {

struct QuietDelegate : arsession::ARSessionDelegate {
    int frames = 0;
    void sessionDidUpdateFrame(arsession::ARSession&, const arsession::ARFrame&) override { ++frames; }
};

TEST(SteadyStateAllocationTest, FramesAndRayCastsAllocateNothing) {
    // The counter itself works.
    const std::uint64_t probeBefore = testing::threadAllocationCount();
    auto probe = std::make_unique<int>(1);
    ASSERT_EQ(testing::threadAllocationCount() - probeBefore, 1u);

    auto clock = std::make_shared<arsession::SteppedClock>();
    ARView view(QSizeF(400, 800), nullptr, clock);
    auto delegate = std::make_shared<QuietDelegate>();
    view.session()->setDelegate(delegate);
    view.session()->setDelegateQueue(clock);

    auto anchor = std::make_shared<AnchorEntity>(AnchoringComponent::plane(
        arsession::ARPlaneAnchor::Alignment::horizontal, AnchoringComponent::Classification::any(), QVector2D(0.2f, 0.2f)));
    anchor->addChild(std::make_shared<ModelEntity>(MeshResource::generateBox(0.1f), std::vector<Material>{}));
    view.scene().addAnchor(anchor);
    view.scene().addAnchor(std::make_shared<AnchorEntity>(AnchoringComponent::camera()));

    // What the focus square does each frame: a ray cast from the screen centre.
    std::vector<arsession::ARRaycastResult> results;
    int hits = 0;
    auto subscription = view.scene().subscribeToUpdate([&](const SceneUpdateEvent&) {
        for (auto target : {arsession::ARRaycastQuery::Target::existingPlaneGeometry,
                            arsession::ARRaycastQuery::Target::estimatedPlane}) {
            if (const auto query = view.makeRaycastQuery(view.center(), target,
                                                         arsession::ARRaycastQuery::TargetAlignment::any)) {
                view.session()->raycast(*query, results);
                hits += int(results.size());
            }
        }
    });

    arsession::ARWorldTrackingConfiguration configuration;
    configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
    view.session()->run(configuration);
    for (int i = 0; i < 600; ++i) clock->step(1.0 / 60); // planes found and fully grown
    ASSERT_TRUE(anchor->isAnchored());

    const int framesBefore = delegate->frames;
    hits = 0;
    const std::uint64_t before = testing::threadAllocationCount();
    for (int i = 0; i < 120; ++i) clock->step(1.0 / 60);
    EXPECT_EQ(testing::threadAllocationCount() - before, 0u);
    EXPECT_EQ(delegate->frames - framesBefore, 120);
    EXPECT_GT(hits, 0);
}

TEST(SteadyStateAllocationTest, CameraFramesAllocateNothingOnTheSessionClock) {
    using namespace arsession::camera;
    const TableCard card = TableCard::parse(TableCard::defaultText).value();
    const testing::SyntheticCameraFrames frames(card, testing::SyntheticCameraFrames::lookingAt(0.55f, 55.0f, 20.0f),
                                                testing::SyntheticCameraFrames::testLens(QSize(640, 480)));
    auto backend = std::make_unique<CameraBackend>(std::make_unique<StillPictureSource>(frames.frame(1)), card,
                                                   frames.lens());
    const FrameTracker& tracker = backend->tracker();
    auto clock = std::make_shared<arsession::SteppedClock>();
    ARView view(QSizeF(480, 640), std::move(backend), clock);
    auto delegate = std::make_shared<QuietDelegate>();
    view.session()->setDelegate(delegate);
    view.session()->setDelegateQueue(clock);
    std::vector<arsession::ARRaycastResult> results;
    int hits = 0;
    auto subscription = view.scene().subscribeToUpdate([&](const SceneUpdateEvent&) {
        if (const auto query = view.makeRaycastQuery(view.center(), arsession::ARRaycastQuery::Target::existingPlaneGeometry,
                                                     arsession::ARRaycastQuery::TargetAlignment::any)) {
            view.session()->raycast(*query, results);
            hits += int(results.size());
        }
    });
    arsession::ARWorldTrackingConfiguration configuration;
    configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
    view.session()->run(configuration);
    // The still photo comes at 30 Hz; the worker tracks each before the next step.
    const auto step = [&] {
        clock->step(1.0 / 60);
        tracker.waitUntilIdle();
    };
    for (int i = 0; i < 30; ++i) step();
    ASSERT_TRUE(view.session()->currentFrame()->camera.trackingState.isNormal());

    const int framesBefore = delegate->frames;
    hits = 0;
    const std::uint64_t before = testing::threadAllocationCount();
    for (int i = 0; i < 60; ++i) step();
    EXPECT_EQ(testing::threadAllocationCount() - before, 0u);
    EXPECT_GE(delegate->frames - framesBefore, 29);
    EXPECT_GT(hits, 0);
}

} // namespace
} // namespace orvanta::reality
