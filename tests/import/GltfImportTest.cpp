// glTF 2.0 and GLB through the scene importer: corpus models with hand-checked counts,
// external and embedded buffers and images, data URIs, Draco rejection, and the two
// adapters (entity tree and scene-node tree) mirroring the imported node order.
#include "import/AssimpImporter.h"
#include "import/ImportError.h"
#include "import/SceneImporter.h"
#include "reality/ModelEntity.h"
#include "scenegraph/SceneNodeBuilder.h"
#include "support/Corpus.h"
#include "support/TestModels.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <array>
#include <cstring>
#include <map>

namespace orvanta::import {
namespace {

ImportedScene importOrFail(const std::filesystem::path& path) {
    auto result = SceneImporter::importFile(path.string());
    if (!result) {
        ADD_FAILURE() << path << ": " << result.error().description();
        return {};
    }
    return std::move(result).value();
}

void expectNear(const QVector3D& actual, const QVector3D& expected, float tolerance = 1e-4f) {
    EXPECT_LT((actual - expected).length(), tolerance)
        << "(" << actual.x() << ", " << actual.y() << ", " << actual.z() << ")";
}

TEST(GltfImportTest, BoxGlbHasOneUntexturedMaterialAndTwentyFourVertices) {
    ORVANTA_CORPUS_FILE(path, "glb/Box.glb");
    const ImportedScene scene = importOrFail(path);
    EXPECT_EQ(scene.format, "glb");
    ASSERT_EQ(scene.meshes.size(), 1u);
    EXPECT_EQ(scene.vertexCount(), 24u);
    EXPECT_EQ(scene.triangleCount(), 12u);
    EXPECT_EQ(scene.meshes[0].normals.size(), 24u);
    EXPECT_TRUE(scene.meshes[0].texCoords.empty());
    ASSERT_EQ(scene.materials.size(), 1u);
    EXPECT_EQ(scene.materials[0].name, "Red");
    EXPECT_EQ(scene.materials[0].baseColorFactor, QVector4D(0.8f, 0.0f, 0.0f, 1.0f));
    EXPECT_EQ(scene.materials[0].metallic, 0.0f);
    EXPECT_FALSE(scene.materials[0].baseColorTexture);
    EXPECT_TRUE(scene.textures.empty());
    const Bounds bounds = scene.bounds();
    expectNear(bounds.min, {-0.5f, -0.5f, -0.5f});
    expectNear(bounds.max, {0.5f, 0.5f, 0.5f});
}

TEST(GltfImportTest, DuckGlbCarriesItsPngInsideTheBinaryChunk) {
    ORVANTA_CORPUS_FILE(path, "glb/Duck.glb");
    const ImportedScene scene = importOrFail(path);
    ASSERT_EQ(scene.meshes.size(), 1u);
    EXPECT_EQ(scene.vertexCount(), 2399u);
    EXPECT_EQ(scene.triangleCount(), 4212u);
    EXPECT_EQ(scene.meshes[0].texCoords.size(), scene.meshes[0].positions.size());
    ASSERT_EQ(scene.textures.size(), 1u);
    ASSERT_EQ(scene.materials.size(), 1u);
    EXPECT_EQ(scene.materials[0].baseColorTexture->texture, 0);
    const QImage image = scene.textures[0].decode();
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(512, 512));
}

TEST(GltfImportTest, MilkTruckResolvesItsBufferAndImageBesideTheGltf) {
    ORVANTA_CORPUS_FILE(path, "gltf/CesiumMilkTruck/CesiumMilkTruck.gltf");
    const ImportedScene scene = importOrFail(path);
    EXPECT_EQ(scene.format, "gltf");
    // Two glTF meshes: the body has three primitives (one per material), the wheels one;
    // each primitive becomes a mesh of its own.
    EXPECT_EQ(scene.meshes.size(), 4u);
    EXPECT_EQ(scene.nodes.size(), 5u);
    EXPECT_EQ(scene.vertexCount(), 2978u);
    EXPECT_EQ(scene.triangleCount(), 2856u);
    ASSERT_EQ(scene.materials.size(), 4u);
    // Both textured materials use the one image file; it is loaded once. (Assimp does not keep
    // the file's material order, so they are found by name.)
    ASSERT_EQ(scene.textures.size(), 1u);
    std::map<std::string, const ImportedMaterial*> byName;
    for (const ImportedMaterial& material : scene.materials) byName[material.name] = &material;
    ASSERT_EQ(byName.size(), 4u);
    EXPECT_EQ(byName["truck"]->baseColorTexture->texture, 0);
    EXPECT_EQ(byName["wheels"]->baseColorTexture->texture, 0);
    EXPECT_FALSE(byName["glass"]->baseColorTexture);
    EXPECT_FALSE(byName["window_trim"]->baseColorTexture);
    EXPECT_NEAR(byName["glass"]->baseColorFactor.y(), 0.0405063f, 1e-6f);
    EXPECT_NEAR(byName["window_trim"]->baseColorFactor.x(), 0.064f, 1e-6f);
    EXPECT_EQ(byName["truck"]->metallic, 0.0f);
    EXPECT_EQ(scene.textures[0].encoded.size(), 427633);
    EXPECT_FALSE(scene.textures[0].decode().isNull());
}

// Debian's Assimp is built with the Draco decoder, so the compressed box decodes; its
// triangles must be those of the plain box, whatever order Draco gave the vertices.
TEST(GltfImportTest, DracoCompressedBoxDecodesToThePlainBox) {
    ORVANTA_CORPUS_FILE(plainPath, "glb/Box.glb");
    ORVANTA_CORPUS_FILE(dracoPath, "glb/Box_Draco.glb");
    const ImportedScene plain = importOrFail(plainPath);
    const ImportedScene draco = importOrFail(dracoPath);
    ASSERT_EQ(draco.meshes.size(), 1u);
    ASSERT_EQ(plain.meshes.size(), 1u);
    EXPECT_EQ(draco.vertexCount(), 24u);
    ASSERT_EQ(draco.triangleCount(), 12u);
    EXPECT_EQ(draco.materials.size(), 1u);
    const auto corners = [](const ImportedMesh& mesh, std::size_t triangle) {
        std::array<QVector3D, 3> points;
        for (std::size_t k = 0; k < 3; ++k) points[k] = mesh.positions[mesh.indices[triangle * 3 + k]];
        return points;
    };
    const auto same = [](const std::array<QVector3D, 3>& a, const std::array<QVector3D, 3>& b) {
        // Equal up to a rotation of the corners (the winding must be kept).
        for (std::size_t shift = 0; shift < 3; ++shift) {
            bool all = true;
            for (std::size_t k = 0; k < 3; ++k) all = all && (a[k] - b[(k + shift) % 3]).length() < 1e-3f;
            if (all) return true;
        }
        return false;
    };
    for (std::size_t t = 0; t < draco.triangleCount(); ++t) {
        bool found = false;
        for (std::size_t u = 0; u < plain.triangleCount() && !found; ++u)
            found = same(corners(draco.meshes[0], t), corners(plain.meshes[0], u));
        EXPECT_TRUE(found) << "triangle " << t;
    }
    expectNear(draco.bounds().min, plain.bounds().min);
    expectNear(draco.bounds().max, plain.bounds().max);
}

// A one-triangle glTF whose buffer, and optionally its base-colour image, are base64 data URIs.
QByteArray gltfWithDataUris(const QByteArray& png) {
    const float positions[9] = {0, 0, 0, 0.2f, 0, 0, 0, 0.3f, 0};
    const float uvs[6] = {0, 0, 1, 0, 0, 1};
    const quint16 indices[4] = {0, 1, 2, 0}; // last one pads the buffer to four bytes
    QByteArray bin(reinterpret_cast<const char*>(positions), sizeof positions);
    bin.append(reinterpret_cast<const char*>(uvs), sizeof uvs);
    bin.append(reinterpret_cast<const char*>(indices), sizeof indices);
    QJsonObject primitive{{"attributes", QJsonObject{{"POSITION", 0}, {"TEXCOORD_0", 1}}}, {"indices", 2}};
    QJsonObject gltf{
        {"asset", QJsonObject{{"version", "2.0"}}},
        {"scene", 0},
        {"scenes", QJsonArray{QJsonObject{{"nodes", QJsonArray{0}}}}},
        {"nodes", QJsonArray{QJsonObject{{"name", "tri"}, {"mesh", 0}}}},
        {"buffers", QJsonArray{QJsonObject{{"byteLength", bin.size()},
                                           {"uri", "data:application/octet-stream;base64," + QString::fromLatin1(bin.toBase64())}}}},
        {"bufferViews", QJsonArray{QJsonObject{{"buffer", 0}, {"byteOffset", 0}, {"byteLength", 36}},
                                   QJsonObject{{"buffer", 0}, {"byteOffset", 36}, {"byteLength", 24}},
                                   QJsonObject{{"buffer", 0}, {"byteOffset", 60}, {"byteLength", 6}}}},
        {"accessors", QJsonArray{QJsonObject{{"bufferView", 0}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"},
                                             {"min", QJsonArray{0, 0, 0}}, {"max", QJsonArray{0.2, 0.3, 0}}},
                                 QJsonObject{{"bufferView", 1}, {"componentType", 5126}, {"count", 3}, {"type", "VEC2"}},
                                 QJsonObject{{"bufferView", 2}, {"componentType", 5123}, {"count", 3}, {"type", "SCALAR"}}}},
    };
    if (!png.isEmpty()) {
        primitive["material"] = 0;
        gltf["materials"] = QJsonArray{QJsonObject{
            {"pbrMetallicRoughness", QJsonObject{{"baseColorTexture", QJsonObject{{"index", 0}}}}}}};
        gltf["textures"] = QJsonArray{QJsonObject{{"source", 0}}};
        gltf["images"] = QJsonArray{QJsonObject{{"uri", "data:image/png;base64," + QString::fromLatin1(png.toBase64())}}};
    }
    gltf["meshes"] = QJsonArray{QJsonObject{{"primitives", QJsonArray{primitive}}}};
    return QJsonDocument(gltf).toJson();
}

QByteArray redPng() {
    QImage image(4, 2, QImage::Format_RGBA8888);
    image.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

TEST(GltfImportTest, DataUriBufferAndImageNeedNoOtherFile) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string path = dir.filePath("inline.gltf").toStdString();
    testing::TestModels::write(path, gltfWithDataUris(redPng()));
    const ImportedScene scene = importOrFail(path);
    EXPECT_EQ(scene.format, "gltf");
    ASSERT_EQ(scene.meshes.size(), 1u);
    const ImportedMesh& mesh = scene.meshes[0];
    ASSERT_EQ(mesh.positions.size(), 3u);
    expectNear(mesh.positions[1], {0.2f, 0, 0});
    expectNear(mesh.positions[2], {0, 0.3f, 0});
    EXPECT_EQ(mesh.indices, (std::vector<std::uint32_t>{0, 1, 2}));
    ASSERT_EQ(mesh.texCoords.size(), 3u);
    ASSERT_EQ(scene.textures.size(), 1u);
    const QImage image = scene.textures[0].decode();
    EXPECT_EQ(image.size(), QSize(4, 2));
    EXPECT_EQ(image.pixelColor(3, 1), QColor(Qt::red));
    ASSERT_FALSE(mesh.subsets.empty());
    ASSERT_GE(mesh.subsets[0].material, 0);
    EXPECT_EQ(scene.materials[static_cast<std::size_t>(mesh.subsets[0].material)].baseColorTexture->texture, 0);
}

TEST(GltfImportTest, DataUriGltfLoadsTheSameFromMemory) {
    const QByteArray gltf = gltfWithDataUris({});
    const auto result = AssimpImporter::importBytes(
        std::span(reinterpret_cast<const std::uint8_t*>(gltf.constData()), static_cast<std::size_t>(gltf.size())), "gltf");
    ASSERT_TRUE(result) << result.error().description();
    EXPECT_EQ(result->vertexCount(), 3u);
    EXPECT_TRUE(result->textures.empty());
}

core::Result<ImportedScene> importGltfBytes(const QByteArray& bytes, const std::string& hint) {
    return AssimpImporter::importBytes(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.constData()), static_cast<std::size_t>(bytes.size())), hint);
}

