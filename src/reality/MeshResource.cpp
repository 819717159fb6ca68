#include "reality/MeshResource.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numbers>

namespace orvanta::reality {

namespace {

// One subset covering every index, drawn with material 0 of the model component.
void coverWithOneSubset(import::ImportedMesh& mesh) {
    mesh.subsets = {import::ImportedSubset{0, std::uint32_t(mesh.indices.size()), 0}};
}

} // namespace

MeshResource::MeshResource(std::shared_ptr<const import::ImportedMesh> mesh) : mesh_(std::move(mesh)) {
    assert(mesh_);
    for (const auto& p : mesh_->positions) bounds_.add(p);
}

std::shared_ptr<const MeshResource> MeshResource::generatePlane(float width, float depth, float cornerRadius) {
    auto mesh = std::make_shared<import::ImportedMesh>();
    mesh->name = "plane";
    const float halfWidth = width * 0.5f;
    const float halfDepth = depth * 0.5f;
    const float radius = std::clamp(cornerRadius, 0.0f, std::min(halfWidth, halfDepth));
    // Outline: around each corner an arc of `perCorner` points (one point for sharp corners),
    // corners in the order +x+z, −x+z, −x−z, +x−z; the angle grows from +x toward +z.
    const int perCorner = radius > 0.0f ? 9 : 1;
    const QVector3D up(0.0f, 1.0f, 0.0f);
    auto addVertex = [&](float x, float z) {
        mesh->positions.emplace_back(x, 0.0f, z);
        mesh->normals.push_back(up);
        mesh->texCoords.emplace_back(width > 0 ? x / width + 0.5f : 0.5f, depth > 0 ? z / depth + 0.5f : 0.5f);
    };
    addVertex(0.0f, 0.0f); // fan centre
    const float signs[4][2] = {{1, 1}, {-1, 1}, {-1, -1}, {1, -1}};
    for (int corner = 0; corner < 4; ++corner) {
        const float cx = signs[corner][0] * (halfWidth - radius);
        const float cz = signs[corner][1] * (halfDepth - radius);
        for (int i = 0; i < perCorner; ++i) {
            const float step = perCorner > 1 ? float(i) / float(perCorner - 1) : 0.0f;
            const float angle = (float(corner) + step) * std::numbers::pi_v<float> * 0.5f;
            // A sharp corner sits on the diagonal; an arc point on its circle.
            const float x = perCorner > 1 ? cx + radius * std::cos(angle) : signs[corner][0] * halfWidth;
            const float z = perCorner > 1 ? cz + radius * std::sin(angle) : signs[corner][1] * halfDepth;
            addVertex(x, z);
        }
    }
    const auto outline = std::uint32_t(mesh->positions.size() - 1);
    for (std::uint32_t i = 0; i < outline; ++i) {
        const std::uint32_t current = 1 + i;
        const std::uint32_t next = 1 + (i + 1) % outline;
        // Counter-clockwise seen from +y.
        mesh->indices.insert(mesh->indices.end(), {0u, next, current});
    }
    coverWithOneSubset(*mesh);
    return std::make_shared<const MeshResource>(std::move(mesh));
}

std::shared_ptr<const MeshResource> MeshResource::generateBox(float width, float height, float depth) {
    auto mesh = std::make_shared<import::ImportedMesh>();
    mesh->name = "box";
    const QVector3D half(width * 0.5f, height * 0.5f, depth * 0.5f);
    const QVector3D x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    // Each face: its outward normal n and tangents u, v with u × v = n, so (−u−v, u−v, u+v, −u+v)
    // runs counter-clockwise seen from outside.
    const QVector3D faces[6][3] = {{x, y, z}, {-x, z, y}, {y, z, x}, {-y, x, z}, {z, x, y}, {-z, y, x}};
    for (const auto& face : faces) {
        const QVector3D n = face[0], u = face[1], v = face[2];
        const auto base = std::uint32_t(mesh->positions.size());
        const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
        for (const auto& c : corners) {
            mesh->positions.push_back((n + u * c[0] + v * c[1]) * half);
            mesh->normals.push_back(n);
            mesh->texCoords.emplace_back((c[0] + 1) * 0.5f, (c[1] + 1) * 0.5f);
        }
        mesh->indices.insert(mesh->indices.end(), {base, base + 1, base + 2, base, base + 2, base + 3});
    }
    coverWithOneSubset(*mesh);
    return std::make_shared<const MeshResource>(std::move(mesh));
}

} // namespace orvanta::reality
