#pragma once
// An item that notices every tap on itself or on any item inside it, without taking the tap
// away from them: the controls inside still get their clicks and the AR view its drags. A tap
// is a press and release that moved less than the platform's drag distance.
// Thread: main thread.

#include <QPointF>
#include <QQuickItem>

#include <optional>

namespace orvanta {

class TapArea : public QQuickItem {
    Q_OBJECT

public:
    explicit TapArea(QQuickItem* parent = nullptr);

signals:
    void tapped();

protected:
    bool childMouseEventFilter(QQuickItem* item, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void touchEvent(QTouchEvent* event) override;

private:
    // Follows one press: `released` tells whether the pointer came up near where it went down.
    void pressed(QPointF scenePosition);
    void released(QPointF scenePosition);

    std::optional<QPointF> pressedAt_;
};

} // namespace orvanta
