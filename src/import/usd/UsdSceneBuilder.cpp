#include "import/usd/UsdSceneBuilder.h"

#include "import/usd/CrateFormatError.h"
#include "import/usd/UsdMaterialReader.h"
#include "import/usd/UsdSceneMesh.h"
#include "import/usd/UsdStageValue.h"
#include "import/usd/UsdXformOps.h"

#include <QQuaternion>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

namespace orvanta::import::usd {

namespace {

constexpr double defaultMetersPerUnit = 0.01;
// Point instancers whose prototypes hold further point instancers, this many deep at most.
constexpr int maxInstancerDepth = 32;

bool isNodeType(const std::string& type) {
    return type.empty() || type == "Xform" || type == "Scope" || type == "SkelRoot" || type == "Mesh" || type == "PointInstancer";
}

// The transform of point instance `i`: scale, then orientation (a quaternion, stored
// imaginary part first as crate files do), then position; a missing or short stream leaves
// its part out.
QMatrix4x4 instanceTransform(const UsdStageValue::Floats& positions, const UsdStageValue::Floats& orientations,
                             const UsdStageValue::Floats& scales, std::size_t i) {
    QMatrix4x4 m;
    if (positions.size() >= 3 * (i + 1)) m.translate(positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]);
    if (orientations.size() >= 4 * (i + 1))
        m.rotate(QQuaternion(orientations[4 * i + 3], orientations[4 * i], orientations[4 * i + 1], orientations[4 * i + 2]).normalized());
    if (scales.size() >= 3 * (i + 1)) m.scale(scales[3 * i], scales[3 * i + 1], scales[3 * i + 2]);
    return m;
}

std::optional<std::string> tokenOf(const UsdStage::Prim& prim, const std::string& name) {
    const UsdStage::Property* property = prim.property(name);
    return property ? UsdStageValue::text(property->value()) : std::nullopt;
}

QMatrix4x4 stageToYUpMetres(const Layer& root) {
    const Spec* metadata = root.spec("/");
    double metersPerUnit = defaultMetersPerUnit;
    if (const auto authored = UsdStageValue::number(metadata ? metadata->field("metersPerUnit") : nullptr);
        authored && std::isfinite(*authored) && *authored > 0)
        metersPerUnit = *authored;
    const auto upAxis = UsdStageValue::text(metadata ? metadata->field("upAxis") : nullptr);
    QMatrix4x4 m;
    m.scale(static_cast<float>(metersPerUnit));
    if (upAxis && *upAxis == "Z") m.rotate(-90.0f, 1.0f, 0.0f, 0.0f);  // +Z becomes +Y, +Y becomes -Z
    return m;
}

class Builder {
public:
    explicit Builder(UsdStage& stage) : stage_(stage), materials_(stage, scene_), onPath_(stage.prims().size(), false) {}

    ImportedScene run() {
        ImportedNode root;
        const Spec* metadata = stage_.rootLayer().spec("/");
        root.name = UsdStageValue::text(metadata ? metadata->field("defaultPrim") : nullptr).value_or("root");
        root.localTransform = stageToYUpMetres(stage_.rootLayer());
        scene_.nodes.push_back(std::move(root));
        visitChildren(stage_.prims().front(), 0);
        return std::move(scene_);
    }

private:
    const UsdStage::Prim& prim(int index) const { return stage_.prims()[static_cast<std::size_t>(index)]; }

    static bool drawn(const UsdStage::Prim& p) {
        return p.active && p.specifier == "def" && isNodeType(p.typeName) && tokenOf(p, "visibility") != "invisible";
    }

    static QMatrix4x4 transformOf(const UsdStage::Prim& p) {
        return p.typeName.empty() || p.typeName == "Scope" ? QMatrix4x4() : UsdXformOps::localTransform(p);
    }

    // A new node for `p` under `parentNode`, or without a parent (a prototype's root) for -1.
    int makeNode(const UsdStage::Prim& p, int parentNode, const QMatrix4x4& transform) {
        const int nodeIndex = static_cast<int>(scene_.nodes.size());
        ImportedNode node;
        node.name = p.name;
        node.parent = parentNode;
        node.localTransform = transform;
        scene_.nodes.push_back(std::move(node));
        if (parentNode >= 0) scene_.nodes[static_cast<std::size_t>(parentNode)].children.push_back(nodeIndex);
        return nodeIndex;
    }

