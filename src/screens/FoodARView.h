#pragma once
// The dish screen's state and actions: one dish shown either in AR (placed on a table
// through the AR view) or in 3D (turned on screen), with a 5 s first load, a repeating 5 s
// timer that hides the mode control, reset, close, capture with a shrinking thumbnail, the
// strip of the other dishes and the hand-over of a snapshot to the preview. FoodARView.qml
// only lays this object out: every decision is made here.
//
// Besides the state cells, the object offers what its layout needs to read: which elements
// show (the `shows…` properties follow the visibility table exactly), the download's progress,
// and a short message a guest understands, with a retry, when a load failed. The view model's own properties and
// log lines are untouched by those additions: a failure reaches the screen through
// OrvARViewModel::loadFailed.
//
// Timers and delays run on core::Dispatch::main(), so tests drive them with a manual clock.
// A timer or delayed task that fires after the screen has closed acts on this object only.
// Thread: main thread. Changes that start on another thread (a failed download's `loading`)
// arrive here through the view model's queued signals.

#include "ar/TrackingStateEnum.h"
#include "arsession/SessionBackend.h"
#include "core/Binding.h"
#include "models/OrvARViewModel.h"
#include "reality/ARView.h"
#include "screens/FoodCardsModel.h"

#include <OrvantaARFoodSDK/FoodViewModel.h>
#include <OrvantaARFoodSDK/ImagePreview.h>

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QSizeF>

#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

class FoodARView : public QObject {
    Q_OBJECT
    Q_PROPERTY(orvanta::FoodViewModel* foodVM READ foodVM WRITE setFoodVM NOTIFY foodVMChanged)
    Q_PROPERTY(orvanta::OrvARViewModel* viewModel READ viewModelObject CONSTANT)
    Q_PROPERTY(orvanta::ImagePreview* imagePreview READ imagePreview CONSTANT)
    Q_PROPERTY(Mode selectedMode READ selectedMode WRITE setSelectedMode NOTIFY selectedModeChanged)
    Q_PROPERTY(bool isModelLoaded READ isModelLoaded NOTIFY isModelLoadedChanged)
    Q_PROPERTY(bool isSegmentVisible READ isSegmentVisible NOTIFY isSegmentVisibleChanged)
    Q_PROPERTY(bool showInsText READ showInsText NOTIFY showInsTextChanged)
    Q_PROPERTY(bool isPreviewVisible READ isPreviewVisible NOTIFY isPreviewVisibleChanged)
    Q_PROPERTY(QImage capturedImage READ capturedImageValue NOTIFY capturedImageChanged)
    Q_PROPERTY(qreal previewScale READ previewScale NOTIFY previewChanged)
    Q_PROPERTY(QSizeF previewOffset READ previewOffset NOTIFY previewChanged)
    Q_PROPERTY(bool previewAnimated READ previewAnimated NOTIFY previewAnimatedChanged)
    Q_PROPERTY(bool navigateToImagePreview READ navigateToImagePreview WRITE setNavigateToImagePreview
                   NOTIFY navigateToImagePreviewChanged)
    Q_PROPERTY(QString selectedFoodName READ selectedFoodName NOTIFY selectedFoodChanged)
    Q_PROPERTY(int selectedFoodIndex READ selectedFoodIndex NOTIFY selectedFoodChanged)
    Q_PROPERTY(orvanta::FoodCardsModel* dishes READ dishes CONSTANT)
    Q_PROPERTY(bool showsARView READ showsARView NOTIFY selectedModeChanged)
    Q_PROPERTY(bool shows3DViewer READ shows3DViewer NOTIFY selectedModeChanged)
    Q_PROPERTY(bool showsInstructionText READ showsInstructionText NOTIFY visibilityChanged)
    Q_PROPERTY(bool showsTopBar READ isSegmentVisible NOTIFY isSegmentVisibleChanged)
    Q_PROPERTY(bool showsCaptureButton READ showsCaptureButton NOTIFY visibilityChanged)
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY loadingChanged)
    Q_PROPERTY(bool showsThumbnail READ showsThumbnail NOTIFY visibilityChanged)
    Q_PROPERTY(double downloadFraction READ downloadFraction NOTIFY loadingChanged)
    Q_PROPERTY(QString loadError READ loadError NOTIFY loadErrorChanged)

