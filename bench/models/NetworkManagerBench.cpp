// Benchmarks of the model cache and download path.
//
//   bench_models                      cache hit (Google Benchmark), then the download
//                                     comparison against curl on the same URL
//   bench_models --serve SIZE_MIB     (internal) serve a body of SIZE_MIB on 127.0.0.1 and
//                                     print the port; the comparison starts this itself
#include "core/Dispatch.h"
#include "core/EventLoopScheduler.h"
#include "core/Log.h"
#include "core/ManualScheduler.h"
#include "core/TemporaryDirectory.h"
#include "models/NetworkManager.h"
#include "support/TestHttpServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

using namespace orvanta;

namespace {

class BenchNetworkManager : public NetworkManager {
public:
    using NetworkManager::NetworkManager;
    using NetworkManager::downloadAndCacheModel;
};

void BM_CacheHit(benchmark::State& state) {
    QTemporaryDir dir;
    setenv("TMPDIR", dir.path().toLocal8Bit().constData(), 1);
    QFile file(QDir(QString::fromStdString(core::TemporaryDirectory::url().value().path())).filePath("dish.usdz"));
    file.open(QIODevice::WriteOnly);
    file.write("cached");
    file.close();
    auto previous = core::Log::setSink([](const std::string&) {}); // keep stdout out of the timing
    auto network = std::make_shared<BenchNetworkManager>();
    const auto url = *core::Url::fromString("https://cdn.example.com/menu/dish.usdz");
    for (auto _ : state) {
        bool delivered = false;
        auto c = network->downloadAndCacheModel(url).sink([](const core::Completion&) {},
                                                          [&](const core::Url&) { delivered = true; });
        benchmark::DoNotOptimize(delivered);
    }
    core::Log::setSink(previous);
}
BENCHMARK(BM_CacheHit);

// A memory figure of this process from /proc/self/status ("VmHWM:" peak resident since the
// last reset, "VmRSS:" resident now), in bytes.
long long statusBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string key;
    long long kb = 0;
    while (status >> key) {
        if (key == field) {
            status >> kb;
            return kb * 1024;
        }
        status.ignore(1 << 20, '\n');
    }
    return 0;
}
void resetPeakRss() { std::ofstream("/proc/self/clear_refs") << "5"; }

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

int serve(int sizeMib) {
    testing::TestHttpServer server;
    testing::Route route;
    route.body = QByteArray(qsizetype(sizeMib) << 20, 'm');
    server.route("/big.usdz", route);
    std::cout << server.baseUrl() << std::endl;
    std::string line;
    std::getline(std::cin, line); // serve until the parent closes our input
    return 0;
}

void compareDownloads(const char* self) {
    constexpr int sizeMib = 64;
    constexpr int runs = 5;
    QProcess server;
    server.start(self, {"--serve", QString::number(sizeMib)});
    server.waitForReadyRead(10000);
    const std::string base = server.readLine().trimmed().toStdString();
    const std::string url = base + "/big.usdz";

    auto main = std::make_shared<core::ManualScheduler>();
    core::Dispatch::setMain(main);
    QTemporaryDir dir;
    setenv("TMPDIR", dir.path().toLocal8Bit().constData(), 1);
    auto previous = core::Log::setSink([](const std::string&) {});
    auto network = std::make_shared<BenchNetworkManager>();
    std::vector<double> kitSeconds, curlSeconds, curlFileSeconds;
    long long worstGrowth = 0;
    for (int i = 0; i < runs; ++i) {
        QFile::remove(dir.filePath("big.usdz"));
        const long long before = statusBytes("VmRSS:");
        resetPeakRss();
        QElapsedTimer timer;
        timer.start();
        bool done = false;
        auto c = network->downloadAndCacheModel(*core::Url::fromString(url))
                     .sink([&](const core::Completion&) { done = true; }, [](const core::Url&) {});
        main->runUntil([&] { return done; }, std::chrono::seconds(60));
        kitSeconds.push_back(timer.nsecsElapsed() / 1e9);
        worstGrowth = std::max(worstGrowth, statusBytes("VmHWM:") - before);

        QElapsedTimer curlTimer;
        curlTimer.start();
        QProcess::execute("curl", {"-s", "-o", "/dev/null", QString::fromStdString(url)});
        curlSeconds.push_back(curlTimer.nsecsElapsed() / 1e9);

        curlTimer.start();
        QProcess::execute("curl", {"-s", "-o", dir.filePath("curl-copy"), QString::fromStdString(url)});
        curlFileSeconds.push_back(curlTimer.nsecsElapsed() / 1e9);
    }
    core::Log::setSink(previous);
    server.closeWriteChannel();
    server.waitForFinished(5000);

    const double mib = sizeMib;
    const double kit = median(kitSeconds), curl = median(curlSeconds), curlFile = median(curlFileSeconds);
    std::printf("download %d MiB, median of %d: kit %.1f MiB/s (into the cache file), curl -o /dev/null %.1f MiB/s "
                "(ratio %.2f), curl -o file %.1f MiB/s (ratio %.2f)\n",
                sizeMib, runs, mib / kit, mib / curl, curl / kit, mib / curlFile, curlFile / kit);
    std::printf("peak memory growth during a download: %.1f MiB = %.2fx the body\n", worstGrowth / 1048576.0,
                worstGrowth / (mib * 1048576.0));
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc == 3 && std::string(argv[1]) == "--serve") return serve(std::stoi(argv[2]));
    core::Dispatch::setMain(std::make_shared<core::ManualScheduler>());
    core::Dispatch::setBackground(core::EventLoopScheduler::withWorkerThread("background"));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    compareDownloads(argv[0]);
    benchmark::Shutdown();
    return 0;
}
