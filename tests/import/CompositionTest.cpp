// USD composition arcs beyond references and variants, in small hand-made layers: sublayers,
// inherits and specializes against local and referenced opinions, native instancing and
// point instancers.
#include "ImportTestHelpers.h"
#include "import/ImportError.h"
#include "support/ExpectImportError.h"

namespace orvanta::import::usd {
namespace {

// The x of a node's translation, or NaN when there is no such node.
float xOf(const ImportedScene& scene, const std::string& name) {
    const ImportedNode* node = named(scene.nodes, name);
    return node ? node->localTransform.column(3).x() : std::nanf("");
}

std::string at(const char* name, int x, const char* specifier = "def") {
    return std::string("    ") + specifier + " Xform \"" + name + "\" { double3 xformOp:translate = (" + std::to_string(x) +
           ", 0, 0)\n uniform token[] xformOpOrder = [\"xformOp:translate\"] }\n";
}

TEST(CompositionTest, SubLayersAreWeakerInOrderAndAddTheirPrims) {
    const ImportedScene scene = importOk(importPackage({
        {"root.usda", "#usda 1.0\n( subLayers = [@strong.usda@ (offset = 10), @weak.usda@] )\n"
                      "over \"World\" { over \"Local\" { double3 xformOp:translate = (1, 0, 0) } }\n"},
        {"strong.usda", "#usda 1.0\ndef Xform \"World\" {\n" + at("Local", 2) + at("Shared", 2) + at("Strong", 2) + "}\n"},
        {"weak.usda", "#usda 1.0\ndef Xform \"World\" {\n" + at("Local", 3) + at("Shared", 3) + at("Weak", 3) + "}\n"},
    }));
    EXPECT_EQ(xOf(scene, "Local"), 1.0f);   // the root layer wins
    EXPECT_EQ(xOf(scene, "Shared"), 2.0f);  // the first sublayer beats the second
    EXPECT_EQ(xOf(scene, "Strong"), 2.0f);
    EXPECT_EQ(xOf(scene, "Weak"), 3.0f);
}

TEST(CompositionTest, InheritsAndSpecializesLoseToLocalOpinionsInStrengthOrder) {
    // Each prim's x comes from its strongest arc; a local opinion always wins.
    const ImportedScene scene = importOk(importUsda("#usda 1.0\n" + at("_Class", 10, "class") + at("_Special", 20, "class") + at("Referenced", 30) + R"(
def Xform "Inherits" ( inherits = </_Class> ) { double3 xformOp:translate = (1, 0, 0) }
def Xform "InheritsOnly" ( inherits = </_Class> ) {}
def Xform "SpecializesOnly" ( specializes = </_Special> ) {}
def Xform "Specializes" ( specializes = </_Special> ) { double3 xformOp:translate = (2, 0, 0) }
def Xform "InheritBeatsReference" ( inherits = </_Class>  references = </Referenced> ) {}
def Xform "ReferenceBeatsSpecialize" ( specializes = </_Special>  references = </Referenced> ) {}
class Xform "_Plate" {)" + at("Rim", 20) + R"(}
def Xform "Plate" ( specializes = </_Plate> ) { over "Rim" { double3 xformOp:translate = (3, 0, 0) } }
)"));
    const std::pair<const char*, float> cases[] = {
        {"Inherits", 1}, {"InheritsOnly", 10}, {"SpecializesOnly", 20}, {"Specializes", 2},
        {"InheritBeatsReference", 10}, {"ReferenceBeatsSpecialize", 30}, {"Rim", 3},
    };
    for (const auto& [name, x] : cases) EXPECT_EQ(xOf(scene, name), x) << name;
}

TEST(CompositionTest, InstanceablePrimsSideBySideBecomeOneInstanceTable) {
    const auto plate = [](const char* name, int x) {
        return std::string("def Xform \"") + name + "\" ( instanceable = true  references = </Plate> ) {\n" +
               " double3 xformOp:translate = (" + std::to_string(x) + ", 0, 0)\n" +
               " uniform token[] xformOpOrder = [\"xformOp:translate\"] }\n";
    };
    const ImportedScene scene = importOk(importUsda(std::string("#usda 1.0\n") + "def Xform \"Plate\" { def Mesh \"Body\" {" +
                                                    triangleMesh + "} }\n" + plate("Left", -1) + plate("Right", 1) +
                                                    "def Xform \"Shelf\" {\n" + plate("Alone", 5) + "}\n"));
    // The plate itself, and one mesh for every instance of it.
    ASSERT_EQ(scene.meshes.size(), 2u);
    const ImportedNode& root = scene.nodes[0];
    ASSERT_EQ(root.instances.size(), 1u);
    const ImportedInstances& table = root.instances[0];
    EXPECT_EQ(scene.nodes.at(std::size_t(table.prototype)).parent, -1);
    ASSERT_EQ(table.table.size(), 2u);
    EXPECT_EQ(table.table.transforms[0].column(3).x(), -1.0f);
    EXPECT_EQ(table.table.transforms[1].column(3).x(), 1.0f);
    EXPECT_EQ(named(scene.nodes, "Left")->parent, -1);  // only the prototype's root carries the name
    // A lone instanceable prim stays a node of its own, drawing the prototype's mesh.
    EXPECT_EQ(xOf(scene, "Alone"), 5.0f);
    const ImportedNode* alone = named(scene.nodes, "Alone");
    ASSERT_EQ(alone->children.size(), 1u);
    EXPECT_EQ(scene.nodes.at(std::size_t(alone->children[0])).meshes, std::vector<int>{1});
    const DrawCost cost = scene.drawCost();
    EXPECT_EQ(cost.triangles, 4u);
    EXPECT_EQ(cost.drawCalls, 3u);
    EXPECT_EQ(cost.instances, 2u);
    EXPECT_FLOAT_EQ(scene.bounds().min.x(), -0.01f);  // centimetres: the left copy starts at -1
}

TEST(CompositionTest, PointInstancerPlacesItsPrototypesInTables) {
    std::string layer = R"(#usda 1.0
def PointInstancer "Garnish" {
    rel prototypes = [</Garnish/Protos/Herb>, </Garnish/Protos/Seed>, </Garnish/Protos/Flake>]
    int[] protoIndices = [0, 1, 2, 0]
    point3f[] positions = [(1, 0, 0), (2, 0, 0), (3, 0, 0), (4, 0, 0)]
    quath[] orientations = [(1, 0, 0, 0), (0.70710677, 0, 0.70710677, 0), (1, 0, 0, 0), (1, 0, 0, 0)]
    float3[] scales = [(1, 1, 1), (1, 1, 1), (2, 2, 2), (1, 1, 1)]
    color3f[] primvars:displayColor = [(1, 0, 0), (0, 1, 0), (0, 0, 1), (1, 1, 0)] ( interpolation = "vertex" )
    def Scope "Protos" {
)";
    for (const char* name : {"Herb", "Seed", "Flake"}) layer += std::string("def Mesh \"") + name + "\" {" + triangleMesh + "}\n";
    const ImportedScene scene = importOk(importUsda(layer + "} }\n"));
    ASSERT_EQ(scene.meshes.size(), 3u);
    const ImportedNode* garnish = named(scene.nodes, "Garnish");
    ASSERT_NE(garnish, nullptr);
    EXPECT_TRUE(garnish->children.empty());
    ASSERT_EQ(garnish->instances.size(), 3u);
    const struct {
        const char* prototype;
        std::vector<float> xs;
        std::vector<QVector4D> colors;
    } expected[] = {
        {"Herb", {1, 4}, {{1, 0, 0, 1}, {1, 1, 0, 1}}},
        {"Seed", {2}, {{0, 1, 0, 1}}},
        {"Flake", {3}, {{0, 0, 1, 1}}},
    };
    for (std::size_t t = 0; t < 3; ++t) {
        SCOPED_TRACE(expected[t].prototype);
        const ImportedInstances& instances = garnish->instances[t];
        const ImportedNode& prototype = scene.nodes.at(std::size_t(instances.prototype));
        EXPECT_EQ(prototype.name, expected[t].prototype);
        EXPECT_EQ(prototype.parent, -1);
        std::vector<float> xs;
        for (const QMatrix4x4& m : instances.table.transforms) xs.push_back(m.column(3).x());
        EXPECT_EQ(xs, expected[t].xs);
        EXPECT_EQ(instances.table.colors, expected[t].colors);
    }
    // The seed is turned a quarter about Y, the flake scaled by 2.
    expectNear(garnish->instances[1].table.transforms[0].map(QVector3D(1, 0, 0)), {2, 0, -1}, 1e-3f);
    EXPECT_EQ(garnish->instances[2].table.transforms[0].map(QVector3D(1, 0, 0)), QVector3D(5, 0, 0));
    EXPECT_EQ(scene.drawCost().triangles, 4u);
}

TEST(CompositionTest, NestedInstancesMultiplyOutWhenCountedDrawnOrExpanded) {
    // Two coloured clusters, each a bowl and an instancer of three seeds.
    ImportedScene scene = importOk(importUsda(R"(#usda 1.0
def PointInstancer "Clusters" {
    rel prototypes = [</Clusters/Cluster>] int[] protoIndices = [0, 0] point3f[] positions = [(0, 0, 0), (10, 0, 0)]
    color3f[] primvars:displayColor = [(1, 0, 0), (0, 0, 1)]
    def Xform "Cluster" {
        def Mesh "Bowl" {)" + triangleMesh + R"(}
        def PointInstancer "Seeds" {
            rel prototypes = [</Clusters/Cluster/Seeds/Seed>]
            int[] protoIndices = [0, 0, 0] point3f[] positions = [(0, 1, 0), (0, 2, 0), (0, 3, 0)]
            def Mesh "Seed" {)" + triangleMesh + R"(}
        }
    }
}
)"));
    const DrawCost cost = scene.drawCost();
    EXPECT_EQ(cost.triangles, 8u);
    EXPECT_EQ(cost.instances, 8u);
    EXPECT_EQ(cost.drawCalls, 2u);  // one instanced model for the bowls, one for the seeds

    const ImportedNode* clusters = named(scene.nodes, "Clusters");
    ASSERT_EQ(clusters->instances.size(), 1u);
    const auto drawn = scene.instancedMeshes(clusters->instances[0]);
    ASSERT_EQ(drawn.size(), 2u);
    EXPECT_EQ(scene.meshes.at(std::size_t(drawn[0].mesh)).name, "Bowl");
    EXPECT_EQ(drawn[0].table->size(), 2u);
    const InstanceTable& seeds = *drawn[1].table;
    ASSERT_EQ(seeds.size(), 6u);
    ASSERT_EQ(seeds.colors.size(), 6u);
    EXPECT_EQ(seeds.transforms[5].column(3).toVector3D(), QVector3D(10, 3, 0));
    EXPECT_EQ(seeds.colors[5], QVector4D(0, 0, 1, 1));

    EXPECT_EQ(scene.expandInstances(), 8u);  // two clusters, then three seeds in each
    const DrawCost expanded = scene.drawCost();
    EXPECT_EQ(expanded.triangles, 8u);
    EXPECT_EQ(expanded.instances, 0u);
    EXPECT_EQ(expanded.drawCalls, 8u);
    EXPECT_FLOAT_EQ(scene.bounds().max.y(), 0.04f);  // the top seed's tip, in centimetres
}

TEST(CompositionTest, InstancingThatLeadsBackToItselfOrNestsTooDeepIsRefused) {
    const auto instancer = [](const std::string& name, const std::string& prototype) {
        return "def PointInstancer \"" + name + "\" {\n rel prototypes = [<" + prototype + ">]\n int[] protoIndices = [0, 0]\n}\n";
    };
    std::string chain = "#usda 1.0\n";  // Level0 instances Level1, ..., Level39 instances a mesh
    for (int i = 0; i < 40; ++i) chain += instancer("Level" + std::to_string(i), "/Level" + std::to_string(i + 1));
    chain += "def Mesh \"Level40\" {" + triangleMesh + "}\n";
    const struct {
        std::string layer;
        ImportErrorCode code;
        const char* message;
    } cases[] = {
        {"#usda 1.0\n" + instancer("Loop", "/Loop"), ImportErrorCode::malformedData,
         "instancing cycle: the point instancer /Loop has /Loop as a prototype"},
        {"#usda 1.0\ndef Xform \"Plate\" {\n" + instancer("Seeds", "/Plate") + "}\n", ImportErrorCode::malformedData,
         "the point instancer /Plate/Seeds has /Plate as a prototype"},
        {"#usda 1.0\n" + instancer("A", "/B") + instancer("B", "/A"), ImportErrorCode::malformedData, "instancing cycle"},
        {chain, ImportErrorCode::limitExceeded, "point instancers nested more than 32 deep"},
    };
    for (const auto& c : cases) testing::expectImportError(importPackage({{"root.usda", c.layer}}), c.code, c.message);
    // Two instancers sharing one prototype, side by side, are no cycle.
    const ImportedScene shared =
        importOk(importUsda("#usda 1.0\n" + instancer("A", "/Seed") + instancer("B", "/Seed") + "def Mesh \"Seed\" {" + triangleMesh + "}\n"));
    EXPECT_EQ(shared.meshes.size(), 1u);
    EXPECT_EQ(shared.drawCost().triangles, 4u);  // both draw it, though it is built once
}

} // namespace
} // namespace orvanta::import::usd
