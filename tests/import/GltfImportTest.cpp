// glTF 2.0 and GLB through the scene importer: corpus models with hand-checked counts,
// external and embedded buffers and images, data URIs, Draco, layouts that would mislead
// Assimp's reader, and the imported node order.
#include "ImportTestHelpers.h"
#include "import/ImportError.h"
#include "import/SceneImporter.h"
#include "support/Corpus.h"
#include "support/ExpectImportError.h"
#include "support/TestModels.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>


namespace orvanta::import {
namespace {

ImportedScene importFileOk(const std::filesystem::path& path) { return importOk(SceneImporter::importFile(path.string())); }

TEST(GltfImportTest, CorpusModelsImportWithTheirCounts) {
    const CorpusCounts cases[] = {
        {"glb/Box.glb", "glb", 1, 1, 0, 24, 12},
        {"glb/Box_Draco.glb", "glb", 1, 1, 0, 24, 12},  // Debian's Assimp decodes Draco
        {"glb/Duck.glb", "glb", 1, 1, 1, 2399, 4212},  // its PNG inside the binary chunk
        // Two glTF meshes: the body has three primitives (one per material), the wheels one;
        // each primitive becomes a mesh of its own. The buffer and image lie beside the file.
        {"gltf/CesiumMilkTruck/CesiumMilkTruck.gltf", "gltf", 4, 4, 1, 2978, 2856},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        ORVANTA_CORPUS_FILE(path, c.file);
        expectCounts(importFileOk(path), c);
    }
    ORVANTA_CORPUS_FILE(duck, "glb/Duck.glb");
    const ImportedScene scene = importFileOk(duck);
    EXPECT_EQ(scene.meshes.at(0).texCoords.size(), scene.meshes[0].positions.size());
    EXPECT_EQ(scene.materials.at(0).baseColorTexture->texture, 0);
    EXPECT_EQ(scene.textures.at(0).decode().size(), QSize(512, 512));

    // Both of the truck's textured materials use its one image file, loaded once. (Assimp
    // does not keep the file's material order, so they are found by name.)
    ORVANTA_CORPUS_FILE(truckPath, "gltf/CesiumMilkTruck/CesiumMilkTruck.gltf");
    const ImportedScene truck = importFileOk(truckPath);
    EXPECT_EQ(truck.nodes.size(), 5u);
    for (const char* name : {"truck", "wheels", "glass"}) ASSERT_NE(named(truck.materials, name), nullptr) << name;
    EXPECT_EQ(named(truck.materials, "truck")->baseColorTexture->texture, 0);
    EXPECT_EQ(named(truck.materials, "wheels")->baseColorTexture->texture, 0);
    EXPECT_FALSE(named(truck.materials, "glass")->baseColorTexture);
    EXPECT_NEAR(named(truck.materials, "glass")->baseColorFactor.y(), 0.0405063f, 1e-6f);
    EXPECT_EQ(truck.textures.at(0).encoded.size(), 427633);
}

TEST(GltfImportTest, TheBoxKeepsItsNormalsMaterialAndSize) {
    ORVANTA_CORPUS_FILE(path, "glb/Box.glb");
    const ImportedScene plain = importFileOk(path);
    ASSERT_EQ(plain.meshes.size(), 1u);
    EXPECT_EQ(plain.meshes[0].normals.size(), 24u);
    EXPECT_TRUE(plain.meshes[0].texCoords.empty());
    EXPECT_EQ(plain.materials.at(0).name, "Red");
    EXPECT_EQ(plain.materials[0].baseColorFactor, QVector4D(0.8f, 0.0f, 0.0f, 1.0f));
    EXPECT_EQ(plain.materials[0].metallic, 0.0f);
    expectNear(plain.bounds().min, {-0.5f, -0.5f, -0.5f});
    expectNear(plain.bounds().max, {0.5f, 0.5f, 0.5f});
}

// A one-triangle glTF whose buffer, and its base-colour image when `png` is given, are base64
// data URIs.
QJsonObject gltfWithDataUris(const QByteArray& png = {}) {
    const float floats[15] = {0, 0, 0, 0.2f, 0, 0, 0, 0.3f, 0, /* texture coordinates */ 0, 0, 1, 0, 0, 1};
    const quint16 indices[4] = {0, 1, 2, 0}; // the last one pads the buffer to four bytes
    QByteArray bin(reinterpret_cast<const char*>(floats), sizeof floats);
    bin.append(reinterpret_cast<const char*>(indices), sizeof indices);
    QJsonObject gltf = QJsonDocument::fromJson(R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
  "nodes": [{"name": "tri", "mesh": 0}], "materials": [{}],
  "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "TEXCOORD_0": 1}, "indices": 2, "material": 0}]}],
  "bufferViews": [{"buffer": 0, "byteOffset": 0, "byteLength": 36}, {"buffer": 0, "byteOffset": 36, "byteLength": 24},
                  {"buffer": 0, "byteOffset": 60, "byteLength": 6}],
  "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3", "min": [0, 0, 0], "max": [0.2, 0.3, 0]},
                {"bufferView": 1, "componentType": 5126, "count": 3, "type": "VEC2"},
                {"bufferView": 2, "componentType": 5123, "count": 3, "type": "SCALAR"}]})").object();
    gltf["buffers"] = QJsonArray{QJsonObject{{"byteLength", bin.size()}, {"uri", dataUri("application/octet-stream", bin)}}};
    if (png.isEmpty()) return gltf;
    gltf["materials"] = QJsonArray{QJsonObject{{"pbrMetallicRoughness", QJsonObject{{"baseColorTexture", QJsonObject{{"index", 0}}}}}}};
    gltf["textures"] = QJsonArray{QJsonObject{{"source", 0}}};
    gltf["images"] = QJsonArray{QJsonObject{{"uri", dataUri("image/png", png)}}};
    return gltf;
}