// Assimp's glTF reader trusts accessor and chunk ranges and reads past its buffers (found by
// fuzzing); such files must end as errors before it sees them.
TEST(GltfImportTest, RangesThatLieAboutTheirBuffersAreRejectedBeforeReading) {
    const auto expectBroken = [](const QByteArray& bytes, const std::string& hint, const std::string& what) {
        const auto result = importGltfBytes(bytes, hint);
        ASSERT_FALSE(result) << what;
        EXPECT_EQ(result.error().code(), static_cast<int>(ImportErrorCode::malformedData));
        EXPECT_NE(result.error().localizedDescription().find(what), std::string::npos) << result.error().localizedDescription();
    };
    const QJsonObject good = QJsonDocument::fromJson(gltfWithDataUris({})).object();
    const auto edited = [&](const char* array, int index, const char* key, const QJsonValue& value) {
        QJsonObject gltf = good;
        QJsonArray items = gltf[array].toArray();
        QJsonObject item = items[index].toObject();
        item[key] = value;
        items[index] = item;
        gltf[array] = items;
        return QJsonDocument(gltf).toJson();
    };
    // Positions starting 4 bytes into their 36-byte view run 4 bytes past it.
    expectBroken(edited("accessors", 0, "byteOffset", 4), "gltf", "accessor 0 reads past the end of its buffer view");
    expectBroken(edited("accessors", 0, "count", 1e300), "gltf", "accessor 0 has no valid count");
    expectBroken(edited("bufferViews", 2, "byteLength", 12), "gltf", "buffer view 2 does not lie inside its buffer");
    expectBroken(edited("buffers", 0, "byteLength", 4096), "gltf", "buffer 0 declares 4096 bytes but has 68");
    expectBroken(QByteArray("{\"asset\": "), "gltf", "the JSON cannot be read");

    // Line loops crash Assimp's reader on some inputs; they are refused as unsupported.
    QJsonObject loop = good;
    QJsonArray meshes = loop["meshes"].toArray();
    QJsonObject mesh = meshes[0].toObject();
    QJsonObject primitive = mesh["primitives"].toArray()[0].toObject();
    primitive["mode"] = 2;
    mesh["primitives"] = QJsonArray{primitive};
    meshes[0] = mesh;
    loop["meshes"] = meshes;
    const auto refused = importGltfBytes(QJsonDocument(loop).toJson(), "gltf");
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code(), static_cast<int>(ImportErrorCode::unsupportedFeature));

    // A GLB whose JSON chunk claims more bytes than the file holds (Assimp allocated 4 GiB).
    QByteArray glb = testing::TestModels::glbWithNodes(1);
    expectBroken(glb.left(40), "glb", "a GLB chunk runs past the end of the file");
    // The BIN chunk cut short.
    expectBroken(glb.left(glb.size() - 8), "glb", "a GLB chunk runs past the end of the file");
    EXPECT_TRUE(importGltfBytes(glb, "glb"));
}

