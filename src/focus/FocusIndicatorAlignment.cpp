// FocusIndicator: turning the square to lie on horizontal and stand on vertical surfaces.
#include "focus/FocusIndicator.h"
#include "focus/FocusMath.h"
#include "focus/Matrix4x4Extensions.h"
#include "reality/ARView.h"

namespace orvanta::focus {

namespace {
FocusIndicator::PlaneAlignment alignmentOf(const arsession::ARRaycastResult& hit) {
    if (hit.anchor) return hit.anchor->alignment;
    return hit.targetAlignment == arsession::ARRaycastQuery::TargetAlignment::vertical
               ? FocusIndicator::PlaneAlignment::vertical
               : FocusIndicator::PlaneAlignment::horizontal;
}
} // namespace

void FocusIndicator::updateAlignment(const arsession::ARRaycastResult& raycastResult) {
    const PlaneAlignment alignment = alignmentOf(raycastResult);
    const auto view = arView_.lock();
    const float cameraYaw = view ? yaw(focus::orientation(view->cameraTransform())) : 0.0f;
    const QQuaternion target = squareRotation(focus::orientation(raycastResult.worldTransform), alignment, cameraYaw,
                                              squareYaw(orientation()));

    const bool accepted = recentAlignments_.record(alignment);
    if (accepted && currentAlignment_ != alignment) {
        currentAlignment_ = alignment;
        isChangingAlignment_ = shouldContinueAlignAnim(target);
    }
    if (isChangingAlignment_) {
        performAlignmentAnimation(target);
    } else {
        setOrientation(target);
    }
}

void FocusIndicator::performAlignmentAnimation(const QQuaternion& target) {
    setOrientation(alignmentAnimationStep(orientation(), target));
    isChangingAlignment_ = shouldContinueAlignAnim(target);
}

bool FocusIndicator::shouldContinueAlignAnim(const QQuaternion& target) const {
    return focus::shouldContinueAlignAnim(orientation(), target);
}

} // namespace orvanta::focus
