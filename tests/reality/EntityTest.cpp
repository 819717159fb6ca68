// Entity transforms: hierarchy maths, conversions between spaces, and re-parenting with
// and without keeping the world transform.
#include "reality/Entity.h"

#include <gtest/gtest.h>

namespace orvanta::reality {
namespace {

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
