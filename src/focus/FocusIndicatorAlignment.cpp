// FocusIndicator: turning the square to lie on horizontal and stand on vertical surfaces.
#include "focus/FocusIndicator.h"
#include "focus/FocusMath.h"
#include "focus/Matrix4x4Extensions.h"
#include "reality/ARView.h"

namespace orvanta::focus {

void FocusIndicator::updateAlignment(const arsession::ARRaycastResult& raycastResult) {
    const PlaneAlignment alignment = alignmentOf(raycastResult);
    const QQuaternion target = alignmentTarget(raycastResult);

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

QQuaternion FocusIndicator::alignmentTarget(const arsession::ARRaycastResult& raycastResult) const {
    const auto view = arView_.lock();
    const float cameraYaw = view ? yaw(focus::orientation(view->cameraTransform())) : 0.0f;
    return squareRotation(focus::orientation(raycastResult.worldTransform), alignmentOf(raycastResult), cameraYaw,
                          squareYaw(orientation()));
}

void FocusIndicator::performAlignmentAnimation(const QQuaternion& target) {
    setOrientation(alignmentAnimationStep(orientation(), target));
    isChangingAlignment_ = shouldContinueAlignAnim(target);
}

bool FocusIndicator::shouldContinueAlignAnim(const QQuaternion& target) const {
    return focus::shouldContinueAlignAnim(orientation(), target);
}

} // namespace orvanta::focus
