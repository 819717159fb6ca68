#include "export/GlbWriter.h"

#include <assimp/Exporter.hpp>
#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_map>

namespace orvanta::exporter {

namespace {

using namespace import;

aiMatrix4x4 toAssimp(const QMatrix4x4& m) {
    aiMatrix4x4 out;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) out[static_cast<unsigned>(row)][static_cast<unsigned>(column)] = m(row, column);
    return out;
}

template <class T> T* copyArray(const std::vector<T>& values) {
    T* out = new T[values.size()];
    std::copy(values.begin(), values.end(), out);
    return out;
}

class SceneBuilder {
public:
    explicit SceneBuilder(const ImportedScene& scene) : scene_(scene) {}

    std::unique_ptr<aiScene> run() {
        auto out = std::make_unique<aiScene>();
        out->mNumTextures = static_cast<unsigned>(scene_.textures.size());
        out->mTextures = new aiTexture*[std::max<std::size_t>(1, scene_.textures.size())];
        for (std::size_t t = 0; t < scene_.textures.size(); ++t) out->mTextures[t] = texture(scene_.textures[t]);

        std::vector<aiMaterial*> materials;
        for (const ImportedMaterial& m : scene_.materials) materials.push_back(material(m));
        // A plain material for subsets without one, only when there are such subsets: the
        // writer carries every material over, used or not.
        const bool unbound = std::any_of(scene_.meshes.begin(), scene_.meshes.end(), [](const ImportedMesh& mesh) {
            return std::any_of(mesh.subsets.begin(), mesh.subsets.end(), [](const ImportedSubset& s) { return s.material < 0; });
        });
        if (unbound || materials.empty()) materials.push_back(new aiMaterial());
        out->mNumMaterials = static_cast<unsigned>(materials.size());
        out->mMaterials = copyArray(materials);

        std::vector<aiMesh*> meshes;
        for (const ImportedMesh& mesh : scene_.meshes) {
            std::vector<unsigned> parts;
            for (const ImportedSubset& subset : mesh.subsets) {
                parts.push_back(static_cast<unsigned>(meshes.size()));
                meshes.push_back(part(mesh, subset, subset.material >= 0 ? subset.material : static_cast<int>(materials.size() - 1)));
            }
            parts_.push_back(std::move(parts));
        }
        out->mNumMeshes = static_cast<unsigned>(meshes.size());
        out->mMeshes = copyArray(meshes);
        out->mRootNode = scene_.nodes.empty() ? new aiNode("root") : node(0, nullptr);
        return out;
    }

    std::vector<std::string> notes;

private:
    static aiTexture* texture(const ImportedTexture& source) {
        auto* t = new aiTexture();
        t->mWidth = static_cast<unsigned>(source.encoded.size());
        t->mHeight = 0;  // compressed image bytes
        t->pcData = new aiTexel[(source.encoded.size() + sizeof(aiTexel) - 1) / sizeof(aiTexel)];
        std::memcpy(t->pcData, source.encoded.constData(), static_cast<std::size_t>(source.encoded.size()));
        const bool png = source.encoded.startsWith("\x89PNG");
        std::strncpy(t->achFormatHint, png ? "png" : "jpg", sizeof t->achFormatHint - 1);
        return t;
    }

    void bindTexture(aiMaterial& out, const std::optional<ImportedTextureRef>& ref, aiTextureType type, const char* input) {
        if (!ref || ref->texture < 0) return;
        const aiString path("*" + std::to_string(ref->texture));
        out.AddProperty(&path, AI_MATKEY_TEXTURE(type, 0));
        const int set = ref->texCoordSet;
        out.AddProperty(&set, 1, AI_MATKEY_UVWSRC(type, 0));
        const auto mode = [](TextureWrap wrap) {
            return wrap == TextureWrap::clamp ? aiTextureMapMode_Clamp : wrap == TextureWrap::mirror ? aiTextureMapMode_Mirror : aiTextureMapMode_Wrap;
        };
        const int u = mode(ref->wrapS), v = mode(ref->wrapT);
        out.AddProperty(&u, 1, AI_MATKEY_MAPPINGMODE_U(type, 0));
        out.AddProperty(&v, 1, AI_MATKEY_MAPPINGMODE_V(type, 0));
        if (!ref->transform.isIdentity()) notes.push_back(std::string(input) + " texture transforms are not carried over");
        if (ref->scale != QVector4D(1, 1, 1, 1) && type != aiTextureType_NORMALS)
            notes.push_back(std::string(input) + " texture scale and bias are not carried over");
    }

