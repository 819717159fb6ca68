#include "support/TestModels.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>
#include <stdexcept>
#include <vector>

namespace orvanta::testing {

namespace {

// "[(a, b, c), ...]" of `count` tuples of `width` numbers made by `value(i, k)`.
template <class Value>
QByteArray tuples(int count, int width, Value&& value) {
    QByteArray out = "[";
    char number[24];
    for (int i = 0; i < count; ++i) {
        out += i ? ", (" : "(";
        for (int k = 0; k < width; ++k) {
            std::snprintf(number, sizeof number, k ? ", %.5g" : "%.5g", double(value(i, k)));
            out += number;
        }
        out += ")";
    }
    return out + "]";
}

} // namespace

QByteArray TestModels::seedScatterUsda(int instances, int segments) {
    // The seed: a sphere of `segments` slices and segments + 1 rings of vertices (poles alone).
    const int rings = segments + 1;
    std::vector<float> points;
    const auto point = [&](float phi, float theta) {
        points.insert(points.end(), {std::sin(phi) * std::cos(theta), std::cos(phi), std::sin(phi) * std::sin(theta)});
    };
    point(0.0f, 0.0f);
    for (int r = 1; r < rings; ++r)
        for (int s = 0; s < segments; ++s)
            point(std::numbers::pi_v<float> * float(r) / float(rings), 2.0f * std::numbers::pi_v<float> * float(s) / float(segments));
    point(std::numbers::pi_v<float>, 0.0f);
    const int south = int(points.size() / 3) - 1;
    QByteArray faces;
    const auto triangle = [&](int a, int b, int c) { faces += QByteArray::number(a) + ", " + QByteArray::number(b) + ", " + QByteArray::number(c) + ", "; };
    const auto at = [&](int ring, int s) { return 1 + (ring - 1) * segments + s % segments; };
    for (int s = 0; s < segments; ++s) {
        triangle(0, at(1, s + 1), at(1, s));
        for (int r = 1; r + 1 < rings; ++r) {
            triangle(at(r, s), at(r, s + 1), at(r + 1, s + 1));
            triangle(at(r, s), at(r + 1, s + 1), at(r + 1, s));
        }
        triangle(south, at(rings - 1, s), at(rings - 1, s + 1));
    }
    faces.chop(2);
    const int triangles = 2 * segments * segments;

    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::vector<float> placement;  // per instance: x, z, turn, size, shade
    for (int i = 0; i < instances * 5; ++i) placement.push_back(unit(random));
    const auto p = [&](int i, int k) { return placement[std::size_t(i) * 5 + std::size_t(k)]; };
    const float radius = 9.5f; // centimetres
    QByteArray out = "#usda 1.0\n(\n    defaultPrim = \"Dish\"\n    metersPerUnit = 0.01\n    upAxis = \"Y\"\n)\n\n";
    out += "def PointInstancer \"Dish\"\n{\n    rel prototypes = [</Dish/Seed>]\n";
    out += "    int[] protoIndices = " + tuples(instances, 1, [](int, int) { return 0; }).replace("(", "").replace(")", "") + "\n";
    out += "    point3f[] positions = " + tuples(instances, 3, [&](int i, int k) {
        const float r = radius * std::sqrt(p(i, 0)), a = 2.0f * std::numbers::pi_v<float> * p(i, 1);
        return k == 0 ? r * std::cos(a) : k == 1 ? 0.15f : r * std::sin(a);
    }) + "\n";
    out += "    quath[] orientations = " + tuples(instances, 4, [&](int i, int k) {
        const float half = std::numbers::pi_v<float> * p(i, 2);
        return k == 0 ? std::cos(half) : k == 2 ? std::sin(half) : 0.0f;
    }) + "\n";
    out += "    float3[] scales = " + tuples(instances, 3, [&](int i, int k) {
        const float size = 0.8f + 0.4f * p(i, 3);
        return k == 0 ? 0.3f * size : 0.12f * size;
    }) + "\n";
    out += "    color3f[] primvars:displayColor = " + tuples(instances, 3, [&](int i, int k) {
        const float shade = 0.55f + 0.4f * p(i, 4);
        return shade * (k == 0 ? 0.95f : k == 1 ? 0.8f : 0.55f);
    }) + " (\n        interpolation = \"vertex\"\n    )\n";
    out += "    def Mesh \"Seed\"\n    {\n        int[] faceVertexCounts = " +
           tuples(triangles, 1, [](int, int) { return 3; }).replace("(", "").replace(")", "") + "\n";
    out += "        int[] faceVertexIndices = [" + faces + "]\n";
    out += "        point3f[] points = " + tuples(int(points.size() / 3), 3, [&](int i, int k) { return points[std::size_t(i) * 3 + std::size_t(k)]; }) + "\n";
    out += "        normal3f[] normals = " + tuples(int(points.size() / 3), 3, [&](int i, int k) { return points[std::size_t(i) * 3 + std::size_t(k)]; }) +
           " (\n            interpolation = \"vertex\"\n        )\n    }\n}\n";
    return out;
}

QByteArray TestModels::glbWithNodes(int nodeCount, const QStringList& extensionsUsed) {
    const float positions[9] = {0, 0, 0, 0.1f, 0, 0, 0, 0.1f, 0};
    const quint16 indices[3] = {0, 1, 2};
    QByteArray bin(reinterpret_cast<const char*>(positions), sizeof positions);
    bin.append(reinterpret_cast<const char*>(indices), sizeof indices);
    QJsonArray nodes, sceneNodes;
    for (int i = 0; i < nodeCount; ++i) {
        nodes.append(QJsonObject{{"name", QString("node%1").arg(i)}, {"mesh", 0},
                                 {"translation", QJsonArray{double(i), 0.0, 0.0}}});
        sceneNodes.append(i);
    }
    QJsonObject gltf{
        {"asset", QJsonObject{{"version", "2.0"}}},
        {"scene", 0},
        {"scenes", QJsonArray{QJsonObject{{"nodes", sceneNodes}}}},
        {"nodes", nodes},
        {"meshes", QJsonArray{QJsonObject{{"primitives", QJsonArray{QJsonObject{
                                               {"attributes", QJsonObject{{"POSITION", 0}}}, {"indices", 1}}}}}}},
        {"buffers", QJsonArray{QJsonObject{{"byteLength", 44}}}},
        {"bufferViews", QJsonArray{QJsonObject{{"buffer", 0}, {"byteOffset", 0}, {"byteLength", 36}},
                                   QJsonObject{{"buffer", 0}, {"byteOffset", 36}, {"byteLength", 6}}}},
        {"accessors", QJsonArray{QJsonObject{{"bufferView", 0}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"},
                                             {"min", QJsonArray{0, 0, 0}}, {"max", QJsonArray{0.1, 0.1, 0}}},
                                 QJsonObject{{"bufferView", 1}, {"componentType", 5123}, {"count", 3}, {"type", "SCALAR"}}}},
    };
    if (!extensionsUsed.isEmpty()) gltf["extensionsUsed"] = QJsonArray::fromStringList(extensionsUsed);
    return glb(QJsonDocument(gltf).toJson(QJsonDocument::Compact), bin);
}

QByteArray TestModels::glb(QByteArray json, QByteArray bin) {
    json.append((4 - json.size() % 4) % 4, ' ');
    bin.append((4 - bin.size() % 4) % 4, '\0');
    const auto word = [](quint32 v) { return QByteArray(reinterpret_cast<const char*>(&v), 4); };
    return "glTF" + word(2) + word(quint32(28 + json.size() + bin.size())) + word(quint32(json.size())) + "JSON" + json +
           word(quint32(bin.size())) + QByteArray("BIN\0", 4) + bin;
}

void TestModels::write(const std::string& path, const QByteArray& bytes) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write test file " + path);
}

} // namespace orvanta::testing
