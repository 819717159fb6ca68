#pragma once
// Format-neutral result of importing a model file: a node tree, meshes, PBR materials and
// encoded textures. Every importer (USDZ/USDA/USDC, and glTF/GLB/OBJ/... through Assimp)
// produces this; the adapters turn it into an AR entity tree or a 3D-viewer node tree.
//
// Conventions: Y up, lengths in metres, right-handed, counter-clockwise front faces,
// texture coordinates with (0, 0) at the image's bottom-left corner (v grows upwards).
// Thread: a value type; build it on any thread, hand it over by move.

#include <QByteArray>
#include <QImage>
#include <QMatrix4x4>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::import {

// An image as it is stored in the file (PNG or JPEG bytes). Decoding is left to whoever
// draws it, so an import never pays for pixels it does not show.
struct ImportedTexture {
    std::string uri;       // path inside the package or file, for diagnostics
    QByteArray encoded;    // may be a raw view over a memory-mapped file (see owner)
    std::shared_ptr<const void> owner; // keeps the bytes behind `encoded` alive

    QImage decode() const { return QImage::fromData(encoded); }
};

struct ImportedMaterial {
    std::string name;
    QVector4D baseColorFactor{1.0f, 1.0f, 1.0f, 1.0f}; // linear RGBA
    std::optional<int> baseColorTexture;               // index into ImportedScene::textures
    float metallic = 0.0f;
    float roughness = 0.5f;
    std::optional<int> metallicRoughnessTexture;        // glTF packing: G roughness, B metallic
    QVector3D emissiveFactor{0.0f, 0.0f, 0.0f};
    std::optional<int> emissiveTexture;
    float opacity = 1.0f;
    std::optional<int> normalTexture;
};

// A run of triangles of one mesh drawn with one material.
struct ImportedSubset {
    std::uint32_t firstIndex = 0; // offset into ImportedMesh::indices
    std::uint32_t indexCount = 0; // a multiple of 3
    int material = -1;            // index into ImportedScene::materials, -1 for the default
};

// Triangle mesh with one vertex stream: normals and texCoords are either empty or as long
// as positions. indices holds triangles (three per face).
struct ImportedMesh {
    std::string name;
    std::vector<QVector3D> positions;
    std::vector<QVector3D> normals;
    std::vector<QVector2D> texCoords;
    std::vector<std::uint32_t> indices;
    std::vector<ImportedSubset> subsets; // covers all indices; one subset when unsplit

    std::size_t triangleCount() const { return indices.size() / 3; }
};

struct ImportedNode {
    std::string name;
    QMatrix4x4 localTransform;  // relative to the parent node
    int parent = -1;            // -1 only for the root (node 0)
    std::vector<int> children;  // indices into ImportedScene::nodes, in file order
    std::vector<int> meshes;    // indices into ImportedScene::meshes
};

struct Bounds {
    QVector3D min;
    QVector3D max;
    bool empty = true;
};

struct ImportedScene {
    std::string format;                    // "usdz", "usda", "usdc", "gltf", "glb", ...
    std::vector<ImportedNode> nodes;       // nodes[0] is the root
    std::vector<ImportedMesh> meshes;
    std::vector<ImportedMaterial> materials;
    std::vector<ImportedTexture> textures;

    // Axis-aligned bounds of all meshes in root space, in metres.
    Bounds bounds() const;
    std::size_t vertexCount() const;
    std::size_t triangleCount() const;
};

} // namespace orvanta::import
