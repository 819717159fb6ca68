#pragma once
// An entity that shows a model, and the adapter from an imported scene to an entity tree.
// Thread: every method on the main thread (fromImportedScene may run on any thread, as long
// as the result is handed to the main thread before use).

#include "import/ImportedScene.h"
#include "reality/Entity.h"
#include "reality/ModelComponent.h"

#include <memory>

namespace orvanta::reality {

class ModelEntity : public Entity {
public:
    explicit ModelEntity(std::string name = {}) : Entity(std::move(name)) {}
    ModelEntity(std::shared_ptr<const MeshResource> mesh, std::vector<Material> materials, std::string name = {});

    // One ModelEntity per node of `scene`, the tree mirroring the node tree: the result is the
    // root node, and children()[i] of an entity is the entity of node.children[i]. Each entity
    // carries its node's name and local transform (split into translation, rotation and scale).
    // A node with one mesh carries that mesh's model component itself; a node with several
    // meshes gets one child ModelEntity per mesh (named after the mesh), after its node children.
    // A node with instance tables gets, after those, one child ModelEntity per mesh each table
    // draws (named after the mesh), whose model draws the mesh at every copy. Prototype trees
    // get no entities of their own.
    // Meshes and texture bytes are shared with `scene`, not copied.
    // Contract: `scene` is non-null and has at least one node.
    static std::shared_ptr<ModelEntity> fromImportedScene(std::shared_ptr<const import::ImportedScene> scene);

    // The model component for mesh `meshIndex` of `scene`: one material per subset, the
    // imported material or, for subsets without one, a plain white SimpleMaterial.
    static ModelComponent modelComponent(const std::shared_ptr<const import::ImportedScene>& scene, int meshIndex);
};

} // namespace orvanta::reality
