// CrateReader: every crate layer of the corpus with counts checked by hand against its
// manifest, crate files built here for each version and value coding, and damaged, lying
// or hostile files that must end in a clear error.
#include "support/ExpectImportError.h"
#include "import/ImportError.h"
#include "import/usd/CrateLazyArrays.h"
#include "import/usd/CrateReader.h"
#include "import/FileBytes.h"
#include "import/usd/UsdaParser.h"
#include "import/usd/UsdzArchive.h"
#include "ImportTestHelpers.h"
#include "support/Corpus.h"
#include "export/CrateWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace orvanta::import::usd {
namespace {

using namespace exporter::crate;
using exporter::CrateWriter;

core::Result<Layer> readBytes(const Bytes& bytes) { return CrateReader::read(bytes, "test.usdc"); }

// ---- built files --------------------------------------------------------------------------

// One small dish scene, written as each crate version writes it.
Bytes dishScene(unsigned minor) {
    CrateWriter b(minor);
    const bool compressedArrays = minor >= 5;
    std::vector<std::int32_t> indices;
    for (int i = 0; i < 40; ++i) indices.push_back(i % 3 == 0 ? 1000 + i : i);

    b.spec("/", sPseudoRoot, {{"defaultPrim", b.tokenInline("Dish")}, {"upAxis", b.tokenInline("Y")},
                              {"metersPerUnit", rep(tDouble, b.put(0.01))}, {"primChildren", b.tokenVector({"Dish"})}});
    const auto selection = b.put(std::uint64_t{1});
    b.put(b.string("shading"));
    b.put(b.string("red"));
    b.spec("/Dish", sPrim,
           {{"specifier", rep(tSpecifier, 0, isInlined)}, {"typeName", b.tokenInline("Xform")},
            {"primChildren", b.tokenVector({"Plate"})},
            {"apiSchemas", b.listOp(tTokenListOp, prepended, {b.token("MaterialBindingAPI")})},
            {"variantSetNames", b.listOp(tStringListOp, prepended, {b.string("shading")})},
            {"variantSelection", rep(tVariantSelection, selection)}, {"variantSetChildren", b.tokenVector({"shading"})}});
    b.spec("/Dish{shading=}", sVariantSet, {{"variantChildren", b.tokenVector({"red"})}});
    b.spec("/Dish{shading=red}", sVariant, {{"primChildren", b.tokenVector({"Sauce"})}});
    b.spec("/Dish{shading=red}Sauce", sPrim, {{"specifier", rep(tSpecifier, 1, isInlined)}});
    b.spec("/Dish{shading=red}Sauce.size", sAttribute, {{"default", rep(tFloat, std::bit_cast<std::uint32_t>(2.5f), isInlined)}});

    // References with custom data, then payloads: a single one before 0.8, a list op of two after.
    const auto references = b.put(prepended);
    b.put(std::uint64_t{1});
    b.put(b.string("./side dish.usda"));
    b.put(b.path("/Side"));
    b.put(0.0); b.put(1.0);
    b.put(std::uint64_t{1});           // custom data: one entry
    b.put(b.string("note"));
    b.put(std::int64_t{8});            // the entry's representation follows its jump
    b.put(rep(tInt, 7, isInlined));
    const std::uint64_t payload = minor >= 8 ? [&] {
        const auto at = b.put(explicitItems);
        b.put(std::uint64_t{2});
        b.put(b.string("heavy.usdc")); b.put(b.path("/Dish/Plate")); b.put(0.0); b.put(1.0);
        b.put(b.string("light.usdc")); b.put(b.path("/Dish/Plate")); b.put(0.0); b.put(1.0);
        return rep(tPayloadListOp, at);
    }() : [&] {
        const auto at = b.put(b.string("heavy.usdc"));
        b.put(b.path("/Dish/Plate"));
        return rep(tPayload, at);
    }();
    b.spec("/Dish/Plate", sPrim,
           {{"specifier", rep(tSpecifier, 0, isInlined)}, {"typeName", b.tokenInline("Mesh")},
            {"properties", b.tokenVector({"points", "faceVertexIndices", "primvars:st", "material:binding", "xformOp:orient"})},
            {"references", rep(tReferenceListOp, references)}, {"payload", payload}, {"mystery", rep(99, 5, isInlined)}});
    b.spec("/Dish/Plate.points", sAttribute,
           {{"typeName", b.tokenInline("point3f[]")},
            {"default", b.array<float>(tVec3f, {0, 0, 0, 1, 0, 0, 0, 1, 0.5f}, 3)}});
    b.spec("/Dish/Plate.faceVertexIndices", sAttribute,
           {{"typeName", b.tokenInline("int[]")},
            {"default", compressedArrays ? b.compressedArray(tInt, indices) : b.array(tInt, indices)}});
    b.spec("/Dish/Plate.primvars:st", sAttribute,
           {{"typeName", b.tokenInline("texCoord2f[]")}, {"interpolation", b.tokenInline("faceVarying")},
            {"default", b.array<float>(tVec2f, {0, 0, 1, 0, 1, 1}, 2)}});
    b.spec("/Dish/Plate.material:binding", sRelationship,
           {{"targetPaths", b.listOp(tPathListOp, explicitItems, {b.path("/Dish/Mat")})},
            {"variability", rep(tVariability, 1, isInlined)}});
    // Time samples: a jump to the times' representation, a jump to the count, the samples.
    const auto timesData = b.put(std::uint64_t{2});
    b.put(0.0); b.put(24.0);
    const auto q0 = b.putAll<float>({0, 0, 0, 1});
    const auto samples = b.put(std::int64_t{8});
    b.put(rep(tDoubleVector, timesData));
    b.put(std::int64_t{8});
    b.put(std::uint64_t{2});
    b.put(rep(tQuatf, q0));
    b.put(rep(tVec3f, 0x00ff01, isInlined));  // a sample of another type: (1, -1, 0) as int8s
    b.spec("/Dish/Plate.xformOp:orient", sAttribute,
           {{"typeName", b.tokenInline("quatf")}, {"timeSamples", rep(tTimeSamples, samples)},
            {"default", rep(tQuatf, b.putAll<float>({0, 0, 0.70710677f, 0.70710677f}))}});
    return b.build();
}

class CrateVersions : public ::testing::TestWithParam<unsigned> {};

TEST_P(CrateVersions, DishSceneReadsAsTheTextReaderWouldDescribeIt) {
    const auto result = readBytes(dishScene(GetParam()));
    ASSERT_TRUE(result.ok()) << result.error().localizedDescription();
    const Layer& layer = result.value();
    EXPECT_EQ(layer.specs.size(), 12u);
    EXPECT_EQ(layer.spec("/")->type, SpecType::pseudoRoot);
    EXPECT_EQ(field<Token>(layer, "/", "defaultPrim").text, "Dish");
    const auto& metersPerUnit = field<DoubleArray>(layer, "/", "metersPerUnit");
    EXPECT_FALSE(metersPerUnit.isArray);
    EXPECT_EQ(metersPerUnit.values, std::vector<double>{0.01});

    EXPECT_EQ(field<Token>(layer, "/Dish", "specifier").text, "def");
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/Dish", "apiSchemas")), std::vector<std::string>{"MaterialBindingAPI"});
    EXPECT_EQ(field<StringArray>(layer, "/Dish", "variantSetNames").values, std::vector<std::string>{"shading"});
    EXPECT_EQ(field<VariantSelection>(layer, "/Dish", "variantSelection"), (VariantSelection{{"shading", "red"}}));
    EXPECT_EQ(layer.spec("/Dish{shading=}")->type, SpecType::variantSet);
    EXPECT_EQ(layer.spec("/Dish{shading=red}")->type, SpecType::variant);
    EXPECT_EQ(field<Token>(layer, "/Dish{shading=red}Sauce", "specifier").text, "over");
    EXPECT_EQ(field<FloatArray>(layer, "/Dish{shading=red}Sauce.size", "default").values, std::vector<float>{2.5f});

    for (const auto& [name, asset, prim] : {std::tuple{"references", "./side dish.usda", "/Side"}, {"payload", "heavy.usdc", "/Dish/Plate"}}) {
        const auto& arcs = field<ReferenceArray>(layer, "/Dish/Plate", name);
        ASSERT_FALSE(arcs.empty()) << name;
        EXPECT_EQ(arcs[0].assetPath, asset);
        EXPECT_EQ(arcs[0].primPath, prim);
    }
    // From 0.8 payloads are a list op, each item with its layer offset.
    const auto& payloads = field<ReferenceArray>(layer, "/Dish/Plate", "payload");
    EXPECT_EQ(payloads.size(), GetParam() >= 8 ? 2u : 1u);
    EXPECT_EQ(payloads.back().assetPath, GetParam() >= 8 ? "light.usdc" : "heavy.usdc");
    EXPECT_TRUE(layer.spec("/Dish/Plate")->field("mystery")->empty());

    const auto& points = field<FloatArray>(layer, "/Dish/Plate.points", "default");
    EXPECT_EQ(points.width, 3);
    EXPECT_EQ(points.values, (std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0.5f}));
    const auto* indices = std::get_if<IntArray::Narrow>(&field<IntArray>(layer, "/Dish/Plate.faceVertexIndices", "default").values);
    ASSERT_NE(indices, nullptr) << "int[] is kept in 32 bits";
    ASSERT_EQ(indices->size(), 40u);
    EXPECT_EQ((*indices)[3], 1003);
    EXPECT_EQ((*indices)[38], 38);
    EXPECT_EQ(field<FloatArray>(layer, "/Dish/Plate.primvars:st", "default").size(), 3u);
    EXPECT_EQ(field<Token>(layer, "/Dish/Plate.primvars:st", "interpolation").text, "faceVarying");
    EXPECT_EQ(layer.spec("/Dish/Plate.material:binding")->type, SpecType::relationship);
    EXPECT_EQ(field<PathArray>(layer, "/Dish/Plate.material:binding", "targetPaths"), PathArray{"/Dish/Mat"});
    EXPECT_EQ(field<Token>(layer, "/Dish/Plate.material:binding", "variability").text, "uniform");

