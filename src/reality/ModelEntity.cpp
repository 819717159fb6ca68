#include "reality/ModelEntity.h"

#include <cassert>
#include <optional>

namespace orvanta::reality {

ModelEntity::ModelEntity(std::shared_ptr<const MeshResource> mesh, std::vector<Material> materials, std::string name)
    : Entity(std::move(name)) {
    setModel(ModelComponent{std::move(mesh), std::move(materials)});
}

ModelComponent ModelEntity::modelComponent(const std::shared_ptr<const import::ImportedScene>& scene, int meshIndex) {
    assert(scene && meshIndex >= 0 && std::size_t(meshIndex) < scene->meshes.size());
    const import::ImportedMesh& mesh = scene->meshes[std::size_t(meshIndex)];
    ModelComponent component;
    // Shares the scene's mesh: the pointer keeps the whole scene alive.
    component.mesh = std::make_shared<const MeshResource>(std::shared_ptr<const import::ImportedMesh>(scene, &mesh));
    const auto materialFor = [&](int index) -> Material {
        if (index >= 0 && std::size_t(index) < scene->materials.size())
            return PhysicallyBasedMaterial::fromImported(*scene, scene->materials[std::size_t(index)]);
        return SimpleMaterial{};
    };
    if (mesh.subsets.empty())
        component.materials.push_back(materialFor(-1));
    for (const auto& subset : mesh.subsets) component.materials.push_back(materialFor(subset.material));
    return component;
}

std::shared_ptr<ModelEntity> ModelEntity::fromImportedScene(std::shared_ptr<const import::ImportedScene> scene) {
    assert(scene && !scene->nodes.empty());
    // Mesh components are made once per mesh, so nodes that share a mesh share its resource.
    std::vector<std::optional<ModelComponent>> components(scene->meshes.size());
    const auto componentFor = [&](int meshIndex) {
        auto& slot = components[std::size_t(meshIndex)];
        if (!slot) slot = modelComponent(scene, meshIndex);
        return *slot;
    };

    // Prototype trees are reached through the instances that place them, never as entities.
    std::vector<bool> inTree(scene->nodes.size(), false);
    inTree[0] = true;
    for (std::vector<int> pending{0}; !pending.empty();) {
        const int at = pending.back();
        pending.pop_back();
        for (const int child : scene->nodes[std::size_t(at)].children) {
            assert(child > 0 && std::size_t(child) < inTree.size());
            inTree[std::size_t(child)] = true;
            pending.push_back(child);
        }
    }

    std::vector<std::shared_ptr<ModelEntity>> entities(scene->nodes.size());
    for (std::size_t i = 0; i < scene->nodes.size(); ++i) {
        if (!inTree[i]) continue;
        const auto& node = scene->nodes[i];
        auto entity = std::make_shared<ModelEntity>(node.name);
        entity->setTransform(Transform::fromMatrix(node.localTransform));
        if (node.meshes.size() == 1) entity->setModel(componentFor(node.meshes[0]));
        entities[i] = std::move(entity);
    }
    // Linked without recursion, so a deep node chain cannot exhaust the stack.
    for (std::size_t i = 0; i < scene->nodes.size(); ++i) {
        if (!inTree[i]) continue;
        const auto& node = scene->nodes[i];
        for (const int child : node.children) entities[i]->addChild(entities[std::size_t(child)]);
        if (node.meshes.size() > 1) {
            for (const int meshIndex : node.meshes) {
                auto part = std::make_shared<ModelEntity>(scene->meshes[std::size_t(meshIndex)].name);
                part->setModel(componentFor(meshIndex));
                entities[i]->addChild(part);
            }
        }
        for (const auto& instances : node.instances) {
            for (const auto& instanced : scene->instancedMeshes(instances)) {
                auto part = std::make_shared<ModelEntity>(scene->meshes[std::size_t(instanced.mesh)].name);
                ModelComponent component = componentFor(instanced.mesh);
                component.instances = std::make_shared<const MeshInstances>(instanced.table, component.mesh->bounds());
                part->setModel(std::move(component));
                entities[i]->addChild(part);
            }
        }
    }
    return entities.front();
}

} // namespace orvanta::reality
