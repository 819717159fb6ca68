#include "import/ImportedScene.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

namespace orvanta::import {

namespace {

constexpr std::uint64_t countMax = std::numeric_limits<std::uint64_t>::max();

std::uint64_t add(std::uint64_t a, std::uint64_t b) { return a > countMax - b ? countMax : a + b; }
std::uint64_t times(std::uint64_t a, std::uint64_t b) { return b != 0 && a > countMax / b ? countMax : a * b; }

std::uint64_t drawsOf(const ImportedMesh& mesh) { return std::max<std::uint64_t>(1, mesh.subsets.size()); }

const QVector4D white(1.0f, 1.0f, 1.0f, 1.0f);

// The node at `index` and every node below it, parents first; `visit(node, toRoot)` gets each
// with its transform to the space of the walk's root's parent. Iterative, so a deep chain of
// nodes cannot exhaust the stack.
template <class Visit>
void walk(const ImportedScene& scene, int index, const QMatrix4x4& parentToSpace, Visit&& visit) {
    std::vector<std::pair<int, QMatrix4x4>> pending{{index, parentToSpace}};
    while (!pending.empty()) {
        const auto [at, parentTo] = pending.back();
        pending.pop_back();
        const ImportedNode& node = scene.nodes[static_cast<std::size_t>(at)];
        const QMatrix4x4 toSpace = parentTo * node.localTransform;
        visit(node, toSpace);
        for (auto child = node.children.rbegin(); child != node.children.rend(); ++child) pending.emplace_back(*child, toSpace);
    }
}

// Bounds of node trees, each prototype's measured once in its own space.
class BoundsOf {
public:
    explicit BoundsOf(const ImportedScene& scene) : scene_(scene) {}

    Bounds tree(int root, const QMatrix4x4& parentToSpace) {
        Bounds bounds;
        walk(scene_, root, parentToSpace, [&](const ImportedNode& node, const QMatrix4x4& toSpace) {
            for (int mesh : node.meshes) bounds.add(mesh_(mesh), toSpace);
            for (const ImportedInstances& instances : node.instances) {
                const Bounds prototype = prototype_(instances.prototype);
                for (const QMatrix4x4& transform : instances.table.transforms) bounds.add(prototype, toSpace * transform);
            }
        });
        return bounds;
    }

private:
    const Bounds& mesh_(int index) {
        auto [it, added] = meshes_.try_emplace(index);
        if (added)
            for (const QVector3D& p : scene_.meshes[static_cast<std::size_t>(index)].positions) it->second.add(p);
        return it->second;
    }
    Bounds prototype_(int root) {
        if (const auto it = prototypes_.find(root); it != prototypes_.end()) return it->second;
        const Bounds bounds = tree(root, QMatrix4x4());
        prototypes_.emplace(root, bounds);
        return bounds;
    }

    const ImportedScene& scene_;
    std::unordered_map<int, Bounds> meshes_;
    std::unordered_map<int, Bounds> prototypes_;
};

// What one copy of a node tree draws.
struct TreeCost {
    std::uint64_t triangles = 0;
    std::uint64_t drawCalls = 0;   // drawn as a tree: each node's meshes one by one
    std::uint64_t instances = 0;
    std::vector<int> meshes;       // distinct meshes, nested prototypes' included
    std::uint64_t instancedDraws = 0; // drawn by a table: one instanced model per distinct mesh
};

class CostOf {
public:
    explicit CostOf(const ImportedScene& scene) : scene_(scene) {}

    TreeCost tree(int root) {
        TreeCost cost;
        std::unordered_set<int> seen;
        const auto meet = [&](int mesh) {
            if (seen.insert(mesh).second) {
                cost.meshes.push_back(mesh);
                cost.instancedDraws = add(cost.instancedDraws, drawsOf(scene_.meshes[static_cast<std::size_t>(mesh)]));
            }
        };
        walk(scene_, root, QMatrix4x4(), [&](const ImportedNode& node, const QMatrix4x4&) {
            for (int index : node.meshes) {
                const ImportedMesh& mesh = scene_.meshes[static_cast<std::size_t>(index)];
                cost.triangles = add(cost.triangles, mesh.triangleCount());
                cost.drawCalls = add(cost.drawCalls, drawsOf(mesh));
                meet(index);
            }
            for (const ImportedInstances& instances : node.instances) {
                const TreeCost& prototype = prototype_(instances.prototype);
                const std::uint64_t copies = instances.table.size();
                cost.triangles = add(cost.triangles, times(copies, prototype.triangles));
                cost.instances = add(cost.instances, times(copies, add(1, prototype.instances)));
                cost.drawCalls = add(cost.drawCalls, prototype.instancedDraws);
                for (int mesh : prototype.meshes) meet(mesh);
            }
        });
        return cost;
    }

private:
    const TreeCost& prototype_(int root) {
        if (const auto it = prototypes_.find(root); it != prototypes_.end()) return it->second;
        TreeCost cost = tree(root);
        return prototypes_.emplace(root, std::move(cost)).first->second;
    }

    const ImportedScene& scene_;
    std::unordered_map<int, TreeCost> prototypes_;
};

// Gathers the copies of each mesh a table draws, in tables of their own.
class InstanceGatherer {
public:
    explicit InstanceGatherer(const ImportedScene& scene) : scene_(scene) {}

