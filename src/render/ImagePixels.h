#pragma once
// Decoded pixels handed to Quick 3D without a copy: the texture data is a view over an image
// this object owns, so the pixels exist once in memory until they reach the GPU.
// Thread: main thread (a Quick 3D object).

#include <QImage>
#include <QQuick3DTextureData>

namespace orvanta::render {

class ImagePixels : public QQuick3DTextureData {
    Q_OBJECT

public:
    // `image` must be RGBA8888. `transparency`: whether its source had an alpha channel.
    void setImage(QImage image, bool transparency);

private:
    QImage image_;
};

} // namespace orvanta::render