public:
    enum class Mode { ThreeD, AR };
    Q_ENUM(Mode)

    // Seconds from appearing to the one check that may load the model.
    static constexpr double firstLoadDelay = 5.0;
    // Seconds between the timer's hides of the mode control.
    static constexpr double segmentHideInterval = 5.0;
    // Seconds a thumbnail stays before it hides.
    static constexpr double thumbnailHideDelay = 10.0;
    // The thumbnail's end scale and the distances of its centre from the left and bottom edges.
    static constexpr double thumbnailScale = 0.2;
    static constexpr double thumbnailCentreFromLeft = 50.0;
    static constexpr double thumbnailCentreFromBottom = 100.0;

    // A screen with the initial state: AR mode, mode control and instruction text shown,
    // nothing loaded or captured. `viewModel` null makes one with the default network manager;
    // `imagePreview` null makes a new holder. Main thread.
    explicit FoodARView(QObject* parent = nullptr);
    // Every input, in the screen's own order; the dismiss action is the dismissRequested signal.
    FoodARView(std::optional<Food> selectedFood, std::shared_ptr<reality::ARView> arView, bool showInsText,
               std::shared_ptr<OrvARViewModel> viewModel, FoodViewModel* foodVM, ImagePreview* imagePreview = nullptr,
               std::optional<TrackingStateEnum> trackingState = std::nullopt, bool navigateToImagePreview = false,
               QObject* parent = nullptr);
    FoodARView(FoodViewModel* foodVM, std::shared_ptr<OrvARViewModel> viewModel, ImagePreview* imagePreview = nullptr,
               std::optional<TrackingStateEnum> trackingState = std::nullopt, bool showInsText = true,
               QObject* parent = nullptr)
        : FoodARView(std::nullopt, nullptr, showInsText, std::move(viewModel), foodVM, imagePreview, trackingState,
                     false, parent) {}
    ~FoodARView() override;

    // --- state cells
    FoodViewModel* foodVM() const { return foodVM_; }
    void setFoodVM(FoodViewModel* foodVM);
    const std::shared_ptr<OrvARViewModel>& viewModel() const { return viewModel_; }
    OrvARViewModel* viewModelObject() const { return viewModel_.get(); }
    ImagePreview* imagePreview() const { return imagePreview_; }
    const std::optional<Food>& selectedFood() const { return selectedFood_; }
    Mode selectedMode() const { return selectedMode_; }
    // A change runs the mode-change action (isModelLoaded false, then the load for the mode).
    void setSelectedMode(Mode mode);
    bool isModelLoaded() const { return isModelLoaded_; }
    void setIsModelLoaded(bool loaded);
    bool isSegmentVisible() const { return isSegmentVisible_; }
    const std::shared_ptr<reality::ARView>& arView() const { return arView_; }
    void setARView(std::shared_ptr<reality::ARView> view);
    bool showInsText() const { return showInsText_; }
    const std::optional<QImage>& capturedImage() const { return capturedImage_; }
    QImage capturedImageValue() const { return capturedImage_.value_or(QImage()); }
    bool isPreviewVisible() const { return isPreviewVisible_; }
    qreal previewScale() const { return previewScale_; }
    QSizeF previewOffset() const { return previewOffset_; }
    // Whether the last change of scale and offset is to be animated (ease in and out, 0.5 s).
    bool previewAnimated() const { return previewAnimated_; }
    const std::optional<TrackingStateEnum>& trackingState() const { return trackingState_; }
    void setTrackingState(std::optional<TrackingStateEnum> state);
    bool navigateToImagePreview() const { return navigateToImagePreview_; }
    void setNavigateToImagePreview(bool navigate);

    // The bindings the AR container and the 3D viewer write through. Each holds this screen
    // weakly: a write after the screen is gone is dropped.
    Binding<std::shared_ptr<reality::ModelEntity>> modelEntityBinding();
    Binding<std::shared_ptr<scenegraph::SceneNode>> scnModelBinding();
    Binding<bool> isModelLoadedBinding();
    Binding<std::shared_ptr<reality::ARView>> arViewBinding();
    Binding<std::optional<TrackingStateEnum>> trackingStateBinding();

    // The tracking backend of AR views made for this screen; none gives the simulated world.
    void setBackendFactory(std::function<std::unique_ptr<arsession::SessionBackend>()> factory);
    const std::function<std::unique_ptr<arsession::SessionBackend>()>& backendFactory() const { return makeBackend_; }

    // --- what the layout reads
    QString selectedFoodName() const;
    // The selected dish's place in the strip (`foodVM.rearrangedFoods`), or -1.
    int selectedFoodIndex() const;
    // The dish strip: `foodVM.rearrangedFoods`, the selected dish marked.
    FoodCardsModel* dishes() { return &dishes_; }
    bool showsARView() const { return selectedMode_ == Mode::AR; }
    bool shows3DViewer() const { return selectedMode_ == Mode::ThreeD; }
    bool showsInstructionText() const { return showInsText_ && selectedMode_ == Mode::AR; }
    bool showsCaptureButton() const { return isModelLoaded_ && selectedMode_ == Mode::AR && isSegmentVisible_; }
    bool showsProgress() const;
    bool showsThumbnail() const { return isPreviewVisible_ && capturedImage_.has_value(); }
    // How far the running download has got, 0 to 1; -1 while its size is unknown.
    double downloadFraction() const;
    // The last load's failure in words a guest understands (the dish could not be downloaded,
    // its file was not found, or it is damaged), shown with a retry; empty when the last load
    // did not fail. The technical message is in the view model's log line.
    QString loadError() const { return loadError_; }
    // The guest's sentence for a failure of `domain` with `code`.
    static QString guestMessage(const QString& domain, int code);

    // --- actions
    // The appear action: takes the menu's selection, schedules the one 5 s check that loads
    // the model when tracking is normal and nothing is loaded, and starts the repeating timer.
    Q_INVOKABLE void appear();
    // A tap anywhere: shows the mode control.
    Q_INVOKABLE void tap();
    // The dish strip: shows `food` and loads it for the mode.
    void chooseDish(const Food& food);
    Q_INVOKABLE void chooseDishAt(int index);
    // Loads the selected dish's model for the selected mode (the empty link when none).
    Q_INVOKABLE void loadModelForSelectedMode();
    // The reset control: in AR mode clears the scene, puts a new classic focus square in it and
    // reruns the session with reset tracking; the model stays gone until the next load.
    Q_INVOKABLE void resetPressed();
    // The close control: asks to be dismissed, then stops the session.
    Q_INVOKABLE void close();
    // The capture control: a snapshot of the AR view becomes the thumbnail.
    Q_INVOKABLE void takeScreenshot();
    // The thumbnail's appear action: shrinks it to a fifth towards the lower left of a screen
    // of `width` × `height` points and hides it 10 s later.
    Q_INVOKABLE void thumbnailAppeared(double width, double height);
    // A tap on the thumbnail: hides it and opens the preview with the captured image.
    Q_INVOKABLE void thumbnailTapped();
    // The retry button under a load failure: clears the message and loads again.
    Q_INVOKABLE void retryLoad();
    // Pauses and drops the AR view and the model; prints "AR session stopped and cleaned up.".
    // Nothing at all without an AR view.
    void stopSession();

