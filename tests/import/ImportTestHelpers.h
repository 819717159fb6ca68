#pragma once
// What the importer's tests share: importing text, packages and glTF bytes, finding a scene's
// meshes and nodes by name, and small files made in code.

#include "export/CrateWriter.h"
#include "export/ZipWriter.h"
#include "import/AssimpImporter.h"
#include "import/usd/UsdLayer.h"
#include "import/usd/UsdImporter.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>

#include <memory>
#include <string>
#include <vector>

namespace orvanta::import {

using Bytes = std::vector<std::uint8_t>;

// The body of a one-triangle USD mesh.
inline const std::string triangleMesh =
    " point3f[] points = [(0, 0, 0), (1, 0, 0), (0, 1, 0)] int[] faceVertexCounts = [3] int[] faceVertexIndices = [0, 1, 2] ";

// A crate layer with one 64 x 64 grid mesh, large enough that its arrays are decoded only
// when the scene reads them: points, vertex normals, face-varying texture coordinates indexed
// by the corners' points, and compressed topology. With `brokenIndices` the index block is
// not valid LZ4. Its small extent is read at once.
inline std::string gridCrateLayer(bool brokenIndices) {
    using namespace exporter::crate;
    exporter::CrateWriter w(8);
    constexpr std::int32_t side = 64;
    std::vector<float> points, normals, st;
    std::vector<std::int32_t> indices;
    for (std::int32_t z = 0; z < side; ++z)
        for (std::int32_t x = 0; x < side; ++x) {
            points.insert(points.end(), {float(x), 0.0f, float(z)});
            normals.insert(normals.end(), {0.0f, 1.0f, 0.0f});
            st.insert(st.end(), {float(x) / side, float(z) / side});
            const std::int32_t v = z * side + x;
            if (z + 1 < side && x + 1 < side) indices.insert(indices.end(), {v, v + side, v + 1, v + 1, v + side, v + side + 1});
        }
    const auto indicesRep = [&] {
        if (!brokenIndices) return w.compressedArray(tInt, indices);
        const auto at = w.arrayCount(indices.size());
        w.put(std::uint64_t{4});
        w.putAll<std::uint8_t>({0, 0xff, 0xff, 0xff});
        return rep(tInt, at, isArray | isCompressed);
    }();
    const std::vector<std::pair<std::string, std::uint64_t>> attributes{
        {"points", w.array(tVec3f, points, 3)},
        {"normals", w.array(tVec3f, normals, 3)},
        {"faceVertexCounts", w.compressedArray(tInt, std::vector<std::int32_t>(indices.size() / 3, 3))},
        {"faceVertexIndices", indicesRep},
        {"primvars:st", w.array(tVec2f, st, 2)},
        {"primvars:st:indices", w.compressedArray(tInt, indices)},
        {"extent", w.array<float>(tVec3f, {0, 0, 0, side - 1, 0, side - 1}, 3)}};
    std::vector<std::string> names;
    for (const auto& [name, value] : attributes) names.push_back(name);
    w.spec("/", sPseudoRoot, {{"defaultPrim", w.tokenInline("Grid")}, {"primChildren", w.tokenVector({"Grid"})}});
    w.spec("/Grid", sPrim, {{"specifier", rep(tSpecifier, 0, isInlined)}, {"typeName", w.tokenInline("Mesh")},
                            {"properties", w.tokenVector(names)}});
    for (const auto& [name, value] : attributes) {
        std::vector<std::pair<std::string, std::uint64_t>> fields{{"default", value}};
        if (name == "primvars:st") fields.push_back({"interpolation", w.tokenInline("faceVarying")});
        w.spec("/Grid." + name, sAttribute, fields);
    }
    const Bytes layer = w.build();
    return {layer.begin(), layer.end()};
}

namespace usd {

// The field `name` of the layer's entry for the prim or property at `path` as a T; a test
// failure (and T's empty value) when the entry or the field is missing or holds another type.
template <class T> const T& field(const Layer& layer, const std::string& path, const std::string& name) {
    static const T none{};
    const Spec* spec = layer.spec(path);
    const Value* value = spec ? spec->field(name) : nullptr;
    const T* typed = value ? value->get<T>() : nullptr;
    EXPECT_NE(typed, nullptr) << path << " " << name << (value ? " has another type" : " is missing");
    return typed ? *typed : none;
}

inline std::vector<std::string> tokenTexts(const TokenArray& tokens) {
    std::vector<std::string> out;
    for (const Token& t : tokens) out.push_back(t.text);
    return out;
}

} // namespace usd

inline ImportedScene importOk(core::Result<ImportedScene> result) {
    EXPECT_TRUE(result.ok()) << (result.ok() ? "" : result.error().localizedDescription());
    return result.ok() ? std::move(result).value() : ImportedScene{};
}

inline core::Result<ImportedScene> importUsda(const std::string& text, const std::string& name = "/nowhere/test.usda") {
    return usd::UsdImporter::importBytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, nullptr, name);
}

// A USDZ package of stored, aligned entries.
inline std::shared_ptr<Bytes> package(const std::vector<std::pair<std::string, std::string>>& files) {
    exporter::ZipWriter zip;
    for (const auto& [name, data] : files) zip.add(name, data);
    return std::make_shared<Bytes>(zip.build());
}

inline core::Result<ImportedScene> importPackage(const std::vector<std::pair<std::string, std::string>>& files) {
    const auto bytes = package(files);
    return usd::UsdImporter::importBytes(*bytes, bytes, "test.usdz");
}

inline core::Result<ImportedScene> importGltf(const QByteArray& bytes, const std::string& hint = "gltf") {
    return AssimpImporter::importBytes(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.constData()), static_cast<std::size_t>(bytes.size())), hint);
}

inline QString dataUri(const char* type, const QByteArray& bytes) { return QString("data:%1;base64,").arg(type) + bytes.toBase64(); }

inline QByteArray pngOf(QColor color, QSize size = {2, 2}) {
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(color);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

// What a corpus model holds, counted by hand.
struct CorpusCounts {
    const char* file;
    const char* format;
    std::size_t meshes, materials, textures, vertices, triangles;
};

// The scene holds what `expected` counts, and every texture decodes.
inline void expectCounts(const ImportedScene& scene, const CorpusCounts& expected) {
    EXPECT_EQ(scene.format, expected.format);
    EXPECT_EQ(scene.meshes.size(), expected.meshes);
    EXPECT_EQ(scene.materials.size(), expected.materials);
    EXPECT_EQ(scene.textures.size(), expected.textures);
    EXPECT_EQ(scene.vertexCount(), expected.vertices);
    EXPECT_EQ(scene.triangleCount(), expected.triangles);
    for (const ImportedTexture& texture : scene.textures) EXPECT_FALSE(texture.decode().isNull()) << texture.uri;
}

// The first of `items` (a scene's meshes, nodes or materials) called `name`, or null.
template <class T> const T* named(const std::vector<T>& items, const std::string& name) {
    for (const T& item : items)
        if (item.name == name) return &item;
    return nullptr;
}

inline void expectNear(const QVector3D& actual, const QVector3D& expected, float tolerance = 1e-4f) {
    EXPECT_LT((actual - expected).length(), tolerance) << "(" << actual.x() << ", " << actual.y() << ", " << actual.z() << ")";
}

inline void expectNear(const QVector2D& actual, const QVector2D& expected) {
    EXPECT_LT((actual - expected).length(), 1e-4f) << "(" << actual.x() << ", " << actual.y() << ")";
}

} // namespace orvanta::import
