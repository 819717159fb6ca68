#include "render/TextureCache.h"

#include "core/Log.h"
#include "render/ImagePixels.h"

#include <QThreadPool>

namespace orvanta::render {

TextureCache::TextureCache(QQuick3DObject* resourceParent) : resourceParent_(resourceParent) {}

TextureCache::~TextureCache() { *alive_ = false; }

TextureCache::Handle TextureCache::pixels(const import::ImportedTexture& image) {
    const Key key{image.encoded.constData(), image.encoded.size()};
    if (const auto it = entries_.find(key); it != entries_.end())
        if (auto found = it->second.data.lock()) return found;

    auto* data = new ImagePixels();
    data->setParentItem(resourceParent_);
    Handle handle(data, [this, alive = alive_, key](ImagePixels* d) {
        if (*alive) entries_.erase(key);
        d->deleteLater();
    });
    entries_[key] = Entry{handle, image};

    ++pending_;
    // The copy of `image` keeps its bytes alive while the worker reads them.
    QThreadPool::globalInstance()->start([this, alive = alive_, image, key] {
        QImage decoded = image.decode();
        const bool transparency = decoded.hasAlphaChannel();
        if (!decoded.isNull()) decoded = std::move(decoded).convertToFormat(QImage::Format_RGBA8888);
        QMetaObject::invokeMethod(
            this, [this, alive, key, decoded, transparency] { if (*alive) this->decoded(key, decoded, transparency); },
            Qt::QueuedConnection);
    });
    return handle;
}

void TextureCache::decoded(const Key& key, const QImage& image, bool transparency) {
    --pending_;
    if (const auto it = entries_.find(key); it != entries_.end()) {
        if (const auto data = it->second.data.lock()) {
            if (image.isNull()) {
                core::Log::print("Texture could not be decoded: " + it->second.image.uri);
            } else {
                data->setImage(image, transparency);
            }
        }
    }
    if (pending_ == 0) emit decodesFinished();
}

} // namespace orvanta::render