    aiMaterial* material(const ImportedMaterial& m) {
        auto* out = new aiMaterial();
        const aiString name(m.name);
        out->AddProperty(&name, AI_MATKEY_NAME);
        const aiColor4D base(m.baseColorFactor.x(), m.baseColorFactor.y(), m.baseColorFactor.z(), m.baseColorFactor.w());
        out->AddProperty(&base, 1, AI_MATKEY_BASE_COLOR);
        out->AddProperty(&m.metallic, 1, AI_MATKEY_METALLIC_FACTOR);
        out->AddProperty(&m.roughness, 1, AI_MATKEY_ROUGHNESS_FACTOR);
        const aiColor3D emissive(m.emissiveFactor.x() * m.emissiveStrength, m.emissiveFactor.y() * m.emissiveStrength,
                                 m.emissiveFactor.z() * m.emissiveStrength);
        out->AddProperty(&emissive, 1, AI_MATKEY_COLOR_EMISSIVE);
        const int twoSided = m.doubleSided ? 1 : 0;
        out->AddProperty(&twoSided, 1, AI_MATKEY_TWOSIDED);
        if (m.unlit) {
            const int shading = aiShadingMode_Unlit;
            out->AddProperty(&shading, 1, AI_MATKEY_SHADING_MODEL);
        }
        const aiString mode(m.alphaMode == AlphaMode::mask ? "MASK" : m.alphaMode == AlphaMode::blend ? "BLEND" : "OPAQUE");
        out->AddProperty(&mode, AI_MATKEY_GLTF_ALPHAMODE);
        out->AddProperty(&m.alphaCutoff, 1, AI_MATKEY_GLTF_ALPHACUTOFF);
        out->AddProperty(&m.opacity, 1, AI_MATKEY_OPACITY);

        bindTexture(*out, m.baseColorTexture, aiTextureType_BASE_COLOR, "base colour");
        bindTexture(*out, m.emissiveTexture, aiTextureType_EMISSIVE, "emissive");
        bindTexture(*out, m.normalTexture, aiTextureType_NORMALS, "normal");
        if (m.normalTexture) out->AddProperty(&m.normalScale, 1, AI_MATKEY_GLTF_TEXTURE_SCALE(aiTextureType_NORMALS, 0));
        bindTexture(*out, m.occlusionTexture, aiTextureType_LIGHTMAP, "occlusion");
        if (m.occlusionTexture) out->AddProperty(&m.occlusionStrength, 1, AI_MATKEY_GLTF_TEXTURE_STRENGTH(aiTextureType_LIGHTMAP, 0));
        // glTF reads roughness from G and metallic from B of one image.
        const auto& packed = m.roughnessTexture ? m.roughnessTexture : m.metallicTexture;
        if (packed) {
            const bool sameImage = !m.roughnessTexture || !m.metallicTexture || m.roughnessTexture->texture == m.metallicTexture->texture;
            const bool glTFChannels = (!m.roughnessTexture || m.roughnessTexture->channel == TextureChannel::g) &&
                                      (!m.metallicTexture || m.metallicTexture->channel == TextureChannel::b);
            if (!sameImage || !glTFChannels) notes.push_back("metallic and roughness maps not packed as glTF expects are written as they are");
            bindTexture(*out, packed, aiTextureType_UNKNOWN, "metallic-roughness");
        }
        if (m.opacityTexture) notes.push_back("opacity textures are not carried over (glTF keeps opacity in the base colour's alpha)");
        return out;
    }

