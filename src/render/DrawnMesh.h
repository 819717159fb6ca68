#pragma once
// One mesh on screen: a Quick 3D model under a parent node, drawing the mesh's shared
// geometry with one material per part, holding the geometry and textures it uses; with an
// instance table, the one model draws every copy in one draw per part.
// Thread: main thread.

#include "reality/Material.h"
#include "render/RenderResources.h"

#include <memory>
#include <vector>

class QQuick3DModel;
class QQuick3DNode;


namespace orvanta::render {

class DrawnMesh {
public:
    // How far a flat mesh is lifted off the surface it lies on, in its own units.
    static constexpr float kFlatLift = 0.002f;

    // `materials[i]` draws part i; parts without one draw plain white. `instances`, when
    // given, places copies of the mesh in the parent's space.
    DrawnMesh(RenderResources& resources, QQuick3DNode* parent, const std::shared_ptr<const import::ImportedMesh>& mesh,
              const std::vector<reality::Material>& materials,
              const std::shared_ptr<const import::InstanceTable>& instances = nullptr);
    ~DrawnMesh();
    DrawnMesh(const DrawnMesh&) = delete;
    DrawnMesh& operator=(const DrawnMesh&) = delete;

    QQuick3DModel* model() const { return model_; }

private:
    RenderResources::GeometryHandle geometry_;
    std::vector<TextureCache::Handle> textures_;
    QQuick3DModel* model_;
};

} // namespace orvanta::render
