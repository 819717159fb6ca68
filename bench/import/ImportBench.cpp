// Import throughput and peak memory of the model importers on the corpus's largest files.
//
// Throughput counts the bytes the importer has to parse: for a USDZ package the crate layers
// inside it (textures are handed over undecoded, so their bytes do not count), for a loose
// layer or a GLB the whole file. Peak memory is the growth of the process's resident
// high-water mark during one import, after resetting the mark through /proc/self/clear_refs,
// set against the file size and the size the file's textures take once decoded.
// Every corpus benchmark skips when the corpus is absent. One GLB is generated here instead:
// a 1024 x 1024 vertex grid (positions, normals and 32-bit triangle indices, about 49 MB),
// large enough that per-byte costs dominate the fixed ones.

#include "export/CrateWriter.h"
#include "export/UsdzWriter.h"
#include "export/ZipWriter.h"
#include "import/SceneImporter.h"
#include "import/usd/CrateReader.h"
#include "import/FileBytes.h"
#include "import/usd/UsdzArchive.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#if __has_include("support/Corpus.h")
#include "support/Corpus.h"
#endif

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
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

// Where a benchmark's input lies; nothing when it is absent.
using Locator = std::function<std::optional<fs::path>()>;

Locator corpus(const std::string& relative) {
    return [relative] { return corpusFile(relative); };
}

void appendU32(std::string& out, std::uint32_t value) {
    out.append(reinterpret_cast<const char*>(&value), 4); // little-endian, as is every machine we build for
}

template <typename T>
void appendValues(std::string& out, const std::vector<T>& values) {
    out.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
}

// A flat `side` x `side` vertex grid of unit cells in the XZ plane facing +Y, as one
// indexed triangle list, written as a GLB.
std::string gridGlb(std::uint32_t side) {
    std::vector<float> positions, normals;
    std::vector<std::uint32_t> indices;
    positions.reserve(std::size_t(side) * side * 3);
    normals.reserve(positions.capacity());
    indices.reserve(std::size_t(side - 1) * (side - 1) * 6);
    for (std::uint32_t z = 0; z < side; ++z)
        for (std::uint32_t x = 0; x < side; ++x) {
            positions.insert(positions.end(), {float(x), 0.0f, float(z)});
            normals.insert(normals.end(), {0.0f, 1.0f, 0.0f});
        }
    for (std::uint32_t z = 0; z + 1 < side; ++z)
        for (std::uint32_t x = 0; x + 1 < side; ++x) {
            const std::uint32_t v = z * side + x;
            indices.insert(indices.end(), {v, v + side, v + 1, v + 1, v + side, v + side + 1});
        }
    std::string bin;
    appendValues(bin, positions);
    appendValues(bin, normals);
    appendValues(bin, indices);
    const qint64 attributeBytes = qint64(positions.size()) * 4;
    const qint64 vertices = qint64(side) * side;
    const double extent = side - 1;
    const QJsonObject gltf{
        {"asset", QJsonObject{{"version", "2.0"}}},
        {"scene", 0},
        {"scenes", QJsonArray{QJsonObject{{"nodes", QJsonArray{0}}}}},
        {"nodes", QJsonArray{QJsonObject{{"mesh", 0}}}},
        {"meshes", QJsonArray{QJsonObject{{"primitives", QJsonArray{QJsonObject{
                                              {"attributes", QJsonObject{{"POSITION", 0}, {"NORMAL", 1}}}, {"indices", 2}}}}}}},
        {"buffers", QJsonArray{QJsonObject{{"byteLength", qint64(bin.size())}}}},
        {"bufferViews", QJsonArray{QJsonObject{{"buffer", 0}, {"byteOffset", 0}, {"byteLength", attributeBytes}},
                                   QJsonObject{{"buffer", 0}, {"byteOffset", attributeBytes}, {"byteLength", attributeBytes}},
                                   QJsonObject{{"buffer", 0}, {"byteOffset", 2 * attributeBytes},
                                               {"byteLength", qint64(indices.size()) * 4}}}},
        {"accessors", QJsonArray{QJsonObject{{"bufferView", 0}, {"componentType", 5126}, {"count", vertices}, {"type", "VEC3"},
                                             {"min", QJsonArray{0, 0, 0}}, {"max", QJsonArray{extent, 0, extent}}},
                                 QJsonObject{{"bufferView", 1}, {"componentType", 5126}, {"count", vertices}, {"type", "VEC3"}},
                                 QJsonObject{{"bufferView", 2}, {"componentType", 5125}, {"count", qint64(indices.size())},
                                             {"type", "SCALAR"}}}},
    };
    std::string json = QJsonDocument(gltf).toJson(QJsonDocument::Compact).toStdString();
    json.append((4 - json.size() % 4) % 4, ' ');
    std::string glb = "glTF";
    appendU32(glb, 2);
    appendU32(glb, static_cast<std::uint32_t>(12 + 8 + json.size() + 8 + bin.size()));
    appendU32(glb, static_cast<std::uint32_t>(json.size()));
    glb += "JSON" + json;
    appendU32(glb, static_cast<std::uint32_t>(bin.size()));
    glb.append("BIN\0", 4);
    glb += bin;
    return glb;
}

