#pragma once
// Assembles one dish as an import::ImportedScene: materials, PNG textures, meshes placed by
// nodes under one root, and small pieces scattered over an area (toppings, seeds, leaves)
// as nodes that share one mesh, which the writers keep as instances.
// Thread: any; one scene per builder.

#include "import/ImportedScene.h"

#include <QColor>
#include <QImage>
#include <QMatrix4x4>

#include <cstdint>
#include <string>

namespace orvanta::demo {

class DishScene {
public:
    explicit DishScene(std::string name);

    // A PBR material of one colour (sRGB as a picker gives it). Returns its index.
    int material(std::string name, const QColor& color, float roughness, float metallic = 0.0f);
    // A material whose base colour is `texture`, PNG-encoded into the scene.
    int texturedMaterial(std::string name, const QImage& texture, float roughness);
    // The material's alpha becomes `opacity`, blended over what is behind it.
    void makeTranslucent(int material, float opacity);

    // Adds `mesh` drawn with `material`; returns the mesh index.
    int mesh(import::ImportedMesh mesh, int material);
    // Places `mesh` under the root at `transform`.
    void place(int mesh, const QMatrix4x4& transform);
    // Places `count` copies of `mesh` at random spots of the disc of `radius` around `centre`,
    // each turned about y at random and tilted by up to `tiltDegrees`. The same seed places
    // them the same way every time.
    void scatter(int mesh, int count, const QVector3D& centre, float radius, float tiltDegrees, std::uint32_t seed);

    import::ImportedScene take() { return std::move(scene_); }

private:
    import::ImportedScene scene_;
};

} // namespace orvanta::demo
