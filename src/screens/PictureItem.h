#pragma once
// Draws an in-memory picture (a snapshot) in a QML layout, scaled to fit inside the item or
// to fill it (cropped), keeping its aspect ratio.
// Thread: main thread.

#include <QImage>
#include <QQuickPaintedItem>

namespace orvanta {

class PictureItem : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
    Q_PROPERTY(bool fill READ fill WRITE setFill NOTIFY fillChanged)
    // The drawn picture's rectangle inside the item, for layouts that frame it.
    Q_PROPERTY(QRectF paintedRect READ paintedRect NOTIFY paintedRectChanged)

public:
    explicit PictureItem(QQuickItem* parent = nullptr);

    const QImage& image() const { return image_; }
    void setImage(const QImage& image);
    bool fill() const { return fill_; }
    void setFill(bool fill);
    QRectF paintedRect() const;

    void paint(QPainter* painter) override;

signals:
    void imageChanged();
    void fillChanged();
    void paintedRectChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    QImage image_;
    bool fill_ = false;
};

} // namespace orvanta
