// Costs of the AR platform stand-ins on the per-frame path: ray casts against the simulated
// room and one steady-state frame of a view with a placed model.
#include "arsession/SteppedClock.h"
#include "reality/ARView.h"
#include "reality/AnchorEntity.h"
#include "reality/ModelEntity.h"

#include <benchmark/benchmark.h>

namespace {

using namespace orvanta;
using arsession::ARRaycastQuery;

// A view over the simulated room, stepped until the planes have stopped growing, with a
// model anchored on the table.
struct SteadyView {
    std::shared_ptr<arsession::SteppedClock> clock = std::make_shared<arsession::SteppedClock>();
    reality::ARView view{QSizeF(390, 844), nullptr, clock};

    SteadyView() {
        auto anchor = std::make_shared<reality::AnchorEntity>(reality::AnchoringComponent::plane(
            arsession::ARPlaneAnchor::Alignment::horizontal, reality::AnchoringComponent::Classification::any(),
            QVector2D(0.2f, 0.2f)));
        anchor->addChild(std::make_shared<reality::ModelEntity>(reality::MeshResource::generateBox(0.1f),
                                                                std::vector<reality::Material>{}));
        view.scene().addAnchor(anchor);
        view.scene().addAnchor(std::make_shared<reality::AnchorEntity>(reality::AnchoringComponent::camera()));
        arsession::ARWorldTrackingConfiguration configuration;
        configuration.planeDetection =
            arsession::ARWorldTrackingConfiguration::horizontal | arsession::ARWorldTrackingConfiguration::vertical;
        view.session()->run(configuration);
        for (int i = 0; i < 600; ++i) clock->step(1.0 / 60);
    }
};

void raycastFromCentre(benchmark::State& state, ARRaycastQuery::Target target) {
    SteadyView steady;
    const auto query = *steady.view.makeRaycastQuery(steady.view.center(), target, ARRaycastQuery::TargetAlignment::any);
    std::vector<arsession::ARRaycastResult> results;
    for (auto _ : state) {
        steady.view.session()->raycast(query, results);
        benchmark::DoNotOptimize(results.data());
    }
    state.counters["hits"] = double(results.size());
}

void BM_RaycastEstimatedPlane(benchmark::State& state) { raycastFromCentre(state, ARRaycastQuery::Target::estimatedPlane); }
void BM_RaycastExistingPlaneGeometry(benchmark::State& state) {
    raycastFromCentre(state, ARRaycastQuery::Target::existingPlaneGeometry);
}
void BM_RaycastExistingPlaneInfinite(benchmark::State& state) {
    raycastFromCentre(state, ARRaycastQuery::Target::existingPlaneInfinite);
}

void BM_ScreenPointToRaycastQuery(benchmark::State& state) {
    SteadyView steady;
    for (auto _ : state) {
        auto query = steady.view.makeRaycastQuery(steady.view.center(), ARRaycastQuery::Target::estimatedPlane,
                                                  ARRaycastQuery::TargetAlignment::any);
        benchmark::DoNotOptimize(query);
    }
}

// One frame: session poll and delivery, anchors following, update event with a centre ray cast.
void BM_SteadyFrame(benchmark::State& state) {
    SteadyView steady;
    std::vector<arsession::ARRaycastResult> results;
    auto subscription = steady.view.scene().subscribeToUpdate([&](const reality::SceneUpdateEvent&) {
        if (const auto query = steady.view.makeRaycastQuery(steady.view.center(),
                                                            ARRaycastQuery::Target::existingPlaneGeometry,
                                                            ARRaycastQuery::TargetAlignment::any))
            steady.view.session()->raycast(*query, results);
    });
    for (auto _ : state) steady.clock->step(1.0 / 60);
}

BENCHMARK(BM_RaycastEstimatedPlane);
BENCHMARK(BM_RaycastExistingPlaneGeometry);
BENCHMARK(BM_RaycastExistingPlaneInfinite);
BENCHMARK(BM_ScreenPointToRaycastQuery);
BENCHMARK(BM_SteadyFrame);

} // namespace

BENCHMARK_MAIN();
