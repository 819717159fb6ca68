// Frame times of the two views under the machine's OpenGL (Mesa's software renderer under
// Xvfb on a machine without a GPU), the time from a newly delivered model to its first drawn
// frame (the corpus dishes and a generated dish of 10,000 instanced seeds), the AR view's
// snapshot time, and the AR view over camera pictures (a new 1280×720
// picture every session frame) with them drawn, hidden, and with no picture feed at all. A
// timed harness that prints medians, and beside each frame time the processor time the whole
// process spent per frame (every thread, the renderer's included), which a busy machine
// inflates far less than the wall time:
//   xvfb-run -a -s "-screen 0 1280x800x24" build/release/bench/bench_render [CORPUS_DIR] [--benchmark_filter=TEXT]
// With a filter, only the measures whose name contains TEXT run; other benchmark-library
// flags are accepted and ignored.

#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"
#include "ar/StillCameraBackend.h"
#include "arsession/SimulatedWorld.h"
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"
#include "import/SceneImporter.h"
#include "models/Reality3DViewItem.h"
#include "reality/ModelEntity.h"
#include "render/ARViewItem.h"
#include "render/CameraPictureFeed.h"
#include "render/CameraPictureItem.h"
#include "render/DrawnFrames.h"
#include "render/GlSupport.h"
#include "render/ItemSnapshotRenderer.h"
#include "scenegraph/SceneNodeBuilder.h"
#include "support/TestModels.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuick3D>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <filesystem>
#include <functional>
#include <vector>

using namespace orvanta;

namespace {

const QSize kWindow(1280, 800);

std::string filter; // measures whose name holds this run; empty: all

bool wanted(const std::string& name) { return filter.empty() || name.find(filter) != std::string::npos; }

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

double processCpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

struct FrameTimes {
    double wallMs;     // median interval between swapped frames
    double cpuMsEach;  // processor time of the whole process per frame, on average
};

// Frame times over `frames` frames, each one asked for at once after `step` has changed what
// the view shows (so every frame is drawn anew).
FrameTimes frameTimes(QQuickWindow& window, int frames, const std::function<void()>& step = [] {}) {
    std::vector<double> intervals;
    QElapsedTimer clock;
    double cpuStart = 0;
    QEventLoop loop;
    const auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, [&] {
        if (clock.isValid()) intervals.push_back(double(clock.nsecsElapsed()) / 1e6);
        else cpuStart = processCpuMs();
        clock.restart();
        if (int(intervals.size()) >= frames) loop.quit();
        step();
        window.update();
    }, Qt::QueuedConnection);
    window.update();
    loop.exec();
    QObject::disconnect(connection);
    return {median(intervals), (processCpuMs() - cpuStart) / double(std::max<std::size_t>(intervals.size(), 1))};
}

void printFrames(const char* view, const std::string& what, const FrameTimes& times) {
    std::printf("%-10s %-40s median frame %6.1f ms, %6.1f ms CPU a frame", view, what.c_str(), times.wallMs, times.cpuMsEach);
}

// A UV sphere of about `triangles` triangles, 0.2 m across, resting on y = 0.
std::shared_ptr<const import::ImportedScene> sphere(int triangles) {
    const int rings = int(std::sqrt(triangles / 2.0)), segments = rings;
    auto scene = std::make_shared<import::ImportedScene>();
    import::ImportedMesh mesh;
    for (int r = 0; r <= rings; ++r) {
        const float phi = float(M_PI) * r / rings;
        for (int s = 0; s <= segments; ++s) {
            const float theta = 2.0f * float(M_PI) * s / segments;
            const QVector3D n(std::sin(phi) * std::cos(theta), std::cos(phi), std::sin(phi) * std::sin(theta));
            mesh.positions.push_back(n * 0.1f + QVector3D(0, 0.1f, 0));
            mesh.normals.push_back(n);
            mesh.texCoords.emplace_back(float(s) / segments, float(r) / rings);
        }
    }
    for (int r = 0; r < rings; ++r)
        for (int s = 0; s < segments; ++s) {
            const std::uint32_t a = r * (segments + 1) + s, b = a + segments + 1;
            mesh.indices.insert(mesh.indices.end(), {a, a + 1, b, b, a + 1, b + 1});
        }
    mesh.subsets.push_back({0, std::uint32_t(mesh.indices.size()), -1});
    scene->meshes.push_back(std::move(mesh));
    import::ImportedNode root;
    root.meshes = {0};
    scene->nodes.push_back(root);
    return scene;
}

