// Hostile and damaged input through SceneImporter::importFile, across every format: the
// corpus's bad files, truncated and bit-flipped copies of every good corpus file, an HTML
// page or plain text under a model's name, an empty file, files rewritten while they load, and
// the fuzzers' findings. Each must end in a ModelImportError or load; none may crash or hang.
#include "ImportTestHelpers.h"
#include "support/FuzzRegressions.h"
#include "import/ImportError.h"
#include "import/SceneImporter.h"
#include "import/usd/CrateReader.h"
#include "import/usd/UsdzArchive.h"
#include "support/Corpus.h"
#include "support/ExpectImportError.h"
#include "export/GlbWriter.h"
#include "export/UsdzWriter.h"

#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <random>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace orvanta::import {
namespace {

namespace fs = std::filesystem;

Bytes readBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void writeBytes(const fs::path& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Imports `path`; a failure must be a well-formed import error, and no file may hang the
// importer (the bound is generous: it catches a hang, not a slow machine). Returns the
// outcome so callers can check more.
core::Result<ImportedScene> importSurvives(const fs::path& path) {
    auto pending = std::async(std::launch::async, [path] { return SceneImporter::importFile(path.string()); });
    if (pending.wait_for(std::chrono::minutes(2)) != std::future_status::ready)
        ADD_FAILURE() << path << " is still importing after two minutes";
    auto result = pending.get();
    if (!result) {
        const core::Error& error = result.error();
        EXPECT_EQ(error.domain(), importErrorDomain) << path;
        EXPECT_GE(error.code(), static_cast<int>(ImportErrorCode::unreadableFile)) << path;
        EXPECT_LE(error.code(), static_cast<int>(ImportErrorCode::limitExceeded)) << path;
        EXPECT_FALSE(error.localizedDescription().empty()) << path;
    } else {
        // A scene that loads is whole: every index points at a vertex.
        for (const ImportedMesh& mesh : result->meshes)
            for (std::uint32_t index : mesh.indices) EXPECT_LT(index, mesh.positions.size()) << path;
    }
    return result;
}

// The corpus's good model files (sidecar .bin and images are not models of their own).
std::vector<fs::path> goodCorpusFiles(const fs::path& corpus) {
    std::vector<fs::path> files;
    for (const char* folder : {"usdz", "usdc", "usda", "glb", "gltf"}) {
        for (const auto& entry : fs::recursive_directory_iterator(corpus / folder)) {
            const fs::path& path = entry.path();
            const std::string ext = path.extension().string();
            if (!entry.is_regular_file() || ext == ".bin" || ext == ".png") continue;
            if (path.filename().string().find("bad") != std::string::npos) continue;
            files.push_back(path);
        }
    }
    files.push_back(corpus / "usdz-bad/openusd_badUsdz.usdz");  // deflated, unaligned and nested, yet it loads
    return files;
}

TEST(BadInputTest, CorpusBadFilesEndInErrors) {
    ORVANTA_CORPUS_FILE(corpus, "glb-bad");
    std::vector<fs::path> files = {corpus.parent_path() / "usdc/crate-bad_corrupt.usd"};
    for (const char* folder : {"glb-bad", "usdz-bad"})
        for (const auto& entry : fs::directory_iterator(corpus.parent_path() / folder)) files.push_back(entry.path());
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.string());
        const auto result = importSurvives(path);
        // Truncated chunks, wrong lengths, a missing buffer, a glTF 1.0 binary and corrupt
        // compression are all errors; the USDZ packages that merely bend the rules may load.
        const bool broken = path.parent_path().filename() == "glb-bad" || path.filename() == "crate-bad_corrupt.usd";
        EXPECT_TRUE(!broken || !result);
        if (path.filename() == "msft_DuckMissingMaterialRef_gltf1.glb")
            testing::expectImportError(result, ImportErrorCode::unsupportedFeature, "glTF 1.0");
    }
}

// Every good corpus file, cut at several points and with bits flipped at positions drawn
// from fixed seeds. Sidecar files of a .gltf are copied beside the damaged copy, so the
// damaged JSON still finds its buffer and image.
TEST(BadInputTest, TruncatedAndBitFlippedCorpusFilesNeverCrash) {
    const auto corpus = testing::corpusDirectory();
    if (!corpus || !fs::exists(*corpus / "glb")) GTEST_SKIP() << "corpus absent";
    QTemporaryDir temp;
    const fs::path dir = temp.path().toStdString();
    int imported = 0;
    for (const fs::path& source : goodCorpusFiles(*corpus)) {
        SCOPED_TRACE(source.string());
        const fs::path folder = dir / source.stem();
        fs::create_directories(folder);
        for (const auto& sibling : fs::directory_iterator(source.parent_path()))
            if (sibling.path() != source && (sibling.path().extension() == ".bin" || sibling.path().extension() == ".png"))
                fs::copy_file(sibling.path(), folder / sibling.path().filename(), fs::copy_options::overwrite_existing);
        const Bytes original = readBytes(source);
        const fs::path copy = folder / source.filename();

        const std::size_t n = original.size();
        for (std::size_t cut : {std::size_t(1), std::size_t(7), std::size_t(12), std::size_t(20), std::size_t(64),
                                n / 8, n / 3, n / 2, n - n / 5, n - 1}) {
            if (cut == 0 || cut >= n) continue;
            writeBytes(copy, Bytes(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(cut)));
            importSurvives(copy);
            ++imported;
        }
        for (unsigned seed = 1; seed <= 8; ++seed) {
            std::mt19937 random(seed);
            Bytes flipped = original;
            // Early seeds hit the headers, where sizes and offsets live; later ones hit anywhere.
            const std::size_t range = seed <= 3 ? std::min<std::size_t>(n, 256) : n;
            for (unsigned flips = 0; flips < seed; ++flips) {
                const std::size_t at = std::uniform_int_distribution<std::size_t>(0, range - 1)(random);
                flipped[at] ^= static_cast<std::uint8_t>(1u << (random() % 8));
            }
            writeBytes(copy, flipped);
            importSurvives(copy);
            ++imported;
        }
    }
    EXPECT_GT(imported, 100);
}