QByteArray json(const QJsonObject& gltf) { return QJsonDocument(gltf).toJson(QJsonDocument::Compact); }

// A file whose buffer and image are data URIs reads neither from the disk.
TEST(GltfImportTest, DataUriBufferAndImageNeedNoOtherFile) {
    QTemporaryDir dir;
    const std::string path = dir.filePath("inline.gltf").toStdString();
    testing::TestModels::write(path, json(gltfWithDataUris(pngOf(Qt::red, {4, 2}))));
    const ImportedScene scene = importFileOk(path);
    EXPECT_EQ(scene.format, "gltf");
    ASSERT_EQ(scene.meshes.size(), 1u);
    EXPECT_EQ(scene.meshes[0].indices, (std::vector<std::uint32_t>{0, 1, 2}));
    ASSERT_EQ(scene.textures.size(), 1u);
    EXPECT_EQ(scene.textures[0].decode().pixelColor(3, 1), QColor(Qt::red));
    ASSERT_GE(scene.meshes[0].subsets.at(0).material, 0);
    EXPECT_EQ(scene.materials[static_cast<std::size_t>(scene.meshes[0].subsets[0].material)].baseColorTexture->texture, 0);
}

const QJsonValue removed(QJsonValue::Undefined);

// `gltf` with `value` set at `key` (or the key removed) of item `index` of the top-level
// array `array`, or of the first mesh's primitives when `array` is "primitive".
QJsonObject edited(QJsonObject gltf, const QString& array, int index, const char* key, const QJsonValue& value) {
    const bool primitive = array == "primitive";
    QJsonArray items = primitive ? gltf["meshes"].toArray()[0].toObject()["primitives"].toArray() : gltf[array].toArray();
    QJsonObject item = items[index].toObject();
    if (value.isUndefined()) item.remove(key);
    else item[key] = value;
    items[index] = item;
    if (primitive) gltf["meshes"] = QJsonArray{QJsonObject{{"primitives", items}}};
    else gltf[array] = items;
    return gltf;
}