    void place(const ImportedInstances& instances, const QMatrix4x4& outer, const QVector4D* outerColor) {
        const InstanceTable& table = instances.table;
        walk(scene_, instances.prototype, QMatrix4x4(), [&](const ImportedNode& node, const QMatrix4x4& toPrototype) {
            for (std::size_t i = 0; i < table.size(); ++i) {
                const QMatrix4x4 toHolder = outer * table.transforms[i] * toPrototype;
                const QVector4D* color = table.colors.empty() ? nullptr : &table.colors[i];
                QVector4D mixed;
                if (color && outerColor) mixed = *color * *outerColor;
                const QVector4D* combined = color && outerColor ? &mixed : color ? color : outerColor;
                for (int mesh : node.meshes) append(mesh, toHolder, combined);
                for (const ImportedInstances& nested : node.instances) place(nested, toHolder, combined);
            }
        });
    }

    std::vector<InstancedMesh> result() {
        std::vector<InstancedMesh> meshes;
        for (auto& [mesh, table] : tables_) meshes.push_back({mesh, std::move(table)});
        return meshes;
    }

private:
    void append(int mesh, const QMatrix4x4& transform, const QVector4D* color) {
        auto it = std::find_if(tables_.begin(), tables_.end(), [&](const auto& entry) { return entry.first == mesh; });
        if (it == tables_.end()) {
            tables_.emplace_back(mesh, std::make_shared<InstanceTable>());
            it = std::prev(tables_.end());
        }
        InstanceTable& table = *it->second;
        // Colours are kept from the first copy that has one on, the copies before it white.
        if (color && table.colors.empty()) table.colors.assign(table.transforms.size(), white);
        if (color || !table.colors.empty()) table.colors.push_back(color ? *color : white);
        table.transforms.push_back(transform);
    }

    const ImportedScene& scene_;
    std::vector<std::pair<int, std::shared_ptr<InstanceTable>>> tables_; // few: one per distinct mesh
};

// Appends a copy of the tree under `from` (meshes shared) as a child of `parent`.
void copyTree(ImportedScene& scene, int from, int parent) {
    const int index = static_cast<int>(scene.nodes.size());
    ImportedNode copy = scene.nodes[static_cast<std::size_t>(from)];
    copy.parent = parent;
    copy.children.clear();
    scene.nodes.push_back(std::move(copy));
    scene.nodes[static_cast<std::size_t>(parent)].children.push_back(index);
    const std::vector<int> children = scene.nodes[static_cast<std::size_t>(from)].children;
    for (int child : children) copyTree(scene, child, index);
}

} // namespace

void Bounds::add(const QVector3D& p) {
    if (empty) {
        *this = {p, p, false};
        return;
    }
    min = {std::min(min.x(), p.x()), std::min(min.y(), p.y()), std::min(min.z(), p.z())};
    max = {std::max(max.x(), p.x()), std::max(max.y(), p.y()), std::max(max.z(), p.z())};
}

void Bounds::add(const Bounds& box, const QMatrix4x4& matrix) {
    if (box.empty) return;
    for (int corner = 0; corner < 8; ++corner)
        add(matrix.map(QVector3D(corner & 1 ? box.max.x() : box.min.x(), corner & 2 ? box.max.y() : box.min.y(),
                                 corner & 4 ? box.max.z() : box.min.z())));
}

QImage ImportedTexture::decode() const {
    QImage image = QImage::fromData(encoded);
    if (!image.isNull() || !QString::fromStdString(uri).endsWith(".tga", Qt::CaseInsensitive)) return image;
    QBuffer buffer;
    buffer.setData(encoded);
    return QImageReader(&buffer, "tga").read();
}

Bounds ImportedScene::bounds() const {
    return nodes.empty() ? Bounds{} : BoundsOf(*this).tree(0, QMatrix4x4());
}

std::size_t ImportedScene::vertexCount() const {
    std::size_t n = 0;
    for (const ImportedMesh& mesh : meshes) n += mesh.positions.size();
    return n;
}

std::size_t ImportedScene::triangleCount() const {
    std::size_t n = 0;
    for (const ImportedMesh& mesh : meshes) n += mesh.triangleCount();
    return n;
}

DrawCost ImportedScene::drawCost() const {
    if (nodes.empty()) return {};
    const TreeCost cost = CostOf(*this).tree(0);
    return {cost.triangles, cost.drawCalls, cost.instances};
}

std::vector<InstancedMesh> ImportedScene::instancedMeshes(const ImportedInstances& instances) const {
    InstanceGatherer gatherer(*this);
    gatherer.place(instances, QMatrix4x4(), nullptr);
    return gatherer.result();
}

std::size_t ImportedScene::expandInstances() {
    std::size_t copies = 0;
    std::vector<int> pending{0};
    while (!pending.empty()) {
        const int at = pending.back();
        pending.pop_back();
        const std::vector<ImportedInstances> instances = std::move(nodes[static_cast<std::size_t>(at)].instances);
        nodes[static_cast<std::size_t>(at)].instances.clear();
        std::size_t made = 0;
        for (const ImportedInstances& placed : instances) {
            for (std::size_t i = 0; i < placed.table.size(); ++i) {
                const int copy = static_cast<int>(nodes.size());
                ImportedNode node;
                node.name = nodes[static_cast<std::size_t>(at)].name + "_" + std::to_string(made++);
                node.localTransform = placed.table.transforms[i];
                node.parent = at;
                nodes.push_back(std::move(node));
                nodes[static_cast<std::size_t>(at)].children.push_back(copy);
                copyTree(*this, placed.prototype, copy);
            }
            copies += placed.table.size();
        }
        for (int child : nodes[static_cast<std::size_t>(at)].children) pending.push_back(child);
    }
    return copies;
}

} // namespace orvanta::import
