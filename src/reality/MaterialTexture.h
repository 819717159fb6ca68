#pragma once
// A texture that one input of a material reads: the image, still encoded, and how it is
// sampled (which channel, which texture-coordinate set, the coordinate transform, wrap
// modes, colour space, scale and bias; the reference's texture index is not used).
// Thread: a value type (the image bytes are shared, not copied).

#include "import/ImportedScene.h"

namespace orvanta::reality {

struct MaterialTexture {
    import::ImportedTexture image;
    import::ImportedTextureRef sampling;

    // `image` read as `channel` with default sampling.
    static MaterialTexture of(import::ImportedTexture image,
                              import::TextureChannel channel = import::TextureChannel::rgb) {
        import::ImportedTextureRef sampling;
        sampling.channel = channel;
        return {std::move(image), sampling};
    }
};

} // namespace orvanta::reality
