#pragma once
// Draws the latest camera picture over its whole rectangle, showing the part of the picture
// given with it (the aspect-filled crop the session camera projects through), never warped.
// A new picture costs a shared reference here and one upload into a reused GPU texture on the
// render thread (see CameraPictureTexture). A picture shown pixel for pixel (its visible part
// as large as the item in device pixels, on whole pixels) is sampled without filtering: there
// it is the same picture linear filtering gives, for less work on a software rasteriser.
// Thread: main thread.

#include <QImage>
#include <QQuickItem>

#include <memory>

namespace orvanta::render {

class CameraPictureItem final : public QQuickItem {
    Q_OBJECT

public:
    explicit CameraPictureItem(QQuickItem* parent = nullptr);

    // Shows `picture` (null keeps the current one), `visible` being the rectangle of it, in
    // its pixels, that fills the item.
    void show(std::shared_ptr<const QImage> picture, const QRectF& visible);

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

private:
    bool pixelForPixel() const;

    std::shared_ptr<const QImage> next_;
    QRectF visible_;
    bool hasPicture_ = false;
};

} // namespace orvanta::render
