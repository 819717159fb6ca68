// Heavy models as orvanta-render draws them: a dish scattered with 10,000 instanced seeds
// (98 triangles each) from its file to the first picture, in the 3D viewer and on the AR
// table; and 200,000 seeds of 1,922 triangles each, which the drawing budget refuses.
//   xvfb-run -a -s "-screen 0 1280x800x24 -noreset" build/release/bench/bench_ar
//   build/release/bench/bench_ar --write-models DIR   (writes seeds-10k.usda and
//                                                      seeds-200k.usda into DIR, then exits)
// The files are made by the benchmark itself into a temporary folder.

#include "ar/ModelPicture.h"
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"
#include "import/ImportError.h"
#include "render/GlSupport.h"
#include "support/TestModels.h"

#include <QDir>
#include <QGuiApplication>
#include <QQuick3D>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>

using namespace orvanta;

namespace {

std::string tenThousandSeeds, tooManySeeds;

void writeModels(const QString& directory) {
    tenThousandSeeds = QDir(directory).filePath("seeds-10k.usda").toStdString();
    tooManySeeds = QDir(directory).filePath("seeds-200k.usda").toStdString();
    testing::TestModels::write(tenThousandSeeds, testing::TestModels::seedScatterUsda(10'000, 7));
    testing::TestModels::write(tooManySeeds, testing::TestModels::seedScatterUsda(200'000, 31));
}

void BM_InstancedSeedsToFirstPicture(benchmark::State& state) {
    const bool ar = state.range(0) != 0;
    for (auto _ : state) {
        const auto picture = ModelPicture::render(tenThousandSeeds, {.size = {1024, 768}, .ar = ar});
        if (!picture) state.SkipWithError(picture.error().localizedDescription().c_str());
    }
    state.SetLabel(ar ? "AR table" : "3D viewer");
}
BENCHMARK(BM_InstancedSeedsToFirstPicture)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void BM_OverBudgetRefused(benchmark::State& state) {
    for (auto _ : state) {
        const auto picture = ModelPicture::render(tooManySeeds, {});
        if (picture || picture.error().localizedDescription().find("too heavy to draw") == std::string::npos)
            state.SkipWithError("the 200,000-seed dish was not refused by the drawing budget");
    }
}
BENCHMARK(BM_OverBudgetRefused)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--write-models") == 0) {
        writeModels(QString::fromLocal8Bit(argv[2]));
        std::printf("%s\n%s\n", tenThousandSeeds.c_str(), tooManySeeds.c_str());
        return 0;
    }
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());
    core::Dispatch::setMain(std::make_shared<core::EventLoopScheduler>(&app));
    if (!render::GlSupport::canCreateContext()) {
        std::printf("bench_ar: skipped: %s\n", render::GlSupport::unavailableReason().c_str());
        return 0;
    }
    QTemporaryDir directory;
    writeModels(directory.path());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    core::Dispatch::setMain(nullptr);
    return 0;
}