    // The node of prim `primIndex` under `parentNode` (-1: a prototype's root), or -1 when the
    // prim is not drawn.
    int visit(int primIndex, int parentNode) {
        const UsdStage::Prim& p = prim(primIndex);
        if (!drawn(p)) return -1;
        const int nodeIndex = makeNode(p, parentNode, transformOf(p));
        // Instanceable prims composed from the same arcs share one prototype: the first is
        // built, the others copy its nodes and share its meshes.
        const std::string prototype = instancePrototype(p);
        if (!prototype.empty()) {
            if (const auto it = instances_.find(prototype); it != instances_.end()) {
                copyNodes(it->second, nodeIndex);
                return nodeIndex;
            }
        }
        fill(primIndex, nodeIndex);
        if (!prototype.empty()) instances_.emplace(prototype, nodeIndex);
        return nodeIndex;
    }

    // Gives node `nodeIndex` what prim `primIndex` draws: its mesh, its point instances, the
    // nodes of its children.
    void fill(int primIndex, int nodeIndex) {
        const UsdStage::Prim& p = prim(primIndex);
        const PathMark mark(onPath_, primIndex);
        if (p.typeName == "PointInstancer") {
            addPointInstances(p, nodeIndex);
            return;
        }
        if (p.typeName == "Mesh") {
            addMesh(p, nodeIndex);
            stage_.releaseArrays(primIndex);
        }
        visitChildren(p, nodeIndex);
    }

    // Children that are instanceable prims of one prototype, two or more side by side, become
    // one instance table of the node; the rest become its child nodes.
    void visitChildren(const UsdStage::Prim& p, int nodeIndex) {
        std::unordered_map<std::string, int> uses;
        for (int child : p.children)
            if (drawn(prim(child)))
                if (std::string key = instancePrototype(prim(child)); !key.empty()) ++uses[std::move(key)];
        for (int child : p.children) {
            if (!uses.empty() && drawn(prim(child)))
                if (const std::string key = instancePrototype(prim(child)); !key.empty() && uses[key] > 1) {
                    addInstance(child, key, nodeIndex);
                    continue;
                }
            visit(child, nodeIndex);
        }
    }

    // Places instanceable prim `primIndex` in node `holder`'s table for its prototype, whose
    // nodes are built on first use.
    void addInstance(int primIndex, const std::string& key, int holder) {
        const UsdStage::Prim& p = prim(primIndex);
        auto [it, added] = tablePrototypes_.try_emplace(key, -1);
        if (added) {
            it->second = makeNode(p, -1, QMatrix4x4());
            if (const auto built = instances_.find(key); built != instances_.end()) {
                copyNodes(built->second, it->second);
            } else {
                fill(primIndex, it->second);
                instances_.emplace(key, it->second);
            }
        }
        tableFor(holder, it->second).transforms.push_back(transformOf(p));
    }

    InstanceTable& tableFor(int holder, int prototype) {
        auto& instances = scene_.nodes[static_cast<std::size_t>(holder)].instances;
        const auto it = std::find_if(instances.begin(), instances.end(),
                                     [&](const ImportedInstances& entry) { return entry.prototype == prototype; });
        if (it != instances.end()) return it->table;
        instances.push_back({prototype, {}});
        return instances.back().table;
    }

    // A key naming the arcs an instanceable prim is composed from (its opinions besides
    // its own spec); empty for prims that are not instanceable or bring in nothing.
    static std::string instancePrototype(const UsdStage::Prim& p) {
        const Value* instanceable = p.field("instanceable");
        if (!instanceable || !instanceable->get<bool>() || !*instanceable->get<bool>() || p.opinions.size() < 2) return {};
        std::string key = p.typeName;
        for (std::size_t i = 1; i < p.opinions.size(); ++i) key += "|" + std::to_string(reinterpret_cast<std::uintptr_t>(p.opinions[i].spec));
        return key;
    }

