#include "import/GltfLayoutCheck.h"

#include "import/ImportError.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>
#include <cstring>
#include <string>
#include <variant>
#include <vector>

namespace orvanta::import {

namespace {

constexpr std::uint32_t chunkJson = 0x4E4F534A; // "JSON"
constexpr std::uint32_t chunkBin = 0x004E4942;  // "BIN\0"

std::uint32_t readU32(std::span<const std::uint8_t> bytes, std::size_t at) {
    std::uint32_t v = 0;
    std::memcpy(&v, bytes.data() + at, 4); // little-endian, as is every machine we build for
    return v;
}

core::Error malformed(const std::string& what) {
    return importError(ImportErrorCode::malformedData, "Broken glTF layout: " + what);
}

// A non-negative integer member, `fallback` when absent; -1 when present but not one.
qint64 integer(const QJsonObject& object, const char* key, qint64 fallback) {
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined()) return fallback;
    const double d = value.toDouble(-1);
    if (!value.isDouble() || d < 0 || d > 9.0e15 || d != static_cast<double>(static_cast<qint64>(d))) return -1;
    return static_cast<qint64>(d);
}

qint64 componentBytes(qint64 componentType) {
    switch (componentType) {
    case 5120: case 5121: return 1; // byte, unsigned byte
    case 5122: case 5123: return 2; // short, unsigned short
    case 5125: case 5126: return 4; // unsigned int, float
    default: return 0;
    }
}

qint64 componentsOf(const QString& type) {
    static const std::pair<const char*, qint64> types[] = {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4},
                                                           {"MAT2", 4},   {"MAT3", 9}, {"MAT4", 16}};
    for (const auto& [name, n] : types)
        if (type == QLatin1String(name)) return n;
    return 0;
}

// The GLB container: its JSON chunk and its BIN chunk (absent in a JSON file or a GLB without one).
struct GlbParts {
    std::span<const std::uint8_t> json;
    std::optional<std::span<const std::uint8_t>> bin;
};

std::variant<GlbParts, core::Error> splitGlb(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 12) return malformed("the GLB header is cut short");
    const std::uint32_t version = readU32(bytes, 4);
    if (version == 1)
        return importError(ImportErrorCode::unsupportedFeature, "glTF 1.0 binary files are not supported; only glTF 2.0 is read");
    if (version != 2)
        return importError(ImportErrorCode::unsupportedFeature,
                           "GLB container version " + std::to_string(version) + " is not supported; only version 2 (glTF 2.0) is read");
    GlbParts parts;
    std::size_t at = 12;
    bool first = true;
    while (at + 8 <= bytes.size()) {
        const std::uint64_t length = readU32(bytes, at);
        const std::uint32_t type = readU32(bytes, at + 4);
        if (length > bytes.size() - at - 8) return malformed("a GLB chunk runs past the end of the file");
        const auto data = bytes.subspan(at + 8, length);
        if (first && type != chunkJson) return malformed("the first GLB chunk is not JSON");
        if (first) parts.json = data;
        else if (type == chunkBin && !parts.bin) parts.bin = data;
        first = false;
        at += 8 + length;
    }
    if (first) return malformed("the GLB file has no JSON chunk");
    return parts;
}

// The number of bytes a buffer's URI or the GLB BIN chunk really provides; -1 when unknown
// (an external file that cannot be found is reported by the reader itself).
qint64 bufferBytes(const QJsonObject& buffer, std::size_t index, std::optional<std::span<const std::uint8_t>> bin,
                   const QString& baseDir) {
    const QString uri = buffer.value(QLatin1String("uri")).toString();
    if (uri.isEmpty()) return index == 0 && bin ? static_cast<qint64>(bin->size()) : 0;
    if (uri.startsWith(QLatin1String("data:"))) {
        const qsizetype comma = uri.indexOf(QLatin1Char(','));
        if (comma < 0 || !uri.left(comma).endsWith(QLatin1String(";base64"))) return -1;
        return QByteArray::fromBase64(uri.mid(comma + 1).toLatin1()).size();
    }
    if (baseDir.isEmpty()) return -1;
    const QFileInfo file(QDir(baseDir).filePath(QUrl::fromPercentEncoding(uri.toUtf8())));
    return file.exists() ? file.size() : -1;
}

// Accessors with no buffer view read as zeros (plus any sparse values), so their declared
// count is not bounded by the file's bytes; the reader still allocates for every element.
constexpr qint64 maxZeroFilledElements = qint64(1) << 24;

// The vertices or indices a primitive of each mode needs to draw one point, line or
// triangle (points, lines, line loop, line strip, triangles, triangle strip, triangle fan).
// The reader computes a strip's or fan's primitive count as the element count less one or
// two without checking it, so fewer elements make it allocate for about 2^32 primitives.
constexpr qint64 minimumElements[] = {1, 2, 2, 2, 3, 3, 3};
constexpr qint64 modeLineLoop = 2;

