// The dish screen's states, its capture and viewer, and the menu grid that opens it.
#include "ScreenTestSupport.h"

#include "reality/AnchorEntity.h"
#include "reality/MeshResource.h"
#include "reality/ModelEntity.h"
#include "render/GlSupport.h"
#include "scenegraph/SceneNodeBuilder.h"
#include "screens/FoodARView.h"
#include "screens/FoodList.h"
#include "screens/ThreeDViewerItem.h"
#include "support/LogCapture.h"

#include <QBuffer>
#include <QQuickWindow>

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

TEST_F(FoodARViewTest, VisibilityFollowsTheStateTableFromOpeningToThePreview) {
    auto screen = openScreen(TrackingStateEnum::normal);
    screen->thumbnailTapped(); // nothing captured yet
    EXPECT_FALSE(screen->navigateToImagePreview());
    screen->setARView(makeARView());
    // Opening: AR view, instruction and top bar; nothing loaded, so no capture button.
    EXPECT_EQ(shown(*screen), (Shown{true, false, true, true, false, false, false}));

    main_->advance(4.9);
    EXPECT_TRUE(network_->entityLoads.empty());
    main_->advance(0.1); // the first load starts (tracking is normal) and the timer hides the bar
    EXPECT_EQ(network_->entityLoads, std::vector<std::string>{"https://example.com/pizza.usdz"});
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

    screen->thumbnailTapped(); // the thumbnail goes and the preview opens with its picture
    EXPECT_FALSE(screen->showsThumbnail());
    EXPECT_TRUE(screen->navigateToImagePreview());
    EXPECT_EQ(screen->imagePreview()->image().pixelColor(0, 0), QColor(Qt::red));
}

// The mode control hides at the next tick after a tap; limited tracking loads nothing until
// the mode changes.
TEST_F(FoodARViewTest, LimitedTrackingLoadsNothingUntilTheModeChangesAndTheModeControlHidesAfterATap) {
    auto screen = openScreen(TrackingStateEnum::notTracking);
    main_->advance(5.0);
    EXPECT_FALSE(screen->isSegmentVisible());
    main_->advance(4.0);
    screen->tap();
    EXPECT_TRUE(screen->isSegmentVisible());
    main_->advance(1.0);
    EXPECT_FALSE(screen->isSegmentVisible());
    main_->advance(20.0);
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

TEST_F(FoodARViewTest, AFailedLoadShowsItsErrorAndRetryLoadsAgain) {
    LogCapture log;
    network_->failWith = core::Error("ARModelError", 400, "Invalid URL");
    auto screen = openScreen(TrackingStateEnum::normal);
    main_->advance(5.0);
    deliverQueuedSignals();
    EXPECT_EQ(screen->loadError(), "This dish's file was not found.");
    EXPECT_FALSE(screen->showsProgress());
    // The view model's own report is unchanged.
    EXPECT_EQ(log.lines().back().rfind("Failed to load model: ", 0), 0u);

    network_->failWith.reset();
    screen->retryLoad();
    EXPECT_TRUE(screen->loadError().isEmpty());
    EXPECT_EQ(network_->entityLoads.size(), 2u);
    EXPECT_TRUE(screen->showsProgress());
}

// A box whose white material takes a green texture, as a scene node of the 3D viewer.
std::shared_ptr<scenegraph::SceneNode> greenTexturedBox() {
    QImage green(512, 512, QImage::Format_RGB32);
    green.fill(QColor(20, 200, 40));
    QByteArray png;
    QBuffer buffer(&png);
    green.save(&buffer, "PNG");
    auto scene = std::make_shared<import::ImportedScene>();
    scene->meshes.push_back(reality::MeshResource::generateBox(0.3f, 0.15f, 0.3f)->mesh());
    scene->meshes[0].subsets.front().material = 0;
    scene->textures.push_back(import::ImportedTexture{"green.png", png, nullptr});
    scene->materials.emplace_back().baseColorTexture = import::ImportedTextureRef{0};
    scene->nodes.push_back({"", QMatrix4x4(), -1, {}, {0}});
    return scenegraph::SceneNodeBuilder::build(scene).rootNode;
}

TEST_F(FoodARViewTest, TheViewerUpdatesOnEveryBindingChangeAndShowsADishOnlyWithItsTexturesOnWhite) {
    if (!render::GlSupport::canCreateContext()) GTEST_SKIP() << render::GlSupport::unavailableReason();
    auto screen = openScreen(TrackingStateEnum::normal);
    screen->setSelectedMode(FoodARView::Mode::ThreeD);
    QQuickWindow window;
    window.resize(320, 320);
    auto* viewer = new ThreeDViewerItem(window.contentItem());
    viewer->setSize(window.size());
    window.show();
    viewer->setScreen(screen.get());

    LogCapture log;
    screen->viewModel()->setScnModel(greenTexturedBox());
    main_->runPending(); // the viewer adds the model a turn later and writes the placed flag...
    main_->runPending(); // ...whose change runs the update again
    const auto lines = log.lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& l) { return l.rfind("Updating model: ", 0) == 0; }), 2);
    EXPECT_TRUE(screen->isModelLoaded());

    // Every frame from now on shows the white background alone or the box with its texture:
    // never the box's plain white material, which light and shade turn grey.
    const auto count = [](const QImage& image, auto match) {
        int n = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) n += match(image.pixel(x, y)) ? 1 : 0;
        return n;
    };
    const auto grey = [](QRgb p) { return qGray(p) < 245 && std::abs(qRed(p) - qGreen(p)) < 12 && std::abs(qGreen(p) - qBlue(p)) < 12; };
    const auto green = [](QRgb p) { return qGreen(p) > qRed(p) + 60 && qGreen(p) > qBlue(p) + 60; };
    int greenPixels = 0;
    for (int frame = 0; frame < 600 && greenPixels < 2000; ++frame) {
        const QImage image = window.grabWindow().convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(count(image, grey), 0) << "an untextured frame, " << frame;
        EXPECT_EQ(image.pixel(2, 2), qRgb(255, 255, 255)) << "the background";
        greenPixels = count(image, green);
        QCoreApplication::processEvents();
    }
    EXPECT_GE(greenPixels, 2000) << "the textured dish never showed";
}

