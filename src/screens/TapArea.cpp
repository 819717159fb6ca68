#include "screens/TapArea.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <QTouchEvent>

#include <optional>

namespace orvanta {

TapArea::TapArea(QQuickItem* parent) : QQuickItem(parent) {
    setFiltersChildMouseEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
}

void TapArea::pressed(QPointF scenePosition) { pressedAt_ = scenePosition; }

void TapArea::released(QPointF scenePosition) {
    if (!pressedAt_) return;
    const double moved = (scenePosition - *pressedAt_).manhattanLength();
    pressedAt_.reset();
    if (moved < QGuiApplication::styleHints()->startDragDistance()) emit tapped();
}

namespace {

QPointF firstPoint(QEvent* event) { return static_cast<QPointerEvent*>(event)->points().front().scenePosition(); }

} // namespace

bool TapArea::childMouseEventFilter(QQuickItem*, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::MouseButtonPress || type == QEvent::TouchBegin) pressed(firstPoint(event));
    if (type == QEvent::MouseButtonRelease || type == QEvent::TouchEnd) released(firstPoint(event));
    return false; // the item inside handles the event as usual
}

void TapArea::mousePressEvent(QMouseEvent* event) {
    pressed(event->scenePosition());
    event->accept();
}

void TapArea::mouseReleaseEvent(QMouseEvent* event) { released(event->scenePosition()); }

void TapArea::touchEvent(QTouchEvent* event) {
    if (event->points().isEmpty()) return;
    if (event->type() == QEvent::TouchBegin) pressed(firstPoint(event));
    if (event->type() == QEvent::TouchEnd) released(firstPoint(event));
    event->accept();
}

} // namespace orvanta
