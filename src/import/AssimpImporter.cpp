#include "import/AssimpImporter.h"

#include "import/FileBytes.h"
#include "import/GltfLayoutCheck.h"
#include "import/GltfZeroFill.h"
#include "import/ImportError.h"

#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/GltfMaterial.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <functional>
#include <map>
#include <optional>

namespace orvanta::import {

namespace {

// Converts one loaded aiScene. `baseDir` resolves external image paths; empty when the
// data came from memory.
class Conversion {
public:
    Conversion(const aiScene& source, QString baseDir) : source_(source), baseDir_(std::move(baseDir)) {}

    ImportedScene run(std::string format) {
        scene_.format = std::move(format);
        materialCount_ = usedMaterialCount();
        for (unsigned i = 0; i < materialCount_; ++i) scene_.materials.push_back(material(*source_.mMaterials[i]));
        for (unsigned i = 0; i < source_.mNumMeshes; ++i) scene_.meshes.push_back(mesh(*source_.mMeshes[i]));
        addNode(*source_.mRootNode, -1);
        return std::move(scene_);
    }

private:
    // Assimp appends a fallback material for meshes that name none (unnamed for glTF,
    // "DefaultMaterial" for other formats). Left unused, it is not part of the model, so it
    // is dropped and the material list matches the file.
    unsigned usedMaterialCount() const {
        const unsigned count = source_.mNumMaterials;
        if (count == 0) return count;
        const aiString name = source_.mMaterials[count - 1]->GetName();
        if (name.length != 0 && name != aiString(AI_DEFAULT_MATERIAL_NAME)) return count;
        for (unsigned i = 0; i < source_.mNumMeshes; ++i)
            if (source_.mMeshes[i]->mMaterialIndex == count - 1) return count;
        return count - 1;
    }

    int addNode(const aiNode& source, int parent) {
        const int index = static_cast<int>(scene_.nodes.size());
        ImportedNode node;
        node.name = source.mName.C_Str();
        node.localTransform = QMatrix4x4(&source.mTransformation.a1); // both row-major
        node.parent = parent;
        for (unsigned i = 0; i < source.mNumMeshes; ++i) {
            const unsigned m = source.mMeshes[i];
            if (m < scene_.meshes.size() && !scene_.meshes[m].indices.empty()) node.meshes.push_back(static_cast<int>(m));
        }
        scene_.nodes.push_back(std::move(node));
        for (unsigned i = 0; i < source.mNumChildren; ++i) {
            const int child = addNode(*source.mChildren[i], index);
            scene_.nodes[static_cast<std::size_t>(index)].children.push_back(child);
        }
        return index;
    }

    ImportedMesh mesh(const aiMesh& source) const {
        ImportedMesh mesh;
        mesh.name = source.mName.C_Str();
        // Points and lines are split off by SortByPType; only triangles are drawn.
        if (!(source.mPrimitiveTypes & aiPrimitiveType_TRIANGLE)) return mesh;
        mesh.positions.reserve(source.mNumVertices);
        for (unsigned v = 0; v < source.mNumVertices; ++v)
            mesh.positions.emplace_back(source.mVertices[v].x, source.mVertices[v].y, source.mVertices[v].z);
        if (source.mNormals) {
            mesh.normals.reserve(source.mNumVertices);
            for (unsigned v = 0; v < source.mNumVertices; ++v)
                mesh.normals.emplace_back(source.mNormals[v].x, source.mNormals[v].y, source.mNormals[v].z);
        }
        if (source.mTangents && source.mBitangents && source.mNormals) {
            // The handedness is the side the file's bitangent lies on.
            mesh.tangents.reserve(source.mNumVertices);
            for (unsigned v = 0; v < source.mNumVertices; ++v) {
                const aiVector3D& t = source.mTangents[v];
                const float w = ((source.mNormals[v] ^ t) * source.mBitangents[v]) < 0 ? -1.0f : 1.0f;
                mesh.tangents.emplace_back(t.x, t.y, t.z, w);
            }
        }
        readTexCoords(source, 0, mesh.texCoords);
        readTexCoords(source, 1, mesh.texCoords1);
        if (source.mColors[0]) {
            mesh.colors.reserve(source.mNumVertices);
            for (unsigned v = 0; v < source.mNumVertices; ++v)
                mesh.colors.emplace_back(source.mColors[0][v].r, source.mColors[0][v].g, source.mColors[0][v].b, source.mColors[0][v].a);
        }
        mesh.indices.reserve(std::size_t(source.mNumFaces) * 3);
        for (unsigned f = 0; f < source.mNumFaces; ++f) {
            const aiFace& face = source.mFaces[f];
            if (face.mNumIndices != 3) continue;
            mesh.indices.insert(mesh.indices.end(), face.mIndices, face.mIndices + 3);
        }
        const int material = source.mMaterialIndex < materialCount_ ? static_cast<int>(source.mMaterialIndex) : -1;
        mesh.subsets.push_back({0, static_cast<std::uint32_t>(mesh.indices.size()), material});
        return mesh;
    }