    // Gives node `to` the meshes, the instance tables and, recursively, copies of the children
    // of node `from`.
    void copyNodes(int from, int to) {
        scene_.nodes[static_cast<std::size_t>(to)].meshes = scene_.nodes[static_cast<std::size_t>(from)].meshes;
        scene_.nodes[static_cast<std::size_t>(to)].instances = scene_.nodes[static_cast<std::size_t>(from)].instances;
        const std::vector<int> children = scene_.nodes[static_cast<std::size_t>(from)].children;
        for (int child : children) {
            ImportedNode copy = scene_.nodes[static_cast<std::size_t>(child)];
            copy.parent = to;
            copy.children.clear();
            const int index = static_cast<int>(scene_.nodes.size());
            scene_.nodes.push_back(std::move(copy));
            scene_.nodes[static_cast<std::size_t>(to)].children.push_back(index);
            copyNodes(child, index);
        }
    }

    // One table entry per instance of `p`, placed by its positions, orientations and scales
    // and coloured by a per-instance displayColor, in a table per prototype; each prototype's
    // nodes are built once, on first use.
    void addPointInstances(const UsdStage::Prim& p, int nodeIndex) {
        const UsdStage::Property* prototypes = p.property("prototypes");
        const auto floats = [&](const char* name, int width) {
            const UsdStage::Property* property = p.property(name);
            return UsdStageValue::floats(property ? property->value() : nullptr, width);
        };
        const UsdStage::Property* indicesProperty = p.property("protoIndices");
        const Value* indicesValue = indicesProperty ? indicesProperty->value() : nullptr;
        const IntArray* indices = indicesValue ? indicesValue->get<IntArray>() : nullptr;
        if (!prototypes || !indices) return;
        IntArray::Narrow scratch;
        const auto protoIndices = indices->narrow(scratch);
        const auto positions = floats("positions", 3), orientations = floats("orientations", 4), scales = floats("scales", 3);
        const auto colors = floats("primvars:displayColor", 3);
        const bool coloured = colors.size() == 3 * protoIndices.size();
        constexpr int unbuilt = -2, notDrawn = -1;
        std::vector<int> prototypeRoots(prototypes->targets.size(), unbuilt);
        for (std::size_t i = 0; i < protoIndices.size(); ++i) {
            const auto proto = static_cast<std::size_t>(protoIndices[i]);
            if (protoIndices[i] < 0 || proto >= prototypes->targets.size()) continue;
            int& root = prototypeRoots[proto];
            if (root == unbuilt) {
                const UsdStage::Prim* prototype = stage_.prim(prototypes->targets[proto]);
                root = prototype ? prototypeRoot(p, static_cast<int>(prototype - stage_.prims().data())) : notDrawn;
            }
            if (root == notDrawn) continue;
            InstanceTable& table = tableFor(nodeIndex, root);
            table.transforms.push_back(instanceTransform(positions, orientations, scales, i));
            if (coloured) table.colors.emplace_back(colors[3 * i], colors[3 * i + 1], colors[3 * i + 2], 1.0f);
        }
    }

    // The root of prototype prim `primIndex`'s tree, built on first use: every instancer that
    // names the prim places the same tree (a mesh prim's arrays are gone once it is built).
    int prototypeRoot(const UsdStage::Prim& instancer, int primIndex) {
        if (const auto it = prototypeRoots_.find(primIndex); it != prototypeRoots_.end()) return it->second;
        const int root = buildPrototype(instancer, primIndex);
        prototypeRoots_.emplace(primIndex, root);
        return root;
    }

    // Builds the prototype prim `primIndex` of instancer `instancer` as a tree of its own: its
    // root node, or -1 when the prim is not drawn. A prototype that is being built already (the instancer itself, one of the prims it lies
    // in, or an instancer that leads back to it) would hold itself for ever: that is refused.
    int buildPrototype(const UsdStage::Prim& instancer, int primIndex) {
        if (onPath_[static_cast<std::size_t>(primIndex)])
            throw CrateFormatError("instancing cycle: the point instancer " + instancer.path + " has " +
                                   prim(primIndex).path + " as a prototype, which holds the instancer itself");
        if (instancerDepth_ >= maxInstancerDepth)
            throw CrateFormatError("point instancers nested more than " + std::to_string(maxInstancerDepth) + " deep at " +
                                       instancer.path,
                                   ImportErrorCode::limitExceeded);
        ++instancerDepth_;
        const int root = visit(primIndex, -1);
        --instancerDepth_;
        return root;
    }

    // Marks a prim as being built for as long as this object lives.
    class PathMark {
    public:
        PathMark(std::vector<bool>& onPath, int primIndex) : onPath_(onPath), index_(static_cast<std::size_t>(primIndex)) {
            onPath_[index_] = true;
        }
        ~PathMark() { onPath_[index_] = false; }
        PathMark(const PathMark&) = delete;
        PathMark& operator=(const PathMark&) = delete;