// Assimp's glTF reader trusts accessor, chunk and index ranges, reads past its buffers,
// allocated about 64 GiB or read address 1 on such declarations (found by fuzzing), and
// crashes on some line loops: such files end as errors before it sees them. Valid files that
// merely look like them still load.
TEST(GltfImportTest, LayoutsThatMisleadTheReaderAreRejectedBeforeReading) {
    using C = ImportErrorCode;
    const QJsonObject good = gltfWithDataUris(pngOf(Qt::red));
    const QByteArray glb = testing::TestModels::glbWithNodes(1);
    const QJsonObject noPositions = edited(edited(good, "primitive", 0, "attributes", QJsonObject{}), "primitive", 0, "indices", removed);
    const QJsonObject zeros = edited(edited(good, "accessors", 1, "count", 1 << 25), "accessors", 1, "bufferView", removed);
    const struct {
        QByteArray bytes;
        C code;
        const char* message;
        const char* hint = "gltf";
    } cases[] = {
        // Positions starting 4 bytes into their 36-byte view run 4 bytes past it.
        {json(edited(good, "accessors", 0, "byteOffset", 4)), C::malformedData, "accessor 0 reads past the end of its buffer view"},
        {json(edited(good, "accessors", 0, "count", 1e300)), C::malformedData, "accessor 0 has no valid count"},
        {json(edited(good, "accessors", 1, "count", 0)), C::malformedData, "accessor 1 has no valid count"},
        {json(edited(good, "bufferViews", 2, "byteLength", 12)), C::malformedData, "buffer view 2 does not lie inside its buffer"},
        {json(edited(good, "buffers", 0, "byteLength", 4096)), C::malformedData, "buffer 0 declares 4096 bytes but has 68"},
        {"{\"asset\": ", C::malformedData, "the JSON cannot be read"},
        {json(edited(good, "primitive", 0, "mode", 2)), C::unsupportedFeature, ""},
        // A strip with neither positions nor indices has no vertices; a fan of one index.
        {json(edited(noPositions, "primitive", 0, "mode", 5)), C::malformedData, "mesh 0 primitive 0 has 0 elements, too few"},
        {json(edited(edited(good, "accessors", 2, "count", 1), "primitive", 0, "mode", 6)), C::malformedData,
         "has 1 elements, too few for one primitive of mode 6"},
        {json(edited(good, "images", 0, "mimeType", "imagepng")), C::malformedData, "image 0 has a mimeType that is not image/<type>"},
        {json(edited(good, "textures", 0, "source", 3)), C::malformedData, "texture 0 names a missing image"},
        {json(edited(good, "textures", 0, "source", 1)), C::malformedData, "texture 0 names a missing image"},  // one past the last
        {json(edited(good, "bufferViews", 0, "byteStride", 6)), C::malformedData, "buffer view 0 has a byteStride that is not 4 to 252"},
        {json(edited(good, "bufferViews", 0, "byteStride", 8)), C::malformedData,
         "accessor 0 has elements larger than its buffer view's byteStride"},
        {json(edited(good, "primitive", 0, "indices", 0)), C::malformedData, "indices that are not an accessor of unsigned integers"},
        {json(edited(good, "primitive", 0, "attributes", QJsonObject{{"POSITION", 9}})), C::malformedData,
         "names a missing accessor for POSITION"},
        // Without a buffer view an accessor is zeros, and its count is bounded by no bytes.
        {json(zeros), C::limitExceeded, "accessor 1 declares 33554432 elements"},
        // A GLB whose JSON chunk claims more bytes than the file holds (Assimp allocated
        // 4 GiB), or whose BIN chunk is cut short.
        {glb.left(40), C::malformedData, "a GLB chunk runs past the end of the file", "glb"},
        {glb.left(glb.size() - 8), C::malformedData, "a GLB chunk runs past the end of the file", "glb"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        testing::expectImportError(importGltf(c.bytes, c.hint), c.code, c.message);
    }
    // The same three indices as a strip or fan draw one triangle.
    for (int mode : {5, 6}) EXPECT_TRUE(importGltf(json(edited(good, "primitive", 0, "mode", mode)))) << mode;
    EXPECT_TRUE(importGltf(glb, "glb"));
}

// An accessor without a buffer view reads as zeros, with any sparse values written on top:
// texture coordinates left all zero, and positions whose two non-zero vertices come sparsely.
// The same document loads as glTF and as a GLB with its first buffer in the binary chunk.
TEST(GltfImportTest, AccessorsWithoutABufferViewReadAsZerosUnderTheirSparseValues) {
    QJsonObject gltf = gltfWithDataUris();
    const quint16 sparseIndices[2] = {1, 2};
    const float sparseValues[6] = {0.2f, 0, 0, 0, 0.3f, 0};
    QByteArray sparse(reinterpret_cast<const char*>(sparseIndices), sizeof sparseIndices);
    sparse.append(reinterpret_cast<const char*>(sparseValues), sizeof sparseValues);
    QJsonArray buffers = gltf["buffers"].toArray(), views = gltf["bufferViews"].toArray();
    buffers.append(QJsonObject{{"byteLength", sparse.size()}, {"uri", dataUri("application/octet-stream", sparse)}});
    views.append(QJsonObject{{"buffer", 1}, {"byteLength", 4}});
    views.append(QJsonObject{{"buffer", 1}, {"byteOffset", 4}, {"byteLength", 24}});
    gltf["buffers"] = buffers;
    gltf["bufferViews"] = views;
    gltf = edited(edited(gltf, "accessors", 0, "bufferView", removed), "accessors", 1, "bufferView", removed);
    gltf = edited(gltf, "accessors", 0, "sparse",
                  QJsonObject{{"count", 2}, {"indices", QJsonObject{{"bufferView", 3}, {"componentType", 5123}}},
                              {"values", QJsonObject{{"bufferView", 4}}}});
    QJsonObject first = buffers[0].toObject();
    const QByteArray bin = QByteArray::fromBase64(first.take("uri").toString().section(',', 1).toLatin1());
    const QByteArray glb = testing::TestModels::glb(json(edited(gltf, "buffers", 0, "uri", removed)), bin);

    for (const auto& [bytes, hint] : {std::pair{json(gltf), "gltf"}, std::pair{glb, "glb"}}) {
        SCOPED_TRACE(hint);
        const ImportedScene scene = importOk(importGltf(bytes, hint));
        ASSERT_EQ(scene.meshes.size(), 1u);
        const ImportedMesh& mesh = scene.meshes[0];
        ASSERT_EQ(mesh.positions.size(), 3u);
        expectNear(mesh.positions[0], {0, 0, 0});
        expectNear(mesh.positions[1], {0.2f, 0, 0});
        expectNear(mesh.positions[2], {0, 0.3f, 0});
        ASSERT_EQ(mesh.texCoords.size(), 3u);
        // Zeros in glTF's top-left texture space, which the import turns bottom-left.
        for (const QVector2D& uv : mesh.texCoords) EXPECT_EQ(uv, QVector2D(0, 1));
    }
}

// A GLB of one Draco-compressed triangle made by hand (sequential connectivity, raw float
// positions), its accessors claiming `indices` indices and `positions` positions.
QByteArray dracoTriangleGlb(int indices, int positions) {
    QByteArray stream("DRACO\x02\x02\x01\x00\x00\x00", 11);      // version 2.2, mesh, sequential, no flags
    stream.append("\x01\x03\x01\x00\x01\x02", 6);                   // 1 face, 3 points, raw indices 0 1 2
    stream.append("\x01\x01\x00\x09\x03\x00\x00\x00", 8);         // 1 decoder: POSITION, float x 3, raw values
    const float points[9] = {0, 0, 0, 0.2f, 0, 0, 0, 0.3f, 0};
    stream.append(reinterpret_cast<const char*>(points), sizeof points);
    const QString gltf = QString(R"({"asset": {"version": "2.0"}, "extensionsUsed": ["KHR_draco_mesh_compression"],
  "scene": 0, "scenes": [{"nodes": [0]}], "nodes": [{"mesh": 0}],
  "meshes": [{"primitives": [{"attributes": {"POSITION": 1}, "indices": 0, "extensions":
      {"KHR_draco_mesh_compression": {"bufferView": 0, "attributes": {"POSITION": 0}}}}]}],
  "buffers": [{"byteLength": %1}], "bufferViews": [{"buffer": 0, "byteLength": %2}],
  "accessors": [{"componentType": 5121, "count": %3, "type": "SCALAR"},
                {"componentType": 5126, "count": %4, "type": "VEC3", "min": [0, 0, 0], "max": [0.2, 0.3, 0]}]})")
                             .arg((stream.size() + 3) / 4 * 4).arg(stream.size()).arg(indices).arg(positions);
    return testing::TestModels::glb(gltf.toUtf8(), stream);
}

