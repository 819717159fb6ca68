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

#include <functional>

namespace orvanta::reality {
namespace {

struct QuietDelegate : arsession::ARSessionDelegate {
    int frames = 0;
    void sessionDidUpdateFrame(arsession::ARSession&, const arsession::ARFrame&) override { ++frames; }
};

// An AR view on a stepped clock, looking for horizontal planes, whose every frame does what
// the focus square does: ray casts from the screen centre into a reused result list.
struct CastingView {
    CastingView(QSizeF size, std::unique_ptr<arsession::SessionBackend> backend,
                const std::vector<arsession::ARRaycastQuery::Target>& targets)
        : view(size, std::move(backend), clock) {
        view.session()->setDelegate(delegate);
        view.session()->setDelegateQueue(clock);
        subscription = view.scene().subscribeToUpdate([this, targets](const SceneUpdateEvent&) {
            for (auto target : targets) {
                if (const auto query =
                        view.makeRaycastQuery(view.center(), target, arsession::ARRaycastQuery::TargetAlignment::any)) {
                    view.session()->raycast(*query, results);
                    hits += int(results.size());
                }
            }
        });
        arsession::ARWorldTrackingConfiguration configuration;
        configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
        view.session()->run(configuration);
    }

    std::shared_ptr<arsession::SteppedClock> clock = std::make_shared<arsession::SteppedClock>();
    ARView view;
    std::shared_ptr<QuietDelegate> delegate = std::make_shared<QuietDelegate>();
    std::vector<arsession::ARRaycastResult> results;
    int hits = 0;
    core::Cancellable subscription;

    // Runs `steps` of `step` and checks they allocated nothing, delivered at least `frames`
    // frames and hit something.
    void expectSteadySteps(int steps, const std::function<void()>& step, int frames) {
        const int framesBefore = delegate->frames;
        hits = 0;
        const std::uint64_t before = testing::threadAllocationCount();
        for (int i = 0; i < steps; ++i) step();
        EXPECT_EQ(testing::threadAllocationCount() - before, 0u);
        EXPECT_GE(delegate->frames - framesBefore, frames);
        EXPECT_GT(hits, 0);
    }
};

TEST(SteadyStateAllocationTest, FramesAndRayCastsAllocateNothing) {
    // The counter itself works.
    const std::uint64_t probeBefore = testing::threadAllocationCount();
    auto probe = std::make_unique<int>(1);
    ASSERT_EQ(testing::threadAllocationCount() - probeBefore, 1u);

    CastingView v(QSizeF(400, 800), nullptr,
                  {arsession::ARRaycastQuery::Target::existingPlaneGeometry, arsession::ARRaycastQuery::Target::estimatedPlane});
    auto anchor = std::make_shared<AnchorEntity>(AnchoringComponent::plane(
        arsession::ARPlaneAnchor::Alignment::horizontal, AnchoringComponent::Classification::any(), QVector2D(0.2f, 0.2f)));
    anchor->addChild(std::make_shared<ModelEntity>(MeshResource::generateBox(0.1f), std::vector<Material>{}));
    v.view.scene().addAnchor(anchor);
    v.view.scene().addAnchor(std::make_shared<AnchorEntity>(AnchoringComponent::camera()));

    for (int i = 0; i < 600; ++i) v.clock->step(1.0 / 60); // planes found and fully grown
    ASSERT_TRUE(anchor->isAnchored());

    v.expectSteadySteps(120, [&] { v.clock->step(1.0 / 60); }, 120);
}

TEST(SteadyStateAllocationTest, CameraFramesAllocateNothingOnTheSessionClock) {
    using namespace arsession::camera;
    const TableCard card = TableCard::parse(TableCard::defaultText).value();
    const testing::SyntheticCameraFrames frames(card, testing::SyntheticCameraFrames::lookingAt(0.55f, 55.0f, 20.0f),
                                                testing::SyntheticCameraFrames::testLens(QSize(640, 480)));
    auto backend = std::make_unique<CameraBackend>(std::make_unique<StillPictureSource>(frames.frame(1)), card,
                                                   frames.lens());
    const FrameTracker& tracker = backend->tracker();
    CastingView v(QSizeF(480, 640), std::move(backend), {arsession::ARRaycastQuery::Target::existingPlaneGeometry});
    // The still photo comes at 30 Hz; the worker tracks each before the next step.
    const auto step = [&] {
        v.clock->step(1.0 / 60);
        tracker.waitUntilIdle();
    };
    for (int i = 0; i < 30; ++i) step();
    ASSERT_TRUE(v.view.session()->currentFrame()->camera.trackingState.isNormal());

    v.expectSteadySteps(60, step, 29);
}

} // namespace
} // namespace orvanta::reality
