#include "import/GltfZeroFill.h"

#include "import/GltfLayoutCheck.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <cstring>

namespace orvanta::import {

namespace {

constexpr std::size_t kGlbHeader = 12, kChunkHeader = 8;

std::uint32_t readU32(const std::uint8_t* at) {
    std::uint32_t v = 0;
    std::memcpy(&v, at, 4); // little-endian, as is every machine we build for
    return v;
}

void appendU32(QByteArray& out, std::uint32_t v) { out.append(reinterpret_cast<const char*>(&v), 4); }

// A data URI holding `size` zero bytes: each three zero bytes are "AAAA" in base64.
QString zeroDataUri(qint64 size) {
    QString uri = QStringLiteral("data:application/octet-stream;base64,");
    uri += QString(qsizetype(size / 3 * 4), QLatin1Char('A'));
    if (size % 3 == 1) uri += QLatin1String("AA==");
    if (size % 3 == 2) uri += QLatin1String("AAA=");
    return uri;
}

} // namespace

std::optional<QByteArray> GltfZeroFill::fill(std::span<const std::uint8_t> bytes) {
    const bool glb = bytes.size() >= kGlbHeader + kChunkHeader && std::memcmp(bytes.data(), "glTF", 4) == 0;
    const std::span<const std::uint8_t> json = glb ? bytes.subspan(kGlbHeader + kChunkHeader, readU32(bytes.data() + kGlbHeader))
                                                   : bytes;
    QJsonObject gltf = QJsonDocument::fromJson(
        QByteArray::fromRawData(reinterpret_cast<const char*>(json.data()), qsizetype(json.size()))).object();

    QJsonArray accessors = gltf.value(QLatin1String("accessors")).toArray();
    QJsonArray views = gltf.value(QLatin1String("bufferViews")).toArray();
    QJsonArray buffers = gltf.value(QLatin1String("buffers")).toArray();
    // A compressed primitive's accessors have no buffer view either: the decoder fills them.
    QSet<qint64> decoded;
    for (const QJsonValue& mesh : gltf.value(QLatin1String("meshes")).toArray())
        for (const QJsonValue& value : mesh.toObject().value(QLatin1String("primitives")).toArray()) {
            const QJsonObject primitive = value.toObject();
            if (!primitive.value(QLatin1String("extensions")).toObject().contains(QLatin1String("KHR_draco_mesh_compression")))
                continue;
            decoded.insert(primitive.value(QLatin1String("indices")).toInteger(-1));
            for (const QJsonValue& accessor : primitive.value(QLatin1String("attributes")).toObject()) decoded.insert(accessor.toInteger(-1));
        }
    qint64 zeroBytes = 0;
    for (qsizetype i = 0; i < accessors.size(); ++i) {
        QJsonObject accessor = accessors[i].toObject();
        if (accessor.contains(QLatin1String("bufferView")) || decoded.contains(i)) continue;
        zeroBytes = std::max(zeroBytes, accessor.value(QLatin1String("count")).toInteger() * GltfLayoutCheck::elementBytes(accessor));
        accessor.insert(QLatin1String("bufferView"), views.size());
        accessor.remove(QLatin1String("byteOffset"));
        accessors[i] = accessor;
    }
    if (zeroBytes == 0) return std::nullopt;
    views.append(QJsonObject{{"buffer", buffers.size()}, {"byteLength", zeroBytes}});
    buffers.append(QJsonObject{{"byteLength", zeroBytes}, {"uri", zeroDataUri(zeroBytes)}});
    gltf.insert(QLatin1String("accessors"), accessors);
    gltf.insert(QLatin1String("bufferViews"), views);
    gltf.insert(QLatin1String("buffers"), buffers);
    QByteArray rewritten = QJsonDocument(gltf).toJson(QJsonDocument::Compact);
    if (!glb) return rewritten;

    // The JSON chunk padded with spaces to four bytes; the chunks after it stay as they were.
    rewritten.append((4 - rewritten.size() % 4) % 4, ' ');
    const std::span<const std::uint8_t> rest = bytes.subspan(std::min(bytes.size(), kGlbHeader + kChunkHeader + json.size()));
    QByteArray out;
    out.reserve(qsizetype(kGlbHeader + kChunkHeader) + rewritten.size() + qsizetype(rest.size()));
    out.append("glTF", 4);
    appendU32(out, 2);
    appendU32(out, std::uint32_t(kGlbHeader + kChunkHeader + std::size_t(rewritten.size()) + rest.size()));
    appendU32(out, std::uint32_t(rewritten.size()));
    appendU32(out, 0x4E4F534A); // "JSON"
    out.append(rewritten);
    out.append(reinterpret_cast<const char*>(rest.data()), qsizetype(rest.size()));
    return out;
}

} // namespace orvanta::import
