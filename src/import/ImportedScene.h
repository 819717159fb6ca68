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

// An image as it is stored in the file (PNG, JPEG or TGA bytes). Decoding is left to whoever
// draws it, so an import never pays for pixels it does not show.
struct ImportedTexture {
    std::string uri;       // path inside the package or file, for diagnostics
    QByteArray encoded;    // may be a raw view over a memory-mapped file (see owner)
    std::shared_ptr<const void> owner; // keeps the bytes behind `encoded` alive

    // The pixels; TGA, which has no signature, is recognised by the uri's suffix.
    QImage decode() const;
};

// Which part of a texel a material input reads.
enum class TextureChannel { r, g, b, a, rgb, rgba };

// What a texture lookup outside [0, 1] returns.
enum class TextureWrap {
    repeat,
    clamp,   // the edge texel
    mirror,
    black,   // transparent black outside the image
};

// How the texel values are encoded. `automatic` leaves it to the image: 8-bit colour
// images are sRGB, everything else is linear.
enum class TextureColorSpace { automatic, srgb, raw };

// Affine transform of the texture coordinates before the lookup, in the kit's UV
// convention (v up): uv' = offset + rotate(rotationDegrees, scale * uv), rotation
// counter-clockwise.
struct ImportedTextureTransform {
    QVector2D offset{0.0f, 0.0f};
    float rotationDegrees = 0.0f;
    QVector2D scale{1.0f, 1.0f};

    bool isIdentity() const { return offset.isNull() && rotationDegrees == 0.0f && scale == QVector2D(1.0f, 1.0f); }
    friend bool operator==(const ImportedTextureTransform&, const ImportedTextureTransform&) = default;
};

// A material input read from a texture. The value used is `texel.channel * scale + bias`
// (component-wise over the channel's components), taken before the material's factor
// for that input multiplies it.
struct ImportedTextureRef {
    int texture = -1;                        // index into ImportedScene::textures
    TextureChannel channel = TextureChannel::rgb;
    int texCoordSet = 0;                     // 0: ImportedMesh::texCoords, 1: texCoords1
    ImportedTextureTransform transform;
    TextureWrap wrapS = TextureWrap::repeat; // along u
    TextureWrap wrapT = TextureWrap::repeat; // along v
    TextureColorSpace colorSpace = TextureColorSpace::automatic;
    QVector4D scale{1.0f, 1.0f, 1.0f, 1.0f};
    QVector4D bias{0.0f, 0.0f, 0.0f, 0.0f};

    friend bool operator==(const ImportedTextureRef&, const ImportedTextureRef&) = default;
};

// How the material's alpha (baseColorFactor.w * opacity, times the textures that feed them)
// is used.
enum class AlphaMode {
    opaque, // alpha ignored
    mask,   // drawn where alpha >= alphaCutoff, else discarded
    blend,  // blended over what is behind
};

// A metallic-roughness material. Every input is its factor, multiplied by its texture
// when it has one. Colours are linear.
struct ImportedMaterial {
    std::string name;
    QVector4D baseColorFactor{1.0f, 1.0f, 1.0f, 1.0f}; // linear RGBA
    std::optional<ImportedTextureRef> baseColorTexture; // rgb, or rgba when it carries alpha
    float metallic = 0.0f;
    std::optional<ImportedTextureRef> metallicTexture;  // one channel (glTF packing: b)
    float roughness = 0.5f;
    std::optional<ImportedTextureRef> roughnessTexture; // one channel (glTF packing: g)
    std::optional<ImportedTextureRef> normalTexture;    // tangent space; scale/bias map texels to [-1, 1]
    float normalScale = 1.0f;                           // scales the normal's x and y
    std::optional<ImportedTextureRef> occlusionTexture; // one channel (glTF packing: r)
    float occlusionStrength = 1.0f;                     // 0: no occlusion, 1: full
    QVector3D emissiveFactor{0.0f, 0.0f, 0.0f};
    std::optional<ImportedTextureRef> emissiveTexture;
    float emissiveStrength = 1.0f;                      // multiplies the emitted colour
    float opacity = 1.0f;                               // multiplies baseColorFactor.w
    std::optional<ImportedTextureRef> opacityTexture;   // one channel, multiplies opacity
    AlphaMode alphaMode = AlphaMode::opaque;
    float alphaCutoff = 0.5f;                           // used by AlphaMode::mask
    bool doubleSided = false;
    bool unlit = false;                                 // base colour shown as is, no lighting
};

