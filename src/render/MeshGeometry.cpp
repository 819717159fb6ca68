#include "render/MeshGeometry.h"

#include <cstring>
#include <limits>

namespace orvanta::render {

namespace {

// Bounds of the vertices that the triangles of one part use.
void partBounds(const import::ImportedMesh& mesh, const import::ImportedSubset& part, QVector3D& min, QVector3D& max) {
    constexpr float inf = std::numeric_limits<float>::infinity();
    min = QVector3D(inf, inf, inf);
    max = QVector3D(-inf, -inf, -inf);
    const std::uint32_t end = part.firstIndex + part.indexCount;
    for (std::uint32_t i = part.firstIndex; i < end && i < mesh.indices.size(); ++i) {
        const QVector3D& p = mesh.positions[mesh.indices[i]];
        min = QVector3D(std::min(min.x(), p.x()), std::min(min.y(), p.y()), std::min(min.z(), p.z()));
        max = QVector3D(std::max(max.x(), p.x()), std::max(max.y(), p.y()), std::max(max.z(), p.z()));
    }
    if (min.x() > max.x()) min = max = QVector3D();
}

} // namespace

MeshGeometry::MeshGeometry(std::shared_ptr<const import::ImportedMesh> mesh, QQuick3DObject* parent)
    : QQuick3DGeometry(parent), mesh_(std::move(mesh)) {
    const import::ImportedMesh& m = *mesh_;
    const std::size_t count = m.positions.size();
    const bool hasNormals = m.normals.size() == count;
    const bool hasTangents = hasNormals && m.tangents.size() == count;
    const bool hasUVs = m.texCoords.size() == count;
    const bool hasUVs1 = m.texCoords1.size() == count;
    const bool hasColors = m.colors.size() == count;

    // Interleaved: position, normal, tangent and binormal, uv0, uv1, colour, each only when
    // the mesh has it. Quick 3D takes the binormal as its own stream; it comes from the
    // tangent's handedness.
    int stride = 0;
    const auto slot = [&stride](bool present, int floats) {
        const int offset = stride;
        if (present) stride += floats * int(sizeof(float));
        return offset;
    };
    const int positionOffset = slot(true, 3);
    const int normalOffset = slot(hasNormals, 3);
    const int tangentOffset = slot(hasTangents, 3);
    const int binormalOffset = slot(hasTangents, 3);
    const int uvOffset = slot(hasUVs, 2);
    const int uv1Offset = slot(hasUVs1, 2);
    const int colorOffset = slot(hasColors, 4);

    QByteArray vertices(qsizetype(count) * stride, Qt::Uninitialized);
    char* out = vertices.data();
    for (std::size_t i = 0; i < count; ++i, out += stride) {
        std::memcpy(out + positionOffset, &m.positions[i], 3 * sizeof(float));
        if (hasNormals) std::memcpy(out + normalOffset, &m.normals[i], 3 * sizeof(float));
        if (hasTangents) {
            const QVector3D tangent = m.tangents[i].toVector3D();
            const QVector3D binormal = QVector3D::crossProduct(m.normals[i], tangent) * m.tangents[i].w();
            std::memcpy(out + tangentOffset, &tangent, 3 * sizeof(float));
            std::memcpy(out + binormalOffset, &binormal, 3 * sizeof(float));
        }
        if (hasUVs) std::memcpy(out + uvOffset, &m.texCoords[i], 2 * sizeof(float));
        if (hasUVs1) std::memcpy(out + uv1Offset, &m.texCoords1[i], 2 * sizeof(float));
        if (hasColors) std::memcpy(out + colorOffset, &m.colors[i], 4 * sizeof(float));
    }
    setVertexData(vertices);
    setStride(stride);
    setPrimitiveType(PrimitiveType::Triangles);
    addAttribute(Attribute::PositionSemantic, positionOffset, Attribute::F32Type);
    if (hasNormals) addAttribute(Attribute::NormalSemantic, normalOffset, Attribute::F32Type);
    if (hasTangents) {
        addAttribute(Attribute::TangentSemantic, tangentOffset, Attribute::F32Type);
        addAttribute(Attribute::BinormalSemantic, binormalOffset, Attribute::F32Type);
    }
    if (hasUVs) addAttribute(Attribute::TexCoord0Semantic, uvOffset, Attribute::F32Type);
    if (hasUVs1) addAttribute(Attribute::TexCoord1Semantic, uv1Offset, Attribute::F32Type);
    if (hasColors) addAttribute(Attribute::ColorSemantic, colorOffset, Attribute::F32Type);

    // The index buffer is the mesh's own; Quick 3D copies it to the GPU when it syncs.
    setIndexData(QByteArray::fromRawData(reinterpret_cast<const char*>(m.indices.data()),
                                         qsizetype(m.indices.size() * sizeof(std::uint32_t))));
    addAttribute(Attribute::IndexSemantic, 0, Attribute::U32Type);

    QVector3D min, max;
    if (m.subsets.size() > 1) {
        for (const import::ImportedSubset& part : m.subsets) {
            partBounds(m, part, min, max);
            addSubset(int(part.firstIndex), int(part.indexCount), min, max);
        }
    }
    partBounds(m, import::ImportedSubset{0, std::uint32_t(m.indices.size()), -1}, min, max);
    setBounds(min, max);
    update();
}

} // namespace orvanta::render