// What a Draco mesh stream (KHR_draco_mesh_compression) says it decodes to: its face count,
// and its point count when its connectivity is sequential. The reader sizes the decoded
// indices and attributes by these and then reads as many elements as the accessors claim,
// so an accessor claiming more must end here. Only the current bitstream (2.2) without
// metadata is read; other streams are left to the reader's decoder, which checks them.
struct DracoCounts {
    std::uint64_t faces = 0;
    std::optional<std::uint64_t> points;
};

std::optional<DracoCounts> dracoCounts(std::span<const std::uint8_t> stream) {
    constexpr std::size_t header = 11; // "DRACO", version 2.2, encoder type, method, flags
    if (stream.size() < header || std::memcmp(stream.data(), "DRACO", 5) != 0 || stream[5] != 2 || stream[6] != 2 ||
        stream[7] != 1 || ((stream[9] | (stream[10] << 8)) & 0x8000))
        return std::nullopt;
    std::size_t at = header;
    const auto varint = [&]() -> std::optional<std::uint64_t> {
        std::uint64_t value = 0;
        for (int shift = 0; shift < 35 && at < stream.size(); shift += 7) {
            const std::uint8_t byte = stream[at++];
            value |= std::uint64_t(byte & 0x7f) << shift;
            if (!(byte & 0x80)) return value;
        }
        return std::nullopt;
    };
    DracoCounts counts;
    if (stream[8] == 0) { // sequential: faces, points
        const auto faces = varint(), points = varint();
        if (!faces || !points) return std::nullopt;
        counts.faces = *faces;
        counts.points = points;
    } else if (stream[8] == 1) { // edgebreaker: traversal type, encoded vertices, faces
        ++at;
        const auto vertices = varint(), faces = varint();
        if (!vertices || !faces) return std::nullopt;
        counts.faces = *faces;
    } else {
        return std::nullopt;
    }
    return counts;
}

// A buffer view's byteStride: absent (0), or 4 to 252 bytes in steps of 4; -1 otherwise.
qint64 strideOf(const QJsonObject& view) {
    const qint64 stride = integer(view, "byteStride", 0);
    if (stride == 0 || (stride >= 4 && stride <= 252 && stride % 4 == 0)) return stride;
    return -1;
}

