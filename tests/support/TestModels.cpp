#include "support/TestModels.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstring>
#include <stdexcept>

namespace orvanta::testing {

namespace {

void appendU32(QByteArray& out, quint32 v) {
    char bytes[4];
    std::memcpy(bytes, &v, 4); // GLB is little-endian, as is every machine we build for
    out.append(bytes, 4);
}

QByteArray padded(QByteArray chunk, char pad) {
    while (chunk.size() % 4) chunk.append(pad);
    return chunk;
}

} // namespace

QByteArray TestModels::glbWithNodes(int nodeCount) {
    const float positions[9] = {0, 0, 0, 0.1f, 0, 0, 0, 0.1f, 0};
    const quint16 indices[3] = {0, 1, 2};
    QByteArray bin(reinterpret_cast<const char*>(positions), sizeof positions);
    bin.append(reinterpret_cast<const char*>(indices), sizeof indices);
    bin = padded(bin, '\0');

    QJsonArray nodes, sceneNodes;
    for (int i = 0; i < nodeCount; ++i) {
        nodes.append(QJsonObject{{"name", QString("node%1").arg(i)}, {"mesh", 0},
                                 {"translation", QJsonArray{double(i), 0.0, 0.0}}});
        sceneNodes.append(i);
    }
    const QJsonObject gltf{
        {"asset", QJsonObject{{"version", "2.0"}}},
        {"scene", 0},
        {"scenes", QJsonArray{QJsonObject{{"nodes", sceneNodes}}}},
        {"nodes", nodes},
        {"meshes", QJsonArray{QJsonObject{{"primitives", QJsonArray{QJsonObject{
                                               {"attributes", QJsonObject{{"POSITION", 0}}}, {"indices", 1}}}}}}},
        {"buffers", QJsonArray{QJsonObject{{"byteLength", bin.size()}}}},
        {"bufferViews", QJsonArray{QJsonObject{{"buffer", 0}, {"byteOffset", 0}, {"byteLength", 36}},
                                   QJsonObject{{"buffer", 0}, {"byteOffset", 36}, {"byteLength", 6}}}},
        {"accessors", QJsonArray{QJsonObject{{"bufferView", 0}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"},
                                             {"min", QJsonArray{0, 0, 0}}, {"max", QJsonArray{0.1, 0.1, 0}}},
                                 QJsonObject{{"bufferView", 1}, {"componentType", 5123}, {"count", 3}, {"type", "SCALAR"}}}},
    };
    const QByteArray json = padded(QJsonDocument(gltf).toJson(QJsonDocument::Compact), ' ');

    QByteArray glb("glTF");
    appendU32(glb, 2);
    appendU32(glb, static_cast<quint32>(12 + 8 + json.size() + 8 + bin.size()));
    appendU32(glb, static_cast<quint32>(json.size()));
    glb.append("JSON");
    glb.append(json);
    appendU32(glb, static_cast<quint32>(bin.size()));
    glb.append("BIN\0", 4);
    glb.append(bin);
    return glb;
}

void TestModels::write(const std::string& path, const QByteArray& bytes) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write test file " + path);
}

} // namespace orvanta::testing
