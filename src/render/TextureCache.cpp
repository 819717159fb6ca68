#include "render/TextureCache.h"

#include "core/Log.h"

#include <QQuick3DTextureData>
#include <QThreadPool>
#include <QtQuick3D/private/qquick3dtexture_p.h>

namespace orvanta::render {

TextureCache::TextureCache(QQuick3DObject* resourceParent) : resourceParent_(resourceParent) {}

TextureCache::~TextureCache() { *alive_ = false; }

TextureCache::Handle TextureCache::texture(const import::ImportedTexture& image) {
    const Key key{image.encoded.constData(), image.encoded.size()};
    if (const auto it = textures_.find(key); it != textures_.end())
        if (auto found = it->second.texture.lock()) return found;

    auto* texture = new QQuick3DTexture();
    texture->setParentItem(resourceParent_);
    texture->setGenerateMipmaps(true);
    texture->setMipFilter(QQuick3DTexture::Linear);
    // Imported texture coordinates put (0, 0) at the image's bottom-left corner, as Quick 3D
    // does for the images it loads; decoded rows come top row first, so they are flipped.
    texture->setFlipV(true);
    Handle handle(texture, [this, alive = alive_, key](QQuick3DTexture* t) {
        if (*alive) textures_.erase(key);
        if (auto* data = t->textureData()) data->deleteLater();
        t->deleteLater();
    });
    textures_[key] = Entry{handle, image};

    ++pending_;
    // The copy of `image` keeps its bytes alive while the worker reads them.
    QThreadPool::globalInstance()->start([this, alive = alive_, image, key] {
        QImage decoded = image.decode();
        if (!decoded.isNull()) decoded = std::move(decoded).convertToFormat(QImage::Format_RGBA8888);
        QMetaObject::invokeMethod(
            this, [this, alive, key, decoded] { if (*alive) this->decoded(key, decoded); }, Qt::QueuedConnection);
    });
    return handle;
}

void TextureCache::decoded(const Key& key, const QImage& image) {
    --pending_;
    if (const auto it = textures_.find(key); it != textures_.end()) {
        if (const auto texture = it->second.texture.lock()) {
            if (image.isNull()) {
                core::Log::print("Texture could not be decoded: " + it->second.image.uri);
            } else {
                auto* data = new QQuick3DTextureData();
                data->setParentItem(resourceParent_);
                data->setSize(image.size());
                data->setFormat(QQuick3DTextureData::RGBA8);
                data->setHasTransparency(image.hasAlphaChannel());
                data->setTextureData(QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
                texture->setTextureData(data);
            }
        }
    }
    if (pending_ == 0) emit decodesFinished();
}

} // namespace orvanta::render