// The reader sizes a compressed primitive's decoded indices and attributes by its stream, then
// reads as many elements as the accessors claim (found by fuzzing: it refused the file, but
// leaked on the way); such accessors end as layout errors before it sees them.
TEST(GltfImportTest, CompressedPrimitivesClaimNoMoreThanTheirStreamDecodesTo) {
    const struct {
        int indices, positions;
        std::string error;
    } cases[] = {
        {3, 3, ""},
        {6, 3, "mesh 0 primitive 0 claims more indices than its compressed mesh's 1 faces hold"},
        {3, 4, "mesh 0 primitive 0 claims more POSITION values than its compressed mesh's 3 points"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        const auto result = importGltf(dracoTriangleGlb(c.indices, c.positions), "glb");
        if (c.error.empty()) {
            ASSERT_TRUE(result) << result.error().description();
            ASSERT_EQ(result->meshes.size(), 1u);
            expectNear(result->meshes[0].positions.at(2), {0, 0.3f, 0});
        } else {
            ASSERT_FALSE(result);
            EXPECT_EQ(result.error().localizedDescription(), "Broken glTF layout: " + c.error);
        }
    }
}

// Three nodes named node0..node2 under the root keep the file's order, their meshes and places.
TEST(GltfImportTest, NodesKeepFileOrderAndParents) {
    const ImportedScene scene = importOk(importGltf(testing::TestModels::glbWithNodes(3), "glb"));
    ASSERT_EQ(scene.nodes.size(), 4u);
    EXPECT_EQ(scene.nodes[0].parent, -1);
    ASSERT_EQ(scene.nodes[0].children.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const ImportedNode& node = scene.nodes[static_cast<std::size_t>(scene.nodes[0].children[i])];
        EXPECT_EQ(node.name, "node" + std::to_string(i));
        EXPECT_EQ(node.parent, 0);
        EXPECT_EQ(node.meshes, std::vector<int>{0});
        expectNear(node.localTransform.column(3).toVector3D(), {float(i), 0, 0});
    }
}

} // namespace
} // namespace orvanta::import