// Declarations that drove Assimp's reader into allocating about 64 GiB or reading address 1
// (found by fuzzing), and their neighbours that break the same rules; a valid file that
// merely looks like them still loads.
TEST(GltfImportTest, DeclarationsThatMisleadTheReaderAreRejected) {
    const QJsonObject good = QJsonDocument::fromJson(gltfWithDataUris(redPng())).object();
    // `good` with `value` set at `key` of item `index` of the top-level array `array`, or of
    // the first primitive when `array` is "primitive".
    const auto edited = [&](const char* array, int index, const char* key, const QJsonValue& value) {
        QJsonObject gltf = good;
        const bool primitive = std::strcmp(array, "primitive") == 0;
        QJsonArray items = primitive ? gltf["meshes"].toArray()[0].toObject()["primitives"].toArray() : gltf[array].toArray();
        QJsonObject item = items[index].toObject();
        if (value.isUndefined()) item.remove(key);
        else item[key] = value;
        items[index] = item;
        if (primitive) gltf["meshes"] = QJsonArray{QJsonObject{{"primitives", items}}};
        else gltf[array] = items;
        return QJsonDocument(gltf).toJson();
    };
    const auto expectRefused = [](const QByteArray& gltf, ImportErrorCode code, const std::string& what) {
        const auto result = importGltfBytes(gltf, "gltf");
        ASSERT_FALSE(result) << what;
        EXPECT_EQ(result.error().code(), static_cast<int>(code)) << what;
        EXPECT_NE(result.error().localizedDescription().find(what), std::string::npos) << result.error().localizedDescription();
    };
    const auto malformed = ImportErrorCode::malformedData;

    // A triangle strip with neither positions nor indices has no vertices at all.
    QJsonObject strip = good;
    strip["meshes"] = QJsonArray{QJsonObject{{"primitives", QJsonArray{QJsonObject{{"attributes", QJsonObject{}}, {"mode", 5}}}}}};
    expectRefused(QJsonDocument(strip).toJson(), malformed, "mesh 0 primitive 0 has 0 elements, too few");
    // A fan of one index.
    QJsonObject fan = QJsonDocument::fromJson(edited("accessors", 2, "count", 1)).object();
    fan["meshes"] = QJsonDocument::fromJson(edited("primitive", 0, "mode", 6)).object()["meshes"];
    expectRefused(QJsonDocument(fan).toJson(), malformed, "has 1 elements, too few for one primitive of mode 6");
    // The same three indices as a strip or fan draw one triangle.
    for (int mode : {5, 6}) EXPECT_TRUE(importGltfBytes(edited("primitive", 0, "mode", mode), "gltf")) << mode;

    expectRefused(edited("images", 0, "mimeType", "imagepng"), malformed, "image 0 has a mimeType that is not image/<type>");
    expectRefused(edited("textures", 0, "source", 3), malformed, "texture 0 names a missing image");
    expectRefused(edited("textures", 0, "source", 1), malformed, "texture 0 names a missing image");  // one past the last
    expectRefused(edited("bufferViews", 0, "byteStride", 6), malformed, "buffer view 0 has a byteStride that is not 4 to 252");
    expectRefused(edited("bufferViews", 0, "byteStride", 8), malformed, "accessor 0 has elements larger than its buffer view's byteStride");
    expectRefused(edited("primitive", 0, "indices", 0), malformed, "indices that are not an accessor of unsigned integers");
    expectRefused(edited("primitive", 0, "attributes", QJsonObject{{"POSITION", 9}}), malformed, "names a missing accessor for POSITION");
    expectRefused(edited("accessors", 1, "count", 0), malformed, "accessor 1 has no valid count");
    // Without a buffer view an accessor is zeros, and its count is bounded by no bytes.
    QJsonObject zeros = QJsonDocument::fromJson(edited("accessors", 1, "count", 1 << 25)).object();
    QJsonArray accessors = zeros["accessors"].toArray();
    QJsonObject texCoords = accessors[1].toObject();
    texCoords.remove("bufferView");
    accessors[1] = texCoords;
    zeros["accessors"] = accessors;
    expectRefused(QJsonDocument(zeros).toJson(), ImportErrorCode::limitExceeded, "accessor 1 declares 33554432 elements");
}

