#include "focus/FocusIndicator.h"

#include "focus/FocusIndicatorDelegate.h"
#include "focus/FocusMath.h"
#include "focus/Matrix4x4Extensions.h"
#include "reality/ARView.h"

#include <cassert>

namespace orvanta::focus {

namespace {
// Enough for every hit of one target against the planes of a room; the buffer keeps its
// capacity, so a steady-state frame does not grow it.
constexpr std::size_t kRaycastResultCapacity = 16;
} // namespace

std::shared_ptr<FocusIndicator> FocusIndicator::make(const std::shared_ptr<reality::ARView>& arView,
                                                     FocusIndicatorComponent::Style style) {
    return make(arView, FocusIndicatorComponent(std::move(style)));
}

std::shared_ptr<FocusIndicator> FocusIndicator::make(const std::shared_ptr<reality::ARView>& arView,
                                                     FocusIndicatorComponent focus) {
    assert(arView);
    auto indicator = std::make_shared<FocusIndicator>(Token{}, arView, std::move(focus));
    // Children are added once the square is held by a shared_ptr: the child keeps a weak
    // link to its parent, which a constructor cannot give yet.
    indicator->addChild(indicator->positioningEntity_);
    indicator->displayAsBillboard();
    arView->scene().addAnchor(indicator);
    indicator->setAutoUpdate(true);
    if (const auto classic = indicator->focus_.classicStyle()) {
        indicator->setupClassic(*classic);
    } else if (const auto colored = indicator->focus_.coloredStyle()) {
        indicator->fillPlane_ = std::make_shared<reality::ModelEntity>(colored->mesh, std::vector<reality::Material>{},
                                                                       "FocusIndicatorFill");
        indicator->positioningEntity_->addChild(indicator->fillPlane_);
        indicator->coloredStateChanged();
    }
    return indicator;
}

FocusIndicator::FocusIndicator(Token, const std::shared_ptr<reality::ARView>& arView, FocusIndicatorComponent focus)
    : Entity("FocusIndicator"), arView_(arView), positioningEntity_(std::make_shared<reality::Entity>()),
      focus_(std::move(focus)) {
    raycastResults_.reserve(kRaycastResultCapacity);
    // The square's meshes lie in the x–z plane; a quarter turn about x makes it face +z.
    positioningEntity_->setOrientation(QQuaternion::fromAxisAndAngle(1.0f, 0.0f, 0.0f, 90.0f));
    cameraAnchor_ = std::make_shared<reality::AnchorEntity>(reality::AnchoringComponent::camera());
    arView->scene().addAnchor(cameraAnchor_);
}

FocusIndicator::~FocusIndicator() = default;

void FocusIndicator::setAutoUpdate(bool enabled) {
    if (enabled == isAutoUpdating_) return;
    if (enabled) {
        const auto view = arView_.lock();
        assert(view);
        std::weak_ptr<FocusIndicator> weakSelf = std::static_pointer_cast<FocusIndicator>(shared_from_this());
        updateCancellable_ = view->scene().subscribeToUpdate([weakSelf](const reality::SceneUpdateEvent& event) {
            if (const auto self = weakSelf.lock()) self->updateFocusIndicator(&event);
        });
    } else {
        updateCancellable_.cancel();
    }
    isAutoUpdating_ = enabled;
}

void FocusIndicator::updateFocusIndicator(const reality::SceneUpdateEvent*) {
    const auto view = arView_.lock();
    const arsession::ARFrame* frame = view ? view->session()->currentFrame() : nullptr;
    if (frame && frame->camera.trackingState.isNormal()) {
        if (const auto result = smartRaycast()) {
            setState(State::tracking(*result, frame->camera));
            return;
        }
    }
    putInFrontOfCamera();
    setState(State::initializing());
}

void FocusIndicator::setState(const State& state) {
    if (state == state_) return;
    const State oldState = state_;
    state_ = state;
    if (state_.isInitializing()) {
        displayAsBillboard();
    } else {
        if (!anchoring()) setAnchoring(reality::AnchoringComponent::world());
        const arsession::ARRaycastResult& result = state_.raycastResult();
        if (result.anchor) {
            entityOnPlane(result, *result.anchor);
        } else {
            entityOffPlane(result);
        }
        if (scaleEntityBasedOnDistance_) {
            if (const auto view = arView_.lock()) {
                setScale(QVector3D(1.0f, 1.0f, 1.0f) * scaleBasedOnDistance(view->cameraTransform()));
            }
        }
    }
    if (const auto receiver = delegate_.lock()) receiver->focusIndicatorTrackingUpdated(*this, state_, &oldState);
}

void FocusIndicator::displayAsBillboard() {
    onPlane_ = false;
    stateChangedSetup();
}

void FocusIndicator::entityOnPlane(const arsession::ARRaycastResult& raycastResult,
                                   const arsession::ARPlaneAnchor& planeAnchor) {
    onPlane_ = true;
    setCurrentPlaneAnchor(planeAnchor);
    const bool newPlane = anchorsOfVisitedPlanes_.insert(planeAnchor.identifier).second;
    recentPositions_.record(raycastResult.position());
    stateChangedSetup(newPlane);
    updateTransform(raycastResult);
}

void FocusIndicator::entityOffPlane(const arsession::ARRaycastResult& raycastResult) {
    onPlane_ = false;
    recentPositions_.record(raycastResult.position());
    displayOffPlane(raycastResult);
}

void FocusIndicator::displayOffPlane(const arsession::ARRaycastResult& raycastResult) {
    stateChangedSetup();
    // Ease towards the hit's surface: one step of the turn, which leaves the turn running
    // while the square is still short of it, so the alignment step below goes on easing
    // instead of setting the rotation at once.
    performAlignmentAnimation(alignmentTarget(raycastResult));
    updateTransform(raycastResult);
}

void FocusIndicator::setCurrentPlaneAnchor(const arsession::ARPlaneAnchor& planeAnchor) {
    const bool changed = !currentPlaneAnchor_ || currentPlaneAnchor_->identifier != planeAnchor.identifier;
    if (!changed) {
        currentPlaneAnchor_ = planeAnchor; // the same plane, as it is now
        return;
    }
    const std::optional<arsession::ARPlaneAnchor> oldPlane = currentPlaneAnchor_;
    currentPlaneAnchor_ = planeAnchor;
    if (const auto receiver = delegate_.lock()) {
        receiver->focusIndicatorPlaneChanged(*this, &*currentPlaneAnchor_, oldPlane ? &*oldPlane : nullptr);
    }
}

void FocusIndicator::putInFrontOfCamera() {
    recentPositions_.record(cameraAnchor_->convertPositionTo(QVector3D(0.0f, 0.0f, -1.0f), nullptr));
    updatePosition();
    if (const auto view = arView_.lock()) performAlignmentAnimation(focus::orientation(view->cameraTransform()));
}

void FocusIndicator::moveTo(const std::shared_ptr<reality::ARView>& view) {
    assert(view);
    const bool wasUpdating = isAutoUpdating_;
    setAutoUpdate(false);
    arView_ = view;
    view->scene().addAnchor(std::static_pointer_cast<FocusIndicator>(shared_from_this()));
    setAutoUpdate(wasUpdating);
}

void FocusIndicator::destroy() {
    const auto self = shared_from_this(); // the scene may hold the last reference
    removeFromParent(true);
    setAutoUpdate(false);
    if (const auto view = arView_.lock()) {
        view->scene().anchors().remove(self);
        if (cameraAnchor_) view->scene().anchors().remove(cameraAnchor_);
    }
    cameraAnchor_.reset();
    fillPlane_.reset();
    while (!children().empty()) removeChild(children().back());
}

std::optional<arsession::ARRaycastResult> FocusIndicator::smartRaycast() {
    const auto vectors = getCamVectors();
    if (!vectors) return std::nullopt;
    const auto view = arView_.lock();
    for (const arsession::ARRaycastQuery::Target target : focus_.allowedRaycasts) {
        const arsession::ARRaycastQuery query(vectors->position, vectors->direciton, target,
                                              arsession::ARRaycastQuery::TargetAlignment::any);
        view->session()->raycast(query, raycastResults_);
        for (const arsession::ARRaycastResult& result : raycastResults_) {
            if (result.target == target) return result;
        }
    }
    return std::nullopt;
}

std::optional<FocusIndicator::CamVectors> FocusIndicator::getCamVectors() const {
    const auto view = arView_.lock();
    if (!view) return std::nullopt;
    const QMatrix4x4 camera = view->cameraTransform();
    // The camera looks along its −z axis.
    return CamVectors{translation(camera), -camera.column(2).toVector3D()};
}

void FocusIndicator::updatePosition() {
    setPosition(recentPositions_.mean());
}

void FocusIndicator::updateTransform(const arsession::ARRaycastResult& raycastResult) {
    updatePosition();
    updateAlignment(raycastResult);
}

float FocusIndicator::scaleBasedOnDistance(const arsession::ARCamera* camera) const {
    if (!camera) return 1.0f;
    return scaleBasedOnDistance(camera->transform);
}

float FocusIndicator::scaleBasedOnDistance(const QMatrix4x4& cameraTransform) const {
    return scaleForDistance(translation(cameraTransform).distanceToPoint(position(nullptr)));
}

void FocusIndicator::stateChangedSetup(bool newPlane) {
    if (isAnimating_) return;
    stateChanged(newPlane);
}

} // namespace orvanta::focus