    static void readTexCoords(const aiMesh& source, unsigned set, std::vector<QVector2D>& out) {
        if (!source.mTextureCoords[set]) return;
        out.reserve(source.mNumVertices);
        for (unsigned v = 0; v < source.mNumVertices; ++v)
            out.emplace_back(source.mTextureCoords[set][v].x, source.mTextureCoords[set][v].y);
    }

    ImportedMaterial material(const aiMaterial& source) {
        ImportedMaterial material;
        material.name = source.GetName().C_Str();
        aiColor4D color;
        if (source.Get(AI_MATKEY_BASE_COLOR, color) == AI_SUCCESS || source.Get(AI_MATKEY_COLOR_DIFFUSE, color) == AI_SUCCESS)
            material.baseColorFactor = {color.r, color.g, color.b, color.a};
        source.Get(AI_MATKEY_METALLIC_FACTOR, material.metallic);
        source.Get(AI_MATKEY_ROUGHNESS_FACTOR, material.roughness);
        aiColor3D emissive;
        if (source.Get(AI_MATKEY_COLOR_EMISSIVE, emissive) == AI_SUCCESS)
            material.emissiveFactor = {emissive.r, emissive.g, emissive.b};
        source.Get(AI_MATKEY_EMISSIVE_INTENSITY, material.emissiveStrength);
        int twoSided = 0;
        if (source.Get(AI_MATKEY_TWOSIDED, twoSided) == AI_SUCCESS) material.doubleSided = twoSided != 0;
        int shading = 0;
        if (source.Get(AI_MATKEY_SHADING_MODEL, shading) == AI_SUCCESS) material.unlit = shading == aiShadingMode_Unlit;

        aiString alphaMode;
        const bool gltf = source.Get(AI_MATKEY_GLTF_ALPHAMODE, alphaMode) == AI_SUCCESS;
        if (gltf) {
            // glTF's opacity is the base colour's alpha, which Assimp repeats as the opacity.
            const std::string mode = alphaMode.C_Str();
            material.alphaMode = mode == "MASK" ? AlphaMode::mask : mode == "BLEND" ? AlphaMode::blend : AlphaMode::opaque;
            source.Get(AI_MATKEY_GLTF_ALPHACUTOFF, material.alphaCutoff);
        } else {
            source.Get(AI_MATKEY_OPACITY, material.opacity);
            if (material.opacity < 1.0f || material.baseColorFactor.w() < 1.0f) material.alphaMode = AlphaMode::blend;
        }

        const auto colorSpace = gltf ? TextureColorSpace::srgb : TextureColorSpace::automatic;
        const auto dataSpace = gltf ? TextureColorSpace::raw : TextureColorSpace::automatic;
        material.baseColorTexture = texture(source, aiTextureType_BASE_COLOR, TextureChannel::rgba, colorSpace);
        if (!material.baseColorTexture)
            material.baseColorTexture = texture(source, aiTextureType_DIFFUSE, TextureChannel::rgba, colorSpace);
        material.emissiveTexture = texture(source, aiTextureType_EMISSIVE, TextureChannel::rgb, colorSpace);
        if (gltf) {
            // One image packs roughness (G) and metallic (B); occlusion reads R.
            material.roughnessTexture = texture(source, aiTextureType_UNKNOWN, TextureChannel::g, dataSpace);
            material.metallicTexture = texture(source, aiTextureType_UNKNOWN, TextureChannel::b, dataSpace);
            material.occlusionTexture = texture(source, aiTextureType_LIGHTMAP, TextureChannel::r, dataSpace);
            source.Get(AI_MATKEY_GLTF_TEXTURE_STRENGTH(aiTextureType_LIGHTMAP, 0), material.occlusionStrength);
        } else {
            material.roughnessTexture = texture(source, aiTextureType_DIFFUSE_ROUGHNESS, TextureChannel::r, dataSpace);
            material.metallicTexture = texture(source, aiTextureType_METALNESS, TextureChannel::r, dataSpace);
            material.opacityTexture = texture(source, aiTextureType_OPACITY, TextureChannel::r, dataSpace);
        }
        material.normalTexture = texture(source, aiTextureType_NORMALS, TextureChannel::rgb, dataSpace);
        if (material.normalTexture) {
            material.normalTexture->scale = {2.0f, 2.0f, 2.0f, 1.0f};  // [0, 1] texels to [-1, 1]
            material.normalTexture->bias = {-1.0f, -1.0f, -1.0f, 0.0f};
            source.Get(AI_MATKEY_GLTF_TEXTURE_SCALE(aiTextureType_NORMALS, 0), material.normalScale);
        }
        return material;
    }

