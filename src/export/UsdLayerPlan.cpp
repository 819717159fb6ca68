#include "export/UsdLayerPlan.h"

#include <QBuffer>
#include <QImage>

#include <algorithm>
#include <map>
#include <set>

namespace orvanta::exporter {

namespace {

using namespace import;

// A valid, sibling-unique prim name made from `wanted`.
std::string primName(const std::string& wanted, std::set<std::string>& taken) {
    std::string name;
    for (char c : wanted) name += (std::isalnum(static_cast<unsigned char>(c)) || c == '_') ? c : '_';
    if (name.empty() || std::isdigit(static_cast<unsigned char>(name[0]))) name = "_" + name;
    std::string unique = name;
    for (int n = 1; !taken.insert(unique).second; ++n) unique = name + "_" + std::to_string(n);
    return unique;
}

const char* outputOf(TextureChannel channel) {
    switch (channel) {
    case TextureChannel::r: return "outputs:r";
    case TextureChannel::g: return "outputs:g";
    case TextureChannel::b: return "outputs:b";
    case TextureChannel::a: return "outputs:a";
    case TextureChannel::rgb: case TextureChannel::rgba: break;
    }
    return "outputs:rgb";
}

const char* wrapToken(TextureWrap wrap) {
    switch (wrap) {
    case TextureWrap::repeat: return "repeat";
    case TextureWrap::clamp: return "clamp";
    case TextureWrap::mirror: return "mirror";
    case TextureWrap::black: break;
    }
    return "black";
}

const char* colorSpaceToken(TextureColorSpace space) {
    switch (space) {
    case TextureColorSpace::srgb: return "sRGB";
    case TextureColorSpace::raw: return "raw";
    case TextureColorSpace::automatic: break;
    }
    return "auto";
}

bool startsWith(const QByteArray& bytes, const char* signature, int size) {
    return bytes.size() >= size && std::equal(signature, signature + size, bytes.constData());
}

class Planner {
public:
    explicit Planner(const ImportedScene& scene) : scene_(scene) {}

    UsdLayerPlan run() {
        std::set<std::string> roots;
        const std::string rootName = primName(scene_.nodes.empty() || scene_.nodes[0].name.empty() ? "Root" : scene_.nodes[0].name, roots);
        plan_.defaultPrim = rootName;
        const int root = addPrim(-1, rootName, "Xform");
        // Material names are settled first, so bindings can name them; the materials are
        // planned last, once the meshes have said which of them show vertex colours.
        if (!scene_.materials.empty()) {
            materialsScope_ = addPrim(root, childName(root, "Materials"), "Scope");
            for (const ImportedMaterial& m : scene_.materials)
                materialPaths_.push_back(prim(materialsScope_).path + "/" + childName(materialsScope_, m.name.empty() ? "Material" : m.name));
        }
        drawers_.assign(scene_.meshes.size(), 0);
        prototypes_.assign(scene_.meshes.size(), {});
        for (const ImportedNode& node : scene_.nodes)
            for (int mesh : node.meshes) ++drawers_[static_cast<std::size_t>(mesh)];
        if (!scene_.nodes.empty()) fillNode(root, 0);
        for (std::size_t m = 0; m < scene_.materials.size(); ++m) addMaterial(static_cast<int>(m));
        return std::move(plan_);
    }

private:
    UsdPlanPrim& prim(int index) { return plan_.prims[static_cast<std::size_t>(index)]; }

    std::string childName(int parent, const std::string& wanted) { return primName(wanted, names_[parent]); }

    int addPrim(int parent, const std::string& name, const std::string& typeName) {
        const int index = static_cast<int>(plan_.prims.size());
        UsdPlanPrim p;
        p.name = name;
        p.typeName = typeName;
        p.path = parent < 0 ? "/" + name : prim(parent).path + "/" + name;
        plan_.prims.push_back(std::move(p));
        if (parent >= 0) prim(parent).children.push_back(index);
        return index;
    }

