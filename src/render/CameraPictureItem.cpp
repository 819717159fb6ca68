#include "render/CameraPictureItem.h"

#include "render/CameraPictureTexture.h"

#include <QSGSimpleTextureNode>

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
        node->setFiltering(QSGTexture::Linear);
    }
    auto* texture = static_cast<CameraPictureTexture*>(node->texture());
    if (next_) texture->setPicture(std::move(next_));
    node->setRect(boundingRect());
    node->setSourceRect(visible_);
    // The texture uploads when the renderer binds it; a changed material makes sure it does.
    node->markDirty(QSGNode::DirtyMaterial);
    return node;
}

} // namespace orvanta::render