// The generated grid, written once per run into a folder removed at exit.
std::optional<fs::path> generatedGrid() {
    static const QTemporaryDir dir;
    static const std::optional<fs::path> path = []() -> std::optional<fs::path> {
        if (!dir.isValid()) return std::nullopt;
        const fs::path file = fs::path(dir.path().toStdString()) / "grid-1024.glb";
        const std::string bytes = gridGlb(1024);
        std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file;
    }();
    return path;
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
void importFile(benchmark::State& state, const Locator& locate, bool layersInPackage) {
    const auto path = locate();
    if (!path) {
        state.SkipWithError("input absent");
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
        // The caller keeps the scene; freeing it is not part of the import.
        state.PauseTiming();
        { const auto discarded = std::move(scene).value(); }
        state.ResumeTiming();
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

// One import for the peak measurement; its textures are decoded after the measurement.
using PeakLoad = std::function<orvanta::core::Result<orvanta::import::ImportedScene>(const std::string& path)>;

orvanta::core::Result<orvanta::import::ImportedScene> kitImport(const std::string& path) {
    return SceneImporter::importFile(path);
}

// Assimp's own ReadFile without post-processing: the floor under the GLB rows, since the
// importer converts Assimp's scene only once Assimp has built all of it.
orvanta::core::Result<orvanta::import::ImportedScene> assimpAlone(const std::string& path) {
    Assimp::Importer importer;
    if (!importer.ReadFile(path, 0)) return orvanta::core::Error("Assimp", 1, importer.GetErrorString());
    return orvanta::import::ImportedScene{};
}

void peakMemory(benchmark::State& state, const Locator& locate, const PeakLoad& load) {
    const auto path = locate();
    if (!path) {
        state.SkipWithError("input absent");
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
        const auto loaded = load(path->string());
        const long after = statusKilobytes("VmHWM");
        if (!loaded) {
            state.SkipWithError(loaded.error().localizedDescription().c_str());
            return;
        }
        growth = std::max(growth, 1024.0 * static_cast<double>(after - before));
        state.PauseTiming();
        decodedTextures = 0;
        for (const auto& texture : loaded->textures) decodedTextures += static_cast<double>(texture.decode().sizeInBytes());
        state.ResumeTiming();
    }
    state.counters["file_bytes"] = fileBytes;
    state.counters["peak_growth_bytes"] = growth;
    state.counters["decoded_texture_bytes"] = decodedTextures;
    state.counters["peak_per_file_size"] = growth / fileBytes;
    state.counters["peak_per_budget"] = growth / (3 * fileBytes + decodedTextures); // target: at most 1
}

// Large crate layers, generated once per run into a folder removed at exit and packaged as
// a USDZ with one stored, 64-byte aligned entry. "dish" is a scanned-dish mix: 32 grid meshes
// of 256 x 256 points with vertex normals and face-varying, indexed texture coordinates, so
// floats outweigh the well-compressed indices (about 67 MB). "indices" is the worst case for
// integer decoding: 4 triangle soups whose 6 M indices each jump at random across
// the mesh's 64 K points, so most deltas need 32 bits (about 66 MB). readCrateLayer times
// the crate reader alone on the same mapped entry, to split the reader's share of an import
// from the scene extraction's.
enum class CrateMix { dish, indices };

std::string largeCrateLayer(CrateMix mix) {
    using namespace orvanta::exporter::crate;
    orvanta::exporter::CrateWriter w(8);
    const int meshCount = mix == CrateMix::dish ? 32 : 4;
    const std::int32_t side = 256;
    const std::int32_t pointCount = side * side;
    std::vector<std::string> names;
    for (int m = 0; m < meshCount; ++m) names.push_back("Part" + std::to_string(m));
    w.spec("/", sPseudoRoot, {{"defaultPrim", w.tokenInline("Dish")}, {"primChildren", w.tokenVector({"Dish"})}});
    w.spec("/Dish", sPrim, {{"specifier", rep(tSpecifier, 0, isInlined)}, {"typeName", w.tokenInline("Xform")},
                            {"primChildren", w.tokenVector(names)}});
    std::minstd_rand random(7);
    for (int m = 0; m < meshCount; ++m) {
        std::vector<float> points, normals, st;
        for (std::int32_t z = 0; z < side; ++z)
            for (std::int32_t x = 0; x < side; ++x) {
                points.insert(points.end(), {float(x), float(m), float(z)});
                normals.insert(normals.end(), {0.0f, 1.0f, 0.0f});
                st.insert(st.end(), {float(x) / side, float(z) / side});
            }
        std::vector<std::int32_t> indices;
        if (mix == CrateMix::dish) {
            for (std::int32_t z = 0; z + 1 < side; ++z)
                for (std::int32_t x = 0; x + 1 < side; ++x) {
                    const std::int32_t v = z * side + x;
                    indices.insert(indices.end(), {v, v + side, v + 1, v + 1, v + side, v + side + 1});
                }
        } else {
            std::uniform_int_distribution<std::int32_t> point(0, pointCount - 1);
            indices.resize(6'000'000);
            for (auto& i : indices) i = point(random);
        }
        const std::vector<std::int32_t> counts(indices.size() / 3, 3);
        const std::string mesh = "/Dish/" + names[static_cast<std::size_t>(m)];
        struct Attribute { std::string name, typeName; std::uint64_t value; };
        std::vector<Attribute> attributes{{"points", "point3f[]", w.array(tVec3f, points, 3)},
                                          {"faceVertexCounts", "int[]", w.compressedArray(tInt, counts)},
                                          {"faceVertexIndices", "int[]", w.compressedArray(tInt, indices)}};
        if (mix == CrateMix::dish) {
            attributes.push_back({"normals", "normal3f[]", w.array(tVec3f, normals, 3)});
            attributes.push_back({"primvars:st", "texCoord2f[]", w.array(tVec2f, st, 2)});
            attributes.push_back({"primvars:st:indices", "int[]", w.compressedArray(tInt, indices)});
        }
        std::vector<std::string> propertyNames;
        for (const auto& a : attributes) propertyNames.push_back(a.name);
        w.spec(mesh, sPrim, {{"specifier", rep(tSpecifier, 0, isInlined)}, {"typeName", w.tokenInline("Mesh")},
                             {"properties", w.tokenVector(propertyNames)}});
        for (const auto& a : attributes) {
            std::vector<std::pair<std::string, std::uint64_t>> fields{{"typeName", w.tokenInline(a.typeName)}, {"default", a.value}};
            if (a.name == "primvars:st") fields.push_back({"interpolation", w.tokenInline("faceVarying")});
            w.spec(mesh + "." + a.name, sAttribute, fields);
        }
    }
    const auto layer = w.build();
    return {layer.begin(), layer.end()};
}

Locator generatedCrate(CrateMix mix) {
    return [mix]() -> std::optional<fs::path> {
        static const QTemporaryDir dir;
        if (!dir.isValid()) return std::nullopt;
        const fs::path file = fs::path(dir.path().toStdString()) / (mix == CrateMix::dish ? "dish.usdz" : "indices.usdz");
        if (!fs::exists(file)) {
            const auto package = orvanta::exporter::ZipWriter().add("dish.usdc", largeCrateLayer(mix)).build();
            std::ofstream(file, std::ios::binary)
                .write(reinterpret_cast<const char*>(package.data()), static_cast<std::streamsize>(package.size()));
        }
        return file;
    };
}

void readCrateLayer(benchmark::State& state, const Locator& locate) {
    const auto path = locate();
    if (!path) {
        state.SkipWithError("input absent");
        return;
    }
    const auto file = orvanta::import::FileBytes::open(path->string());
    if (!file) {
        state.SkipWithError(file.error().localizedDescription().c_str());
        return;
    }
    const auto archive = orvanta::import::usd::UsdzArchive::open(file.value()->bytes(), file.value());
    if (!archive || archive->entries().empty()) {
        state.SkipWithError("not a package");
        return;
    }
    const auto& entry = archive->entries().front();
    for (auto _ : state) {
        auto layer = orvanta::import::usd::CrateReader::read(entry.data, entry.path);
        if (!layer) {
            state.SkipWithError(layer.error().localizedDescription().c_str());
            return;
        }
        benchmark::DoNotOptimize(layer->specs.size());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(entry.data.size()));
}

// Writes the scene of `locate`'s package, imported once, back as a USDZ package with a crate
// layer into a temporary folder, once per iteration. The rate counts the package's bytes;
// peak memory is the resident growth while writing, against the package's size.
void writeUsdz(benchmark::State& state, const Locator& locate) {
    const auto path = locate();
    const QTemporaryDir dir;
    if (!path || !dir.isValid()) {
        state.SkipWithError("input absent");
        return;
    }
    const auto scene = SceneImporter::importFile(path->string());
    if (!scene) {
        state.SkipWithError(scene.error().localizedDescription().c_str());
        return;
    }
    const std::string out = (fs::path(dir.path().toStdString()) / "written.usdz").string();
    std::uint64_t written = 0;
    double growth = 0;
    for (auto _ : state) {
        state.PauseTiming();
        resetPeakResident();
        const long before = statusKilobytes("VmHWM");
        state.ResumeTiming();
        const auto report = orvanta::exporter::UsdzWriter::write(scene.value(), out, orvanta::exporter::UsdzWriter::Layer::crate);
        state.PauseTiming();
        growth = std::max(growth, 1024.0 * static_cast<double>(statusKilobytes("VmHWM") - before));
        state.ResumeTiming();
        if (!report) {
            state.SkipWithError(report.error().localizedDescription().c_str());
            return;
        }
        written = report->bytes;
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(written));
    state.counters["written_bytes"] = static_cast<double>(written);
    state.counters["peak_growth_bytes"] = growth;
    state.counters["peak_per_written"] = growth / static_cast<double>(written);
}

} // namespace

BENCHMARK_CAPTURE(importFile, usdz_crate_RoughnessTest, corpus("usdz/RoughnessTest.usdz"), true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usdz_crate_BoxAnimated, corpus("usdz/BoxAnimated.usdz"), true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usdz_crate_simpleMaterial, corpus("usdz/openusd_simpleMaterial.usdz"), true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usdc_Ball, corpus("usdc/crate-0.7.0_Ball.maya.usd"), false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, usda_UtahTeapot, corpus("usda/UtahTeapot.usd"), false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, glb_Duck, corpus("glb/Duck.glb"), false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(importFile, glb_grid_1M_vertices, Locator(generatedGrid), false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(importFile, usdz_large_crate_dish, generatedCrate(CrateMix::dish), true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(importFile, usdz_large_crate_indices, generatedCrate(CrateMix::indices), true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readCrateLayer, usdz_large_crate_dish, generatedCrate(CrateMix::dish))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readCrateLayer, usdz_large_crate_indices, generatedCrate(CrateMix::indices))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeUsdz, usdz_large_crate_dish, generatedCrate(CrateMix::dish))->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_CAPTURE(peakMemory, usdz_RoughnessTest, corpus("usdz/RoughnessTest.usdz"), kitImport)->Iterations(5)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(peakMemory, usda_UtahTeapot, corpus("usda/UtahTeapot.usd"), kitImport)->Iterations(5)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(peakMemory, glb_Duck, corpus("glb/Duck.glb"), kitImport)->Iterations(5)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(peakMemory, glb_grid_1M_vertices, Locator(generatedGrid), kitImport)->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(peakMemory, glb_grid_1M_vertices_assimp_alone, Locator(generatedGrid), assimpAlone)->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(peakMemory, usdz_large_crate_dish, generatedCrate(CrateMix::dish), kitImport)->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(peakMemory, usdz_large_crate_indices, generatedCrate(CrateMix::indices), kitImport)->Iterations(2)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
