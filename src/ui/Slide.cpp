#include "ui/Slide.h"

#include <QQuickItem>

namespace orvanta::ui {

QPointer<QPropertyAnimation> Slide::start(QQuickItem* item, const char* coordinate, qreal from, qreal to,
                                          bool entering, std::function<void()> done) {
    auto* animation = new QPropertyAnimation(item, coordinate, item);
    animation->setDuration(durationMs);
    animation->setStartValue(from);
    animation->setEndValue(to);
    animation->setEasingCurve(entering ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
    if (done) QObject::connect(animation, &QPropertyAnimation::finished, animation, std::move(done));
    animation->start(QAbstractAnimation::DeleteWhenStopped);
    return animation;
}

} // namespace orvanta::ui
