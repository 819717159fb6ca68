#include "render/ItemSnapshotRenderer.h"

#include "render/GlSupport.h"

#include <QCoreApplication>
#include <QQuickItemGrabResult>
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
    if (!item_ || !item_->window() || !item_->window()->isVisible() || item_->width() <= 0 || item_->height() <= 0)
        return std::nullopt;
    QQuickWindow* window = item_->window();
    const qreal ratio = window->effectiveDevicePixelRatio();
    const bool hdr = saveToHDR && viewport_ && GlSupport::hasHalfFloatTargets();
    const auto format = viewport_ ? viewport_->renderFormat() : QQuickShaderEffectSource::RGBA8;
    if (hdr) viewport_->setRenderFormat(QQuickShaderEffectSource::RGBA16F);
    // The item's drawing is taken while the window draws its next frame; drawing one now,
    // without showing it, makes that happen before this call returns.
    const QSharedPointer<QQuickItemGrabResult> result =
        item_->grabToImage(QSize(qRound(item_->width() * ratio), qRound(item_->height() * ratio)));
    if (result) window->grabWindow();
    if (hdr) viewport_->setRenderFormat(format);
    if (!result || result->image().isNull()) return std::nullopt;

    QImage image = result->image();
    image.setDevicePixelRatio(ratio);
    if (hdr) image.convertTo(QImage::Format_RGBA16FPx4);
    return image;
}

} // namespace orvanta::render
