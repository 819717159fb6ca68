#include "import/SceneImporter.h"

#include "import/AssimpImporter.h"
#include "import/ImportError.h"
#include "import/usd/UsdImporter.h"

#include <QFile>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace orvanta::import {

namespace {

bool startsWith(std::span<const std::uint8_t> bytes, const char* magic) {
    const std::size_t n = std::strlen(magic);
    return bytes.size() >= n && std::memcmp(bytes.data(), magic, n) == 0;
}

// What a file's name promises and the bytes that keep the promise. The format still comes
// from the bytes; the name only lets a refusal say what the file is not, where the scene
// import library would only say that no reader wants it.
struct NamedFormat {
    const char* suffix;
    const char* what;
    const char* magic;
};

constexpr NamedFormat namedFormats[] = {
    {".glb", "a glTF binary", "glTF's magic bytes"},
    {".usdz", "a USDZ package", "a zip archive's header"},
    {".usdc", "a USD crate file", "PXR-USDC"},
};

const NamedFormat* promisedFormat(const std::string& path) {
    std::string lower = path;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    for (const NamedFormat& format : namedFormats)
        if (lower.ends_with(format.suffix)) return &format;
    return nullptr;
}

} // namespace

ModelFormat SceneImporter::sniff(std::span<const std::uint8_t> head) {
    if (startsWith(head, "PK\x03\x04")) return ModelFormat::usdz;
    if (startsWith(head, "PXR-USDC")) return ModelFormat::usdc;
    if (startsWith(head, "#usda")) return ModelFormat::usda;
    if (startsWith(head, "glTF")) return ModelFormat::glb;
    // Skip a byte-order mark and white space before looking at text.
    std::size_t i = startsWith(head, "\xEF\xBB\xBF") ? 3 : 0;
    while (i < head.size() && std::isspace(head[i])) ++i;
    if (i == head.size()) return ModelFormat::unknown; // empty or blank
    if (head[i] == '{') return ModelFormat::gltf;
    if (head[i] == '<') return ModelFormat::unknown;   // HTML or XML, e.g. an error page
    return ModelFormat::other;
}

core::Result<ImportedScene> SceneImporter::importFile(const std::string& path) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        return importError(ImportErrorCode::unreadableFile, "Cannot open " + path + ": " + file.errorString().toStdString());
    const QByteArray head = file.read(64);
    file.close();
    const std::span<const std::uint8_t> bytes(reinterpret_cast<const std::uint8_t*>(head.constData()),
                                              static_cast<std::size_t>(head.size()));
    switch (sniff(bytes)) {
    case ModelFormat::usdz:
    case ModelFormat::usdc:
    case ModelFormat::usda: return usd::UsdImporter::importFile(path);
    case ModelFormat::glb: return AssimpImporter::importFile(path, "glb");
    case ModelFormat::gltf: return AssimpImporter::importFile(path, "gltf");
    case ModelFormat::other:
        if (const NamedFormat* promised = promisedFormat(path))
            return importError(ImportErrorCode::unrecognisedFormat, path + ": not " + promised->what +
                                                                        ": it does not start with " + promised->magic);
        return AssimpImporter::importFile(path, "other");
    case ModelFormat::unknown: break;
    }
    return importError(ImportErrorCode::unrecognisedFormat, "Not a model file: " + path);
}

} // namespace orvanta::import