    // The reference to the texture bound to `type`, loading its bytes once per distinct path.
    std::optional<ImportedTextureRef> texture(const aiMaterial& source, aiTextureType type, TextureChannel channel,
                                              TextureColorSpace colorSpace) {
        aiString path;
        if (source.GetTextureCount(type) == 0 || source.GetTexture(type, 0, &path) != AI_SUCCESS) return std::nullopt;
        ImportedTextureRef ref;
        ref.texture = textureIndex(path.C_Str());
        if (ref.texture < 0) return std::nullopt;
        ref.channel = channel;
        ref.colorSpace = colorSpace;
        int uvSet = 0;
        if (source.Get(AI_MATKEY_UVWSRC(type, 0), uvSet) == AI_SUCCESS) ref.texCoordSet = uvSet;
        int wrap = aiTextureMapMode_Wrap;
        if (source.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), wrap) == AI_SUCCESS) ref.wrapS = wrapOf(wrap);
        if (source.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), wrap) == AI_SUCCESS) ref.wrapT = wrapOf(wrap);
        aiUVTransform transform;
        if (source.Get(AI_MATKEY_UVTRANSFORM(type, 0), transform) == AI_SUCCESS) ref.transform = transformOf(transform);
        return ref;
    }

    static TextureWrap wrapOf(int mode) {
        switch (mode) {
        case aiTextureMapMode_Clamp: return TextureWrap::clamp;
        case aiTextureMapMode_Mirror: return TextureWrap::mirror;
        case aiTextureMapMode_Decal: return TextureWrap::black;
        default: return TextureWrap::repeat;
        }
    }

    // Assimp hands glTF's texture transform over re-centred for its own UV space; this
    // recovers the file's offset, rotation and scale (image space, v down, rotation about
    // the origin) and re-expresses them for the kit's v-up coordinates.
    static ImportedTextureTransform transformOf(const aiUVTransform& source) {
        const double sx = source.mScaling.x, sy = source.mScaling.y;
        const double rotation = -source.mRotation;  // glTF's, in radians
        const double c = std::cos(rotation), s = std::sin(rotation);
        const double offsetX = source.mTranslation.x - 0.5 * sx * (-c + s + 1);
        const double offsetY = 0.5 * sy * (s + c - 1) + 1 - sy - source.mTranslation.y;
        ImportedTextureTransform result;
        result.scale = QVector2D(float(sx), float(sy));
        result.rotationDegrees = float(-rotation * 180.0 / M_PI);
        result.offset = QVector2D(float(offsetX - sy * s), float(1 - offsetY - sy * c));
        return result;
    }

    int textureIndex(const std::string& key) {
        if (auto it = textureIndex_.find(key); it != textureIndex_.end()) return it->second;
        QByteArray bytes = textureBytes(key);
        if (bytes.isEmpty()) return -1;
        const int index = static_cast<int>(scene_.textures.size());
        scene_.textures.push_back({key, std::move(bytes), nullptr});
        textureIndex_[key] = index;
        return index;
    }

    QByteArray textureBytes(const std::string& path) const {
        if (const aiTexture* embedded = source_.GetEmbeddedTexture(path.c_str())) {
            // mHeight 0 marks compressed image bytes (PNG/JPEG) of mWidth bytes.
            if (embedded->mHeight != 0) return {};
            return QByteArray(reinterpret_cast<const char*>(embedded->pcData), static_cast<qsizetype>(embedded->mWidth));
        }
        if (baseDir_.isEmpty()) return {};
        QFile file(QDir(baseDir_).filePath(QString::fromStdString(path)));
        if (!file.open(QIODevice::ReadOnly)) return {};
        return file.readAll();
    }

    const aiScene& source_;
    QString baseDir_;
    ImportedScene scene_;
    unsigned materialCount_ = 0;
    std::map<std::string, int> textureIndex_;
};

// glTF input is checked before Assimp sees it (see GltfLayoutCheck).
bool isGltf(const std::string& format) { return format == "glb" || format == "gltf"; }