struct Viewer3D {
    QQuickWindow window;
    Reality3DViewItem* item = new Reality3DViewItem(window.contentItem());
    Binding<Reality3DView::SceneNodePtr> model = Binding<Reality3DView::SceneNodePtr>::cell(nullptr);
    Binding<bool> loaded = Binding<bool>::cell(false);

    Viewer3D() {
        window.resize(kWindow);
        item->setSize(kWindow);
        window.show();
        item->setViewer(Reality3DView(model, loaded));
    }
    // Turns the point of view a little, as a user's drag does.
    void orbit() {
        item->sceneView()->defaultPointOfView().orbit(0.01f, 0.0f);
        item->sync();
    }
    // Milliseconds from handing over `scene` to the first frame that shows it.
    double show(const std::shared_ptr<const import::ImportedScene>& scene) {
        loaded.set(false);
        QElapsedTimer clock;
        clock.start();
        model.set(scenegraph::SceneNodeBuilder::build(scene).rootNode);
        item->bindingsChanged();
        double shown = -1.0;
        render::DrawnFrames::waitUntil(window, [&] {
            const bool ready = loaded.get() && item->textures().pendingDecodes() == 0;
            if (ready && shown < 0) shown = double(clock.nsecsElapsed()) / 1e6;
            return ready;
        }, 30.0);
        return shown;
    }
};

void benchThreeD(const std::vector<std::filesystem::path>& dishes) {
    if (std::none_of(dishes.begin(), dishes.end(), [](const auto& path) { return wanted("3D viewer " + path.filename().string()); }) &&
        !wanted("3D viewer generated sphere"))
        return;
    Viewer3D viewer;
    const auto big = sphere(100000);
    viewer.show(big); // warms the shader cache
    std::vector<double> firstFrames;
    for (const auto& path : dishes) {
        if (!wanted("3D viewer " + path.filename().string())) continue;
        auto imported = import::SceneImporter::importFile(path.string());
        if (!imported) continue;
        auto scene = std::make_shared<const import::ImportedScene>(std::move(imported).value());
        firstFrames.push_back(viewer.show(scene));
        printFrames("3D viewer", path.filename().string(), frameTimes(viewer.window, 60, [&] { viewer.orbit(); }));
        std::printf("  (%llu triangles drawn; first drawn frame %.1f ms)\n",
                    static_cast<unsigned long long>(scene->drawCost().triangles), firstFrames.back());
    }
    if (wanted("3D viewer generated sphere")) {
        viewer.show(big);
        printFrames("3D viewer", "generated sphere", frameTimes(viewer.window, 60, [&] { viewer.orbit(); }));
        std::printf("  (%zu triangles)\n", big->triangleCount());
    }
    if (!firstFrames.empty())
        std::printf("3D viewer  new model to its first drawn frame: median %.1f ms over %zu models\n",
                    median(firstFrames), firstFrames.size());
}

// A window of `size` showing an AR view whose session comes from `backend` (null: the
// simulated room), as the dish screen shows it.
struct ARWindow {
    QQuickWindow window;
    render::ARViewItem* item = new render::ARViewItem(window.contentItem());
    Binding<std::shared_ptr<reality::ModelEntity>> model = Binding<std::shared_ptr<reality::ModelEntity>>::cell(nullptr);
    Binding<bool> loaded = Binding<bool>::cell(false);
    ARViewContainer container;
    std::shared_ptr<ARViewContainer::Coordinator> coordinator;
    std::shared_ptr<reality::ARView> view;

