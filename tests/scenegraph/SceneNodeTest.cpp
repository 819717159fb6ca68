#include "scenegraph/SceneNode.h"

#include <gtest/gtest.h>

#include <QQuaternion>

using orvanta::scenegraph::SceneNode;

TEST(SceneNode, ReparentingMovesAndTransformsDecomposeAndCompose) {
    auto a = SceneNode::make("a"), b = SceneNode::make("b"), child = SceneNode::make("child");
    a->addChildNode(child);
    b->addChildNode(child);
    EXPECT_TRUE(a->childNodes().empty());
    ASSERT_EQ(b->childNodes().size(), 1u);
    EXPECT_EQ(child->parent(), b);
    child->removeFromParentNode();
    EXPECT_EQ(child->parent(), nullptr);
    EXPECT_TRUE(b->childNodes().empty());

    QMatrix4x4 m;
    m.translate(1, 2, 3);
    m.rotate(QQuaternion::fromAxisAndAngle(QVector3D(0.3f, 1, 0.2f).normalized(), 40));
    m.scale(2, 0.5f, 1.5f);
    auto node = SceneNode::make();
    node->setTransform(m);
    EXPECT_NEAR(node->position().y(), 2.0f, 1e-5f);
    EXPECT_NEAR(node->scale().x(), 2.0f, 1e-5f);
    const QMatrix4x4 back = node->transform();
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(back.constData()[i], m.constData()[i], 1e-4f) << i;

    a->setPosition({1, 0, 0});
    a->setScale({2, 2, 2});
    child->setPosition({0, 1, 0});
    a->addChildNode(child);
    EXPECT_EQ(child->worldTransform().map(QVector3D()), QVector3D(1, 2, 0));
}
