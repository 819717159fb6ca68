#pragma once
// The coaching overlay of an AR view: guidance over the camera image until a horizontal
// plane is found.
// Thread: main thread.

#include "arsession/ARCoachingOverlayView.h"
#include "arsession/ARCoachingOverlayViewDelegate.h"
#include "reality/ARView.h"

#include <memory>

namespace orvanta {

// Lays a coaching overlay over `arView`: it covers the whole view (flexible width and
// height), aims at a horizontal plane, watches the view's session and reports to
// `delegate`. The view has no list of overlays, so the caller keeps the returned overlay as
// long as the view lives.
std::shared_ptr<arsession::ARCoachingOverlayView> addCoaching(
    reality::ARView& arView, const std::shared_ptr<arsession::ARCoachingOverlayViewDelegate>& delegate);

} // namespace orvanta
