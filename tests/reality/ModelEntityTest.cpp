// Entity transforms (hierarchy maths, conversions between spaces, re-parenting with and without
// keeping the world transform); imported scenes become entity trees sharing their data;
// generated meshes, collision shapes and visual bounds.
#include "reality/ModelEntity.h"
#include "reality/Entity.h"

#include <gtest/gtest.h>

namespace orvanta::reality {
namespace {

import::ImportedMesh triangle(const std::string& name, float size, std::vector<import::ImportedSubset> subsets) {
    return {.name = name, .positions = {{0, 0, 0}, {size, 0, 0}, {0, size, 0}}, .indices = {0, 1, 2}, .subsets = std::move(subsets)};
}

// root ─┬─ "plate" (mesh 0, moved and turned)
//       └─ "cup" (meshes 0 and 1) ── "handle" (no mesh)
std::shared_ptr<const import::ImportedScene> sampleScene() {
    auto scene = std::make_shared<import::ImportedScene>();
    scene->textures.push_back({"albedo.png", QByteArray("png bytes"), nullptr});
    scene->materials.push_back({.name = "glaze", .baseColorFactor = {0.5f, 0.25f, 1.0f, 1.0f},
                                .baseColorTexture = import::ImportedTextureRef{0}, .roughness = 0.2f});
    scene->meshes.push_back(triangle("plateMesh", 1.0f, {{0, 3, 0}}));
    scene->meshes.push_back(triangle("cupMesh", 0.5f, {{0, 3, -1}}));

    QMatrix4x4 plate;
    plate.translate(0, 0.1f, 0);
    plate.rotate(90, 0, 1, 0);
    plate.scale(2);
    scene->nodes = {{"root", QMatrix4x4(), -1, {1, 2}, {}}, {"plate", plate, 0, {}, {0}},
                    {"cup", QMatrix4x4(), 0, {3}, {0, 1}}, {"handle", QMatrix4x4(), 2, {}, {}}};
    return scene;
}

TEST(ModelEntityTest, ImportedSceneBecomesAMirroringTreeThatSharesItsData) {
    const auto scene = sampleScene();
    const auto root = ModelEntity::fromImportedScene(scene);
    ASSERT_EQ(root->name(), "root");
    ASSERT_EQ(root->children().size(), 2u);
    const auto& plate = root->children()[0];
    const auto& cup = root->children()[1];
    EXPECT_EQ(plate->name(), "plate");
    EXPECT_TRUE(qFuzzyCompare(plate->scale(), QVector3D(2, 2, 2)));

    // One mesh: on the node itself, pointing into the scene's own mesh data.
    ASSERT_TRUE(plate->model());
    EXPECT_EQ(plate->model()->mesh->sharedMesh().get(), &scene->meshes[0]);
    ASSERT_EQ(plate->model()->materials.size(), 1u);
    const auto& pbr = std::get<PhysicallyBasedMaterial>(plate->model()->materials[0]);
    EXPECT_FLOAT_EQ(pbr.roughness, 0.2f);
    ASSERT_TRUE(pbr.baseColorTexture);
    EXPECT_EQ(pbr.baseColorTexture->image.encoded, QByteArray("png bytes"));

    // Several meshes: node children first, then one part per mesh; nodes share mesh resources.
    EXPECT_FALSE(cup->model());
    ASSERT_EQ(cup->children().size(), 3u);
    EXPECT_EQ(cup->children()[0]->name(), "handle");
    EXPECT_EQ(cup->children()[1]->name(), "plateMesh");
    EXPECT_EQ(cup->children()[2]->name(), "cupMesh");
    EXPECT_EQ(cup->children()[1]->model()->mesh, plate->model()->mesh);
    EXPECT_TRUE(std::holds_alternative<SimpleMaterial>(cup->children()[2]->model()->materials[0]));
}

TEST(ModelEntityTest, CollisionShapesAndVisualBoundsFollowTheMeshes) {
    const auto root = ModelEntity::fromImportedScene(sampleScene());
    root->generateCollisionShapes(/*recursive=*/false);
    EXPECT_FALSE(root->children()[0]->collision());
    root->generateCollisionShapes(/*recursive=*/true);
    const auto& plate = root->children()[0];
    ASSERT_TRUE(plate->collision());
    ASSERT_EQ(plate->collision()->shapes.size(), 1u);
    EXPECT_EQ(plate->collision()->shapes[0], (ShapeResource{{0.5f, 0.5f, 0}, {0.5f, 0.5f, 0}}));
    EXPECT_FALSE(root->children()[1]->children()[0]->collision()); // the handle has no mesh

    // The plate triangle (1 m) scaled 2, turned 90° about y, raised 0.1 m spans y∈[0.1,2.1], z∈[−2,0];
    // the cup's triangles reach x = 1 and y = 0.
    const BoundingBox all = root->visualBounds(true, nullptr);
    EXPECT_LT((all.min - QVector3D(0, 0, -2)).length(), 1e-5f);
    EXPECT_LT((all.max - QVector3D(1, 2.1f, 0)).length(), 1e-5f);
    EXPECT_TRUE(Entity().visualBounds(true, nullptr).isEmpty);
}

TEST(ModelEntityTest, GeneratedBoxIsClosedAndFacesOutward) {
    const auto box = MeshResource::generateBox(0.2f, 0.4f, 0.6f);
    EXPECT_EQ(box->bounds(), BoundingBox({-0.1f, -0.2f, -0.3f}, {0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(box->mesh().triangleCount(), 12u);
    // Every triangle's winding gives a normal pointing away from the centre.
    const auto& mesh = box->mesh();
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
        const QVector3D a = mesh.positions[mesh.indices[i]], b = mesh.positions[mesh.indices[i + 1]],
                        c = mesh.positions[mesh.indices[i + 2]];
        EXPECT_GT(QVector3D::dotProduct(a + b + c, QVector3D::crossProduct(b - a, c - a)), 0.0f) << "triangle " << i / 3;
    }
}

TEST(ModelEntityTest, EveryImportedMaterialInputReachesTheEntitysMaterial) {
    import::ImportedScene scene;
    scene.textures.push_back({"orm.png", QByteArray("orm"), nullptr});
    const auto ref = [](import::TextureChannel channel, int set = 0) {
        return import::ImportedTextureRef{.texture = 0, .channel = channel, .texCoordSet = set,
                                          .transform = {.rotationDegrees = 90.0f}, .wrapS = import::TextureWrap::mirror};
    };
    using import::TextureChannel;
    import::ImportedMaterial m{.baseColorFactor = {0.5f, 0.5f, 0.5f, 0.4f}, .metallicTexture = ref(TextureChannel::b),
                               .roughnessTexture = ref(TextureChannel::g), .normalTexture = ref(TextureChannel::rgb),
                               .normalScale = 0.5f, .occlusionTexture = ref(TextureChannel::r, 1), .occlusionStrength = 0.7f,
                               .emissiveFactor = {1.0f, 0.5f, 0.0f}, .emissiveStrength = 4.0f,
                               .opacityTexture = ref(TextureChannel::a), .alphaMode = import::AlphaMode::mask,
                               .alphaCutoff = 0.3f, .doubleSided = true, .unlit = true};
    const auto pbr = PhysicallyBasedMaterial::fromImported(scene, m);

    EXPECT_NEAR(pbr.baseColorTint.redF(), 0.7354, 1e-3); // linear 0.5 as sRGB
    EXPECT_NEAR(pbr.baseColorTint.alphaF(), 0.4, 1e-3);
    ASSERT_TRUE(pbr.occlusionTexture && pbr.roughnessTexture && pbr.metallicTexture && pbr.opacityTexture);
    EXPECT_EQ(pbr.occlusionTexture->sampling.channel, import::TextureChannel::r);
    EXPECT_EQ(pbr.occlusionTexture->sampling.texCoordSet, 1);
    EXPECT_FLOAT_EQ(pbr.occlusionStrength, 0.7f);
    EXPECT_EQ(pbr.roughnessTexture->sampling.channel, import::TextureChannel::g);
    EXPECT_EQ(pbr.metallicTexture->sampling.channel, import::TextureChannel::b);
    EXPECT_EQ(pbr.opacityTexture->sampling.wrapS, import::TextureWrap::mirror);
    EXPECT_FLOAT_EQ(pbr.opacityTexture->sampling.transform.rotationDegrees, 90.0f);
    EXPECT_FLOAT_EQ(pbr.normalScale, 0.5f);
    EXPECT_FLOAT_EQ(pbr.emissiveIntensity, 4.0f);
    EXPECT_EQ(pbr.alphaMode, import::AlphaMode::mask);
    EXPECT_FLOAT_EQ(pbr.alphaCutoff, 0.3f);
    EXPECT_TRUE(pbr.doubleSided);
    EXPECT_TRUE(pbr.unlit);

    // A texture's scale folds into the factor it multiplies, as a file with a factor beside a
    // texture writes it.
    m.baseColorFactor = {1.0f, 1.0f, 1.0f, 1.0f};
    m.baseColorTexture = ref(TextureChannel::rgb);
    m.baseColorTexture->scale = {0.5f, 1.0f, 1.0f, 1.0f};
    m.roughness = 1.0f;
    m.roughnessTexture->scale = {1.0f, 0.25f, 1.0f, 1.0f}; // the green channel's
    const auto folded = PhysicallyBasedMaterial::fromImported(scene, m);
    EXPECT_NEAR(folded.baseColorTint.redF(), 0.7354, 1e-3);
    EXPECT_NEAR(folded.baseColorTint.greenF(), 1.0, 1e-3);
    EXPECT_FLOAT_EQ(folded.roughness, 0.25f);

    // An opaque material ignores its alpha.
    m.alphaMode = import::AlphaMode::opaque;
    EXPECT_EQ(PhysicallyBasedMaterial::fromImported(scene, m).baseColorTint.alphaF(), 1.0);
}

// Entity transforms: hierarchy maths, conversions between spaces, and re-parenting with
// and without keeping the world transform.
void expectNear(const QVector3D& actual, const QVector3D& expected) {
    EXPECT_LT((actual - expected).length(), 1e-5f) << actual.x() << " " << actual.y() << " " << actual.z();
}

// Same rotation (q and −q are the same rotation).
void expectSameRotation(const QQuaternion& actual, const QQuaternion& expected) {
    EXPECT_NEAR(std::abs(QQuaternion::dotProduct(actual.normalized(), expected.normalized())), 1.0f, 1e-5f);
}

struct Hierarchy : ::testing::Test {
    // parent: at (1, 0, 0), turned 90° about +y, scaled 2; child: at (1, 0, 0) in the parent.
    std::shared_ptr<Entity> parent = std::make_shared<Entity>("parent");
    std::shared_ptr<Entity> child = std::make_shared<Entity>("child");
    void SetUp() override {
        parent->setTransform(Transform({2, 2, 2}, QQuaternion::fromAxisAndAngle(0, 1, 0, 90), {1, 0, 0}));
        child->setPosition({1, 0, 0});
        parent->addChild(child);
    }
};

TEST_F(Hierarchy, ComposesAndConvertsPointsAndDirectionsBetweenSpaces) {
    // (1,0,0) → scaled (2,0,0) → turned to (0,0,−2) → moved to (1,0,−2).
    expectNear(child->position(nullptr), {1, 0, -2});
    expectNear(parent->position(child.get()), {-1, 0, 0});
    const QVector3D inChild(0.5f, 0, 0);
    const QVector3D world = child->convertPositionTo(inChild, nullptr);
    expectNear(world, {1, 0, -3});
    expectNear(child->convertPositionFrom(world, nullptr), inChild);
    expectNear(parent->convertPositionFrom(inChild, child.get()), {1.5f, 0, 0});
    // Directions ignore translation but follow rotation and scale.
    expectNear(child->convertDirectionTo({1, 0, 0}, nullptr), {0, 0, -2});

    auto sibling = std::make_shared<Entity>();
    sibling->setPosition({0, 3, 0});
    parent->addChild(sibling);
    expectNear(child->convertPositionTo({0, 0, 0}, sibling.get()), {1, -3, 0});
}

TEST_F(Hierarchy, SettersRelativeToWorldPlaceTheEntityThere) {
    child->setPosition({0, 0, 0}, nullptr);
    expectNear(child->position(nullptr), {0, 0, 0});
    expectNear(child->position(), {0, 0, -0.5f}); // local: (−1,0,0) from the parent, turned back, halved
    const QQuaternion wanted = QQuaternion::fromAxisAndAngle(1, 0, 0, 30);
    child->setOrientation(wanted, nullptr);
    expectSameRotation(child->orientation(nullptr), wanted);
    QMatrix4x4 target;
    target.translate(3, 4, 5);
    target.rotate(45, 0, 0, 1);
    target.scale(0.5f, 2, 3);
    child->setTransformMatrix(target, nullptr);
    const QMatrix4x4 world = child->worldTransformMatrix();
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(world.constData()[i], target.constData()[i], 1e-5f) << "element " << i;
}

TEST_F(Hierarchy, ReparentingKeepsLocalOrWorldTransform) {
    auto kept = std::make_shared<Entity>();
    kept->setPosition({1, 0, 0});
    parent->addChild(kept);

    child->removeFromParent(/*preservingWorldTransform=*/true);
    EXPECT_EQ(child->parent(), nullptr);
    expectNear(child->position(), {1, 0, -2});
    expectNear(child->scale(), {2, 2, 2});
    expectSameRotation(child->orientation(), QQuaternion::fromAxisAndAngle(0, 1, 0, 90));

    kept->removeFromParent(/*preservingWorldTransform=*/false);
    expectNear(kept->position(nullptr), {1, 0, 0});
    EXPECT_TRUE(parent->children().empty());

    // Adding a child can keep its world transform too: back where it was, then under another parent.
    parent->addChild(child, /*preservingWorldTransform=*/true);
    expectNear(child->position(), {1, 0, 0});
    auto other = std::make_shared<Entity>();
    other->setPosition({0, 5, 0});
    other->addChild(child, /*preservingWorldTransform=*/true);
    EXPECT_EQ(child->parent(), other);
    EXPECT_TRUE(parent->children().empty()); // moved, not copied
    expectNear(child->position(nullptr), {1, 0, -2});
    // Without keeping the world transform, the local (1,−5,−2) now lives in the parent's space:
    // scaled (2,−10,−4), turned to (−4,−10,−2), moved to (−3,−10,−2).
    parent->addChild(child);
    expectNear(child->position(), {1, -5, -2});
    expectNear(child->position(nullptr), {-3, -10, -2});
}

} // namespace
} // namespace orvanta::reality