    void add(int primIndex, UsdPlanProperty property) { prim(primIndex).properties.push_back(std::move(property)); }
    void set(int p, std::string name, std::string type, UsdPlanValue value, bool uniform = false) {
        add(p, {std::move(name), std::move(type), std::move(value), uniform, {}, {}});
    }
    void primvar(int p, std::string name, std::string type, UsdPlanValue value) {
        add(p, {std::move(name), std::move(type), std::move(value), false, "vertex", {}});
    }
    void connect(int p, std::string name, std::string type, std::string target) {
        add(p, {std::move(name), std::move(type), {}, false, {}, std::move(target)});
    }
    void declare(int p, std::string name, std::string type) { add(p, {std::move(name), std::move(type), {}, false, {}, {}}); }
    void relate(int p, std::string name, std::string target) { add(p, {std::move(name), {}, {}, false, {}, std::move(target)}); }

    void note(std::string text) {
        if (std::find(plan_.notes.begin(), plan_.notes.end(), text) == plan_.notes.end()) plan_.notes.push_back(std::move(text));
    }

    void fillNode(int primIndex, int nodeIndex) {
        const ImportedNode& node = scene_.nodes[static_cast<std::size_t>(nodeIndex)];
        if (!node.localTransform.isIdentity()) {
            set(primIndex, "xformOp:transform", "matrix4d", node.localTransform);
            set(primIndex, "xformOpOrder", "token[]", std::vector<std::string>{"xformOp:transform"}, true);
        }
        for (int child : node.children) {
            const ImportedNode& c = scene_.nodes[static_cast<std::size_t>(child)];
            fillNode(addPrim(primIndex, childName(primIndex, c.name.empty() ? "Node" : c.name), "Xform"), child);
        }
        for (int mesh : node.meshes) {
            if (drawers_[static_cast<std::size_t>(mesh)] < 2) {
                addMesh(primIndex, mesh);
                continue;
            }
            const ImportedMesh& m = scene_.meshes[static_cast<std::size_t>(mesh)];
            const int instance = addPrim(primIndex, childName(primIndex, m.name.empty() ? "Mesh" : m.name), "Xform");
            prim(instance).instanceable = true;
            prim(instance).reference = prototype(mesh);
        }
    }

    // The class prim holding mesh `mesh`, made on first use.
    std::string prototype(int mesh) {
        auto& path = prototypes_[static_cast<std::size_t>(mesh)];
        if (!path.empty()) return path;
        if (prototypesScope_ < 0) {
            prototypesScope_ = addPrim(0, childName(0, "Prototypes"), "Scope");
            prim(prototypesScope_).isClass = true;
        }
        const ImportedMesh& m = scene_.meshes[static_cast<std::size_t>(mesh)];
        const int holder = addPrim(prototypesScope_, childName(prototypesScope_, m.name.empty() ? "Mesh" : m.name), "Xform");
        prim(holder).isClass = true;
        addMesh(holder, mesh);
        path = prim(holder).path;
        return path;
    }

    template <class T> UsdFloatArray floats(const std::vector<T>& values, int width) {
        return {reinterpret_cast<const float*>(values.data()), values.size(), width};
    }

