#include "ScreenTestSupport.h"

#include "reality/AnchorEntity.h"
#include "reality/ModelEntity.h"
#include "screens/FoodARView.h"
#include "support/LogCapture.h"

namespace orvanta::testing {
namespace {

class FoodARViewTest : public ScreenTest {
protected:
    void SetUp() override {
        ScreenTest::SetUp();
        foodVM_.rearrangedFoods(menu_[2]);
        foodVM_.updatedSelectedFood(menu_[2]);
    }

    // The screen as the menu opens it: the third dish chosen, appeared, with tracking `state`.
    std::unique_ptr<FoodARView> openScreen(std::optional<TrackingStateEnum> state) {
        auto screen = std::make_unique<FoodARView>(&foodVM_, OrvARViewModel::make(network_));
        screen->setTrackingState(state);
        screen->appear();
        return screen;
    }

    struct Shown {
        bool arView, viewer, instruction, topBar, capture, progress, thumbnail;
        bool operator==(const Shown&) const = default;
    };
    static Shown shown(const FoodARView& s) {
        return {s.showsARView(), s.shows3DViewer(), s.showsInstructionText(), s.isSegmentVisible(),
                s.showsCaptureButton(), s.showsProgress(), s.showsThumbnail()};
    }
};

TEST_F(FoodARViewTest, VisibilityFollowsTheStateTable) {
    auto screen = openScreen(TrackingStateEnum::normal);
    screen->setARView(makeARView());
    // Opening: AR view, instruction and top bar; nothing loaded, so no capture button.
    EXPECT_EQ(shown(*screen), (Shown{true, false, true, true, false, false, false}));

    main_->advance(5.0); // the first load starts (tracking is normal) and the timer hides the bar
    EXPECT_EQ(shown(*screen), (Shown{true, false, false, false, false, true, false}));

    screen->tap();
    screen->setIsModelLoaded(true);
    screen->viewModel()->setLoading(false);
    EXPECT_EQ(shown(*screen), (Shown{true, false, false, true, true, false, false}));

    snapshots_->pictures = {picture(Qt::red)};
    screen->takeScreenshot();
    EXPECT_EQ(shown(*screen), (Shown{true, false, false, true, true, false, true}));

    screen->setSelectedMode(FoodARView::Mode::ThreeD); // loading again, for the 3D viewer
    EXPECT_EQ(shown(*screen), (Shown{false, true, false, true, false, true, true}));
}

TEST_F(FoodARViewTest, TheFirstLoadWaitsFiveSecondsForNormalTracking) {
    auto screen = openScreen(TrackingStateEnum::normal);
    main_->advance(4.9);
    EXPECT_TRUE(network_->entityLoads.empty());
    main_->advance(0.1);
    EXPECT_EQ(network_->entityLoads, std::vector<std::string>{"https://example.com/pizza.usdz"});
    EXPECT_FALSE(screen->showInsText());
}

TEST_F(FoodARViewTest, LimitedTrackingLoadsNothingUntilTheModeChanges) {
    auto screen = openScreen(TrackingStateEnum::notTracking);
    main_->advance(30.0);
    EXPECT_TRUE(network_->entityLoads.empty());
    EXPECT_TRUE(network_->sceneLoads.empty());
    EXPECT_TRUE(screen->showsInstructionText());

    screen->setIsModelLoaded(true);
    screen->setSelectedMode(FoodARView::Mode::ThreeD);
    EXPECT_EQ(network_->sceneLoads, std::vector<std::string>{"https://example.com/pizza.usdz"});
    EXPECT_FALSE(screen->isModelLoaded());

    // A dish from the strip loads at once for the current mode.
    screen->chooseDishAt(3);
    EXPECT_EQ(network_->sceneLoads.back(), "https://example.com/tea.glb");
    EXPECT_EQ(screen->selectedFoodName(), "Tea");
    EXPECT_EQ(screen->selectedFoodIndex(), 3);
}

TEST_F(FoodARViewTest, ResetActsOnlyInARModeAndLeavesTheModelGone) {
    auto screen = openScreen(TrackingStateEnum::notTracking);
    auto view = makeARView();
    screen->setARView(view);
    auto placed = std::make_shared<reality::AnchorEntity>();
    view->scene().addAnchor(placed);
    screen->viewModel()->setModelEntity(std::make_shared<reality::ModelEntity>("dish"));

    screen->setSelectedMode(FoodARView::Mode::ThreeD);
    screen->resetPressed();
    EXPECT_TRUE(view->scene().anchors().contains(placed.get()));
    EXPECT_NE(screen->viewModel()->modelEntity(), nullptr);

    screen->setSelectedMode(FoodARView::Mode::AR);
    screen->setIsModelLoaded(true);
    const auto entityLoads = network_->entityLoads.size();
    screen->resetPressed();
    EXPECT_FALSE(view->scene().anchors().contains(placed.get()));
    EXPECT_NE(view->scene().findEntity("FocusIndicator"), nullptr) << "a new focus square stands in the scene";
    EXPECT_EQ(screen->viewModel()->modelEntity(), nullptr);
    EXPECT_FALSE(screen->isModelLoaded());
    EXPECT_TRUE(view->session()->isRunning());
    main_->advance(20.0);
    EXPECT_EQ(network_->entityLoads.size(), entityLoads) << "a reset does not reload the model";
}

TEST_F(FoodARViewTest, ClosingStopsTheSessionOnceAndPrintsOnce) {
    LogCapture log;
    auto screen = openScreen(std::nullopt);
    int dismissed = 0;
    QObject::connect(screen.get(), &FoodARView::dismissRequested, [&] { ++dismissed; });
    screen->close(); // no AR view yet: dismissed, nothing printed
    auto view = makeARView();
    screen->setARView(view);
    screen->viewModel()->setModelEntity(std::make_shared<reality::ModelEntity>("dish"));
    screen->close();
    screen->close();
    EXPECT_EQ(dismissed, 3);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"AR session stopped and cleaned up."});
    EXPECT_FALSE(view->session()->isRunning());
    EXPECT_TRUE(view->scene().anchors().empty());
    EXPECT_EQ(screen->arView(), nullptr);
    EXPECT_EQ(screen->viewModel()->modelEntity(), nullptr);
}