    ARWindow(QSize size, ARViewContainer::BackendFactory backend)
        : container(model, loaded, Binding<std::shared_ptr<reality::ARView>>::cell(nullptr),
                    Binding<std::optional<TrackingStateEnum>>::cell(std::nullopt), std::move(backend)) {
        window.resize(size);
        item->setSize(size);
        window.show();
        coordinator = container.makeCoordinator();
        view = container.makeUIView({coordinator});
        item->setARView(view);
        item->setCoachingOverlay(coordinator->coachingOverlay);
    }
    // Places `dish` (a generated sphere when it does not load) and waits until it is drawn.
    void place(const std::filesystem::path& dish) {
        auto imported = import::SceneImporter::importFile(dish.string());
        auto entity = imported ? reality::ModelEntity::fromImportedScene(
                                     std::make_shared<const import::ImportedScene>(std::move(imported).value()))
                               : reality::ModelEntity::fromImportedScene(sphere(20000));
        model.set(entity);
        container.updateUIView(view, {coordinator});
        render::DrawnFrames::waitUntil(window, [&] { return loaded.get() && entity->isActive(); }, 30.0);
    }
};

void benchAR(const std::filesystem::path& dish) {
    ARWindow ar(kWindow, nullptr);
    QQuickWindow& window = ar.window;
    const auto& view = ar.view;
    render::DrawnFrames::waitUntil(window, [&] { return ar.coordinator->focusIndicator->onPlane(); }, 30.0);
    if (wanted("AR view focus square")) {
        printFrames("AR view", "focus square on the table", frameTimes(window, 120));
        std::printf("\n");
    }
    if (!wanted("AR view placed") && !wanted("AR view snapshot")) return;

    ar.place(dish);
    if (wanted("AR view placed")) {
        printFrames("AR view", "placed " + dish.filename().string(), frameTimes(window, 120));
        std::printf("\n");
    }
    if (!wanted("AR view snapshot")) return;

    std::vector<double> snapshots;
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer clock;
        clock.start();
        QEventLoop loop;
        view->snapshot(false, [&](std::optional<QImage>) { loop.quit(); });
        loop.exec();
        snapshots.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::printf("AR view    snapshot (%dx%d)                          median %6.1f ms\n", kWindow.width(),
                kWindow.height(), median(snapshots));
}