// A run of triangles of one mesh drawn with one material.
struct ImportedSubset {
    std::uint32_t firstIndex = 0; // offset into ImportedMesh::indices
    std::uint32_t indexCount = 0; // a multiple of 3
    int material = -1;            // index into ImportedScene::materials, -1 for the default
};

// Triangle mesh with one vertex stream: every attribute besides positions is either empty
// or as long as positions. indices holds triangles (three per face).
struct ImportedMesh {
    std::string name;
    std::vector<QVector3D> positions;
    std::vector<QVector3D> normals;
    std::vector<QVector4D> tangents;   // xyz tangent, w = +1/-1 handedness of the bitangent
    std::vector<QVector2D> texCoords;  // texture-coordinate set 0
    std::vector<QVector2D> texCoords1; // texture-coordinate set 1
    std::vector<QVector4D> colors;     // linear RGBA, multiplies the base colour
    std::vector<std::uint32_t> indices;
    std::vector<ImportedSubset> subsets; // covers all indices; one subset when unsplit
    bool doubleSided = false;            // both faces drawn, whatever the material says

    std::size_t triangleCount() const { return indices.size() / 3; }
};

// Where copies of something are drawn: one entry per copy.
struct InstanceTable {
    std::vector<QMatrix4x4> transforms; // per copy: the copied thing's space to the table holder's space
    std::vector<QVector4D> colors;      // per copy, linear RGBA multiplying the base colour; empty or one per copy

    std::size_t size() const { return transforms.size(); }
};

// A prototype drawn once per entry of a table. The prototype is a node tree of its own: its
// root is a node without a parent, reached only through the instances that place it, and its
// root's local transform is applied before the table's.
struct ImportedInstances {
    int prototype = -1; // index into ImportedScene::nodes
    InstanceTable table;
};

// One mesh of a prototype with every copy of it that a table makes, through the prototype's
// nodes and any tables nested in it: what a renderer draws as one instanced model.
struct InstancedMesh {
    int mesh = -1;                              // index into ImportedScene::meshes
    std::shared_ptr<const InstanceTable> table; // mesh space to the space of the node holding the instances
};

// What drawing a scene costs, with every copy counted and nothing expanded. A mesh drawn by a
// node is one draw per subset; an instanced mesh is one draw per subset for all its copies.
// Counts saturate at the largest value instead of wrapping.
struct DrawCost {
    std::uint64_t triangles = 0;
    std::uint64_t drawCalls = 0;
    std::uint64_t instances = 0; // copies placed by instance tables, nested tables multiplied out
};

// A node may list a mesh that other nodes list too: instances share one mesh.
struct ImportedNode {
    std::string name;
    QMatrix4x4 localTransform;  // relative to the parent node
    int parent = -1;            // -1 for the root (node 0) and the roots of prototypes
    std::vector<int> children;  // indices into ImportedScene::nodes, in file order
    std::vector<int> meshes;    // indices into ImportedScene::meshes
    std::vector<ImportedInstances> instances; // prototypes drawn many times in this node's space
};

struct Bounds {
    QVector3D min;
    QVector3D max;
    bool empty = true;

    void add(const QVector3D& point);
    // Adds the eight corners of `box` mapped by `matrix`.
    void add(const Bounds& box, const QMatrix4x4& matrix);
};

struct ImportedScene {
    std::string format;                    // "usdz", "usda", "usdc", "gltf", "glb", ...
    std::vector<ImportedNode> nodes;       // nodes[0] is the root; prototypes follow their own roots
    std::vector<ImportedMesh> meshes;
    std::vector<ImportedMaterial> materials;
    std::vector<ImportedTexture> textures;

    // Axis-aligned bounds of all meshes in root space, in metres, with every instance.
    Bounds bounds() const;
    // Vertices and triangles stored, each mesh once however often it is drawn.
    std::size_t vertexCount() const;
    std::size_t triangleCount() const;
    // What drawing the tree under the root costs. Linear in the nodes and tables.
    DrawCost drawCost() const;
    // The meshes `instances` draws, in the order first met, each with all its copies.
    std::vector<InstancedMesh> instancedMeshes(const ImportedInstances& instances) const;
    // Replaces every instance table by one node per copy holding a copy of the prototype's
    // nodes (meshes are shared), for writers of formats that cannot instance. Returns the
    // number of copies made.
    std::size_t expandInstances();
};

} // namespace orvanta::import
