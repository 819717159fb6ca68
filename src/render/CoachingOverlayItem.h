#pragma once
// The coaching overlay as drawn over the AR view while it is active: a dim veil with a
// device over a surface and the guidance text, covering the whole view.
// Thread: main thread.

#include <QQuickPaintedItem>

namespace orvanta::render {

class CoachingOverlayItem : public QQuickPaintedItem {
    Q_OBJECT

public:
    static constexpr const char* kGuidance = "Move your device slowly to find a flat surface";

    explicit CoachingOverlayItem(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) override;
};

} // namespace orvanta::render
