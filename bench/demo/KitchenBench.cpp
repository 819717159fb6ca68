// The sample restaurant's kitchen: building and writing all eight dish models (five USDZ
// with a crate layer, three with a text layer, two GLB), as a first run of the demo does
// (target: under 2 s in total), and a later run finding them all written.
#include "DishModels.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <filesystem>

namespace {

void BM_WriteAllDishModels(benchmark::State& state) {
    QTemporaryDir folder;
    std::uintmax_t bytes = 0;
    for (auto _ : state) {
        const auto written = orvanta::demo::DishModels::writeAll(folder.path().toStdString());
        if (!written) {
            state.SkipWithError(written.error().localizedDescription().c_str());
            return;
        }
        benchmark::DoNotOptimize(written.value());
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder.path().toStdString())) bytes += entry.file_size();
    state.counters["files_MB"] = double(bytes) / 1e6;
}
BENCHMARK(BM_WriteAllDishModels)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_EnsureFindsEveryDishModelWritten(benchmark::State& state) {
    QTemporaryDir folder;
    const std::string path = folder.path().toStdString();
    if (!orvanta::demo::DishModels::writeAll(path)) {
        state.SkipWithError("the models could not be written");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(orvanta::demo::DishModels::ensure(path).value());
}
BENCHMARK(BM_EnsureFindsEveryDishModelWritten)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
