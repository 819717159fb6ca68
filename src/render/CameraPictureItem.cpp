#include "render/CameraPictureItem.h"

#include "render/CameraPictureTexture.h"

#include <QQuickWindow>
#include <QSGSimpleTextureNode>

#include <cmath>

namespace orvanta::render {

CameraPictureItem::CameraPictureItem(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents, true); }

void CameraPictureItem::show(std::shared_ptr<const QImage> picture, const QRectF& visible) {
    if (!picture && visible == visible_) return;
    if (picture) {
        next_ = std::move(picture);
        hasPicture_ = true;
    }
    visible_ = visible;
    update();
}

bool CameraPictureItem::pixelForPixel() const {
    // Where the item lands in the window, in device pixels, with any scaling above it.
    const qreal ratio = window() ? window()->effectiveDevicePixelRatio() : 1.0;
    const QRectF onScreen = mapRectToScene(boundingRect());
    const auto whole = [](qreal v) { return std::abs(v - std::round(v)) < 1e-3; };
    return std::abs(onScreen.width() * ratio - visible_.width()) < 1e-3 &&
           std::abs(onScreen.height() * ratio - visible_.height()) < 1e-3 && whole(visible_.x()) && whole(visible_.y()) &&
           whole(onScreen.x() * ratio) && whole(onScreen.y() * ratio);
}

QSGNode* CameraPictureItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    if (!hasPicture_ || width() <= 0 || height() <= 0) {
        delete old;
        return nullptr;
    }
    auto* node = static_cast<QSGSimpleTextureNode*>(old);
    if (!node) {
        node = new QSGSimpleTextureNode();
        node->setOwnsTexture(true);
        node->setTexture(new CameraPictureTexture());
    }
    auto* texture = static_cast<CameraPictureTexture*>(node->texture());
    if (next_) texture->setPicture(std::move(next_));
    node->setRect(boundingRect());
    node->setSourceRect(visible_);
    node->setFiltering(pixelForPixel() ? QSGTexture::Nearest : QSGTexture::Linear);
    // The texture uploads when the renderer binds it; a changed material makes sure it does.
    node->markDirty(QSGNode::DirtyMaterial);
    return node;
}

} // namespace orvanta::render