    void addMesh(int parent, int meshIndex) {
        const ImportedMesh& mesh = scene_.meshes[static_cast<std::size_t>(meshIndex)];
        const int p = addPrim(parent, childName(parent, mesh.name.empty() ? "Mesh" : mesh.name), "Mesh");
        set(p, "points", "point3f[]", floats(mesh.positions, 3));
        auto& counts = plan_.intStorage.emplace_back(mesh.indices.size() / 3, 3);
        set(p, "faceVertexCounts", "int[]", UsdIntArray{counts.data(), counts.size()});
        set(p, "faceVertexIndices", "int[]", UsdIntArray{reinterpret_cast<const std::int32_t*>(mesh.indices.data()), mesh.indices.size()});
        set(p, "subdivisionScheme", "token", UsdToken{"none"}, true);
        if (!mesh.normals.empty()) primvar(p, "normals", "normal3f[]", floats(mesh.normals, 3));
        if (!mesh.texCoords.empty()) primvar(p, "primvars:st", "texCoord2f[]", floats(mesh.texCoords, 2));
        if (!mesh.texCoords1.empty()) primvar(p, "primvars:st1", "texCoord2f[]", floats(mesh.texCoords1, 2));
        if (!mesh.tangents.empty()) note("tangents are not carried over (USD meshes have no standard tangent primvar)");

        bool doubleSided = mesh.doubleSided;
        bool coloursShown = true;
        for (const ImportedSubset& subset : mesh.subsets) {
            if (subset.material < 0) continue;
            const ImportedMaterial& material = scene_.materials[static_cast<std::size_t>(subset.material)];
            doubleSided = doubleSided || material.doubleSided;
            coloursShown = coloursShown && readsVertexColours(material);
            if (!mesh.colors.empty()) colouredMaterials_.insert(subset.material);
        }
        if (doubleSided) set(p, "doubleSided", "bool", true, true);
        if (!mesh.colors.empty()) {
            auto& rgb = plan_.floatStorage.emplace_back();
            auto& alpha = plan_.floatStorage.emplace_back();
            rgb.reserve(mesh.colors.size() * 3);
            alpha.reserve(mesh.colors.size());
            for (const QVector4D& c : mesh.colors) {
                rgb.insert(rgb.end(), {c.x(), c.y(), c.z()});
                alpha.push_back(c.w());
            }
            primvar(p, "primvars:displayColor", "color3f[]", UsdFloatArray{rgb.data(), mesh.colors.size(), 3});
            primvar(p, "primvars:displayOpacity", "float[]", UsdFloatArray{alpha.data(), mesh.colors.size(), 1});
            if (!coloursShown)
                note("vertex colours of meshes whose material has a base colour texture or a tinted base colour are "
                     "written as displayColor but not used by the material");
        }

        // One subset: bind the mesh itself; several: one GeomSubset each.
        if (mesh.subsets.size() == 1) {
            bind(p, mesh.subsets[0].material);
        } else {
            for (std::size_t s = 0; s < mesh.subsets.size(); ++s) {
                const ImportedSubset& subset = mesh.subsets[s];
                const int g = addPrim(p, childName(p, "subset" + std::to_string(s)), "GeomSubset");
                auto& faces = plan_.intStorage.emplace_back(subset.indexCount / 3);
                for (std::size_t f = 0; f < faces.size(); ++f) faces[f] = static_cast<std::int32_t>(subset.firstIndex / 3 + f);
                set(g, "elementType", "token", UsdToken{"face"}, true);
                set(g, "familyName", "token", UsdToken{"materialBind"}, true);
                set(g, "indices", "int[]", UsdIntArray{faces.data(), faces.size()});
                bind(g, subset.material);
            }
        }
    }

    void bind(int primIndex, int material) {
        if (material < 0) return;
        prim(primIndex).apiSchemas.push_back("MaterialBindingAPI");
        relate(primIndex, "material:binding", materialPaths_[static_cast<std::size_t>(material)]);
    }

    // Whether the material shows the mesh's displayColor: it does when the base colour is
    // plain white, so the colours alone make it (see addMaterial).
    static bool readsVertexColours(const ImportedMaterial& material) {
        return !material.baseColorTexture && material.baseColorFactor.toVector3D() == QVector3D(1, 1, 1);
    }

    // --- materials ---------------------------------------------------------------------

    std::string texturePath(int texture) {
        if (const auto it = texturePaths_.find(texture); it != texturePaths_.end()) return it->second;
        const ImportedTexture& source = scene_.textures[static_cast<std::size_t>(texture)];
        QByteArray bytes = source.encoded;
        std::string extension;
        if (startsWith(bytes, "\x89PNG", 4)) extension = "png";
        else if (startsWith(bytes, "\xff\xd8\xff", 3)) extension = "jpg";
        else {
            // USDZ packages carry PNG and JPEG only; anything Qt can decode becomes a PNG.
            const QImage image = source.decode();
            bytes.clear();
            if (!image.isNull()) {
                QBuffer buffer(&bytes);
                buffer.open(QIODevice::WriteOnly);
                image.save(&buffer, "PNG");
                extension = "png";
            }
        }
        std::string path;
        if (!extension.empty()) {
            std::string base = source.uri.substr(source.uri.find_last_of("/\\") + 1);
            base = base.substr(0, base.rfind('.'));
            std::set<std::string> none;
            path = "textures/" + std::to_string(texture) + "_" + primName(base.empty() ? "image" : base, none) + "." + extension;
            plan_.textures.push_back({path, std::move(bytes)});
        } else {
            note("texture " + source.uri + " is in a format that cannot be packaged and is left out");
        }
        texturePaths_.emplace(texture, path);
        return path;
    }