// Normals are generated only for meshes that have none. glTF primitives arrive as indexed
// vertex arrays already, so they skip the search for identical vertices, which hashes and
// copies every mesh; other formats often store one vertex per face corner and need it.
unsigned postProcessing(const std::string& format) {
    constexpr unsigned always = aiProcess_Triangulate | aiProcess_GenSmoothNormals | aiProcess_SortByPType |
                                aiProcess_ValidateDataStructure;
    return isGltf(format) ? always : always | aiProcess_JoinIdenticalVertices;
}

// Opens the files a model names (external buffers, material libraries) relative to the
// model's own folder, while the model itself is read from memory.
class FolderIOSystem : public Assimp::DefaultIOSystem {
public:
    explicit FolderIOSystem(std::string folder) : folder_(std::move(folder)) {}
    bool Exists(const char* file) const override { return DefaultIOSystem::Exists(resolve(file).c_str()); }
    Assimp::IOStream* Open(const char* file, const char* mode) override {
        return DefaultIOSystem::Open(resolve(file).c_str(), mode);
    }

private:
    std::string resolve(const char* file) const { return file[0] == '/' ? file : folder_ + '/' + file; }
    std::string folder_;
};

// The reader the import library uses. glTF was recognised from the bytes. Other formats
// are recognised by the library from their bytes when the name has no extension, and by
// the extension otherwise (some, binary STL for one, have no signature to go by).
std::string readerHint(const std::string& format, const QFileInfo& file) {
    if (isGltf(format)) return format;
    const std::string suffix = file.suffix().toLower().toStdString();
    return suffix == "glb" || suffix == "gltf" ? std::string() : suffix;
}

// Checks glTF `bytes` before the library reads them (see GltfLayoutCheck) and gives accessors
// without a buffer view their zeros: `bytes` then views the rewritten file, kept in `storage`.
std::optional<core::Error> prepareGltf(std::span<const std::uint8_t>& bytes, const QString& baseDir,
                                       std::optional<QByteArray>& storage) {
    if (auto error = GltfLayoutCheck::check(bytes, baseDir)) return error;
    storage = GltfZeroFill::fill(bytes);
    if (storage) bytes = {reinterpret_cast<const std::uint8_t*>(storage->constData()), std::size_t(storage->size())};
    return std::nullopt;
}

core::Result<ImportedScene> convert(const Assimp::Importer& importer, const aiScene* scene, QString baseDir,
                                    std::string format) {
    if (!scene || !scene->mRootNode || (scene->mFlags & AI_SCENE_FLAGS_INCOMPLETE)) {
        const std::string reason = importer.GetErrorString();
        return importError(ImportErrorCode::malformedData,
                           "Cannot read the model: " + (reason.empty() ? std::string("no scene in the file") : reason));
    }
    return Conversion(*scene, std::move(baseDir)).run(std::move(format));
}

} // namespace

core::Result<ImportedScene> AssimpImporter::importFile(const std::string& path, std::string formatName) {
    const QFileInfo info(QString::fromStdString(path));
    // The file is read once: the layout check and the import library read the same bytes,
    // and the library is told the format instead of guessing it from the file's name.
    auto file = FileBytes::open(path);
    if (!file) return file.error();
    if (file.value()->bytes().empty()) return importError(ImportErrorCode::unreadableFile, "Cannot read " + path + ": the file is empty");
    std::span<const std::uint8_t> bytes = file.value()->bytes();
    std::optional<QByteArray> zeroFilled;
    if (isGltf(formatName)) {
        if (auto error = prepareGltf(bytes, info.absolutePath(), zeroFilled)) return *error;
    }
    Assimp::Importer importer;
    importer.SetIOHandler(new FolderIOSystem(info.absolutePath().toStdString())); // Assimp ownership
    const aiScene* scene = importer.ReadFileFromMemory(bytes.data(), bytes.size(), postProcessing(formatName),
                                                        readerHint(formatName, info).c_str());
    return convert(importer, scene, info.absolutePath(), std::move(formatName));
}

core::Result<ImportedScene> AssimpImporter::importBytes(std::span<const std::uint8_t> bytes, const std::string& extensionHint) {
    std::optional<QByteArray> zeroFilled;
    if (isGltf(extensionHint)) {
        if (auto error = prepareGltf(bytes, {}, zeroFilled)) return *error;
    }
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFileFromMemory(bytes.data(), bytes.size(), postProcessing(extensionHint),
                                                        extensionHint.c_str());
    return convert(importer, scene, {}, extensionHint);
}

} // namespace orvanta::import
