#include "import/ImportError.h"
#include "import/usd/UsdaParser.h"
#include "support/ExpectImportError.h"
#include "ImportTestHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace orvanta::import::usd {
namespace {

Layer parse(const std::string& text) {
    auto layer = UsdaParser::parse(text, "test.usda");
    EXPECT_TRUE(layer.ok()) << (layer.ok() ? "" : layer.error().localizedDescription());
    return layer.ok() ? std::move(layer).value() : Layer{};
}

TEST(UsdaParserTest, ReadsLayerMetadataPrimsAndSkipsWhatTheKitDoesNotUse) {
    const Layer layer = parse(R"(#usda 1.0
(
    "A layer doc string"
    defaultPrim = "Dish" upAxis = "Z" metersPerUnit = 0.01
    customLayerData = { string creator = "x" dictionary nested = { int a = 1 } }
    subLayers = [@./a.usda@, @b.usda@]
    somethingNew = [(1, 2), {x}]
)

# a comment line
def Xform "Dish" (
    kind = "component" prepend apiSchemas = ["MaterialBindingAPI"] instanceable = true
    customData = { bool hidden = 0 } unknownMetadata = @x@</y>
)
{
    def Mesh "Plate" { }  # trailing comment
    over "Lid" { } class "Template" { } def "Typeless" { }
    reorder nameChildren = ["Lid", "Plate"]
}
)");
    EXPECT_EQ(field<Token>(layer, "/", "defaultPrim").text, "Dish");
    EXPECT_EQ(field<Token>(layer, "/", "upAxis").text, "Z");
    EXPECT_DOUBLE_EQ(field<DoubleArray>(layer, "/", "metersPerUnit").values.at(0), 0.01);
    EXPECT_EQ(field<std::string>(layer, "/", "documentation"), "A layer doc string");
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/", "primChildren")), std::vector<std::string>{"Dish"});
    EXPECT_EQ(field<Token>(layer, "/Dish", "typeName").text, "Xform");
    EXPECT_EQ(field<Token>(layer, "/Dish", "kind").text, "component");
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/Dish", "apiSchemas")), std::vector<std::string>{"MaterialBindingAPI"});
    EXPECT_TRUE(field<bool>(layer, "/Dish", "instanceable"));
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/Dish", "primChildren")), (std::vector<std::string>{"Plate", "Lid", "Template", "Typeless"}));
    EXPECT_EQ(field<Token>(layer, "/Dish/Lid", "specifier").text, "over");
    EXPECT_EQ(field<Token>(layer, "/Dish/Template", "specifier").text, "class");
    EXPECT_EQ(layer.spec("/Dish/Typeless")->field("typeName"), nullptr);
}

TEST(UsdaParserTest, ReadsAttributesByTheirDeclaredTypes) {
    const Layer layer = parse(R"(#usda 1.0
def Mesh "M"
{
    point3f[] points = [(0, 1, 2), (3.5, -4e2, .5),]
    int[] faceVertexIndices = [0, 1, +2, 3.0]
    quatf xformOp:orient = (1, 0.5, 0.25, 0.125)
    matrix4d xformOp:transform = ( (1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (7, 8, 9, 1) )
    half h = -inf
    double3 d = (1e-300, 2, 3)
    uniform token orientation = "leftHanded"
    custom string note = "say \"hi\"\n\x41\101"
    string poem = """two
lines"""
    asset file = @@@odd@@@
    bool flag = true
    texCoord2f[] primvars:st = [(0, 1)] ( interpolation = "faceVarying" elementSize = 1 doc = """about st""" )
    int[] primvars:st:indices = None
    float3 xformOp:translate.timeSamples = { 0: (1, 2, 3), 10: None, }
    float inputs:opacity.connect = </M/Shader.outputs:a>
    rel material:binding = <../Looks/Mat>
    opaque unknownType = (1, [2])
    int[] i = [1, -2147483648]  uchar c = 255  int2 v = (3, -4)
    bool[] b = [true, false]  uint u = 4000000000  int64[] w = [-5000000000, 7]
}
)");
    const auto* points = &field<FloatArray>(layer, "/M.points", "default");
    EXPECT_EQ(points->width, 3);
    EXPECT_EQ(points->values, (std::vector<float>{0, 1, 2, 3.5f, -400, 0.5f}));
    EXPECT_EQ(field<Token>(layer, "/M.points", "typeName").text, "point3f[]");
    EXPECT_EQ(field<IntArray>(layer, "/M.faceVertexIndices", "default").values, IntArray::Values(IntArray::Narrow{0, 1, 2, 3}));
    const auto* orient = &field<FloatArray>(layer, "/M.xformOp:orient", "default");
    EXPECT_FALSE(orient->isArray);
    EXPECT_EQ(orient->values, (std::vector<float>{0.5f, 0.25f, 0.125f, 1}));  // (i, j, k, real)
    const auto* matrix = &field<DoubleArray>(layer, "/M.xformOp:transform", "default");
    EXPECT_EQ(matrix->width, 16);
    EXPECT_EQ(matrix->values.at(12), 7);
    EXPECT_TRUE(std::isinf(field<FloatArray>(layer, "/M.h", "default").values.at(0)));
    EXPECT_EQ(field<DoubleArray>(layer, "/M.d", "default").values.at(0), 1e-300);
    EXPECT_EQ(field<Token>(layer, "/M.orientation", "variability").text, "uniform");
    EXPECT_EQ(field<std::string>(layer, "/M.note", "default"), "say \"hi\"\nAA");
    EXPECT_TRUE(field<bool>(layer, "/M.note", "custom"));
    EXPECT_EQ(field<std::string>(layer, "/M.poem", "default"), "two\nlines");
    EXPECT_EQ(field<AssetPath>(layer, "/M.file", "default").path, "odd");
    EXPECT_TRUE(field<bool>(layer, "/M.flag", "default"));
    EXPECT_EQ(field<Token>(layer, "/M.primvars:st", "interpolation").text, "faceVarying");
    EXPECT_EQ(field<IntArray>(layer, "/M.primvars:st", "elementSize").values, IntArray::Values(IntArray::Narrow{1}));
    EXPECT_TRUE(layer.spec("/M.primvars:st:indices")->field("default")->empty());  // blocked
    const auto* samples = &field<TimeSamples>(layer, "/M.xformOp:translate", "timeSamples");
    ASSERT_EQ(samples->samples.size(), 2u);
    EXPECT_EQ(samples->samples[0].second->get<FloatArray>()->values, (std::vector<float>{1, 2, 3}));
    EXPECT_TRUE(samples->samples[1].second->empty());
    EXPECT_EQ(field<PathArray>(layer, "/M.inputs:opacity", "connectionPaths"), PathArray{"/M/Shader.outputs:a"});
    EXPECT_EQ(field<PathArray>(layer, "/M.material:binding", "targetPaths"), PathArray{"/Looks/Mat"});
    EXPECT_TRUE(layer.spec("/M.unknownType")->field("default")->empty());
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/M", "properties")).size(), 23u);
    // Integers keep the width of their declared type.
    const std::pair<const char*, IntArray::Values> integers[] = {
        {"/M.i", IntArray::Narrow{1, -2147483647 - 1}}, {"/M.c", IntArray::Narrow{255}}, {"/M.v", IntArray::Narrow{3, -4}},
        {"/M.b", IntArray::Narrow{1, 0}}, {"/M.u", IntArray::Wide{4000000000}}, {"/M.w", IntArray::Wide{-5000000000, 7}},
    };
    for (const auto& [path, values] : integers) EXPECT_EQ(field<IntArray>(layer, path, "default").values, values) << path;
}

TEST(UsdaParserTest, CombinesListOpsForReferencesPayloadsAndVariantSets) {
    const Layer layer = parse(R"(#usda 1.0
def "A" (
    references = @./base.usda@</Base>
    append references = [@other.usda@ (offset = 10; scale = 2), </Internal>]
    prepend references = @first.usda@
    delete references = @other.usda@
    payload = @heavy.usda@ variants = { string shading = "red" } prepend variantSets = ["shading", "size"]
)
{
    variantSet "shading" = {
        "blue" ( references = @blue.usda@ ) { def Mesh "Cup" { float size = 2 } }
        "red" { over "Cup" { } float tint = 1 variantSet "gloss" = { "matte" { } } }
    }
}
)");
    const auto* refs = &field<ReferenceArray>(layer, "/A", "references");
    ASSERT_EQ(refs->size(), 3u);
    EXPECT_EQ((*refs)[0].assetPath, "first.usda");
    EXPECT_EQ((*refs)[1].assetPath, "./base.usda");
    EXPECT_EQ((*refs)[1].primPath, "/Base");
    EXPECT_EQ((*refs)[2].assetPath, "");
    EXPECT_EQ((*refs)[2].primPath, "/Internal");
    EXPECT_EQ(field<ReferenceArray>(layer, "/A", "payload").at(0).assetPath, "heavy.usda");
    EXPECT_EQ(field<VariantSelection>(layer, "/A", "variantSelection").at("shading"), "red");
    EXPECT_EQ(field<StringArray>(layer, "/A", "variantSetNames").values, (std::vector<std::string>{"shading", "size"}));
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/A", "variantSetChildren")), std::vector<std::string>{"shading"});
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/A{shading=}", "variantChildren")), (std::vector<std::string>{"blue", "red"}));
    EXPECT_EQ(layer.spec("/A{shading=blue}")->type, SpecType::variant);
    EXPECT_EQ(field<ReferenceArray>(layer, "/A{shading=blue}", "references").at(0).assetPath, "blue.usda");
    EXPECT_EQ(field<FloatArray>(layer, "/A{shading=blue}Cup.size", "default").values.at(0), 2);
    EXPECT_EQ(tokenTexts(field<TokenArray>(layer, "/A{shading=red}", "primChildren")), std::vector<std::string>{"Cup"});
    EXPECT_NE(layer.spec("/A{shading=red}.tint"), nullptr);
    EXPECT_NE(layer.spec("/A{shading=red}{gloss=matte}"), nullptr);
}

TEST(UsdaParserTest, RejectsBrokenTextWithALineNumberAndSurvivesEveryTruncation) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "does not start with #usda"},
        {"<html><body>404</body></html>", "does not start with #usda"},
        {"#usda 1.0\ndef \"A\" {\n  string s = \"open\n}\n", "line 3: line break in string"},
        {"#usda 1.0\ndef \"A\" {\n", "missing '}'"},
        {"#usda 1.0\ndef \"A\" { double d = 1e999 }", "out of range"},
        {"#usda 1.0\ndef \"A\" { float f = 1e39 }", "out of range for float"},
        {"#usda 1.0\ndef \"A\" { int i = 99999999999999999999 }", "not an integer in range"},
        {"#usda 1.0\ndef \"A\" { int[] i = [1, 3000000000] }", "integer out of range for a 32-bit type"},
        {"#usda 1.0\ndef \"A\" { float3 v = (1, 2) }", "wrong number of components"},
        {"#usda 1.0\ndef \"A/B\" { }", "invalid prim name"},
        {"#usda 1.0\ndef \"A\" { rel r = <../../X> }", "climbs above the root"},
        {"#usda 1.0\ndef \"A\" { float f = 1 } }", "expected a prim"},
        {"#usda 1.0\n(\n other = )", "unbalanced"},
        {"#usda 1.0\ndef \"A\" { float f = " + std::string(100000, '(') + "1" + std::string(100000, ')') + " }",
         "nested too deeply"},
        {"#usda 1.0\n(customLayerData = " + std::string(100000, '{') + ")", "unexpected end"},
    };
    for (const auto& [text, message] : cases) {
        SCOPED_TRACE(text.substr(0, 60));
        testing::expectImportError(UsdaParser::parse(text, "bad.usda"), ImportErrorCode::malformedData, message);
    }
    std::string deepPrims = "#usda 1.0\n";
    for (int i = 0; i < 200; ++i) deepPrims += "def \"P\" {\n";
    EXPECT_FALSE(UsdaParser::parse(deepPrims + std::string(200, '}'), "deep.usda").ok());
    // Every truncation of a valid layer ends in a layer or an error.
    const std::string text = R"(#usda 1.0
( defaultPrim = "A" )
def Xform "A" ( references = @x.usda@</B> variants = { string v = "a" } )
{
    float3[] points = [(1, 2, 3)] ( interpolation = "vertex" )
    variantSet "v" = { "a" { def "C" { rel r = </A> } } }
}
)";
    for (std::size_t n = 0; n < text.size(); ++n) (void)UsdaParser::parse(text.substr(0, n), "cut.usda");
    EXPECT_TRUE(UsdaParser::parse(text, "whole.usda").ok());
}

} // namespace
} // namespace orvanta::import::usd
