#pragma once
// Decoded textures for the Quick 3D scenes of one view. Each distinct encoded image is
// decoded once, on a worker thread, and becomes one Quick 3D texture shared by every
// material that uses it; a material shows its plain colours until its images arrive.
// A texture lives as long as some user holds its handle.
// Thread: main thread; decoding runs on the global thread pool.

#include "import/ImportedScene.h"

#include <QObject>
#include <QPointer>

#include <map>
#include <memory>
#include <utility>

class QQuick3DObject;
class QQuick3DTexture;

namespace orvanta::render {

class TextureCache : public QObject {
    Q_OBJECT

public:
    // Keeps a texture alive; its Quick 3D objects are deleted when the last handle goes.
    using Handle = std::shared_ptr<QQuick3DTexture>;

    // Textures join the scene under `resourceParent` (an object of the scene that shows them);
    // their handles own them.
    explicit TextureCache(QQuick3DObject* resourceParent);
    ~TextureCache() override;

    // The texture showing `image`; decoding starts on first use.
    Handle texture(const import::ImportedTexture& image);
    // Images whose decoding has not finished yet.
    int pendingDecodes() const { return pending_; }

signals:
    // The last pending image has been decoded (or failed to decode).
    void decodesFinished();

private:
    using Key = std::pair<const char*, qsizetype>;
    void decoded(const Key& key, const QImage& image);

    QPointer<QQuick3DObject> resourceParent_;
    // The image is kept with its texture so that its bytes, and so the key, stay unique.
    struct Entry {
        std::weak_ptr<QQuick3DTexture> texture;
        import::ImportedTexture image;
    };
    std::map<Key, Entry> textures_;
    int pending_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

} // namespace orvanta::render
