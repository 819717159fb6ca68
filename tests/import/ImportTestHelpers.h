#pragma once
// What the importer's tests share: importing text, packages and glTF bytes, finding a scene's
// meshes and nodes by name, and small files made in code.

#include "export/ZipWriter.h"
#include "import/AssimpImporter.h"
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

// A binary glTF of a JSON chunk and a BIN chunk, each padded to four bytes.
inline QByteArray glbOf(QByteArray json, QByteArray bin) {
    json.append((4 - json.size() % 4) % 4, ' ');
    bin.append((4 - bin.size() % 4) % 4, '\0');
    const auto word = [](quint32 v) { return QByteArray(reinterpret_cast<const char*>(&v), 4); };
    return "glTF" + word(2) + word(quint32(28 + json.size() + bin.size())) + word(quint32(json.size())) + "JSON" + json +
           word(quint32(bin.size())) + QByteArray("BIN\0", 4) + bin;
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

inline const ImportedMesh* meshNamed(const ImportedScene& scene, const std::string& name) {
    for (const ImportedMesh& mesh : scene.meshes)
        if (mesh.name == name) return &mesh;
    return nullptr;
}

inline const ImportedNode* nodeNamed(const ImportedScene& scene, const std::string& name) {
    for (const ImportedNode& node : scene.nodes)
        if (node.name == name) return &node;
    return nullptr;
}

inline const ImportedMaterial* materialNamed(const ImportedScene& scene, const std::string& name) {
    for (const ImportedMaterial& material : scene.materials)
        if (material.name == name) return &material;
    return nullptr;
}

inline void expectNear(const QVector3D& actual, const QVector3D& expected, float tolerance = 1e-4f) {
    EXPECT_LT((actual - expected).length(), tolerance) << "(" << actual.x() << ", " << actual.y() << ", " << actual.z() << ")";
}

inline void expectNear(const QVector2D& actual, const QVector2D& expected) {
    EXPECT_LT((actual - expected).length(), 1e-4f) << "(" << actual.x() << ", " << actual.y() << ")";
}

} // namespace orvanta::import
