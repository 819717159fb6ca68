#pragma once
// Decoded images for the Quick 3D scenes of one view. Each distinct encoded image is decoded
// once, on a worker thread, into one Quick 3D texture-data object that every texture using
// the image shares; the object exists at once and receives its pixels when they are ready,
// so a material shows its plain colours until then. Data lives as long as some user holds
// its handle.
// Thread: main thread; decoding runs on the global thread pool.

#include "import/ImportedScene.h"

#include <QObject>
#include <QPointer>

#include <map>
#include <memory>
#include <utility>

class QQuick3DObject;

namespace orvanta::render {

class ImagePixels;

class TextureCache : public QObject {
    Q_OBJECT

public:
    // Keeps the pixels of an image alive; its Quick 3D object is deleted with the last handle.
    using Handle = std::shared_ptr<ImagePixels>;

    // Data joins the scene under `resourceParent` (an object of the scene that shows it).
    explicit TextureCache(QQuick3DObject* resourceParent);
    ~TextureCache() override;

    // The pixels of `image`; decoding starts on first use.
    Handle pixels(const import::ImportedTexture& image);
    // Images whose decoding has not finished yet.
    int pendingDecodes() const { return pending_; }

signals:
    // The last pending image has been decoded (or failed to decode).
    void decodesFinished();

private:
    using Key = std::pair<const char*, qsizetype>;
    void decoded(const Key& key, const QImage& image, bool transparency);

    // The image is kept with its data so that its bytes, and so the key, stay unique.
    struct Entry {
        std::weak_ptr<ImagePixels> data;
        import::ImportedTexture image;
    };
    QPointer<QQuick3DObject> resourceParent_;
    std::map<Key, Entry> entries_;
    int pending_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace orvanta::render
