#include "ar/ARViewCoaching.h"

namespace orvanta {

std::shared_ptr<arsession::ARCoachingOverlayView> addCoaching(
    reality::ARView& arView, const std::shared_ptr<arsession::ARCoachingOverlayViewDelegate>& delegate) {
    auto overlay = std::make_shared<arsession::ARCoachingOverlayView>();
    overlay->autoresizingMask =
        arsession::ARCoachingOverlayView::flexibleWidth | arsession::ARCoachingOverlayView::flexibleHeight;
    overlay->setGoal(arsession::ARCoachingOverlayView::Goal::horizontalPlane);
    overlay->setSession(arView.session());
    overlay->setDelegate(delegate);
    return overlay;
}

} // namespace orvanta
