#include "screens/FoodARView.h"

#include "arsession/ARWorldTrackingConfiguration.h"
#include "core/Dispatch.h"
#include "core/Log.h"
#include "focus/FocusIndicator.h"
#include "import/ImportError.h"
#include "net/TransferError.h"

namespace orvanta {

FoodARView::FoodARView(QObject* parent) : FoodARView(nullptr, nullptr, nullptr, std::nullopt, true, parent) {}

FoodARView::FoodARView(std::optional<Food> selectedFood, std::shared_ptr<reality::ARView> arView, bool showInsText,
                       std::shared_ptr<OrvARViewModel> viewModel, FoodViewModel* foodVM, ImagePreview* imagePreview,
                       std::optional<TrackingStateEnum> trackingState, bool navigateToImagePreview, QObject* parent)
    : QObject(parent),
      viewModel_(viewModel ? std::move(viewModel) : OrvARViewModel::make()),
      imagePreview_(imagePreview ? imagePreview : new ImagePreview(this)),
      selectedFood_(std::move(selectedFood)),
      arView_(std::move(arView)),
      showInsText_(showInsText),
      trackingState_(trackingState),
      navigateToImagePreview_(navigateToImagePreview) {
    connectViewModel();
    // Every input of the visibility table announces itself once more through one signal.
    for (auto signal : {&FoodARView::selectedModeChanged, &FoodARView::isModelLoadedChanged,
                        &FoodARView::isSegmentVisibleChanged, &FoodARView::showInsTextChanged,
                        &FoodARView::isPreviewVisibleChanged, &FoodARView::capturedImageChanged})
        connect(this, signal, this, &FoodARView::visibilityChanged);
    connect(this, &FoodARView::selectedFoodChanged, this, [this] { dishes_.setSelected(selectedFood_); });
    setFoodVM(foodVM);
}

FoodARView::~FoodARView() = default;

void FoodARView::connectViewModel() {
    OrvARViewModel* model = viewModel_.get();
    // Queued: `loading` may be written on the HTTP client's thread; the screen hears it here.
    connect(model, &OrvARViewModel::loadingChanged, this, &FoodARView::loadingChanged, Qt::QueuedConnection);
    connect(model, &OrvARViewModel::downloadProgressChanged, this, &FoodARView::loadingChanged, Qt::QueuedConnection);
    connect(
        model, &OrvARViewModel::loadFailed, this,
        [this](const QString&, const QString& domain, int code) { setLoadError(guestMessage(domain, code)); },
        Qt::QueuedConnection);
    // The model-change observation: a new entity is not placed yet.
    connect(model, &OrvARViewModel::modelEntityChanged, this, [this] {
        if (viewModel_->modelEntity()) setIsModelLoaded(false);
    });
}

void FoodARView::setFoodVM(FoodViewModel* foodVM) {
    if (foodVM_ == foodVM) return;
    if (foodVM_) disconnect(foodVM_, nullptr, this, nullptr);
    foodVM_ = foodVM;
    const auto refreshStrip = [this] {
        dishes_.setFoods(foodVM_ ? foodVM_->rearrangedFoods() : std::vector<Food>());
        emit selectedFoodChanged();
    };
    if (foodVM_) connect(foodVM_, &FoodViewModel::rearrangedFoodsChanged, this, refreshStrip);
    refreshStrip();
    emit foodVMChanged();
}

void FoodARView::setSelectedMode(Mode mode) {
    if (selectedMode_ == mode) return;
    selectedMode_ = mode;
    emit selectedModeChanged();
    setIsModelLoaded(false);
    loadModelForSelectedMode();
}

void FoodARView::setIsModelLoaded(bool loaded) {
    if (isModelLoaded_ == loaded) return;
    isModelLoaded_ = loaded;
    emit isModelLoadedChanged();
}

void FoodARView::setARView(std::shared_ptr<reality::ARView> view) {
    if (arView_ == view) return;
    arView_ = std::move(view);
    emit arViewChanged();
}

void FoodARView::setTrackingState(std::optional<TrackingStateEnum> state) {
    if (trackingState_ == state) return;
    trackingState_ = state;
    emit trackingStateChanged();
}

void FoodARView::setNavigateToImagePreview(bool navigate) {
    if (navigateToImagePreview_ == navigate) return;
    navigateToImagePreview_ = navigate;
    emit navigateToImagePreviewChanged();
}

namespace {

// A binding whose two ends are a getter and a setter of a screen that may be gone by the time
// the binding is used (writes through bindings are deferred a turn).
template <class T, class Get, class Set>
Binding<T> screenBinding(FoodARView* screen, Get get, Set set) {
    QPointer<FoodARView> weak(screen);
    return Binding<T>([weak, get] { return weak ? get(*weak) : T(); },
                      [weak, set](T value) {
                          if (weak) set(*weak, std::move(value));
                      });
}

} // namespace

Binding<std::shared_ptr<reality::ModelEntity>> FoodARView::modelEntityBinding() {
    return screenBinding<std::shared_ptr<reality::ModelEntity>>(
        this, [](FoodARView& s) { return s.viewModel_->modelEntity(); },
        [](FoodARView& s, std::shared_ptr<reality::ModelEntity> v) { s.viewModel_->setModelEntity(std::move(v)); });
}

Binding<std::shared_ptr<scenegraph::SceneNode>> FoodARView::scnModelBinding() {
    return screenBinding<std::shared_ptr<scenegraph::SceneNode>>(
        this, [](FoodARView& s) { return s.viewModel_->scnModel(); },
        [](FoodARView& s, std::shared_ptr<scenegraph::SceneNode> v) { s.viewModel_->setScnModel(std::move(v)); });
}

Binding<bool> FoodARView::isModelLoadedBinding() {
    return screenBinding<bool>(
        this, [](FoodARView& s) { return s.isModelLoaded_; }, [](FoodARView& s, bool v) { s.setIsModelLoaded(v); });
}

Binding<std::shared_ptr<reality::ARView>> FoodARView::arViewBinding() {
    return screenBinding<std::shared_ptr<reality::ARView>>(
        this, [](FoodARView& s) { return s.arView_; },
        [](FoodARView& s, std::shared_ptr<reality::ARView> v) { s.setARView(std::move(v)); });
}

Binding<std::optional<TrackingStateEnum>> FoodARView::trackingStateBinding() {
    return screenBinding<std::optional<TrackingStateEnum>>(
        this, [](FoodARView& s) { return s.trackingState_; },
        [](FoodARView& s, std::optional<TrackingStateEnum> v) { s.setTrackingState(v); });
}

void FoodARView::setBackendFactory(std::function<std::unique_ptr<arsession::SessionBackend>()> factory) {
    makeBackend_ = std::move(factory);
}

QString FoodARView::selectedFoodName() const { return selectedFood_ ? selectedFood_->name() : QString(); }

int FoodARView::selectedFoodIndex() const {
    if (!foodVM_ || !selectedFood_) return -1;
    const auto& foods = foodVM_->rearrangedFoods();
    for (std::size_t i = 0; i < foods.size(); ++i)
        if (foods[i] == *selectedFood_) return static_cast<int>(i);
    return -1;
}

bool FoodARView::showsProgress() const { return viewModel_->loading(); }

double FoodARView::downloadFraction() const {
    const auto progress = viewModel_->downloadProgress();
    if (!progress.expected || *progress.expected <= 0) return -1.0;
    return std::clamp(static_cast<double>(progress.received) / static_cast<double>(*progress.expected), 0.0, 1.0);
}

void FoodARView::appear() {
    selectedFood_ = foodVM_ ? foodVM_->selectedFood() : std::nullopt;
    emit selectedFoodChanged();
    QPointer<FoodARView> weak(this);
    core::Dispatch::main()->asyncAfter(firstLoadDelay, [weak] {
        if (!weak) return;
        if (!weak->isModelLoaded_ && weak->trackingState_ == TrackingStateEnum::normal) {
            weak->hideInstructions();
            weak->loadModelForSelectedMode();
        }
    });
    startTimer();
}

void FoodARView::startTimer() {
    // Never invalidated: it keeps hiding the mode control for as long as the screen lives.
    QPointer<FoodARView> weak(this);
    core::Dispatch::main()->scheduleRepeating(segmentHideInterval, [weak] {
        if (weak) weak->setSegmentVisible(false);
    });
}

void FoodARView::tap() { setSegmentVisible(true); }

void FoodARView::setSegmentVisible(bool visible) {
    if (isSegmentVisible_ == visible) return;
    isSegmentVisible_ = visible;
    emit isSegmentVisibleChanged();
}

void FoodARView::hideInstructions() {
    if (!showInsText_) return;
    showInsText_ = false;
    emit showInsTextChanged();
}

void FoodARView::chooseDish(const Food& food) {
    selectedFood_ = food;
    emit selectedFoodChanged();
    loadModelForSelectedMode();
}

void FoodARView::chooseDishAt(int index) {
    if (!foodVM_ || index < 0 || index >= static_cast<int>(foodVM_->rearrangedFoods().size())) return;
    chooseDish(foodVM_->rearrangedFoods()[static_cast<std::size_t>(index)]);
}

void FoodARView::loadModelForSelectedMode() {
    const std::string link = selectedFood_ ? selectedFood_->arUSDZLink().toStdString() : std::string();
    setLoadError({});
    if (selectedMode_ == Mode::AR)
        viewModel_->loadModel(link);
    else
        viewModel_->loadScnModel(link);
    setIsModelLoaded(false);
}

QString FoodARView::guestMessage(const QString& domain, int code) {
    // Transfers and writes into the cache fail for want of a connection or of space; a link
    // that is no address, a missing file or one that cannot be opened is not there; the
    // importers' other failures mean the file is there but broken.
    if (domain == QLatin1String(net::transferErrorDomain) || domain == QLatin1String("FileWriteError"))
        return tr("The dish could not be downloaded. Check the connection and try again.");
    const bool missing = domain == QLatin1String("FileExistenceError") || domain == QLatin1String("InvalidURLError") ||
                         code == 400 ||
                         (domain == QLatin1String(import::importErrorDomain) &&
                          code == static_cast<int>(import::ImportErrorCode::unreadableFile));
    if (missing) return tr("This dish's file was not found.");
    return tr("This dish's file is damaged and cannot be shown.");
}

void FoodARView::retryLoad() { loadModelForSelectedMode(); }

void FoodARView::setLoadError(QString message) {
    if (loadError_ == message) return;
    loadError_ = std::move(message);
    emit loadErrorChanged();
}

void FoodARView::resetPressed() {
    if (selectedMode_ == Mode::AR) resetARView();
}

void FoodARView::resetARView() {
    if (!arView_) return;
    arView_->scene().anchors().removeAll();
    arsession::ARWorldTrackingConfiguration configuration;
    configuration.planeDetection = arsession::ARWorldTrackingConfiguration::horizontal;
    // The square lives in the scene; the screen keeps no reference to it.
    focus::FocusIndicator::make(arView_, focus::FocusIndicatorComponent::classic());
    arView_->session()->run(configuration, arsession::ARSession::resetTracking | arsession::ARSession::removeExistingAnchors);
    viewModel_->setModelEntity(nullptr);
    setIsModelLoaded(false);
}

void FoodARView::stopSession() {
    if (!arView_) return;
    arView_->scene().anchors().removeAll();
    arView_->session()->pause();
    viewModel_->setModelEntity(nullptr);
    setIsModelLoaded(false);
    setARView(nullptr);
    core::Log::print("AR session stopped and cleaned up.");
}

void FoodARView::close() {
    emit dismissRequested();
    stopSession();
}

void FoodARView::takeScreenshot() {
    if (!arView_) return;
    QPointer<FoodARView> weak(this);
    arView_->snapshot(false, [weak](std::optional<QImage> image) {
        if (!image) {
            core::Log::print("Failed to capture ARView snapshot");
            return;
        }
        if (!weak) return;
        // The thumbnail first shows full size in the centre; its layout starts shrinking it
        // once the new picture shows.
        weak->setPreview(1.0, QSizeF(0, 0), false);
        weak->capturedImage_ = std::move(*image);
        emit weak->capturedImageChanged();
        weak->setPreviewVisible(true);
    });
}

void FoodARView::setPreviewVisible(bool visible) {
    if (isPreviewVisible_ == visible) return;
    isPreviewVisible_ = visible;
    emit isPreviewVisibleChanged();
}

void FoodARView::setPreview(qreal scale, QSizeF offset, bool animated) {
    previewAnimated_ = animated;
    emit previewAnimatedChanged();
    previewScale_ = scale;
    previewOffset_ = offset;
    emit previewChanged();
}

void FoodARView::thumbnailAppeared(double width, double height) {
    setPreview(thumbnailScale, QSizeF(thumbnailCentreFromLeft - width / 2, height / 2 - thumbnailCentreFromBottom), true);
    QPointer<FoodARView> weak(this);
    core::Dispatch::main()->asyncAfter(thumbnailHideDelay, [weak] {
        if (weak) weak->setPreviewVisible(false);
    });
}

void FoodARView::thumbnailTapped() {
    if (!capturedImage_) return;
    setPreviewVisible(false);
    imagePreview_->updateImage(*capturedImage_);
    goToImagePreview();
}

void FoodARView::goToImagePreview() { setNavigateToImagePreview(true); }

} // namespace orvanta
