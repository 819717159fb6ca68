#include "render/CoachingOverlayItem.h"

#include <QPainter>
#include <QPainterPath>

namespace orvanta::render {

CoachingOverlayItem::CoachingOverlayItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void CoachingOverlayItem::paint(QPainter* painter) {
    const QRectF area = boundingRect();
    painter->fillRect(area, QColor(0, 0, 0, 110));
    const qreal unit = std::min(area.width(), area.height()) / 12.0;
    const QPointF centre = area.center() - QPointF(0, unit);

    // A surface seen at an angle, and a device held over it.
    QPainterPath surface;
    surface.moveTo(centre + QPointF(-2.6 * unit, 1.6 * unit));
    surface.lineTo(centre + QPointF(2.6 * unit, 1.6 * unit));
    surface.lineTo(centre + QPointF(1.8 * unit, 0.4 * unit));
    surface.lineTo(centre + QPointF(-1.8 * unit, 0.4 * unit));
    surface.closeSubpath();
    painter->setPen(QPen(QColor(255, 255, 255, 220), unit * 0.12));
    painter->setBrush(QColor(255, 255, 255, 40));
    painter->drawPath(surface);
    painter->setBrush(QColor(255, 255, 255, 230));
    painter->setPen(Qt::NoPen);
    const QRectF device(centre.x() - 0.55 * unit, centre.y() - 2.2 * unit, 1.1 * unit, 2.0 * unit);
    painter->drawRoundedRect(device, unit * 0.2, unit * 0.2);

    QFont font = painter->font();
    font.setPixelSize(int(std::max<qreal>(12.0, unit * 0.55)));
    font.setWeight(QFont::DemiBold);
    painter->setFont(font);
    painter->setPen(Qt::white);
    const QRectF text(area.left() + unit, centre.y() + 2.2 * unit, area.width() - 2 * unit, 2 * unit);
    painter->drawText(text, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, QString::fromUtf8(kGuidance));
}

} // namespace orvanta::render