    const auto& orient = field<FloatArray>(layer, "/Dish/Plate.xformOp:orient", "default");
    EXPECT_FALSE(orient.isArray);
    EXPECT_EQ(orient.values, (std::vector<float>{0, 0, 0.70710677f, 0.70710677f}));
    const auto& samples = field<TimeSamples>(layer, "/Dish/Plate.xformOp:orient", "timeSamples").samples;
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[0].first, 0.0);
    EXPECT_EQ(samples[0].second->get<FloatArray>()->values, (std::vector<float>{0, 0, 0, 1}));
    EXPECT_EQ(samples[1].first, 24.0);
    EXPECT_EQ(samples[1].second->get<FloatArray>()->values, (std::vector<float>{1, -1, 0}));
}

INSTANTIATE_TEST_SUITE_P(, CrateVersions, ::testing::Values(4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u),
                         [](const auto& info) { return "v0_" + std::to_string(info.param); });

// Every coding of a value the reader knows, in one layer: compressed floats as integers or as
// a table of distinct values, halves, 64-bit integers, compressed integers of every delta
// width (they are decoded inside their own result's buffer, so long runs of the common delta,
// of each width, and counts that are no multiple of four must come out exactly), and values
// inlined in their representation.
TEST(CrateReader, ValuesDecodeInEveryCoding) {
    // 'i': integral floats stored as compressed ints; 't': a table of distinct values and indices.
    std::vector<std::int32_t> integral, lutIndices;
    std::vector<float> floats, halves;
    std::vector<double> doubles;
    for (int i = 0; i < 100; ++i) {
        integral.push_back(i * 7 - 300);
        floats.push_back(float(i * 7 - 300));
        lutIndices.push_back(i % 3);
        doubles.push_back(std::array{0.25, -1.5, 1e300}[i % 3]);
        halves.push_back(std::array{1.0f, -2.0f, 0.33325195f}[i % 3]);
    }
    std::minstd_rand random(3);
    std::vector<std::int32_t> narrow{5};
    for (int i = 0; i < 5001; ++i) narrow.push_back(narrow.back() + 2);                  // the common delta
    for (int i = 0; i < 5002; ++i) narrow.push_back(narrow.back() + (i % 7) - 3);        // 8-bit deltas
    for (int i = 0; i < 5003; ++i) narrow.push_back(static_cast<std::int32_t>(random() % 60000) - 30000);  // 16-bit
    for (int i = 0; i < 5001; ++i) narrow.push_back(static_cast<std::int32_t>(random()) * (i % 2 ? 1 : -1));  // 32-bit
    std::vector<std::int64_t> wide;
    for (std::int32_t v : narrow) wide.push_back(std::int64_t{v} * (v % 3 == 0 ? 1 : 4'000'000'011));
    CrateWriter b(9);
    const auto floatAt = b.arrayCount(100);
    b.put('i');
    b.putCompressedInts(integral);
    const auto doubleAt = b.arrayCount(100);
    b.put('t'); b.put(std::uint32_t{3}); b.putAll<double>({0.25, -1.5, 1e300});
    b.putCompressedInts(lutIndices);
    const auto halfAt = b.arrayCount(100);
    b.put('t'); b.put(std::uint32_t{3}); b.putAll<std::uint16_t>({0x3c00, 0xc000, 0x3555});  // the halves of 1, -2, 0.33325195
    b.putCompressedInts(lutIndices);
    const auto shortHalves = b.arrayCount(2);  // under 16 elements: plain even when flagged
    b.putAll<std::uint16_t>({0x3800, 0x0001});  // 0.5 and the smallest subnormal
    b.spec("/", sPseudoRoot, {});
    b.spec("/A", sPrim,
           {{"f", rep(tFloat, floatAt, isArray | isCompressed)}, {"d", rep(tDouble, doubleAt, isArray | isCompressed)},
            {"h", rep(tHalf, halfAt, isArray | isCompressed)}, {"short", rep(tHalf, shortHalves, isArray | isCompressed)},
            {"narrow", b.compressedArray(tInt, narrow)}, {"wide", b.compressedArray(tInt64, wide)},
            {"empty", rep(tFloat, 0, isArray)},
            {"vec", rep(tVec3f, 0x00fe7f, isInlined)},            // (127, -2, 0)
            {"matrix", rep(tMatrix4d, 0x01020202, isInlined)},    // diag(2, 2, 2, 1)
            {"double", rep(tDouble, std::bit_cast<std::uint32_t>(0.5f), isInlined)},
            {"int64", rep(tInt64, 0xfffffffbu, isInlined)},       // -5
            {"half", rep(tHalf, 0xbc00, isInlined)},              // -1
            {"bool", rep(tBool, 1, isInlined)},
            {"asset", rep(tAsset, b.token("tex/plate 1.png"), isInlined)},
            {"string", rep(tString, b.string("Plate"), isInlined)},
            {"dict", rep(tDictionary, 0, isInlined)},
            {"unknownSpecifier", rep(tSpecifier, 9, isInlined)}});
    const auto result = readBytes(b.build());
    ASSERT_TRUE(result.ok()) << result.error().localizedDescription();
    const Layer& layer = result.value();
    EXPECT_EQ(field<FloatArray>(layer, "/A", "f").values, floats);
    EXPECT_EQ(field<DoubleArray>(layer, "/A", "d").values, doubles);
    EXPECT_EQ(field<FloatArray>(layer, "/A", "h").values, halves);
    EXPECT_EQ(field<FloatArray>(layer, "/A", "short").values, (std::vector<float>{0.5f, 5.9604645e-08f}));
    EXPECT_EQ(field<IntArray>(layer, "/A", "narrow").values, IntArray::Values(narrow));
    EXPECT_EQ(field<IntArray>(layer, "/A", "wide").values, IntArray::Values(wide));
    EXPECT_TRUE(field<FloatArray>(layer, "/A", "empty").isArray);
    EXPECT_TRUE(field<FloatArray>(layer, "/A", "empty").values.empty());
    EXPECT_EQ(field<FloatArray>(layer, "/A", "vec").values, (std::vector<float>{127, -2, 0}));
    const auto& matrix = field<DoubleArray>(layer, "/A", "matrix");
    EXPECT_EQ(matrix.width, 16);
    EXPECT_EQ(matrix.values, (std::vector<double>{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1}));
    EXPECT_EQ(field<DoubleArray>(layer, "/A", "double").values, std::vector<double>{0.5});
    EXPECT_EQ(field<IntArray>(layer, "/A", "int64").values, IntArray::Values(IntArray::Wide{-5}));
    EXPECT_EQ(field<FloatArray>(layer, "/A", "half").values, std::vector<float>{-1});
    EXPECT_TRUE(field<bool>(layer, "/A", "bool"));
    EXPECT_EQ(field<AssetPath>(layer, "/A", "asset").path, "tex/plate 1.png");
    EXPECT_EQ(field<std::string>(layer, "/A", "string"), "Plate");
    EXPECT_TRUE(field<Dictionary>(layer, "/A", "dict").entries.empty());
    EXPECT_TRUE(layer.spec("/A")->field("unknownSpecifier")->empty());
}

// Read for a stage, large arrays stay in the file until decoded; plain floats then view the
// file's bytes, and a broken array fails only when decoded, naming its layer.
TEST(CrateReader, LargeArraysWaitInTheFileUntilDecoded) {
    const std::string grid = gridCrateLayer(true);
    const Bytes bytes(grid.begin(), grid.end());
    const auto result = CrateReader::read(bytes, "test.usdc", CrateReader::Arrays::decodeWhenRead);
    ASSERT_TRUE(result.ok()) << result.error().localizedDescription();
    const Layer& layer = result.value();
    EXPECT_EQ(field<FloatArray>(layer, "/Grid.extent", "default").values, (std::vector<float>{0, 0, 0, 63, 0, 63}));

    const DeferredArray& deferredPoints = field<DeferredArray>(layer, "/Grid.points", "default");
    ASSERT_NE(deferredPoints.source, nullptr);
    const Value decodedPoints = deferredPoints.source->decode(deferredPoints);
    const FloatArray* floats = decodedPoints.get<FloatArray>();
    ASSERT_NE(floats, nullptr);
    EXPECT_TRUE(floats->values.empty());
    EXPECT_GE(floats->stored.data(), bytes.data());
    EXPECT_LE(floats->stored.data() + floats->stored.size(), bytes.data() + bytes.size());
    ASSERT_EQ(floats->size(), 64u * 64u);
    EXPECT_EQ(floats->component(3 * 65), 1.0f);
    EXPECT_EQ(floats->component(3 * 64 * 64 - 1), 63.0f);

    const DeferredArray& broken = field<DeferredArray>(layer, "/Grid.faceVertexIndices", "default");
    try {
        (void)broken.source->decode(broken);
        ADD_FAILURE() << "a broken array decoded";
    } catch (const CrateFormatError& error) {
        EXPECT_TRUE(std::string(error.what()).starts_with("USDC layer test.usdc: the array at offset ")) << error.what();
    }
}

TEST(CrateReader, UnreadableLyingOrHostileFilesEndInClearErrors) {
    using C = ImportErrorCode;
    const auto minimal = [](unsigned minor, unsigned major = 0) {
        CrateWriter b(minor, major);
        b.spec("/", sPseudoRoot, {});
        return b.build();
    };
    const auto withField = [](auto&& value) {
        CrateWriter b(9);
        b.spec("/", sPseudoRoot, {{"default", value(b)}});
        return b.build();
    };
    EXPECT_TRUE(readBytes(minimal(11)).ok());
    Bytes renamed = minimal(8);
    *std::search(renamed.begin(), renamed.end(), std::begin("SPECS"), std::end("SPECS") - 1) = 'X';
    Bytes badToc = minimal(8);
    badToc[16] = 0xff; badToc[17] = 0xff;
    const std::string usda = "#usda 1.0\n(\n    defaultPrim = \"Dish\"\n)\n" + std::string(100, ' ');
    const struct {
        Bytes bytes;
        C code;
        const char* message;
    } cases[] = {
        {minimal(12), C::unsupportedFeature, "crate version 0.12.0 is not supported"},
        {minimal(0, 1), C::unsupportedFeature, "crate version 1.0.0"},
        {minimal(3), C::unsupportedFeature, "reads 0.4.0 to 0.11.0"},
        {{}, C::unrecognisedFormat, "not a USDC crate file"},
        {Bytes(usda.begin(), usda.end()), C::unrecognisedFormat, "not a USDC crate file"},
        {renamed, C::malformedData, "the SPECS section is missing"},
        {badToc, C::malformedData, "lies outside"},
        // An array claiming far more elements than the file holds.
        {withField([](CrateWriter& b) { return rep(tVec3f, b.put(std::uint64_t{1} << 40), isArray); }), C::malformedData, "do not fit"},
        // A compressed array claiming billions of integers from a few bytes.
        {withField([](CrateWriter& b) {
             const auto at = b.put(std::uint64_t{1} << 33);
             b.putCompressedInts(std::vector<std::int32_t>{1, 2, 3});
             return rep(tInt, at, isArray | isCompressed);
         }), C::malformedData, "cannot fit"},
        // A dictionary whose entry jumps back to the dictionary itself.
        {withField([](CrateWriter& b) {
             const auto at = b.put(std::uint64_t{1});
             b.put(b.string("loop")), b.put(std::int64_t{8}), b.put(rep(tDictionary, at));
             return rep(tDictionary, at);
         }), C::malformedData, "nested too deeply"},
        // Time samples with more values than times.
        {withField([](CrateWriter& b) {
             const auto times = b.put(std::uint64_t{1});
             b.put(0.0);
             const auto at = b.put(std::int64_t{8});
             b.put(rep(tDoubleVector, times)), b.put(std::int64_t{8}), b.put(std::uint64_t{3});
             return rep(tTimeSamples, at);
         }), C::malformedData, "3 values for 1 times"},
        // Offsets, jumps, indices and codings that point outside the file, the tables or what the reader knows.
        {withField([](CrateWriter&) { return rep(tQuatf, 1ull << 40); }), C::malformedData, "lies outside"},
        {withField([](CrateWriter& b) { return rep(tTimeSamples, b.put(std::int64_t{-1000000})); }), C::malformedData, "before the start"},
        {withField([](CrateWriter&) { return rep(tToken, 12345, isInlined); }), C::malformedData,
         "/ field default: token index 12345 out of range"},
        {withField([](CrateWriter& b) {
             const auto at = b.arrayCount(20);
             b.put('x');
             return rep(tFloat, at, isArray | isCompressed);
         }), C::malformedData, "unknown coding"},
        {withField([](CrateWriter& b) {
             const auto at = b.arrayCount(20);
             b.put('t'), b.put(std::uint32_t{1}), b.put(1.0f), b.putCompressedInts(std::vector<std::int32_t>(20, 1));
             return rep(tFloat, at, isArray | isCompressed);
         }), C::malformedData, "indexes past its table"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        testing::expectImportError(readBytes(c.bytes), c.code, c.message);
    }
    ORVANTA_CORPUS_FILE(corrupt, "usdc/crate-bad_corrupt.usd");
    const auto file = FileBytes::open(corrupt.string());
    testing::expectImportError(CrateReader::read(file.value()->bytes(), "corrupt.usd"), C::malformedData, "USDC layer corrupt.usd: ");
}

// ---- corpus -------------------------------------------------------------------------------

// A corpus file's crate layer: the file itself, or a package's first entry.
struct CorpusCrate {
    std::shared_ptr<const FileBytes> file;
    std::optional<UsdzArchive> archive;
    std::span<const std::uint8_t> bytes;

    explicit CorpusCrate(const std::filesystem::path& path) : file(FileBytes::open(path.string()).value()), bytes(file->bytes()) {
        if (path.extension() != ".usdz") return;
        archive = UsdzArchive::open(bytes, file).value();
        bytes = archive->entries().front().data;
    }
};

struct CorpusLayer {
    const char* file;
    unsigned minor;
    std::size_t specs;
    std::map<std::string, int> prims;  // typeName -> count
    std::size_t points;                // default points over all meshes
    std::size_t indices;               // default faceVertexIndices over all meshes
};

// Counts checked by hand against the corpus manifest.
TEST(CrateReaderCorpus, EveryCrateLayerReadsWithItsKnownContents) {
    const CorpusLayer layers[] = {
        {"usdc/crate-0.4.0_top.geom.usd", 4, 9, {{"Xform", 1}, {"Mesh", 1}}, 0, 0},
        {"usdc/crate-0.7.0_Ball.maya.usd", 7, 32, {{"Mesh", 1}, {"Material", 1}, {"Shader", 3}, {"Xform", 1}, {"Scope", 1}}, 382, 1560},
        {"usdc/crate-0.8.0_TextureTransformTest.usdc", 8, 668, {{"Mesh", 12}, {"Material", 9}, {"Shader", 33}, {"Xform", 1}, {"Scope", 1}}, 48, 72},
        {"usdc/crate-0.9.0_model.usdc", 9, 9, {{"Xform", 3}, {"Scope", 2}, {"Mesh", 2}, {"", 1}}, 0, 0},
        {"usdz/RoughnessTest.usdz", 8, 275, {{"Mesh", 6}, {"Xform", 9}, {"Material", 6}, {"Shader", 27}, {"", 1}}, 345, 1008},
        {"usdz/AnimatedMorphCube.usdz", 8, 38, {{"Mesh", 1}, {"BlendShape", 2}, {"Skeleton", 1}, {"SkelAnimation", 1}, {"SkelRoot", 1}, {"Material", 1}, {"Shader", 1}, {"Scope", 3}, {"Xform", 1}}, 24, 36},
        {"usdz/AnimatedTriangle.usdz", 8, 18, {{"Mesh", 1}, {"Material", 1}, {"Shader", 1}, {"Scope", 1}, {"Xform", 1}, {"", 1}}, 3, 3},
        {"usdz/BoxAnimated.usdz", 8, 41, {{"Mesh", 2}, {"Xform", 3}, {"Material", 2}, {"Shader", 2}, {"Scope", 2}}, 320, 762},
        {"usdz/openusd_simpleMaterial.usdz", 9, 27, {{"Mesh", 1}, {"Material", 1}, {"Shader", 3}, {"Xform", 1}}, 4, 4},
        {"usdz/openusd_single_usdc.usdz", 7, 2, {{"", 1}}, 0, 0},
    };
    for (const CorpusLayer& expected : layers) {
        SCOPED_TRACE(expected.file);
        ORVANTA_CORPUS_FILE(path, expected.file);
        const CorpusCrate crate(path);
        ASSERT_EQ(crate.bytes[9], expected.minor);
        const auto result = CrateReader::read(crate.bytes, path.filename().string());
        ASSERT_TRUE(result.ok()) << result.error().localizedDescription();
        const Layer& layer = result.value();
        EXPECT_EQ(layer.specs.size(), expected.specs);
        std::map<std::string, int> prims;
        std::size_t points = 0, indices = 0;
        for (const auto& [specPath, spec] : layer.specs) {
            if (spec.type == SpecType::prim) {
                const Value* type = spec.field("typeName");
                ++prims[type ? type->get<Token>()->text : ""];
            }
            const Value* value = spec.field("default");
            if (value == nullptr) continue;
            if (specPath.ends_with(".points")) points += value->get<FloatArray>()->size();
            if (specPath.ends_with(".faceVertexIndices")) indices += value->get<IntArray>()->size();
        }
        EXPECT_EQ(prims, expected.prims);
        EXPECT_EQ(points, expected.points);
        EXPECT_EQ(indices, expected.indices);
    }
}

// Numbers within float rounding, everything else exactly; kinds this scene does not use
// compare as equal.
bool sameValue(const Value& a, const Value& b) {
    if (a.data.index() != b.data.index()) return false;
    const auto close = [](const auto& x, const auto& y) {
        if (x.width != y.width || x.isArray != y.isArray || x.values.size() != y.values.size()) return false;
        for (std::size_t i = 0; i < x.values.size(); ++i) {
            if (std::abs(x.values[i] - y.values[i]) > 1e-5 * (1 + std::abs(x.values[i]))) return false;
        }
        return true;
    };
    if (const auto* f = a.get<FloatArray>()) return close(*f, *b.get<FloatArray>());
    if (const auto* d = a.get<DoubleArray>()) return close(*d, *b.get<DoubleArray>());
    if (const auto* i = a.get<IntArray>()) return i->values == b.get<IntArray>()->values && i->isArray == b.get<IntArray>()->isArray;
    if (const auto* t = a.get<Token>()) return *t == *b.get<Token>();
    if (const auto* t = a.get<TokenArray>()) return *t == *b.get<TokenArray>();
    if (const auto* p = a.get<PathArray>()) return *p == *b.get<PathArray>();
    if (const auto* s = a.get<std::string>()) return *s == *b.get<std::string>();
    if (const auto* s = a.get<AssetPath>()) return *s == *b.get<AssetPath>();
    return true;
}

// The same scene as text (in the package) and as crate: the same specs, and every field both
// carry holds the same value. The crate also spells out defaults the text leaves implicit
// (custom, variability) and has no typeName on relationships.
TEST(CrateReaderCorpus, CrateAndTextLayersOfOneSceneAgree) {
    ORVANTA_CORPUS_FILE(packagePath, "usdz/TextureTransformTest.usdz");
    ORVANTA_CORPUS_FILE(cratePath, "usdc/crate-0.8.0_TextureTransformTest.usdc");
    const CorpusCrate package(packagePath);
    const auto text = UsdaParser::parse({reinterpret_cast<const char*>(package.bytes.data()), package.bytes.size()}, "text.usda");
    ASSERT_TRUE(text.ok()) << text.error().localizedDescription();
    const auto crate = CrateReader::read(CorpusCrate(cratePath).bytes, "TextureTransformTest.usdc");
    ASSERT_TRUE(crate.ok()) << crate.error().localizedDescription();

    ASSERT_EQ(crate->specs.size(), text->specs.size());
    std::size_t compared = 0;
    for (const auto& [path, spec] : crate->specs) {
        const Spec* other = text->spec(path);
        ASSERT_NE(other, nullptr) << path;
        EXPECT_EQ(spec.type, other->type) << path;
        for (const auto& [name, value] : spec.fields) {
            if (const Value* textValue = other->field(name)) {
                EXPECT_TRUE(sameValue(value, *textValue)) << path << " " << name;
                ++compared;
            }
        }
    }
    EXPECT_GE(compared, 1400u);  // 1407 fields in common when written
}

// The crate's table of contents and the zip's end record sit at the end, so every cut copy of
// a crate layer or a package must be refused. (Bit flips of these files go through the whole
// importer in the bad input tests.)
TEST(CrateReaderCorpus, TruncatedCopiesOfLayersAndPackagesAreRefused) {
    for (const char* name : {"usdc/crate-0.4.0_top.geom.usd", "usdc/crate-0.7.0_Ball.maya.usd", "usdc/crate-0.8.0_TextureTransformTest.usdc",
                             "usdc/crate-0.9.0_model.usdc", "usdz/AnimatedTriangle.usdz", "usdz/USDLogo.usdz",
                             "usdz/openusd_simpleMaterial.usdz", "usdz-bad/openusd_badUsdz.usdz", "usdz/openusd_single_usdc.usdz"}) {
        SCOPED_TRACE(name);
        ORVANTA_CORPUS_FILE(path, name);
        const auto file = FileBytes::open(path.string()).value();
        for (std::size_t length = 0; length < file->bytes().size(); length += 1 + length / 32) {
            const Bytes cut(file->bytes().begin(), file->bytes().begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_FALSE(path.extension() == ".usdz" ? UsdzArchive::open(cut, nullptr).ok() : readBytes(cut).ok()) << length;
        }
    }
}

} // namespace
} // namespace orvanta::import::usd