TEST(BadInputTest, HtmlPageOrTextUnderAModelNameAndEmptyFileAreNotModels) {
    QTemporaryDir temp;
    const fs::path dir = temp.path().toStdString();
    const std::string html = "\n\n\n\n<!DOCTYPE html>\n<html lang=\"en\"><head><title>Page not found</title></head>"
                             "<body><h1>404</h1></body></html>\n";
    const std::string text = "solid dish\nendsolid dish\n";
    // Text under the name of a binary format: the refusal says which format the file is not.
    const struct {
        const char* name;
        std::string content;
        std::string what;
    } cases[] = {
        {"DamagedHelmet.glb", html, ""}, {"dish.usdz", html, ""}, {"dish.gltf", html, ""}, {"empty.glb", "", ""},
        {"dish.glb", text, "not a glTF binary: it does not start with glTF's magic bytes"},
        {"dish.USDZ", text, "not a USDZ package: it does not start with a zip archive's header"},
        {"dish.usdc", text, "not a USD crate file: it does not start with PXR-USDC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        writeBytes(dir / c.name, Bytes(c.content.begin(), c.content.end()));
        const auto refused = importSurvives(dir / c.name);
        testing::expectImportError(refused, ImportErrorCode::unrecognisedFormat, "");
        if (refused || c.what.empty()) continue;
        EXPECT_EQ(refused.error().localizedDescription(), (dir / c.name).string() + ": " + c.what);
    }
    testing::expectImportError(importSurvives(dir / "missing.usdz"), ImportErrorCode::unreadableFile, "");
}

// Model files that another writer cuts in half and writes back, again and again, while they
// are loaded: every load ends with a scene or an import error, never with a signal.
TEST(BadInputTest, FilesRewrittenInPlaceWhileTheyLoadEndInASceneOrAnError) {
    QTemporaryDir temp;
    const ImportedScene scene = importOk(importPackage({{"grid.usdc", gridCrateLayer(false)}}));
    const fs::path usdz = fs::path(temp.path().toStdString()) / "dish.usdz", glb = usdz.parent_path() / "dish.glb";
    ASSERT_TRUE(exporter::UsdzWriter::write(scene, usdz.string(), exporter::UsdzWriter::Layer::crate));
    ASSERT_TRUE(exporter::GlbWriter::write(scene, glb.string()));

    for (const fs::path& path : {usdz, glb}) {
        SCOPED_TRACE(path.string());
        const Bytes whole = readBytes(path);
        std::atomic<bool> loading = true;
        std::thread writer([&] {
            const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
            while (loading) {
                EXPECT_EQ(::ftruncate(fd, off_t(whole.size() / 2)), 0);
                EXPECT_EQ(::pwrite(fd, whole.data(), whole.size(), 0), ssize_t(whole.size()));
            }
            ::close(fd);
        });
        for (int load = 0; load < 100; ++load) importSurvives(path);
        loading = false;
        writer.join();
    }
}

// Inputs the fuzz targets once crashed or hung on, minimised, fed in the way each target
// feeds them: each must now end in a result or an error.
TEST(BadInputTest, FuzzRegressionsReplayCleanly) {
    const std::pair<const char*, std::function<void(const Bytes&)>> targets[] = {
        {"fuzz_glb", [](const Bytes& bytes) {
             const auto result = AssimpImporter::importBytes(bytes, "glb");
             EXPECT_TRUE(result || result.error().domain() == std::string(importErrorDomain));
         }},
        {"fuzz_usda", [](const Bytes& bytes) {
             const std::string text(bytes.begin(), bytes.end());
             (void)importUsda(text.starts_with("#usda") ? text : "#usda 1.0\n" + text, "/nonexistent-fuzz-folder/replay.usda");
         }},
        {"fuzz_usdc", [](const Bytes& bytes) { (void)usd::CrateReader::read(bytes, "replay.usdc"); }},
        {"fuzz_usdz", [](const Bytes& bytes) {
             const auto archive = usd::UsdzArchive::open(bytes, nullptr);
             if (archive.ok())
                 for (const usd::UsdzEntry& entry : archive->entries()) (void)usd::CrateReader::read(entry.data, entry.path);
         }},
    };
    for (const auto& [target, replay] : targets)
        for (const auto& input : testing::fuzzRegressions(target)) {
            SCOPED_TRACE(input.name);
            replay(input.bytes);
        }
    EXPECT_FALSE(testing::fuzzRegressions("fuzz_glb").empty()) << "the recorded GLB regressions are missing";
}

} // namespace
} // namespace orvanta::import
