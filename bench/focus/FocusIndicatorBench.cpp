// The focus square's per-frame cost against the simulated room, and its heap allocations in
// a steady-state frame (which must be none).
#include "support/CountingAllocator.h"

#include "arsession/ARSession.h"
#include "arsession/SimulatedWorld.h"
#include "core/Dispatch.h"
#include "core/Scheduler.h"
#include "focus/FocusIndicator.h"
#include "reality/ARView.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>

using namespace orvanta;

namespace {

constexpr double kFrame = 1.0 / 60.0;

// A clock the benchmark moves by hand. Its timers never fire: the benchmark steps the
// session itself, so the cost of a test queue's bookkeeping stays out of the measurement.
class HandClock final : public core::Scheduler {
public:
    void async(Task task) override { task(); }
    void asyncAfter(double, Task) override {}
    core::RepeatingTimer scheduleRepeating(double, Task) override { return {}; }
    double now() const override { return now_; }
    bool isCurrent() const override { return true; }

    void step() { now_ += kFrame; }

private:
    double now_ = 0.0;
};

// A running session on the simulated room, stepped until the square lies on the table.
struct Room {
    std::shared_ptr<HandClock> clock = std::make_shared<HandClock>();
    std::shared_ptr<reality::ARView> view;
    std::shared_ptr<focus::FocusIndicator> indicator;

    Room() {
        core::Dispatch::setMain(clock);
        view = std::make_shared<reality::ARView>(QSizeF(390, 844), std::make_unique<arsession::SimulatedWorld>(), clock);
        view->session()->setDelegateQueue(clock);
        indicator = focus::FocusIndicator::make(view, focus::FocusIndicatorComponent::classic());
        arsession::ARWorldTrackingConfiguration configuration;
        configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
        view->session()->run(configuration);
        for (int i = 0; i < 600; ++i) frame(); // 10 s: tracking normal, planes grown
    }
    // One frame: the session polls the world, the scene updates, the square updates itself.
    void frame() {
        clock->step();
        view->session()->tick();
    }
};

// One focus-square update: the ray casts from the screen centre against the simulated room,
// the state change, smoothing, alignment and scaling. Timed alone; the session's step to a
// new camera pose happens between timings.
void BM_FocusIndicatorUpdate(benchmark::State& state) {
    Room room;
    room.indicator->setAutoUpdate(false);
    std::uint64_t allocations = 0;
    for (auto _ : state) {
        room.frame();
        const std::uint64_t before = testing::allocationCount();
        const auto start = std::chrono::steady_clock::now();
        room.indicator->updateFocusIndicator(nullptr);
        const auto end = std::chrono::steady_clock::now();
        allocations += testing::allocationCount() - before;
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
    }
    if (!room.indicator->state().isTracking() || !room.indicator->onPlane()) state.SkipWithError("square is not on the table");
    state.counters["allocs_per_update"] = benchmark::Counter(double(allocations), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_FocusIndicatorUpdate)->UseManualTime();

// A whole steady-state frame as the view runs it: session poll, anchors, scene update event
// and the square's update. Reports its heap allocations.
void BM_SteadyStateFrame(benchmark::State& state) {
    Room room;
    std::uint64_t allocations = 0;
    for (auto _ : state) {
        const std::uint64_t before = testing::allocationCount();
        room.frame();
        allocations += testing::allocationCount() - before;
    }
    state.counters["allocs_per_frame"] = benchmark::Counter(double(allocations), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_SteadyStateFrame);

} // namespace

BENCHMARK_MAIN();
