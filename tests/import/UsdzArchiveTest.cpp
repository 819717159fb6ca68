// UsdzArchive and FileBytes: real packages from the corpus, packages built here byte by byte
// (stored, aligned, deflated, with data descriptors, lying about sizes), and asset path
// resolution. Cut copies of the corpus packages are the crate reader tests'.
#include "support/ExpectImportError.h"
#include "import/ImportError.h"
#include "import/usd/CrateReader.h"
#include "import/FileBytes.h"
#include "import/usd/UsdzArchive.h"
#include "support/Corpus.h"
#include "export/ZipWriter.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orvanta::import::usd {
namespace {

using Bytes = std::vector<std::uint8_t>;

using exporter::ZipWriter;

core::Result<UsdzArchive> openBytes(const Bytes& bytes) { return UsdzArchive::open(bytes, nullptr); }

std::string text(const UsdzEntry& e) { return {reinterpret_cast<const char*>(e.data.data()), e.data.size()}; }

std::shared_ptr<const FileBytes> mapCorpus(const std::filesystem::path& path) {
    auto file = FileBytes::open(path.string());
    EXPECT_TRUE(file.ok());
    return file.ok() ? file.value() : nullptr;
}

// ---- corpus -------------------------------------------------------------------------------

TEST(UsdzArchiveCorpus, CompressedUnalignedPackageIsStillReadAndItsNestedPackagesOpenInPlace) {
    ORVANTA_CORPUS_FILE(path, "usdz-bad/openusd_badUsdz.usdz");
    const auto file = mapCorpus(path);
    auto archive = UsdzArchive::open(file->bytes(), file);
    ASSERT_TRUE(archive.ok()) << archive.error().localizedDescription();
    ASSERT_EQ(archive->entries().size(), 12u);
    EXPECT_EQ(archive->entries().front().path, "clean_flat.usdc");
    EXPECT_EQ(archive->entries().front().data.data() - file->bytes().data(), 73);
    // Deflated entries are inflated into buffers that the archive's owner keeps alive.
    auto owner = archive->owner();
    const UsdzEntry nested = *archive->find("clean.usdz");
    archive = core::Error("test", 0, "drop the archive");
    const auto inner = UsdzArchive::open(nested.data, owner);
    ASSERT_TRUE(inner.ok()) << inner.error().localizedDescription();
    EXPECT_FALSE(inner->entries().empty());
    for (const UsdzEntry& entry : inner->entries()) {
        if (entry.path.ends_with(".usdc")) {
            EXPECT_TRUE(CrateReader::read(entry.data, entry.path).ok()) << entry.path;
        }
    }
}

TEST(UsdzArchiveCorpus, PackageWithoutDefaultLayerIsRejected) {
    ORVANTA_CORPUS_FILE(path, "usdz-bad/openusd_first_file_not_usd.usdz");
    const auto file = mapCorpus(path);
    testing::expectImportError(UsdzArchive::open(file->bytes(), file), ImportErrorCode::malformedData,
                "the first entry 'b.png' is not a USD layer");
}

// ---- built packages -----------------------------------------------------------------------

// Stored entries are views of the input bytes; deflated, unaligned and descriptor entries are
// read too, and directories left out.
TEST(UsdzArchive, EveryKindOfEntryIsRead) {
    const std::string layer(5000, 'a');
    const Bytes bytes = ZipWriter()
                            .add("dish.usda", "#usda 1.0\n")
                            .add("tex/plate.png", "PNGDATA")
                            .add({"big.usda", layer, true, false})
                            .add({"a/b.png", "stored, unaligned", false, false})
                            .add({"a/c.png", "after a descriptor", true, true, true})
                            .add({"dir/", ""})
                            .build();
    const auto archive = openBytes(bytes);
    ASSERT_TRUE(archive.ok()) << archive.error().localizedDescription();
    ASSERT_EQ(archive->entries().size(), 5u);
    EXPECT_EQ(archive->entries()[0].path, "dish.usda");
    EXPECT_EQ(archive->entries()[1].data.data() - bytes.data(), 128);
    EXPECT_EQ(text(archive->entries()[1]), "PNGDATA");
    EXPECT_EQ(archive->find("tex\\plate.png"), &archive->entries()[1]);
    EXPECT_EQ(archive->find("./tex/plate.png"), &archive->entries()[1]);
    EXPECT_EQ(archive->find("tex/Plate.png"), nullptr);
    EXPECT_EQ(text(archive->entries()[2]), layer);
    EXPECT_EQ(text(archive->entries()[3]), "stored, unaligned");
    EXPECT_EQ(text(archive->entries()[4]), "after a descriptor");
}

// `bytes` with `edit` applied to the byte `at` places after the start of the first `signature`.
Bytes patched(Bytes bytes, const std::vector<std::uint8_t>& signature, std::initializer_list<std::pair<int, std::uint8_t>> edit) {
    const auto found = std::search(bytes.begin(), bytes.end(), signature.begin(), signature.end());
    for (const auto& [at, value] : edit) found[at] = value;
    return bytes;
}

TEST(UsdzArchive, BrokenOrHostilePackagesEndInClearErrors) {
    using C = ImportErrorCode;
    const auto with = [](ZipWriter::Entry entry, auto&& change) { change(entry); return ZipWriter().add(entry).build(); };
    const std::string html = "<!DOCTYPE html>\n<html><head><title>Dish</title></head></html>\n";
    const std::vector<std::uint8_t> local{0x50, 0x4b, 0x03, 0x04}, central{0x50, 0x4b, 0x01, 0x02};
    const Bytes layer = ZipWriter().add("dish.usda", "#usda 1.0\n").build();
    const ZipWriter::Entry deflated{"dish.usda", std::string(1000, 'x'), true}, stored{"dish.usda", "x"};
    // A deflated entry that inflates to its size but not to its checksum (both headers' CRC-32).
    Bytes corrupt = ZipWriter().add({"dish.usda", std::string(100, 'x'), true}).build();
    corrupt[14] ^= 0x01;
    std::search(corrupt.begin(), corrupt.end(), central.begin(), central.end())[16] ^= 0x01;
    const struct {
        Bytes bytes;
        C code;
        const char* message;
    } cases[] = {
        {{}, C::unrecognisedFormat, "empty"},
        {Bytes(html.begin(), html.end()), C::unrecognisedFormat, "not a zip archive"},
        // A bomb: a few deflated bytes that claim to inflate to 4 GiB; a smaller lie.
        {with(deflated, [](auto& e) { e.declaredSize = 0xfffffff0u; }), C::malformedData, "impossible inflated size"},
        {with(deflated, [](auto& e) { e.declaredSize = 2000; }), C::malformedData, "does not inflate to its declared 2000 bytes"},
        {corrupt, C::malformedData, "fails its checksum"},
        {with(stored, [](auto& e) { e.declaredSize = 0xffffffffu; }), C::unsupportedFeature, "Zip64"},
        {with(stored, [](auto& e) { e.flags = 1; }), C::unsupportedFeature, "encrypted"},
        {with(stored, [](auto& e) { e.method = 12; }), C::unsupportedFeature, "compression method 12"},
        {with(stored, [](auto& e) { e.declaredSize = 7; }), C::malformedData, "two different sizes"},
        // A stored entry whose size runs past the end of the file.
        {patched(layer, local, {{18, 0xff}, {19, 0xff}, {22, 0xff}, {23, 0xff}}), C::malformedData, "declares 65535 bytes but the file ends"},
        // The directory disagrees with the local header about both sizes, or the inflated one.
        {patched(layer, central, {{20, 9}, {24, 9}}), C::malformedData, "disagree on the entry's size"},
        {patched(layer, central, {{24, 9}}), C::malformedData, "disagree on the entry's size"},
        {ZipWriter().add("dish.usda", "a").add("b.png", "b").build(1), C::malformedData, "the central directory lists 1 entries, the archive holds 2"},
        {ZipWriter().add("dir/", "").build(), C::malformedData, "holds no files"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        testing::expectImportError(openBytes(c.bytes), c.code, c.message);
    }
}

TEST(UsdzArchive, AssetPathsResolveRelativeToTheReferencingLayer) {
    struct Case { const char* from; const char* asset; std::optional<std::string> expected; };
    const Case cases[] = {
        {"dish.usda", "tex/plate.png", "tex/plate.png"},
        {"dish.usda", "./tex/plate.png", "tex/plate.png"},
        {"0/Payload.usda", "./Materials.usda", "0/Materials.usda"},
        {"0/Payload.usda", "../1/Logo With Alpha.png", "1/Logo With Alpha.png"},
        {"a/b/c.usda", "..\\..\\tex\\x.png", "tex/x.png"},
        {"a/b/c.usda", "/root.png", "root.png"},
        {"a/b/c.usda", "d/./e//f.png", "a/b/d/e/f.png"},
        {"dish.usda", "../outside.png", std::nullopt},
        {"a/dish.usda", "../../outside.png", std::nullopt},
        {"dish.usda", "", std::nullopt},
        {"dish.usda", "tex/", std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(UsdzArchive::resolve(c.from, c.asset), c.expected) << c.from << " + " << c.asset;
    }
}

TEST(FileBytes, MapsFilesAndReportsTheOnesItCannot) {
    const QTemporaryDir temp;
    const std::filesystem::path dir = temp.path().toStdString();
    const auto empty = dir / "empty.usdz";
    std::ofstream(empty).close();
    const auto mapped = FileBytes::open(empty.string());
    ASSERT_TRUE(mapped.ok());
    EXPECT_TRUE(mapped.value()->bytes().empty());
    testing::expectImportError(UsdzArchive::open(mapped.value()->bytes(), mapped.value()), ImportErrorCode::unrecognisedFormat, "empty");

    const auto missing = FileBytes::open((dir / "missing.usdz").string());
    ASSERT_FALSE(missing.ok());
    EXPECT_EQ(missing.error().code(), static_cast<int>(ImportErrorCode::unreadableFile));
    const auto directory = FileBytes::open(dir.string());
    ASSERT_FALSE(directory.ok());
    EXPECT_NE(directory.error().localizedDescription().find("not a regular file"), std::string::npos);
}

} // namespace
} // namespace orvanta::import::usd
