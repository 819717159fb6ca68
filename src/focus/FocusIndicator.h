#pragma once
// The focus square of the AR mode: a square that floats one metre in front of the camera
// while no surface is found, and lies on the surface that a ray from the screen centre hits
// once one is. Once made it updates itself in every scene update of its view: it ray-casts,
// smooths its position over the last ten hits, settles its alignment over the last twenty
// samples, scales with the camera distance, and tells its delegate when its state or its
// plane changes. Its look (classic bars or a coloured plane) follows its state.
//
// The square is a root entity of the view's scene (it adds itself as an anchor, and adds a
// camera-following anchor beside it); the scene keeps it alive until it is taken out.
// A steady-state update allocates nothing: the hit positions and alignment samples live in
// fixed rings and the ray-cast results in a reused buffer.
// Thread: every method on the main thread.

#include "arsession/ARCamera.h"
#include "arsession/ARPlaneAnchor.h"
#include "arsession/ARRaycastResult.h"
#include "core/Cancellable.h"
#include "focus/AlignmentHistory.h"
#include "focus/FocusIndicatorComponent.h"
#include "focus/FocusIndicatorState.h"
#include "focus/PositionHistory.h"
#include "focus/Segment.h"
#include "reality/AnchorEntity.h"
#include "reality/Entity.h"
#include "reality/ModelEntity.h"
#include "reality/SceneUpdateEvent.h"

#include <QMatrix4x4>
#include <QQuaternion>
#include <QUuid>
#include <QVector3D>

#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace orvanta::reality {
class ARView;
}

namespace orvanta::focus {

class FocusIndicatorDelegate;

class FocusIndicator : public reality::Entity {
public:
    using State = FocusIndicatorState;
    using Corner = focus::Corner;
    using Alignment = focus::Alignment;
    using Direction = focus::Direction;
    using Segment = focus::Segment;
    using PlaneAlignment = arsession::ARPlaneAnchor::Alignment;

    static constexpr float size = 0.17f;                // edge of the square, metres
    static constexpr float thickness = 0.018f;          // line thickness, metres
    static constexpr float scaleForClosedSquare = 0.97f; // closed square relative to `size`
    static constexpr double animationDuration = 0.7;    // seconds, for a renderer's timed transitions

    // The camera ray of getCamVectors(): world position and the direction the camera looks.
    struct CamVectors {
        QVector3D position;
        QVector3D direciton;
    };

    // Makes a square on `arView` with a component of `style` (see the other overload).
    static std::shared_ptr<FocusIndicator> make(const std::shared_ptr<reality::ARView>& arView,
                                                FocusIndicatorComponent::Style style);
    // Makes a square on `arView` configured by `focus`: named "FocusIndicator", shown
    // billboard-style in front of the camera in state initializing, added with its camera
    // anchor to the view's scene, updating itself every scene update, and built in its style.
    // Contract: `arView` is non-null.
    static std::shared_ptr<FocusIndicator> make(const std::shared_ptr<reality::ARView>& arView,
                                                FocusIndicatorComponent focus);
    ~FocusIndicator() override;

    // --- the component (style, open flag, bars, ray-cast targets)
    const FocusIndicatorComponent& focus() const { return focus_; }
    void setFocus(FocusIndicatorComponent focus) { focus_ = std::move(focus); }
    bool isOpen() const { return focus_.isOpen; }
    void setIsOpen(bool isOpen) { focus_.isOpen = isOpen; }
    const std::vector<std::shared_ptr<Segment>>& segments() const { return focus_.segments; }
    void setSegments(std::vector<std::shared_ptr<Segment>> segments) { focus_.segments = std::move(segments); }
    const std::vector<arsession::ARRaycastQuery::Target>& allowedRaycasts() const { return focus_.allowedRaycasts; }
    void setAllowedRaycasts(std::vector<arsession::ARRaycastQuery::Target> targets) {
        focus_.allowedRaycasts = std::move(targets);
    }

    // --- state
    std::shared_ptr<reality::ARView> arView() const { return arView_.lock(); }
    std::shared_ptr<FocusIndicatorDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(std::weak_ptr<FocusIndicatorDelegate> delegate) { delegate_ = std::move(delegate); }
    const State& state() const { return state_; }
    // Records `state`; when it differs from the current one, shows it (billboard in front of
    // the camera, or on/off a plane at the hit) and then tells the delegate.
    void setState(const State& state);
    bool onPlane() const { return onPlane_; }
    // Set by a renderer while it animates an appearance change (over `animationDuration`);
    // appearance changes are skipped meanwhile.
    bool isAnimating() const { return isAnimating_; }
    void setIsAnimating(bool animating) { isAnimating_ = animating; }
    bool isChangingAlignment() const { return isChangingAlignment_; }
    bool isAutoUpdating() const { return isAutoUpdating_; }
    const std::shared_ptr<reality::AnchorEntity>& cameraAnchor() const { return cameraAnchor_; }
    const std::optional<PlaneAlignment>& currentAlignment() const { return currentAlignment_; }
    const std::optional<arsession::ARPlaneAnchor>& currentPlaneAnchor() const { return currentPlaneAnchor_; }
    const AlignmentHistory& recentFocusIndicatorAlignments() const { return recentAlignments_; }
    const std::set<QUuid>& anchorsOfVisitedPlanes() const { return anchorsOfVisitedPlanes_; }
    const PositionHistory& recentFocusIndicatorPositions() const { return recentPositions_; }
    const std::shared_ptr<reality::Entity>& positioningEntity() const { return positioningEntity_; }
    const std::shared_ptr<reality::ModelEntity>& fillPlane() const { return fillPlane_; }
    bool scaleEntityBasedOnDistance() const { return scaleEntityBasedOnDistance_; }
    void setScaleEntityBasedOnDistance(bool enabled) { scaleEntityBasedOnDistance_ = enabled; }

