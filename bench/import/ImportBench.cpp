// Import throughput and peak memory of the model importers on the corpus's largest files.
//
// Throughput counts the bytes the importer has to parse: for a USDZ package the crate layers
// inside it (textures are handed over undecoded, so their bytes do not count), for a loose
// layer or a GLB the whole file. Peak memory is the growth of the process's resident
// high-water mark during one import, after resetting the mark through /proc/self/clear_refs,
// set against the file size and the size the file's textures take once decoded.
// Every benchmark skips when the corpus is absent.

#include "import/SceneImporter.h"
#include "import/usd/UsdzArchive.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#if __has_include("support/Corpus.h")
#include "support/Corpus.h"
#endif

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using orvanta::import::SceneImporter;

std::optional<fs::path> corpusFile(const std::string& relative) {
#if __has_include("support/Corpus.h")
    const auto corpus = orvanta::testing::corpusDirectory();
#else
    const char* env = std::getenv("ORVANTA_CORPUS");
    const std::optional<fs::path> corpus = env && *env ? std::optional<fs::path>(env) : std::nullopt;
#endif
    if (!corpus || !fs::exists(*corpus / relative)) return std::nullopt;
    return *corpus / relative;
}

std::vector<std::uint8_t> readBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Bytes of the crate layers stored in a USDZ package.
std::int64_t crateLayerBytes(const fs::path& path) {
    const auto bytes = readBytes(path);
    const auto archive = orvanta::import::usd::UsdzArchive::open(bytes, nullptr);
    if (!archive) return 0;
    std::int64_t total = 0;
    for (const auto& entry : archive->entries())
        if (entry.data.size() >= 8 && std::memcmp(entry.data.data(), "PXR-USDC", 8) == 0)
            total += static_cast<std::int64_t>(entry.data.size());
    return total;
}

// Imports `relative` once per iteration; `parsedBytes` is what one import counts as processed.
void importFile(benchmark::State& state, const std::string& relative, bool layersInPackage) {
    const auto path = corpusFile(relative);
    if (!path) {
        state.SkipWithError(("corpus file absent: " + relative).c_str());
        return;
    }
    const std::int64_t parsedBytes = layersInPackage ? crateLayerBytes(*path) : static_cast<std::int64_t>(fs::file_size(*path));
    for (auto _ : state) {
        auto scene = SceneImporter::importFile(path->string());
        if (!scene) {
            state.SkipWithError(scene.error().localizedDescription().c_str());
            return;
        }
        benchmark::DoNotOptimize(scene->meshes.data());
    }
    state.SetBytesProcessed(state.iterations() * parsedBytes);
    state.counters["parsed_bytes"] = static_cast<double>(parsedBytes);
}

// A value in kB from /proc/self/status, such as VmHWM or VmRSS; -1 when unreadable.
long statusKilobytes(const char* key) {
    std::ifstream in("/proc/self/status");
    std::string line;
    const std::size_t n = std::strlen(key);
    while (std::getline(in, line))
        if (line.compare(0, n, key) == 0 && line.size() > n && line[n] == ':') return std::strtol(line.c_str() + n + 1, nullptr, 10);
    return -1;
}

// Hands freed heap pages back to the system first, so an import cannot hide its growth in
// memory an earlier import left behind.
bool resetPeakResident() {
    malloc_trim(0);
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
    out.flush();
    return static_cast<bool>(out);
}

void peakMemory(benchmark::State& state, const std::string& relative) {
    const auto path = corpusFile(relative);
    if (!path) {
        state.SkipWithError(("corpus file absent: " + relative).c_str());
        return;
    }
    const double fileBytes = static_cast<double>(fs::file_size(*path));
    double growth = 0;
    double decodedTextures = 0;
    for (auto _ : state) {
        if (!resetPeakResident()) {
            state.SkipWithError("cannot reset the peak resident size through /proc/self/clear_refs");
            return;
        }
        const long before = statusKilobytes("VmHWM");
        auto scene = SceneImporter::importFile(path->string());
        const long after = statusKilobytes("VmHWM");
        if (!scene) {
            state.SkipWithError(scene.error().localizedDescription().c_str());
            return;
        }
        growth = std::max(growth, 1024.0 * static_cast<double>(after - before));
        state.PauseTiming();
        decodedTextures = 0;
        for (const auto& texture : scene->textures) decodedTextures += static_cast<double>(texture.decode().sizeInBytes());
        state.ResumeTiming();
    }
    state.counters["file_bytes"] = fileBytes;
    state.counters["peak_growth_bytes"] = growth;
    state.counters["decoded_texture_bytes"] = decodedTextures;
    state.counters["peak_per_file_size"] = growth / fileBytes;
    state.counters["peak_per_budget"] = growth / (3 * fileBytes + decodedTextures); // target: at most 1
}

} // namespace

BENCHMARK_CAPTURE(importFile, usdz_crate_RoughnessTest, std::string("usdz/RoughnessTest.usdz"), true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usdz_crate_BoxAnimated, std::string("usdz/BoxAnimated.usdz"), true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usdz_crate_simpleMaterial, std::string("usdz/openusd_simpleMaterial.usdz"), true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usdc_Ball, std::string("usdc/crate-0.7.0_Ball.maya.usd"), false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usda_UtahTeapot, std::string("usda/UtahTeapot.usd"), false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, glb_Duck, std::string("glb/Duck.glb"), false)->Unit(benchmark::kMicrosecond);

BENCHMARK_CAPTURE(peakMemory, usdz_RoughnessTest, std::string("usdz/RoughnessTest.usdz"))->Iterations(5)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(peakMemory, usda_UtahTeapot, std::string("usda/UtahTeapot.usd"))->Iterations(5)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(peakMemory, glb_Duck, std::string("glb/Duck.glb"))->Iterations(5)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