std::optional<core::Error> checkDocument(const QJsonObject& gltf, std::optional<std::span<const std::uint8_t>> bin,
                                         const QString& baseDir) {
    const QJsonArray buffers = gltf.value(QLatin1String("buffers")).toArray();
    std::vector<qint64> bufferLengths;
    for (qsizetype i = 0; i < buffers.size(); ++i) {
        const QJsonObject buffer = buffers[i].toObject();
        const qint64 declared = integer(buffer, "byteLength", -1);
        if (declared < 0) return malformed("buffer " + std::to_string(i) + " has no valid byteLength");
        const qint64 actual = bufferBytes(buffer, static_cast<std::size_t>(i), bin, baseDir);
        if (actual >= 0 && declared > actual)
            return malformed("buffer " + std::to_string(i) + " declares " + std::to_string(declared) + " bytes but has " +
                             std::to_string(actual));
        bufferLengths.push_back(declared);
    }

    const QJsonArray views = gltf.value(QLatin1String("bufferViews")).toArray();
    std::vector<qint64> viewLengths;
    // The bytes of each view that lies in the GLB's BIN chunk (empty for the others).
    std::vector<std::span<const std::uint8_t>> viewBytes;
    for (qsizetype i = 0; i < views.size(); ++i) {
        const QJsonObject view = views[i].toObject();
        const qint64 buffer = integer(view, "buffer", -1);
        const qint64 offset = integer(view, "byteOffset", 0);
        const qint64 length = integer(view, "byteLength", -1);
        if (buffer < 0 || buffer >= static_cast<qint64>(bufferLengths.size()) || offset < 0 || length < 0 ||
            offset + length > bufferLengths[static_cast<std::size_t>(buffer)])
            return malformed("buffer view " + std::to_string(i) + " does not lie inside its buffer");
        if (strideOf(view) < 0)
            return malformed("buffer view " + std::to_string(i) + " has a byteStride that is not 4 to 252 in steps of 4");
        viewLengths.push_back(length);
        const bool inBin = buffer == 0 && bin && !buffers[0].toObject().contains(QLatin1String("uri"));
        viewBytes.push_back(inBin ? bin->subspan(std::size_t(offset), std::size_t(length)) : std::span<const std::uint8_t>());
    }

    // `count` items of `itemBytes` each, `stride` apart, from `offset` in view `view`.
    const auto fits = [&](qint64 view, qint64 offset, qint64 count, qint64 itemBytes, qint64 stride) {
        if (view < 0 || view >= static_cast<qint64>(viewLengths.size()) || offset < 0 || count < 0 || itemBytes <= 0)
            return false;
        const qint64 end = count == 0 ? offset : offset + stride * (count - 1) + itemBytes;
        return end <= viewLengths[static_cast<std::size_t>(view)];
    };
    const QJsonArray accessors = gltf.value(QLatin1String("accessors")).toArray();
    for (qsizetype i = 0; i < accessors.size(); ++i) {
        const QJsonObject accessor = accessors[i].toObject();
        const std::string name = "accessor " + std::to_string(i);
        const qint64 count = integer(accessor, "count", -1);
        const qint64 elementBytes = GltfLayoutCheck::elementBytes(accessor);
        if (count < 1 || elementBytes == 0) return malformed(name + " has no valid count, componentType or type");
        if (accessor.contains(QLatin1String("bufferView"))) {
            const qint64 view = integer(accessor, "bufferView", -1);
            const qint64 stride = view >= 0 && view < views.size() ? strideOf(views[view].toObject()) : 0;
            if (stride > 0 && stride < elementBytes)
                return malformed(name + " has elements larger than its buffer view's byteStride");
            if (!fits(view, integer(accessor, "byteOffset", 0), count, elementBytes, stride > 0 ? stride : elementBytes))
                return malformed(name + " reads past the end of its buffer view");
        } else if (count > maxZeroFilledElements) {
            return importError(ImportErrorCode::limitExceeded, name + " declares " + std::to_string(count) +
                                                                   " elements without a buffer view; at most " +
                                                                   std::to_string(maxZeroFilledElements) + " are read");
        }
        const QJsonObject sparse = accessor.value(QLatin1String("sparse")).toObject();
        if (!sparse.isEmpty()) {
            const qint64 sparseCount = integer(sparse, "count", -1);
            const QJsonObject indices = sparse.value(QLatin1String("indices")).toObject();
            const QJsonObject values = sparse.value(QLatin1String("values")).toObject();
            const qint64 indexBytes = componentBytes(integer(indices, "componentType", -1));
            if (sparseCount < 1 || sparseCount > count ||
                !fits(integer(indices, "bufferView", -1), integer(indices, "byteOffset", 0), sparseCount, indexBytes, indexBytes) ||
                !fits(integer(values, "bufferView", -1), integer(values, "byteOffset", 0), sparseCount, elementBytes, elementBytes))
                return malformed(name + " has sparse data outside its buffer views");
        }
    }

    // The accessor `holder` names under `key`; empty when it names none.
    const auto accessorAt = [&](const QJsonObject& holder, const char* key) {
        const qint64 index = integer(holder, key, -1);
        return index >= 0 && index < accessors.size() ? accessors[index].toObject() : QJsonObject();
    };
    // A compressed primitive's index and attribute accessors against what its stream decodes to.
    const auto checkDracoCounts = [&](const QJsonObject& primitive, const std::string& name) -> std::optional<core::Error> {
        const QJsonObject draco = primitive.value(QLatin1String("extensions")).toObject()
                                      .value(QLatin1String("KHR_draco_mesh_compression")).toObject();
        const qint64 view = integer(draco, "bufferView", -1);
        if (draco.isEmpty() || view < 0 || view >= static_cast<qint64>(viewBytes.size())) return std::nullopt;
        const auto counts = dracoCounts(viewBytes[std::size_t(view)]);
        if (!counts) return std::nullopt;
        const auto exceeds = [&](const QJsonObject& accessor, std::uint64_t decoded) {
            return std::uint64_t(std::max<qint64>(integer(accessor, "count", 0), 0)) > decoded;
        };
        if (primitive.contains(QLatin1String("indices")) && exceeds(accessorAt(primitive, "indices"), counts->faces * 3))
            return malformed(name + " claims more indices than its compressed mesh's " + std::to_string(counts->faces) + " faces hold");
        const QJsonObject attributes = primitive.value(QLatin1String("attributes")).toObject();
        const QJsonObject compressed = draco.value(QLatin1String("attributes")).toObject();
        for (auto it = compressed.begin(); counts->points && it != compressed.end(); ++it)
            if (exceeds(accessorAt(attributes, it.key().toLatin1().constData()), *counts->points))
                return malformed(name + " claims more " + it.key().toStdString() + " values than its compressed mesh's " +
                                 std::to_string(*counts->points) + " points");
        return std::nullopt;
    };
    const QJsonArray meshes = gltf.value(QLatin1String("meshes")).toArray();
    for (qsizetype m = 0; m < meshes.size(); ++m) {
        const QJsonArray primitives = meshes[m].toObject().value(QLatin1String("primitives")).toArray();
        for (qsizetype p = 0; p < primitives.size(); ++p) {
            const QJsonObject primitive = primitives[p].toObject();
            const std::string name = "mesh " + std::to_string(m) + " primitive " + std::to_string(p);
            const qint64 mode = integer(primitive, "mode", 4);
            if (mode < 0 || mode >= static_cast<qint64>(std::size(minimumElements)))
                return malformed(name + " has an unknown mode");
            // Assimp dereferences a null pointer on some indexed line loops (found by
            // fuzzing). The kit draws triangles only, so line loops are refused, not risked.
            if (mode == modeLineLoop)
                return importError(ImportErrorCode::unsupportedFeature, "glTF line-loop primitives are not supported");
            const QJsonObject attributes = primitive.value(QLatin1String("attributes")).toObject();
            for (auto it = attributes.begin(); it != attributes.end(); ++it) {
                const qint64 index = it.value().toInteger(-1);
                if (index < 0 || index >= accessors.size())
                    return malformed(name + " names a missing accessor for " + it.key().toStdString());
            }
            // A primitive without positions is allowed (it draws nothing), so it counts as
            // having no vertices.
            qint64 elements = integer(accessorAt(attributes, "POSITION"), "count", 0);
            if (primitive.contains(QLatin1String("indices"))) {
                const QJsonObject indices = accessorAt(primitive, "indices");
                const qint64 type = integer(indices, "componentType", -1);
                if (indices.value(QLatin1String("type")).toString() != QLatin1String("SCALAR") ||
                    (type != 5121 && type != 5123 && type != 5125))
                    return malformed(name + " has indices that are not an accessor of unsigned integers");
                elements = integer(indices, "count", 0);
            }
            if (auto error = checkDracoCounts(primitive, name)) return error;
            if (elements < minimumElements[mode])
                return malformed(name + " has " + std::to_string(elements) + " elements, too few for one primitive of mode " +
                                 std::to_string(mode));
        }
    }

    const QJsonArray images = gltf.value(QLatin1String("images")).toArray();
    for (qsizetype i = 0; i < images.size(); ++i) {
        const QJsonObject image = images[i].toObject();
        const std::string name = "image " + std::to_string(i);
        if (image.contains(QLatin1String("bufferView"))) {
            const qint64 view = integer(image, "bufferView", -1);
            if (view < 0 || view >= static_cast<qint64>(viewLengths.size())) return malformed(name + " names a missing buffer view");
            if (!image.contains(QLatin1String("mimeType"))) return malformed(name + " in a buffer view has no mimeType");
        }
        // The reader takes the part after the slash as the file extension without checking
        // that there is a slash, and reads from address 1 when there is none.
        if (image.contains(QLatin1String("mimeType"))) {
            const QString mime = image.value(QLatin1String("mimeType")).toString();
            if (!mime.startsWith(QLatin1String("image/")) || mime.size() == 6)
                return malformed(name + " has a mimeType that is not image/<type>");
        }
    }
    const QJsonArray textures = gltf.value(QLatin1String("textures")).toArray();
    for (qsizetype i = 0; i < textures.size(); ++i) {
        const QJsonObject texture = textures[i].toObject();
        const qint64 source = integer(texture, "source", -1);
        if (texture.contains(QLatin1String("source")) && (source < 0 || source >= images.size()))
            return malformed("texture " + std::to_string(i) + " names a missing image");
    }
    return std::nullopt;
}

} // namespace

qint64 GltfLayoutCheck::elementBytes(const QJsonObject& accessor) {
    return componentBytes(integer(accessor, "componentType", -1)) * componentsOf(accessor.value(QLatin1String("type")).toString());
}

std::optional<core::Error> GltfLayoutCheck::check(std::span<const std::uint8_t> bytes, const QString& baseDir) {
    std::span<const std::uint8_t> json = bytes;
    std::optional<std::span<const std::uint8_t>> bin;
    if (bytes.size() >= 4 && std::memcmp(bytes.data(), "glTF", 4) == 0) {
        auto parts = splitGlb(bytes);
        if (auto* error = std::get_if<core::Error>(&parts)) return *error;
        json = std::get<GlbParts>(parts).json;
        bin = std::get<GlbParts>(parts).bin;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(reinterpret_cast<const char*>(json.data()), static_cast<qsizetype>(json.size())), &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return malformed("the JSON cannot be read (" + parseError.errorString().toStdString() + " at byte " +
                         std::to_string(parseError.offset) + ")");
    if (!document.isObject()) return malformed("the JSON is not an object");
    return checkDocument(document.object(), bin, baseDir);
}

} // namespace orvanta::import