    // --- per-frame behaviour
    // Subscribes to (true) or leaves (false) the scene's per-frame update of the view.
    void setAutoUpdate(bool enabled);
    // One frame: with normal tracking and a hit, state tracking; otherwise the square floats
    // in front of the camera and the state is initializing. `event` is not read.
    void updateFocusIndicator(const reality::SceneUpdateEvent* event);
    // Moves the square to the scene of `view`, keeping its auto-updating as it was.
    void moveTo(const std::shared_ptr<reality::ARView>& view);
    // Takes the square out of its scene with its camera anchor, stops its updates, drops its
    // camera anchor and fill plane, and removes its children.
    void destroy();

    // The first hit of the camera ray, trying `allowedRaycasts` in order; none without a view
    // or a hit. Allocation-free once the result buffer has grown.
    std::optional<arsession::ARRaycastResult> smartRaycast();
    // None when the view is gone.
    std::optional<CamVectors> getCamVectors() const;
    // Places the square at the mean of the last (up to ten) hit positions.
    void updatePosition();
    // updatePosition(), then updateAlignment(for: raycastResult).
    void updateTransform(const arsession::ARRaycastResult& raycastResult);
    // Scale for the distance between `camera` and the square (see scaleForDistance); 1 for none.
    float scaleBasedOnDistance(const arsession::ARCamera* camera) const;

    // --- alignment
    // Records the hit's alignment and turns the square towards the hit's surface: smoothly
    // after an accepted change of alignment, at once otherwise.
    void updateAlignment(const arsession::ARRaycastResult& raycastResult);
    // One frame of the turn towards `target`: 15 % of the remaining way.
    void performAlignmentAnimation(const QQuaternion& target);
    // Whether the square's rotation is still short of `target` (see FocusMath.h).
    bool shouldContinueAlignAnim(const QQuaternion& target) const;

    // --- appearance
    // Makes the eight bars in `classicStyle`'s colour at their corners, at the closed size.
    void setupClassic(const ClassicStyle& classicStyle);
    // Runs the appearance change of the style for the current state.
    void stateChanged(bool newPlane);
    // Closes open bars. `newPlane`: whether the plane had not been visited before; both
    // close the same way.
    void onPlaneAnimation(bool newPlane = false);
    // Opens closed bars and brings the square to its full size.
    void offPlaneAniation();
    // Colours the fill plane by state: non-tracking while initializing, else on or off plane.
    void coloredStateChanged();

private:
    struct Token {
        explicit Token() = default;
    };

public:
    // Use make(): the square must be held by shared_ptr before it can join the scene.
    FocusIndicator(Token, const std::shared_ptr<reality::ARView>& arView, FocusIndicatorComponent focus);

private:
    void displayAsBillboard();
    void entityOnPlane(const arsession::ARRaycastResult& raycastResult, const arsession::ARPlaneAnchor& planeAnchor);
    void entityOffPlane(const arsession::ARRaycastResult& raycastResult);
    void displayOffPlane(const arsession::ARRaycastResult& raycastResult);
    void putInFrontOfCamera();
    // The rotation that lays the square on the surface of `raycastResult`, turned towards the
    // camera without tilting (see squareRotation in FocusMath.h).
    QQuaternion alignmentTarget(const arsession::ARRaycastResult& raycastResult) const;
    void stateChangedSetup(bool newPlane = false);
    void setCurrentPlaneAnchor(const arsession::ARPlaneAnchor& planeAnchor);
    float scaleBasedOnDistance(const QMatrix4x4& cameraTransform) const;

    std::weak_ptr<reality::ARView> arView_;
    core::Cancellable updateCancellable_;
    bool isAutoUpdating_ = false;
    std::weak_ptr<FocusIndicatorDelegate> delegate_;
    State state_ = State::initializing();
    bool onPlane_ = false;
    bool isAnimating_ = false;
    bool isChangingAlignment_ = false;
    std::shared_ptr<reality::AnchorEntity> cameraAnchor_;
    std::optional<PlaneAlignment> currentAlignment_;
    std::optional<arsession::ARPlaneAnchor> currentPlaneAnchor_;
    AlignmentHistory recentAlignments_;
    std::set<QUuid> anchorsOfVisitedPlanes_;
    PositionHistory recentPositions_;
    const std::shared_ptr<reality::Entity> positioningEntity_;
    std::shared_ptr<reality::ModelEntity> fillPlane_;
    std::optional<QColor> fillColor_; // colour last given to the fill plane
    bool scaleEntityBasedOnDistance_ = true;
    FocusIndicatorComponent focus_;
    std::vector<arsession::ARRaycastResult> raycastResults_; // reused by smartRaycast()
};

} // namespace orvanta::focus