// An accessor without a buffer view reads as zeros, with any sparse values written on top:
// texture coordinates left all zero, and positions whose two non-zero vertices come sparsely.
TEST(GltfImportTest, AccessorsWithoutABufferViewReadAsZerosUnderTheirSparseValues) {
    QJsonObject gltf = QJsonDocument::fromJson(gltfWithDataUris({})).object();
    const quint16 sparseIndices[2] = {1, 2};
    const float sparseValues[6] = {0.2f, 0, 0, 0, 0.3f, 0};
    QByteArray sparse(reinterpret_cast<const char*>(sparseIndices), sizeof sparseIndices);
    sparse.append(reinterpret_cast<const char*>(sparseValues), sizeof sparseValues);
    QJsonArray buffers = gltf["buffers"].toArray(), views = gltf["bufferViews"].toArray(), accessors = gltf["accessors"].toArray();
    buffers.append(QJsonObject{{"byteLength", sparse.size()},
                               {"uri", "data:application/octet-stream;base64," + QString::fromLatin1(sparse.toBase64())}});
    views.append(QJsonObject{{"buffer", 1}, {"byteLength", 4}});
    views.append(QJsonObject{{"buffer", 1}, {"byteOffset", 4}, {"byteLength", 24}});
    QJsonObject positions = accessors[0].toObject(), texCoords = accessors[1].toObject();
    positions.remove("bufferView");
    positions["sparse"] = QJsonObject{{"count", 2},
                                      {"indices", QJsonObject{{"bufferView", 3}, {"componentType", 5123}}},
                                      {"values", QJsonObject{{"bufferView", 4}}}};
    texCoords.remove("bufferView");
    accessors[0] = positions;
    accessors[1] = texCoords;
    gltf["buffers"] = buffers;
    gltf["bufferViews"] = views;
    gltf["accessors"] = accessors;
    const QByteArray json = QJsonDocument(gltf).toJson(QJsonDocument::Compact);
    // The same document as a GLB, its first buffer in the binary chunk.
    QJsonObject first = buffers[0].toObject();
    QByteArray bin = QByteArray::fromBase64(first.take("uri").toString().section(',', 1).toLatin1());
    bin.append((4 - bin.size() % 4) % 4, '\0');
    buffers[0] = first;
    gltf["buffers"] = buffers;
    QByteArray chunk = QJsonDocument(gltf).toJson(QJsonDocument::Compact);
    chunk.append((4 - chunk.size() % 4) % 4, ' ');
    const auto word = [](quint32 v) { return QByteArray(reinterpret_cast<const char*>(&v), 4); };
    const QByteArray glb = "glTF" + word(2) + word(quint32(28 + chunk.size() + bin.size())) + word(quint32(chunk.size())) +
                           "JSON" + chunk + word(quint32(bin.size())) + QByteArray("BIN\0", 4) + bin;

    for (const auto& [bytes, hint] : {std::pair{json, "gltf"}, std::pair{glb, "glb"}}) {
        SCOPED_TRACE(hint);
        const auto result = importGltfBytes(bytes, hint);
        ASSERT_TRUE(result) << result.error().description();
        const ImportedMesh& mesh = result->meshes.at(0);
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
    QByteArray bin = stream;
    bin.append((4 - bin.size() % 4) % 4, '\0');
    const QJsonObject draco{{"bufferView", 0}, {"attributes", QJsonObject{{"POSITION", 0}}}};
    const QJsonObject gltf{
        {"asset", QJsonObject{{"version", "2.0"}}},
        {"extensionsUsed", QJsonArray{"KHR_draco_mesh_compression"}},
        {"scene", 0},
        {"scenes", QJsonArray{QJsonObject{{"nodes", QJsonArray{0}}}}},
        {"nodes", QJsonArray{QJsonObject{{"mesh", 0}}}},
        {"meshes", QJsonArray{QJsonObject{{"primitives", QJsonArray{QJsonObject{
                       {"attributes", QJsonObject{{"POSITION", 1}}}, {"indices", 0},
                       {"extensions", QJsonObject{{"KHR_draco_mesh_compression", draco}}}}}}}}},
        {"buffers", QJsonArray{QJsonObject{{"byteLength", bin.size()}}}},
        {"bufferViews", QJsonArray{QJsonObject{{"buffer", 0}, {"byteLength", stream.size()}}}},
        {"accessors", QJsonArray{QJsonObject{{"componentType", 5121}, {"count", indices}, {"type", "SCALAR"}},
                                 QJsonObject{{"componentType", 5126}, {"count", positions}, {"type", "VEC3"},
                                             {"min", QJsonArray{0, 0, 0}}, {"max", QJsonArray{0.2, 0.3, 0}}}}},
    };
    QByteArray json = QJsonDocument(gltf).toJson(QJsonDocument::Compact);
    json.append((4 - json.size() % 4) % 4, ' ');
    const auto word = [](quint32 v) { return QByteArray(reinterpret_cast<const char*>(&v), 4); };
    return "glTF" + word(2) + word(quint32(28 + json.size() + bin.size())) + word(quint32(json.size())) + "JSON" + json +
           word(quint32(bin.size())) + QByteArray("BIN\0", 4) + bin;
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
        const auto result = importGltfBytes(dracoTriangleGlb(c.indices, c.positions), "glb");
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

// Three nodes named node0..node2 under the root, in file order.
std::shared_ptr<const ImportedScene> threeNodeScene() {
    const QByteArray glb = testing::TestModels::glbWithNodes(3);
    auto result = AssimpImporter::importBytes(
        std::span(reinterpret_cast<const std::uint8_t*>(glb.constData()), static_cast<std::size_t>(glb.size())), "glb");
    if (!result) throw std::runtime_error(result.error().description());
    return std::make_shared<const ImportedScene>(std::move(result).value());
}

TEST(GltfImportTest, ImportedNodesKeepFileOrderAndParents) {
    const auto scene = threeNodeScene();
    ASSERT_EQ(scene->nodes.size(), 4u);
    EXPECT_EQ(scene->nodes[0].parent, -1);
    ASSERT_EQ(scene->nodes[0].children.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        const ImportedNode& node = scene->nodes[static_cast<std::size_t>(scene->nodes[0].children[static_cast<std::size_t>(i)])];
        EXPECT_EQ(node.name, "node" + std::to_string(i));
        EXPECT_EQ(node.parent, 0);
        EXPECT_EQ(node.meshes, std::vector<int>{0});
        expectNear(node.localTransform.column(3).toVector3D(), {float(i), 0, 0});
    }
}

TEST(GltfImportTest, EntityTreeMirrorsTheNodeOrder) {
    const auto scene = threeNodeScene();
    const auto root = reality::ModelEntity::fromImportedScene(scene);
    EXPECT_EQ(root->parent(), nullptr);
    ASSERT_EQ(root->children().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& child = root->children()[i];
        EXPECT_EQ(child->name(), "node" + std::to_string(i));
        EXPECT_EQ(child->parent(), root);
        expectNear(child->position(), {float(i), 0, 0});
        EXPECT_TRUE(child->children().empty());
    }
}

TEST(GltfImportTest, SceneNodeTreeMirrorsTheNodeOrderAndItsChildrenMoveOutWhole) {
    const auto scene = threeNodeScene();
    const scenegraph::Scene built = scenegraph::SceneNodeBuilder::build(scene);
    EXPECT_EQ(built.rootNode->parent(), nullptr);
    const auto children = built.rootNode->childNodes();
    ASSERT_EQ(children.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(children[i]->name(), "node" + std::to_string(i));
        EXPECT_EQ(children[i]->parent(), built.rootNode);
        ASSERT_TRUE(children[i]->geometry());
        EXPECT_EQ(children[i]->geometry()->source, scene);
    }
    // The model loader moves the top level into a container of its own: the order holds,
    // the container has no parent, and the imported root is left empty.
    auto container = scenegraph::SceneNode::make();
    for (const auto& child : children) container->addChildNode(child);
    EXPECT_EQ(container->parent(), nullptr);
    EXPECT_TRUE(built.rootNode->childNodes().empty());
    ASSERT_EQ(container->childNodes().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(container->childNodes()[i], children[i]);
        EXPECT_EQ(container->childNodes()[i]->parent(), container);
    }
}

} // namespace
} // namespace orvanta::import
