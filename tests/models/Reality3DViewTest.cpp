#include "models/Reality3DView.h"

#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

using namespace orvanta;
using scenegraph::SceneNode;

namespace {

struct Viewer {
    Binding<Reality3DView::SceneNodePtr> model = Binding<Reality3DView::SceneNodePtr>::cell(nullptr);
    Binding<bool> loaded = Binding<bool>::cell(false);
    Reality3DView view{model, loaded};
    std::shared_ptr<scenegraph::SceneView> sceneView = view.makeUIView();

    void update() {
        view.updateUIView(sceneView);
        std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main())->runPending();
    }
    const std::vector<std::shared_ptr<SceneNode>>& rootChildren() const {
        return sceneView->scene()->rootNode->childNodes();
    }
};

std::shared_ptr<SceneNode> modelWithChild(const QVector3D& scale) {
    auto model = SceneNode::make("dish");
    model->addChildNode(SceneNode::make("mesh"));
    model->setScale(scale);
    return model;
}

} // namespace

TEST(Reality3DView, WithoutAModelACameraLooksOnAndAModelReplacesEverythingAtHalfScale) {
    orvanta::testing::LogCapture log;
    Viewer viewer;
    EXPECT_TRUE(viewer.sceneView->allowsCameraControl());
    EXPECT_TRUE(viewer.sceneView->autoenablesDefaultLighting());
    viewer.update();
    viewer.update(); // the line is printed on each update
    ASSERT_EQ(viewer.rootChildren().size(), 1u);
    const auto& camera = viewer.rootChildren().front();
    EXPECT_TRUE(camera->camera());
    EXPECT_EQ(camera->position(), QVector3D(0, 20, 20));
    EXPECT_NEAR(camera->eulerAngles().x(), -M_PI / 4, 1e-6);
    EXPECT_FALSE(viewer.loaded.get());

    const auto first = modelWithChild({2, 2, 2});
    viewer.model.set(first);
    viewer.view.updateUIView(viewer.sceneView);
    EXPECT_TRUE(viewer.rootChildren().empty()); // cleared at once, added a turn later
    EXPECT_FALSE(viewer.loaded.get());
    std::dynamic_pointer_cast<core::ManualScheduler>(core::Dispatch::main())->runPending();
    ASSERT_EQ(viewer.rootChildren().size(), 1u);
    EXPECT_EQ(viewer.rootChildren().front(), first);
    EXPECT_EQ(first->scale(), QVector3D(0.5f, 0.5f, 0.5f)); // replaced, not multiplied
    EXPECT_TRUE(viewer.loaded.get());
    EXPECT_FALSE(viewer.sceneView->pointOfView()); // the camera node went with the clear

    viewer.update(); // the write of isModelLoaded updates again: the same model, still whole
    ASSERT_EQ(viewer.rootChildren().size(), 1u);
    EXPECT_EQ(first->childNodes().size(), 1u);

    const auto second = modelWithChild({1, 1, 1});
    viewer.model.set(second);
    viewer.update();
    ASSERT_EQ(viewer.rootChildren().size(), 1u);
    EXPECT_EQ(viewer.rootChildren().front(), second);
    EXPECT_FALSE(first->parent());
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 4),
              (std::vector<std::string>{"No model to display.", "No model to display.", "Updating model: " + first->description(),
                                        "Adding model to scene"}));
}