signals:
    // The close control's dismiss: the navigation stack pops this screen.
    void dismissRequested();
    void foodVMChanged();
    void selectedFoodChanged();
    void selectedModeChanged();
    void isModelLoadedChanged();
    void isSegmentVisibleChanged();
    void showInsTextChanged();
    void isPreviewVisibleChanged();
    void capturedImageChanged();
    void previewChanged();
    // Emitted before previewChanged, so a layout knows whether to animate the new values.
    void previewAnimatedChanged();
    void navigateToImagePreviewChanged();
    void arViewChanged();
    void trackingStateChanged();
    void loadingChanged();
    void loadErrorChanged();
    // Any input of the visibility table changed.
    void visibilityChanged();

private:
    void resetARView();
    void hideInstructions();
    void startTimer();
    void goToImagePreview();
    void setSegmentVisible(bool visible);
    void setPreviewVisible(bool visible);
    void setPreview(qreal scale, QSizeF offset, bool animated);
    void setLoadError(QString message);
    void connectViewModel();

    QPointer<FoodViewModel> foodVM_;
    std::shared_ptr<OrvARViewModel> viewModel_;
    QPointer<ImagePreview> imagePreview_;
    std::optional<Food> selectedFood_;
    Mode selectedMode_ = Mode::AR;
    bool isModelLoaded_ = false;
    bool isSegmentVisible_ = true;
    std::shared_ptr<reality::ARView> arView_;
    bool showInsText_ = true;
    std::optional<QImage> capturedImage_;
    bool isPreviewVisible_ = false;
    qreal previewScale_ = 1.0;
    QSizeF previewOffset_{0, 0};
    bool previewAnimated_ = false;
    std::optional<TrackingStateEnum> trackingState_;
    bool navigateToImagePreview_ = false;
    QString loadError_;
    FoodCardsModel dishes_;
    std::function<std::unique_ptr<arsession::SessionBackend>()> makeBackend_;
};

} // namespace orvanta