    private:
        std::vector<bool>& onPath_;
        std::size_t index_;
    };

    // The material a binding on `p` itself names: nullopt when it has no binding.
    std::optional<int> directBinding(const UsdStage::Prim& p) {
        for (const char* name : {"material:binding", "material:binding:preview"}) {
            const UsdStage::Property* binding = p.property(name);
            if (binding && !binding->targets.empty()) return materials_.material(binding->targets.front());
        }
        return std::nullopt;
    }

    int inheritedBinding(const UsdStage::Prim& p) {
        for (const UsdStage::Prim* at = &p; at; at = at->parent >= 0 ? &prim(at->parent) : nullptr) {
            if (const auto material = directBinding(*at)) return *material;
        }
        return -1;
    }

    // The coordinate sets the mesh's materials read; without any, `st` or the first
    // texCoord2 primvar is set 0.
    UsdMaterialReader::TexCoordPrimvars texCoordPrimvars(const UsdStage::Prim& mesh, int material,
                                                         const std::vector<UsdSceneMesh::FaceSubset>& subsets) {
        UsdMaterialReader::TexCoordPrimvars names = materials_.texCoordPrimvars(material);
        for (const auto& subset : subsets) {
            if (!names[0].empty()) break;
            names = materials_.texCoordPrimvars(subset.material);
        }
        if (!names[0].empty()) return names;
        if (mesh.property("primvars:st")) return {"st", ""};
        for (const UsdStage::Property& property : mesh.properties) {
            const auto type = UsdStageValue::text(property.field("typeName"));
            if (property.name.starts_with("primvars:") && type && type->starts_with("texCoord2") &&
                !property.name.ends_with(":indices"))
                return {property.name.substr(9), ""};
        }
        return {};
    }

    void addMesh(const UsdStage::Prim& mesh, int nodeIndex) {
        const int material = inheritedBinding(mesh);
        std::vector<UsdSceneMesh::FaceSubset> subsets;
        for (int child : mesh.children) {
            const UsdStage::Prim& subset = prim(child);
            if (subset.typeName != "GeomSubset" || !subset.active || subset.specifier != "def") continue;
            if (tokenOf(subset, "elementType").value_or("face") != "face") continue;
            const auto binding = directBinding(subset);
            if (!binding && tokenOf(subset, "familyName") != "materialBind") continue;
            const UsdStage::Property* indices = subset.property("indices");
            const Value* value = indices ? indices->value() : nullptr;
            const IntArray* faces = value ? value->get<IntArray>() : nullptr;
            IntArray::Narrow scratch;
            const auto faceIndices = faces ? faces->narrow(scratch) : std::span<const std::int32_t>{};
            subsets.push_back({{faceIndices.begin(), faceIndices.end()}, binding.value_or(material)});
        }
        // displayColor stands in for a material, so a bound material's own colours win unless
        // it reads displayColor itself.
        const auto showsColours = [&](int m) { return m < 0 || materials_.readsDisplayColor(m); };
        const bool colours = showsColours(material) &&
                             std::all_of(subsets.begin(), subsets.end(), [&](const auto& s) { return showsColours(s.material); });
        auto built = UsdSceneMesh::build(mesh, {texCoordPrimvars(mesh, material, subsets), colours}, material, subsets);
        if (!built) return;
        scene_.nodes[static_cast<std::size_t>(nodeIndex)].meshes.push_back(static_cast<int>(scene_.meshes.size()));
        scene_.meshes.push_back(std::move(*built));
    }

    UsdStage& stage_;
    ImportedScene scene_;
    UsdMaterialReader materials_;
    std::unordered_map<std::string, int> instances_;  // prototype key -> the node built for it
    std::unordered_map<std::string, int> tablePrototypes_; // prototype key -> the root instance tables place
    std::unordered_map<int, int> prototypeRoots_;          // point instancers' prototype prim -> its root, or -1
    std::vector<bool> onPath_;                         // per prim: being built right now
    int instancerDepth_ = 0;                           // prototypes being built inside prototypes
};

} // namespace

ImportedScene UsdSceneBuilder::build(UsdStage&& stage) { return Builder(stage).run(); }

} // namespace orvanta::import::usd
