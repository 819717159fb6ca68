#pragma once
// Synthetic touch input for an AR view: the phase and the location of every finger on the
// screen at that moment (after the change, so an `ended` event lists the fingers left).
// Units: view points, origin top-left, y down. Thread: a value type.

#include <QPointF>

#include <vector>

namespace orvanta::reality {

struct TouchEvent {
    enum class Phase { began, moved, ended, cancelled };
    Phase phase = Phase::began;
    std::vector<QPointF> touches;
};

} // namespace orvanta::reality
