#pragma once
// A scene-graph texture that takes camera pictures one after another and uploads each into
// the same GPU texture: the texture is made once and made anew only when the picture's size
// or pixel layout changes, so the steady state uploads pixels and allocates nothing.
//
// 32-bit pictures (RGB32, ARGB32, RGBA8888 and their kin) go to the GPU as they are; other
// layouts are converted on the render thread first, which costs a copy per picture.
// The texture keeps the last uploaded picture alive until the next one has been committed,
// so a pool that recycles pictures never writes into one the GPU may still be reading.
// Thread: the scene graph's render thread (setPicture from QQuickItem::updatePaintNode, while
// the main thread waits).

#include <QImage>
#include <QSGTexture>

#include <memory>

class QRhiTexture;

namespace orvanta::render {

class CameraPictureTexture final : public QSGTexture {
    Q_OBJECT

public:
    CameraPictureTexture();
    ~CameraPictureTexture() override;

    // The next picture to upload; a later call before the upload replaces it.
    void setPicture(std::shared_ptr<const QImage> picture);

    qint64 comparisonKey() const override { return qint64(reinterpret_cast<quintptr>(this)); }
    QRhiTexture* rhiTexture() const override { return texture_; }
    QSize textureSize() const override { return size_; }
    bool hasAlphaChannel() const override { return false; }
    bool hasMipmaps() const override { return false; }
    void commitTextureOperations(QRhi* rhi, QRhiResourceUpdateBatch* resourceUpdates) override;

private:
    std::shared_ptr<const QImage> pending_;
    std::shared_ptr<const QImage> uploaded_;
    QImage converted_; // only for pictures that are not 32-bit
    QRhiTexture* texture_ = nullptr; // released through the RHI's deferred deletion
    QSize size_;
};

} // namespace orvanta::render
