#include "screens/PictureItem.h"

#include <QPainter>

namespace orvanta {

PictureItem::PictureItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setClip(true);
}

void PictureItem::setImage(const QImage& image) {
    image_ = image;
    emit imageChanged();
    emit paintedRectChanged();
    update();
}

void PictureItem::setFill(bool fill) {
    if (fill_ == fill) return;
    fill_ = fill;
    emit fillChanged();
    emit paintedRectChanged();
    update();
}

QRectF PictureItem::paintedRect() const {
    if (image_.isNull() || width() <= 0 || height() <= 0) return {};
    // The image's size in device-independent points.
    const QSizeF picture = QSizeF(image_.size()) / image_.devicePixelRatio();
    const QSizeF scaled = picture.scaled(size(), fill_ ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio);
    return QRectF(QPointF((width() - scaled.width()) / 2, (height() - scaled.height()) / 2), scaled);
}

void PictureItem::paint(QPainter* painter) {
    if (image_.isNull()) return;
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(paintedRect(), image_);
}

void PictureItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    emit paintedRectChanged();
}

} // namespace orvanta
