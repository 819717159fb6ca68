#include "MeshShapes.h"

#include <QtMath>

#include <cassert>
#include <cmath>

namespace orvanta::demo {

namespace {

// The direction of the profile at point i: the mean of the directions of the segments that
// meet there, leaving out segments of zero length (a doubled point makes a crease).
QVector2D profileDirection(const std::vector<QVector2D>& profile, std::size_t i) {
    QVector2D direction;
    if (i > 0) direction += (profile[i] - profile[i - 1]).normalized();
    if (i + 1 < profile.size()) direction += (profile[i + 1] - profile[i]).normalized();
    return direction.normalized();
}

void closeSubset(import::ImportedMesh& mesh) {
    mesh.subsets = {import::ImportedSubset{0, static_cast<std::uint32_t>(mesh.indices.size()), -1}};
}

} // namespace

import::ImportedMesh MeshShapes::lathe(std::string name, const std::vector<QVector2D>& profile, int segments,
                                       float fromDegrees, float toDegrees) {
    assert(profile.size() >= 2 && segments >= 3);
    import::ImportedMesh mesh;
    mesh.name = std::move(name);
    std::vector<float> along(profile.size(), 0.0f);
    for (std::size_t i = 1; i < profile.size(); ++i) along[i] = along[i - 1] + (profile[i] - profile[i - 1]).length();
    const float length = along.back() > 0.0f ? along.back() : 1.0f;

    const auto columns = static_cast<std::uint32_t>(segments + 1);
    for (std::size_t i = 0; i < profile.size(); ++i) {
        const QVector2D direction = profileDirection(profile, i);
        const QVector2D outward(direction.y(), -direction.x()); // right of the walk, in (radius, height)
        for (std::uint32_t j = 0; j < columns; ++j) {
            const float t = float(j) / float(segments);
            const float angle = qDegreesToRadians(fromDegrees + (toDegrees - fromDegrees) * t);
            const float s = std::sin(angle), c = std::cos(angle);
            mesh.positions.emplace_back(profile[i].x() * s, profile[i].y(), profile[i].x() * c);
            mesh.normals.push_back(QVector3D(outward.x() * s, outward.y(), outward.x() * c).normalized());
            mesh.texCoords.emplace_back(t, along[i] / length);
        }
    }
    for (std::uint32_t i = 0; i + 1 < profile.size(); ++i) {
        for (std::uint32_t j = 0; j < std::uint32_t(segments); ++j) {
            const std::uint32_t a = i * columns + j, b = a + 1, c = a + columns + 1, d = a + columns;
            mesh.indices.insert(mesh.indices.end(), {a, b, c, a, c, d});
        }
    }
    closeSubset(mesh);
    return mesh;
}

import::ImportedMesh MeshShapes::cylinder(std::string name, float radius, float height, int segments) {
    return lathe(std::move(name),
                 {{0, 0}, {radius, 0}, {radius, 0}, {radius, height}, {radius, height}, {0, height}}, segments);
}

import::ImportedMesh MeshShapes::sphere(std::string name, float radius, int segments) {
    std::vector<QVector2D> profile;
    const int rows = std::max(segments / 2, 2);
    for (int i = 0; i <= rows; ++i) {
        const float angle = float(M_PI) * (float(i) / float(rows) - 0.5f); // south pole to north pole
        profile.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    profile.front().setX(0.0f);
    profile.back().setX(0.0f);
    return lathe(std::move(name), profile, segments);
}

import::ImportedMesh MeshShapes::torus(std::string name, float ringRadius, float tubeRadius, int segments) {
    std::vector<QVector2D> profile;
    const int rows = std::max(segments / 2, 3);
    for (int i = 0; i <= rows; ++i) { // counter-clockwise in (radius, height), from the inside bottom
        const float angle = -0.5f * float(M_PI) + 2.0f * float(M_PI) * float(i) / float(rows);
        profile.emplace_back(ringRadius + tubeRadius * std::cos(angle), tubeRadius * std::sin(angle));
    }
    return lathe(std::move(name), profile, segments);
}

import::ImportedMesh MeshShapes::quad(std::string name, const QVector3D& corner, const QVector3D& edgeU,
                                      const QVector3D& edgeV) {
    import::ImportedMesh mesh;
    mesh.name = std::move(name);
    const QVector3D normal = QVector3D::crossProduct(edgeU, edgeV).normalized();
    mesh.positions = {corner, corner + edgeU, corner + edgeU + edgeV, corner + edgeV};
    mesh.normals.assign(4, normal);
    mesh.texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mesh.indices = {0, 1, 2, 0, 2, 3};
    closeSubset(mesh);
    return mesh;
}

import::ImportedMesh MeshShapes::box(std::string name, const QVector3D& size) {
    const QVector3D h = size / 2.0f;
    const QVector3D x(size.x(), 0, 0), y(0, size.y(), 0), z(0, 0, size.z());
    import::ImportedMesh mesh = quad(name, {-h.x(), -h.y(), h.z()}, x, y); // front (+z)
    append(mesh, quad(name, {h.x(), -h.y(), -h.z()}, -x, y));              // back
    append(mesh, quad(name, {h.x(), -h.y(), h.z()}, -z, y));               // right (+x)
    append(mesh, quad(name, {-h.x(), -h.y(), -h.z()}, z, y));              // left
    append(mesh, quad(name, {-h.x(), h.y(), h.z()}, x, -z));               // top (+y)
    append(mesh, quad(name, {-h.x(), -h.y(), -h.z()}, x, z));              // bottom
    return mesh;
}

import::ImportedMesh MeshShapes::transformed(import::ImportedMesh mesh, const QMatrix4x4& transform) {
    const QMatrix3x3 normalMatrix = transform.normalMatrix();
    for (auto& p : mesh.positions) p = transform.map(p);
    for (auto& n : mesh.normals) {
        const float* m = normalMatrix.constData(); // column-major
        n = QVector3D(m[0] * n.x() + m[3] * n.y() + m[6] * n.z(), m[1] * n.x() + m[4] * n.y() + m[7] * n.z(),
                      m[2] * n.x() + m[5] * n.y() + m[8] * n.z())
                .normalized();
    }
    return mesh;
}

void MeshShapes::append(import::ImportedMesh& mesh, const import::ImportedMesh& part) {
    const auto base = static_cast<std::uint32_t>(mesh.positions.size());
    mesh.positions.insert(mesh.positions.end(), part.positions.begin(), part.positions.end());
    mesh.normals.insert(mesh.normals.end(), part.normals.begin(), part.normals.end());
    mesh.texCoords.insert(mesh.texCoords.end(), part.texCoords.begin(), part.texCoords.end());
    for (const std::uint32_t index : part.indices) mesh.indices.push_back(base + index);
    closeSubset(mesh);
}

} // namespace orvanta::demo