TEST_F(FoodARViewTest, ASecondSnapshotRestartsTheThumbnailAndTheFirstHideStillFires) {
    auto screen = openScreen(TrackingStateEnum::normal);
    screen->setARView(makeARView());
    snapshots_->pictures = {picture(Qt::red), picture(Qt::blue)};

    screen->takeScreenshot();
    EXPECT_EQ(screen->previewScale(), 1.0);
    screen->thumbnailAppeared(400, 800);
    EXPECT_DOUBLE_EQ(screen->previewScale(), 0.2);
    EXPECT_EQ(screen->previewOffset(), QSizeF(50 - 200, 400 - 100));
    EXPECT_TRUE(screen->previewAnimated());

    main_->advance(3.0);
    screen->takeScreenshot(); // while the first thumbnail is still showing
    EXPECT_EQ(screen->previewScale(), 1.0);
    EXPECT_EQ(screen->previewOffset(), QSizeF(0, 0));
    EXPECT_FALSE(screen->previewAnimated());
    EXPECT_EQ(screen->capturedImage()->pixelColor(0, 0), QColor(Qt::blue));
    screen->thumbnailAppeared(400, 800);

    main_->advance(7.0); // the first snapshot's hide hides the second thumbnail early
    EXPECT_FALSE(screen->isPreviewVisible());

    LogCapture log;
    screen->takeScreenshot(); // no picture left: the snapshot fails
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Failed to capture ARView snapshot"});
    EXPECT_EQ(screen->capturedImage()->pixelColor(0, 0), QColor(Qt::blue));
    EXPECT_FALSE(screen->isPreviewVisible());
}

TEST_F(FoodARViewTest, TappingTheThumbnailHandsThePictureToThePreview) {
    auto screen = openScreen(TrackingStateEnum::normal);
    screen->thumbnailTapped(); // nothing captured yet
    EXPECT_FALSE(screen->navigateToImagePreview());

    screen->setARView(makeARView());
    snapshots_->pictures = {picture(Qt::green)};
    screen->takeScreenshot();
    screen->thumbnailTapped();
    EXPECT_FALSE(screen->isPreviewVisible());
    EXPECT_TRUE(screen->navigateToImagePreview());
    EXPECT_EQ(screen->imagePreview()->image().pixelColor(0, 0), QColor(Qt::green));
}

TEST_F(FoodARViewTest, TheModeControlHidesAtTheNextTickAfterATap) {
    auto screen = openScreen(TrackingStateEnum::notTracking);
    main_->advance(5.0);
    EXPECT_FALSE(screen->isSegmentVisible());
    main_->advance(4.0);
    screen->tap();
    EXPECT_TRUE(screen->isSegmentVisible());
    main_->advance(1.0);
    EXPECT_FALSE(screen->isSegmentVisible());
}

TEST_F(FoodARViewTest, AFailedLoadShowsItsErrorAndRetryLoadsAgain) {
    LogCapture log;
    network_->failWith = core::Error("ARModelError", 400, "Invalid URL");
    auto screen = openScreen(TrackingStateEnum::normal);
    main_->advance(5.0);
    deliverQueuedSignals();
    EXPECT_FALSE(screen->loadError().isEmpty());
    EXPECT_FALSE(screen->showsProgress());
    // The view model's own report is unchanged.
    EXPECT_EQ(log.lines().back().rfind("Failed to load model: ", 0), 0u);

    network_->failWith.reset();
    screen->retryLoad();
    EXPECT_TRUE(screen->loadError().isEmpty());
    EXPECT_EQ(network_->entityLoads.size(), 2u);
    EXPECT_TRUE(screen->showsProgress());
}

} // namespace
} // namespace orvanta::testing