TEST_F(FoodARViewTest, FailuresAreToldInWordsAGuestUnderstands) {
    const QString download = "The dish could not be downloaded. Check the connection and try again.";
    const QString missing = "This dish's file was not found.";
    const QString damaged = "This dish's file is damaged and cannot be shown.";
    const struct {
        const char* domain;
        int code;
        QString expected;
    } cases[] = {
        {"URLError", -1005, download}, {"URLError", -1001, download}, {"FileWriteError", 28, download}, // closed, timed out, disk full
        {"FileExistenceError", 404, missing}, {"ModelImportError", 1, missing}, {"SceneKitError", 400, missing},
        {"InvalidURLError", 400, missing},
        {"ModelImportError", 2, damaged}, {"ModelImportError", 3, damaged}, {"SceneKitError", 500, damaged}, // format, truncated
    };
    for (const auto& c : cases) EXPECT_EQ(FoodARView::guestMessage(c.domain, c.code), c.expected) << c.domain << " " << c.code;
}

// The menu grid: a tap puts the dish first and opens it; the cards show names, prices and pictures.
using FoodListTest = ScreenTest;

TEST_F(FoodListTest, TappingTheThirdOfFourDishesPutsItFirstSelectsItAndOpensTheDish) {
    FoodList list;
    list.setViewModel(&foodVM_);
    list.tapAt(2);
    EXPECT_EQ(foodVM_.rearrangedFoods(), (std::vector<Food>{menu_[2], menu_[0], menu_[1], menu_[3]}));
    EXPECT_EQ(foodVM_.selectedFood(), menu_[2]);
    EXPECT_TRUE(list.navigateToFoodAR());
    EXPECT_EQ(foodVM_.foods(), menu_) << "the grid keeps the host's order";
}

TEST_F(FoodListTest, CardsShowNamesPricesAndPicturesOnlyForLinksThatFormAURL) {
    for (const auto& [price, text] : {std::pair{0.0, "£0.00"}, {3.0, "£3.00"}, {9.999, "£10.00"}, {12.5, "£12.50"}, {1234.5, "£1234.50"}})
        EXPECT_EQ(FoodCardsModel::priceText(price), QString::fromUtf8(text)) << price;

    FoodList list;
    list.setViewModel(&foodVM_);
    const FoodCardsModel& cards = *list.cards();
    ASSERT_EQ(cards.rowCount(), 4);
    EXPECT_EQ(cards.data(cards.index(2), FoodCardsModel::NameRole).toString(), "Pizza");
    EXPECT_EQ(cards.data(cards.index(2), FoodCardsModel::PriceTextRole).toString(), "£10.00");
    EXPECT_TRUE(cards.data(cards.index(0), FoodCardsModel::HasPictureRole).toBool());
    EXPECT_FALSE(cards.data(cards.index(1), FoodCardsModel::HasPictureRole).toBool()) << "an empty link";

    foodVM_.setFoods({menu_[3]}); // the grid follows the menu
    EXPECT_EQ(cards.rowCount(), 1);
}

} // namespace
} // namespace orvanta::testing
