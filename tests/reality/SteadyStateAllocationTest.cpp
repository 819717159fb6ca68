// Once planes have stopped growing, a frame (session step, anchor update, update event) and
// a ray cast into a reused result list make no heap allocation.
#include "arsession/ARSessionDelegate.h"
#include "arsession/SteppedClock.h"
#include "reality/ARView.h"
#include "reality/AnchorEntity.h"
#include "reality/ModelEntity.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {
thread_local bool counting = false;
thread_local long allocations = 0;
} // namespace

// Counts this thread's allocations while `counting` is set; otherwise plain malloc/free.
void* operator new(std::size_t size) {
    if (counting) ++allocations;
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace orvanta::reality {
namespace {

struct QuietDelegate : arsession::ARSessionDelegate {
    int frames = 0;
    void sessionDidUpdateFrame(arsession::ARSession&, const arsession::ARFrame&) override { ++frames; }
};

TEST(SteadyStateAllocationTest, FramesAndRayCastsAllocateNothing) {
    // The counter itself works.
    counting = true;
    auto probe = std::make_unique<int>(1);
    counting = false;
    ASSERT_EQ(allocations, 1);
    allocations = 0;

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
    counting = true;
    for (int i = 0; i < 120; ++i) clock->step(1.0 / 60);
    counting = false;
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(delegate->frames - framesBefore, 120);
    EXPECT_GT(hits, 0);
}

} // namespace
} // namespace orvanta::reality
