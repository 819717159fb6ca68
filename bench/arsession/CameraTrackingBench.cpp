// Card tracking on synthetic camera pictures: the time to track one picture of the default
// ChArUco card at 640×480 and 1280×720, and how still the pose of a still, noisy camera is
// (the card centre's jitter in pixels, RMS, before and after smoothing).
// Run pinned to one core: taskset -c 0 bench_arsession
#include "arsession/camera/CardLocator.h"
#include "arsession/camera/PoseFilter.h"
#include "support/SyntheticCameraFrames.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using namespace orvanta::arsession::camera;
using orvanta::arsession::CameraIntrinsics;
using orvanta::testing::SyntheticCameraFrames;

const TableCard card = TableCard::parse(TableCard::defaultText).value();

// A laptop on a table looking at the card from 0.6 m, 50° above the table.
SyntheticCameraFrames frames(QSize size) {
    return SyntheticCameraFrames(card, SyntheticCameraFrames::lookingAt(0.6f, 50.0f, 15.0f, QVector3D(0.03f, 0, 0.02f)),
                                 SyntheticCameraFrames::testLens(size));
}

void trackOnePicture(benchmark::State& state) {
    const SyntheticCameraFrames scene = frames(QSize(int(state.range(0)), int(state.range(1))));
    std::vector<QImage> pictures;
    for (unsigned seed = 0; seed < 8; ++seed) pictures.push_back(scene.frame(seed));
    CardLocator locator(card, scene.lens());
    std::optional<QMatrix4x4> previous;
    std::size_t i = 0;
    for (auto _ : state) {
        const auto sighting = locator.locate(pictures[i++ % pictures.size()], previous);
        if (!sighting) state.SkipWithError("card not found");
        else previous = sighting->cameraTransform;
    }
}
// CPU time counts every thread's: OpenCV may spread a picture's work over its own threads.
BENCHMARK(trackOnePicture)->Args({640, 480})->Args({1280, 720})->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

// Card centre in pixels through `pose`.
QPointF centre(const QMatrix4x4& pose, const CameraIntrinsics& lens) {
    const QVector3D local = pose.inverted().map(QVector3D());
    return QPointF(lens.cx + lens.fx * local.x() / -local.z(), lens.cy - lens.fy * local.y() / -local.z());
}

double rms(const std::vector<QPointF>& points) {
    QPointF mean;
    for (const QPointF& p : points) mean += p / double(points.size());
    double squares = 0.0;
    for (const QPointF& p : points) squares += QPointF::dotProduct(p - mean, p - mean);
    return std::sqrt(squares / double(points.size()));
}

// 100 pictures of a still camera at 30 Hz, each with fresh sensor noise.
void stillCameraJitter(benchmark::State& state) {
    const SyntheticCameraFrames scene = frames(QSize(int(state.range(0)), int(state.range(1))));
    std::vector<QImage> pictures;
    for (unsigned seed = 0; seed < 100; ++seed) pictures.push_back(scene.frame(1000 + seed));
    double raw = 0.0, smoothed = 0.0;
    for (auto _ : state) {
        CardLocator locator(card, scene.lens());
        PoseFilter filter;
        std::vector<QPointF> rawCentres, smoothedCentres;
        std::optional<QMatrix4x4> previous;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const auto sighting = locator.locate(pictures[i], previous);
            if (!sighting) {
                state.SkipWithError("card not found");
                return;
            }
            previous = sighting->cameraTransform;
            rawCentres.push_back(centre(sighting->cameraTransform, scene.lens().intrinsics));
            smoothedCentres.push_back(centre(filter.filter(sighting->cameraTransform, double(i) / 30.0),
                                             scene.lens().intrinsics));
        }
        raw = rms(rawCentres);
        smoothed = rms(smoothedCentres);
    }
    state.counters["raw_px_rms"] = raw;
    state.counters["smoothed_px_rms"] = smoothed;
}
BENCHMARK(stillCameraJitter)->Args({640, 480})->Args({1280, 720})->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
