#include "render/CameraPictureTexture.h"

#include <QtGui/private/qrhi_p.h>

namespace orvanta::render {

namespace {

// The GPU layout that holds `format`'s bytes as they are, or UnknownFormat.
QRhiTexture::Format directFormat(QImage::Format format, QRhi* rhi) {
    switch (format) {
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBA8888_Premultiplied:
    case QImage::Format_RGBX8888: return QRhiTexture::RGBA8;
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        // Stored as 0xAARRGGBB words: blue first in memory on a little-endian machine.
        if (Q_BYTE_ORDER == Q_LITTLE_ENDIAN && rhi->isTextureFormatSupported(QRhiTexture::BGRA8))
            return QRhiTexture::BGRA8;
        return QRhiTexture::UnknownFormat;
    default: return QRhiTexture::UnknownFormat;
    }
}

} // namespace

CameraPictureTexture::CameraPictureTexture() {
    setFiltering(QSGTexture::Linear);
    setHorizontalWrapMode(QSGTexture::ClampToEdge);
    setVerticalWrapMode(QSGTexture::ClampToEdge);
}

CameraPictureTexture::~CameraPictureTexture() {
    if (texture_) texture_->deleteLater();
}

void CameraPictureTexture::setPicture(std::shared_ptr<const QImage> picture) {
    if (!picture || picture->isNull()) return;
    // The size is known at once, so a node can map its source rectangle before the upload.
    size_ = picture->size();
    pending_ = std::move(picture);
}

void CameraPictureTexture::commitTextureOperations(QRhi* rhi, QRhiResourceUpdateBatch* resourceUpdates) {
    if (!pending_) return;
    const QImage* pixels = pending_.get();
    QRhiTexture::Format format = directFormat(pixels->format(), rhi);
    if (format == QRhiTexture::UnknownFormat) {
        converted_ = pixels->convertToFormat(QImage::Format_RGBA8888);
        pixels = &converted_;
        format = QRhiTexture::RGBA8;
    }
    if (texture_ && (texture_->format() != format || texture_->pixelSize() != pixels->size())) {
        texture_->deleteLater();
        texture_ = nullptr;
    }
    if (!texture_) {
        texture_ = rhi->newTexture(format, pixels->size());
        if (!texture_->create()) {
            texture_->deleteLater();
            texture_ = nullptr;
            pending_.reset();
            return;
        }
    }
    resourceUpdates->uploadTexture(texture_, *pixels);
    uploaded_ = std::move(pending_);
}

} // namespace orvanta::render