    // The coordinate reader of set `set` in material prim `material`, made on first use.
    std::string primvarReader(int material, int coordinateSet) {
        const std::string key = prim(material).path + "#" + std::to_string(coordinateSet);
        if (const auto it = readers_.find(key); it != readers_.end()) return it->second;
        const int r = addPrim(material, childName(material, coordinateSet == 0 ? "uvReader" : "uvReader1"), "Shader");
        set(r, "info:id", "token", UsdToken{"UsdPrimvarReader_float2"}, true);
        set(r, "inputs:varname", "token", UsdToken{coordinateSet == 0 ? "st" : "st1"});
        declare(r, "outputs:result", "float2");
        return readers_[key] = prim(r).path + ".outputs:result";
    }

    // A UsdUVTexture shader for `ref` with the given scale and bias; returns the path of
    // the output `channel` reads, or empty when the image cannot be packaged.
    std::string texture(int material, const std::string& slot, const ImportedTextureRef& ref, QVector4D scale,
                        QVector4D bias, TextureChannel channel) {
        const std::string file = texturePath(ref.texture);
        if (file.empty()) return {};
        std::string coordinates = primvarReader(material, std::clamp(ref.texCoordSet, 0, 1));
        if (!ref.transform.isIdentity()) {
            const int t = addPrim(material, childName(material, slot + "Transform"), "Shader");
            set(t, "info:id", "token", UsdToken{"UsdTransform2d"}, true);
            connect(t, "inputs:in", "float2", coordinates);
            set(t, "inputs:translation", "float2", ref.transform.offset);
            set(t, "inputs:rotation", "float", ref.transform.rotationDegrees);
            set(t, "inputs:scale", "float2", ref.transform.scale);
            declare(t, "outputs:result", "float2");
            coordinates = prim(t).path + ".outputs:result";
        }
        const int s = addPrim(material, childName(material, slot + "Texture"), "Shader");
        set(s, "info:id", "token", UsdToken{"UsdUVTexture"}, true);
        set(s, "inputs:file", "asset", UsdAssetPath{file});
        connect(s, "inputs:st", "float2", coordinates);
        set(s, "inputs:wrapS", "token", UsdToken{wrapToken(ref.wrapS)});
        set(s, "inputs:wrapT", "token", UsdToken{wrapToken(ref.wrapT)});
        set(s, "inputs:sourceColorSpace", "token", UsdToken{colorSpaceToken(ref.colorSpace)});
        if (scale != QVector4D(1, 1, 1, 1)) set(s, "inputs:scale", "float4", scale);
        if (bias != QVector4D(0, 0, 0, 0)) set(s, "inputs:bias", "float4", bias);
        const std::string output = outputOf(channel);
        declare(s, output, output == "outputs:rgb" ? "float3" : "float");
        return prim(s).path + "." + output;
    }

    // Connects `input` of `surface` to `ref` scaled by `factor`, or sets it to `constant`.
    void input(int material, int surface, const std::string& input, const std::string& typeName,
               const std::optional<ImportedTextureRef>& ref, QVector4D factor, UsdPlanValue constant) {
        if (ref) {
            const bool single = typeName == "float";
            const TextureChannel channel = single ? (ref->channel == TextureChannel::rgb || ref->channel == TextureChannel::rgba
                                                         ? TextureChannel::r : ref->channel)
                                                  : TextureChannel::rgb;
            const std::string slot = input.substr(input.find(':') + 1);
            const std::string output = texture(material, slot, *ref, ref->scale * factor, ref->bias * factor, channel);
            if (!output.empty()) {
                connect(surface, input, typeName, output);
                return;
            }
        }
        set(surface, input, typeName, std::move(constant));
    }

