// Once its nodes exist, bringing the Quick 3D scene in line with a moving entity scene
// makes no heap allocation.
#include "reality/AnchorEntity.h"
#include "reality/ModelEntity.h"
#include "reality/Scene.h"
#include "render/EntitySceneBridge.h"
#include "render/GlSupport.h"
#include "render/Viewport.h"
#include "support/CountingAllocator.h"

#include <QQuickWindow>
#include <QtQuick3D/private/qquick3dviewport_p.h>

#include <gtest/gtest.h>



namespace orvanta::render {

TEST(SteadySync, MovingEntitiesAllocateNothingOnceTheirNodesExist) {
    if (!GlSupport::canCreateContext()) GTEST_SKIP() << "no pixel test: " << GlSupport::unavailableReason();
    QQuickWindow window;
    window.resize(200, 150);
    window.show();
    const Viewport viewport = Viewport::make(window.contentItem(), Qt::black);
    auto* root = new QQuick3DNode();
    root->setParentItem(viewport.view->scene());
    RenderResources resources(root);
    EntitySceneBridge bridge(resources, root);

    reality::Scene scene;
    auto anchor = std::make_shared<reality::AnchorEntity>();
    auto dish = std::make_shared<reality::ModelEntity>(reality::MeshResource::generateBox(0.1f),
                                                       std::vector<reality::Material>{reality::SimpleMaterial{}});
    anchor->addChild(dish);
    scene.addAnchor(anchor);
    scene.update(nullptr, 0.0);
    bridge.sync(scene);
    ASSERT_EQ(bridge.nodeCount(), 2u);

    const std::uint64_t before = testing::threadAllocationCount();
    for (int frame = 1; frame <= 30; ++frame) {
        dish->setPosition(QVector3D(0.001f * frame, 0, 0));
        dish->setOrientation(QQuaternion::fromAxisAndAngle(0, 1, 0, float(frame)));
        bridge.sync(scene);
    }
    EXPECT_EQ(testing::threadAllocationCount() - before, 0u);
    EXPECT_FLOAT_EQ(bridge.node(dish.get())->position().x(), 0.03f);
}

} // namespace orvanta::render