    static aiMesh* part(const ImportedMesh& mesh, const ImportedSubset& subset, int material) {
        auto* out = new aiMesh();
        out->mName = aiString(mesh.name);
        out->mMaterialIndex = static_cast<unsigned>(material);
        out->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
        out->mNumVertices = static_cast<unsigned>(mesh.positions.size());
        const auto vectors = [&](const std::vector<QVector3D>& values) {
            auto* v = new aiVector3D[values.size()];
            for (std::size_t i = 0; i < values.size(); ++i) v[i] = aiVector3D(values[i].x(), values[i].y(), values[i].z());
            return v;
        };
        out->mVertices = vectors(mesh.positions);
        if (!mesh.normals.empty()) out->mNormals = vectors(mesh.normals);
        const std::vector<QVector2D>* sets[] = {&mesh.texCoords, &mesh.texCoords1};
        for (unsigned s = 0; s < 2; ++s) {
            if (sets[s]->empty()) continue;
            out->mTextureCoords[s] = new aiVector3D[sets[s]->size()];
            out->mNumUVComponents[s] = 2;
            for (std::size_t i = 0; i < sets[s]->size(); ++i) out->mTextureCoords[s][i] = aiVector3D((*sets[s])[i].x(), (*sets[s])[i].y(), 0);
        }
        if (!mesh.colors.empty()) {
            out->mColors[0] = new aiColor4D[mesh.colors.size()];
            for (std::size_t i = 0; i < mesh.colors.size(); ++i)
                out->mColors[0][i] = aiColor4D(mesh.colors[i].x(), mesh.colors[i].y(), mesh.colors[i].z(), mesh.colors[i].w());
        }
        out->mNumFaces = subset.indexCount / 3;
        out->mFaces = new aiFace[out->mNumFaces];
        for (unsigned f = 0; f < out->mNumFaces; ++f) {
            out->mFaces[f].mNumIndices = 3;
            out->mFaces[f].mIndices = new unsigned[3];
            std::copy_n(mesh.indices.begin() + subset.firstIndex + 3 * f, 3, out->mFaces[f].mIndices);
        }
        return out;
    }

    aiNode* node(int index, aiNode* parent) {
        const ImportedNode& source = scene_.nodes[static_cast<std::size_t>(index)];
        auto* out = new aiNode(uniqueName(source.name));
        out->mParent = parent;
        out->mTransformation = toAssimp(source.localTransform);
        std::vector<unsigned> meshes;
        for (int mesh : source.meshes) {
            const auto& parts = parts_[static_cast<std::size_t>(mesh)];
            meshes.insert(meshes.end(), parts.begin(), parts.end());
        }
        out->mNumMeshes = static_cast<unsigned>(meshes.size());
        out->mMeshes = meshes.empty() ? nullptr : copyArray(meshes);
        out->mNumChildren = static_cast<unsigned>(source.children.size());
        out->mChildren = source.children.empty() ? nullptr : new aiNode*[source.children.size()];
        for (std::size_t c = 0; c < source.children.size(); ++c) out->mChildren[c] = node(source.children[c], out);
        return out;
    }

    // Assimp's glTF writer gives each node an id from its name and, when the name is taken,
    // tries "name_0", "name_1", ... one by one: expanded instances share their prototype's names,
    // so that search made 10,000 copies take 24 s. Names are made unique here, each in one step.
    std::string uniqueName(const std::string& name) {
        auto [next, fresh] = nextSuffix_.try_emplace(name, 0);
        if (fresh) return name;
        std::string candidate;
        do candidate = name + "_" + std::to_string(next->second++);
        while (!nextSuffix_.try_emplace(candidate, 0).second);
        return candidate;
    }

    const ImportedScene& scene_;
    std::vector<std::vector<unsigned>> parts_;  // per mesh, its aiMeshes
    std::unordered_map<std::string, std::size_t> nextSuffix_; // per name in use, the next suffix to try
};

} // namespace

core::Result<GlbWriter::Report> GlbWriter::write(const ImportedScene& scene, const std::string& path) {
    SceneBuilder builder(scene);
    const std::unique_ptr<aiScene> out = builder.run();
    for (const ImportedMesh& mesh : scene.meshes)
        if (!mesh.tangents.empty()) builder.notes.push_back("tangents are not carried over");
    Assimp::Exporter exporter;
    if (exporter.Export(out.get(), "glb2", path) != AI_SUCCESS)
        return core::Error("ModelExportError", 1, "Cannot write " + path + ": " + exporter.GetErrorString());
    std::vector<std::string> notes;
    for (std::string& note : builder.notes)
        if (std::find(notes.begin(), notes.end(), note) == notes.end()) notes.push_back(std::move(note));
    return Report{std::move(notes)};
}

} // namespace orvanta::exporter