// The AR view at 1280×720 over a still camera whose session frames each bring a new
// 1280×720 picture (three in turn), with `dish` placed: frame time with the picture drawn,
// the time from a picture entering a session frame to the first swapped frame that shows it,
// and what drawing the picture adds to a frame.
void benchCameraPicture(const std::filesystem::path& dish) {
    const QSize size(1280, 720);
    std::vector<std::shared_ptr<const QImage>> pictures;
    for (int k = 0; k < 3; ++k) {
        auto picture = std::make_shared<QImage>(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(picture->scanLine(y));
            for (int x = 0; x < size.width(); ++x) line[x] = qRgb((x + 40 * k) & 255, (y * 3) & 255, (x ^ y) & 255);
        }
        pictures.push_back(std::move(picture));
    }
    QMatrix4x4 look;
    look.lookAt(QVector3D(0.0f, 0.35f, 0.35f), QVector3D(0, 0, 0), QVector3D(0, 1, 0));
    arsession::ARCamera camera;
    camera.transform = look.inverted();
    camera.intrinsics = {1000.0f, 1000.0f, 652.0f, 353.0f};
    camera.imageResolution = size;

    ARWindow ar(size, [&] { return std::make_unique<StillCameraBackend>(camera, pictures, QSizeF(0.6, 0.6)); });
    QQuickWindow& window = ar.window;
    render::ARViewItem* item = ar.item;
    ar.place(dish);

    // Latency: the picture of the frame the item synced last, timed from its session frame to
    // the next swap (the frame drawn with it).
    std::vector<double> latencies;
    QElapsedTimer since;
    bool pending = false;
    const auto synced = QObject::connect(item, &render::ARViewItem::frameSynced, [&] {
        if (!pending) since.start();
        pending = true;
    });
    QObject latencyContext;  // drops a queued call still pending when the locals go
    const auto swapped = QObject::connect(&window, &QQuickWindow::frameSwapped, &latencyContext, [&] {
        if (pending) latencies.push_back(double(since.nsecsElapsed()) / 1e6);
        pending = false;
    }, Qt::QueuedConnection);
    const FrameTimes withPicture = frameTimes(window, 120);
    QObject::disconnect(synced);
    QObject::disconnect(swapped);
    printFrames("AR camera", "placed " + dish.filename().string(), withPicture);
    std::printf("  (1280x720 picture each frame)\n");
    std::printf("AR camera  session frame with a new picture to the frame drawn with it: median %.1f ms\n",
                median(latencies));
    // The picture's share: rounds with the picture drawn, with it hidden (the feed still lights
    // the dish from the pictures) and with no feed at all (an unlit dish over the plain
    // background), interleaved so that a changing load on the machine weighs on all alike.
    struct Round {
        std::vector<double> wall, cpu;
    } drawn, hidden, bare;
    for (int round = 0; round < 4; ++round)
        for (Round* r : {&drawn, &hidden, &bare}) {
            if (r == &bare) item->setCameraFeed(nullptr);
            else if (!item->findChild<render::CameraPictureItem*>()) item->setCameraFeed(std::make_unique<render::CameraPictureFeed>());
            if (auto* picture = item->findChild<render::CameraPictureItem*>()) picture->setVisible(r == &drawn);
            const FrameTimes times = frameTimes(window, 40);
            r->wall.push_back(times.wallMs);
            r->cpu.push_back(times.cpuMsEach);
        }
    std::printf("AR camera  picture drawn / hidden / no feed, 4 interleaved rounds: median frame %.1f / %.1f / %.1f ms, "
                "CPU a frame %.1f / %.1f / %.1f ms\n",
                median(drawn.wall), median(hidden.wall), median(bare.wall), median(drawn.cpu), median(hidden.cpu),
                median(bare.cpu));
    std::printf("AR camera  drawing the picture costs %.1f ms (%.1f ms CPU) a frame; against no feed (an unlit dish) "
                "%.1f ms (%.1f ms CPU)\n",
                median(drawn.wall) - median(hidden.wall), median(drawn.cpu) - median(hidden.cpu),
                median(drawn.wall) - median(bare.wall), median(drawn.cpu) - median(bare.cpu));
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    QSurfaceFormat::setDefaultFormat(QQuick3D::idealSurfaceFormat());
    core::Dispatch::setMain(std::make_shared<core::EventLoopScheduler>(&app));
    if (!render::GlSupport::canCreateContext()) {
        std::printf("bench_render: skipped: %s\n", render::GlSupport::unavailableReason().c_str());
        return 0;
    }
    std::filesystem::path corpus = ORVANTA_SOURCE_DIR "/../shared/corpus";
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.starts_with("--benchmark_filter=")) filter = argument.substr(std::strlen("--benchmark_filter="));
        else if (argument[0] != '-') corpus = argument;
    }
    std::vector<std::filesystem::path> dishes;
    for (const char* file : {"glb/Duck.glb", "glb/Box.glb", "usda/UtahTeapot.usd", "usdz/USDLogo.usdz",
                             "usdz/TextureTransformTest.usdz", "usdz/BoxAnimated.usdz",
                             "gltf/CesiumMilkTruck/CesiumMilkTruck.gltf"})
        if (std::filesystem::exists(corpus / file)) dishes.push_back(corpus / file);
    const std::filesystem::path dish = dishes.empty() ? std::filesystem::path("generated sphere") : dishes.front();
    // Sesame seeds scattered over a dish: one instanced draw of 980,000 triangles.
    const QTemporaryDir generated;
    const std::filesystem::path seeds = generated.filePath("seeds-10k.usda").toStdString();
    testing::TestModels::write(seeds.string(), testing::TestModels::seedScatterUsda(10'000, 7));
    dishes.push_back(seeds);
    benchThreeD(dishes);
    if (wanted("AR view focus square") || wanted("AR view placed") || wanted("AR view snapshot")) benchAR(dish);
    if (wanted("AR camera")) benchCameraPicture(dish);
    core::Dispatch::setMain(nullptr);
    return 0;
}