    void addMaterial(int index) {
        const ImportedMaterial& m = scene_.materials[static_cast<std::size_t>(index)];
        const std::string& path = materialPaths_[static_cast<std::size_t>(index)];
        const int material = addPrim(materialsScope_, path.substr(path.rfind('/') + 1), "Material");
        const int surface = addPrim(material, childName(material, "Surface"), "Shader");
        connect(material, "outputs:surface", "token", prim(surface).path + ".outputs:surface");
        set(surface, "info:id", "token", UsdToken{"UsdPreviewSurface"}, true);

        const QVector4D base = m.baseColorFactor;
        if (colouredMaterials_.count(index) && readsVertexColours(m)) {
            // The vertex colours are the base colour; meshes without them read white.
            const int r = addPrim(material, childName(material, "displayColorReader"), "Shader");
            set(r, "info:id", "token", UsdToken{"UsdPrimvarReader_float3"}, true);
            set(r, "inputs:varname", "token", UsdToken{"displayColor"});
            set(r, "inputs:fallback", "float3", QVector3D(1, 1, 1));
            declare(r, "outputs:result", "float3");
            connect(surface, "inputs:diffuseColor", "color3f", prim(r).path + ".outputs:result");
        } else {
            input(material, surface, "inputs:diffuseColor", "color3f", m.baseColorTexture, QVector4D(base.toVector3D(), 1),
                  base.toVector3D());
        }
        const QVector3D emissive = m.emissiveFactor * m.emissiveStrength;
        if (m.emissiveTexture || !emissive.isNull())
            input(material, surface, "inputs:emissiveColor", "color3f", m.emissiveTexture, QVector4D(emissive, 1), emissive);
        input(material, surface, "inputs:metallic", "float", m.metallicTexture, QVector4D(1, 1, 1, 1) * m.metallic, m.metallic);
        input(material, surface, "inputs:roughness", "float", m.roughnessTexture, QVector4D(1, 1, 1, 1) * m.roughness, m.roughness);
        if (m.normalTexture) {
            const QVector4D scale(m.normalScale, m.normalScale, 1, 1);
            input(material, surface, "inputs:normal", "normal3f", m.normalTexture, scale, QVector3D(0, 0, 1));
        }
        if (m.occlusionTexture) {
            // occlusion' = 1 + strength * (occlusion - 1): the strength scales, its rest biases.
            ImportedTextureRef ref = *m.occlusionTexture;
            const float s = m.occlusionStrength;
            ref.bias = ref.bias * s + QVector4D(1 - s, 1 - s, 1 - s, 1 - s);
            ref.scale = ref.scale * s;
            input(material, surface, "inputs:occlusion", "float", ref, QVector4D(1, 1, 1, 1), 1.0f);
        }
        addOpacity(m, material, surface);
        if (m.unlit) note("unlit shading is not carried over (UsdPreviewSurface is always lit)");
        declare(surface, "outputs:surface", "token");
    }

    void addOpacity(const ImportedMaterial& m, int material, int surface) {
        if (m.alphaMode == AlphaMode::opaque) return;
        const float opacity = m.baseColorFactor.w() * m.opacity;
        const QVector4D factor(opacity, opacity, opacity, opacity);
        if (m.opacityTexture) {
            if (m.baseColorTexture && m.baseColorTexture->channel == TextureChannel::rgba)
                note("a base colour texture's alpha is dropped where a separate opacity texture is present");
            input(material, surface, "inputs:opacity", "float", m.opacityTexture, factor, opacity);
        } else if (m.baseColorTexture && m.baseColorTexture->channel == TextureChannel::rgba) {
            ImportedTextureRef alpha = *m.baseColorTexture;
            alpha.channel = TextureChannel::a;
            input(material, surface, "inputs:opacity", "float", alpha, factor, opacity);
        } else {
            set(surface, "inputs:opacity", "float", opacity);
            if (m.alphaMode == AlphaMode::blend && opacity >= 1.0f)
                note("a blended material with full opacity reads back as opaque");
        }
        if (m.alphaMode == AlphaMode::mask) set(surface, "inputs:opacityThreshold", "float", m.alphaCutoff);
    }

    const ImportedScene& scene_;
    UsdLayerPlan plan_;
    std::map<int, std::set<std::string>> names_;   // per prim, its children's names
    std::vector<std::string> materialPaths_;
    std::set<int> colouredMaterials_;
    std::map<int, std::string> texturePaths_;
    std::map<std::string, std::string> readers_;
    int materialsScope_ = -1;
    int prototypesScope_ = -1;
    std::vector<int> drawers_;               // per mesh, how many nodes draw it
    std::vector<std::string> prototypes_;    // per mesh drawn more than once, its class prim
};

} // namespace

UsdLayerPlan UsdLayerPlan::of(const ImportedScene& scene) { return Planner(scene).run(); }

} // namespace orvanta::exporter
