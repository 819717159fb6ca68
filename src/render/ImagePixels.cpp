#include "render/ImagePixels.h"

#include <cassert>

namespace orvanta::render {

void ImagePixels::setImage(QImage image, bool transparency) {
    assert(image.format() == QImage::Format_RGBA8888);
    image_ = std::move(image);
    setSize(image_.size());
    setFormat(RGBA8);
    setHasTransparency(transparency);
    setTextureData(QByteArray::fromRawData(reinterpret_cast<const char*>(image_.constBits()), image_.sizeInBytes()));
}

} // namespace orvanta::render
