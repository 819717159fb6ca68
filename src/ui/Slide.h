#pragma once
// The 0.3 s slide that moves a controller's view in or out: an animation of one coordinate
// of an item, which belongs to the item (it goes away with it) and deletes itself when it
// stops. `done` runs when the slide reaches its end, not when it is stopped early.
// Thread: main thread.

#include <QEasingCurve>
#include <QPointer>
#include <QPropertyAnimation>

#include <functional>

class QQuickItem;

namespace orvanta::ui {

class Slide {
public:
    static constexpr int durationMs = 300;

    // Moves `item`'s `coordinate` ("x" or "y") from `from` to `to`, easing out when it enters
    // and in when it leaves (`entering`). Returns the running animation.
    static QPointer<QPropertyAnimation> start(QQuickItem* item, const char* coordinate, qreal from, qreal to,
                                              bool entering, std::function<void()> done);
};

} // namespace orvanta::ui
