#include "render/ItemSnapshotRenderer.h"

#include "render/GlSupport.h"

#include <QCoreApplication>
#include <QQuickWindow>
#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta::render {

ItemSnapshotRenderer::ItemSnapshotRenderer(QQuickItem* item, QQuick3DViewport* viewport)
    : item_(item), viewport_(viewport) {}

void ItemSnapshotRenderer::renderSnapshot(const reality::ARView&, bool saveToHDR, Completion completion) {
    std::optional<QImage> image = grab(saveToHDR);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [completion = std::move(completion), image = std::move(image)] { completion(image); },
        Qt::QueuedConnection);
}

std::optional<QImage> ItemSnapshotRenderer::grab(bool saveToHDR) const {
    if (!item_ || !item_->window() || item_->width() <= 0 || item_->height() <= 0) return std::nullopt;
    QQuickWindow* window = item_->window();
    const bool hdr = saveToHDR && viewport_ && GlSupport::hasHalfFloatTargets();
    const auto format = viewport_ ? viewport_->renderFormat() : QQuickShaderEffectSource::RGBA8;
    if (hdr) viewport_->setRenderFormat(QQuickShaderEffectSource::RGBA16F);
    const QImage frame = window->grabWindow();
    if (hdr) viewport_->setRenderFormat(format);
    if (frame.isNull()) return std::nullopt;

    const qreal ratio = frame.devicePixelRatio();
    const QRectF area = item_->mapRectToScene(item_->boundingRect());
    const QRect pixels(qRound(area.x() * ratio), qRound(area.y() * ratio), qRound(area.width() * ratio),
                       qRound(area.height() * ratio));
    QImage image = frame.copy(pixels.intersected(frame.rect()));
    image.setDevicePixelRatio(ratio);
    if (hdr) image.convertTo(QImage::Format_RGBA16FPx4);
    return image;
}

} // namespace orvanta::render
