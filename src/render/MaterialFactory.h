#pragma once
// Turns the kit's materials into Quick 3D principled materials: physically based ones with
// every input they carry (base colour, metallic, roughness, normal, emissive, opacity and
// their textures), simple lit ones and unlit ones.
// Colours: the kit's QColor values are sRGB, as a platform colour is; Quick 3D takes them as
// such and converts them to linear itself. Emissive colours are linear factors in Quick 3D;
// an emissive intensity that would push a channel past white scales the colour down to
// white's level instead, so a glowing colour keeps its hue.
// Thread: main thread.

#include "reality/Material.h"
#include "render/TextureCache.h"

#include <vector>

class QQuick3DMaterial;
class QQuick3DObject;

namespace orvanta::render {

class MaterialFactory {
public:
    explicit MaterialFactory(TextureCache& textures) : textures_(textures) {}

    // A new material showing `material`, owned by `owner` (the model that draws with it). The
    // textures it uses are appended to `keep`: hold them as long as the material is shown.
    QQuick3DMaterial* make(const reality::Material& material, QQuick3DObject* owner,
                           std::vector<TextureCache::Handle>& keep) const;

    // The linear emissive factor for an sRGB `color` at `intensity`, hue kept (see above).
    static QVector3D emissiveFactor(const QColor& color, float intensity);

private:
    TextureCache& textures_;
};

} // namespace orvanta::render
