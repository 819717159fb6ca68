#pragma once
// What the screens' state tests share: a manual main queue, a network that records what was
// asked of it, a menu of four dishes and an AR view whose snapshots the test hands out.

#include "core/Dispatch.h"
#include "core/ManualScheduler.h"
#include "models/NetworkManager.h"
#include "reality/ARView.h"
#include "reality/SnapshotRenderer.h"

#include <OrvantaARFoodSDK/FoodViewModel.h>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::testing {

// Records each load; answers with whatever the test set (by default nothing ever arrives).
class RecordingNetwork : public NetworkManager {
public:
    std::vector<std::string> entityLoads, sceneLoads;
    std::optional<core::Error> failWith;

    core::Publisher<ModelEntityPtr> loadModel(const std::string& from) override {
        entityLoads.push_back(from);
        return answer<ModelEntityPtr>();
    }
    core::Publisher<SceneNodePtr> loadSceneKitModel(const std::string& from) override {
        sceneLoads.push_back(from);
        return answer<SceneNodePtr>();
    }

private:
    template <class T>
    core::Publisher<T> answer() {
        if (failWith) return core::Fail<T>(*failWith);
        return core::Publisher<T>([](const std::shared_ptr<core::Sink<T>>&) {});
    }
};

// Hands each snapshot request the next queued picture (none: a failed snapshot).
class QueuedSnapshots : public reality::SnapshotRenderer {
public:
    std::vector<std::optional<QImage>> pictures;
    void renderSnapshot(const reality::ARView&, bool, Completion completion) override {
        std::optional<QImage> next;
        if (!pictures.empty()) {
            next = pictures.front();
            pictures.erase(pictures.begin());
        }
        completion(next);
    }
};

class ScreenTest : public ::testing::Test {
protected:
    void SetUp() override {
        previousMain_ = core::Dispatch::main();
        core::Dispatch::setMain(main_);
        foodVM_.setFoods(menu_);
    }
    void TearDown() override { core::Dispatch::setMain(previousMain_); }

    // Runs the Qt events the screens queue to themselves (cross-thread notifications; a
    // notification may queue one more hop).
    static void deliverQueuedSignals() {
        for (int hop = 0; hop < 3; ++hop) QCoreApplication::sendPostedEvents();
    }

    std::shared_ptr<reality::ARView> makeARView() {
        auto view = std::make_shared<reality::ARView>(QSizeF(400, 800));
        view->setSnapshotRenderer(snapshots_);
        return view;
    }

    static QImage picture(QColor colour) {
        QImage image(40, 80, QImage::Format_RGB32);
        image.fill(colour);
        return image;
    }

    std::shared_ptr<core::ManualScheduler> main_ = std::make_shared<core::ManualScheduler>();
    std::shared_ptr<core::Scheduler> previousMain_;
    std::shared_ptr<RecordingNetwork> network_ = std::make_shared<RecordingNetwork>();
    std::shared_ptr<QueuedSnapshots> snapshots_ = std::make_shared<QueuedSnapshots>();
    std::vector<Food> menu_{Food("Soup", "https://example.com/soup.png", "https://example.com/soup.usdz", 4.5),
                            Food("Cake", "", "https://example.com/cake.usdz", 3.0),
                            Food("Pizza", "https://example.com/pizza.png", "https://example.com/pizza.usdz", 9.999),
                            Food("Tea", "https://example.com/tea.png", "https://example.com/tea.glb", 0)};
    FoodViewModel foodVM_;
};

} // namespace orvanta::testing
