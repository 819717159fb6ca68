#include "import/usd/UsdSceneMesh.h"

#include "import/usd/UsdStageValue.h"

#include <algorithm>

namespace orvanta::import::usd {

namespace {

enum class Interpolation { constant, uniform, vertex, faceVarying };

// A per-point, per-face or per-corner stream of `width` floats, maybe indexed.
class Stream {
public:
    Stream() = default;
    Stream(Stream&&) = default;
    Stream& operator=(Stream&&) = default;
    Stream(const Stream&) = delete;  // a copy's index view would point into the original
    Stream& operator=(const Stream&) = delete;

    // `cornerPoints` are the point indices of all corners (faceVertexIndices up to the last
    // face read).
    static std::optional<Stream> read(const UsdStage::Prim& prim, const std::string& name, int width,
                                      std::size_t points, std::size_t faces, std::span<const std::int32_t> cornerPoints) {
        const std::size_t corners = cornerPoints.size();
        const UsdStage::Property* property = prim.property(name);
        if (!property) return std::nullopt;
        Stream stream;
        stream.width_ = width;
        stream.values_ = UsdStageValue::floats(property->value(), width);
        const std::size_t count = stream.values_.size() / static_cast<std::size_t>(width);
        if (count == 0) return std::nullopt;
        if (const auto elementSize = UsdStageValue::number(property->field("elementSize")); elementSize && *elementSize != 1)
            return std::nullopt;
        if (const UsdStage::Property* indices = prim.property(name + ":indices")) {
            if (const Value* value = indices->value(); value && value->get<IntArray>()) {
                stream.indices_ = value->get<IntArray>()->narrow(stream.indexScratch_);
                stream.indexed_ = true;
                for (std::int32_t i : stream.indices_) {
                    if (i < 0 || static_cast<std::size_t>(i) >= count) return std::nullopt;
                }
            }
        }
        const std::size_t available = stream.indexed_ ? stream.indices_.size() : count;
        const auto interpolation = UsdStageValue::text(property->field("interpolation"));
        if (!interpolation) {
            // Unstated: guess from the length, most specific first.
            stream.interpolation_ = available == corners ? Interpolation::faceVarying
                                    : available == points ? Interpolation::vertex
                                    : available == faces  ? Interpolation::uniform
                                                          : Interpolation::constant;
        } else if (*interpolation == "faceVarying") {
            stream.interpolation_ = Interpolation::faceVarying;
        } else if (*interpolation == "vertex" || *interpolation == "varying") {
            stream.interpolation_ = Interpolation::vertex;
        } else if (*interpolation == "uniform") {
            stream.interpolation_ = Interpolation::uniform;
        } else {
            stream.interpolation_ = Interpolation::constant;
        }
        const std::size_t needed = stream.interpolation_ == Interpolation::faceVarying ? corners
                                   : stream.interpolation_ == Interpolation::vertex    ? points
                                   : stream.interpolation_ == Interpolation::uniform   ? faces
                                                                                        : 1;
        if (available < needed) return std::nullopt;
        // Face-varying values indexed by the corners' own points hold one value per point:
        // reading them per point gives every corner the same value and keeps the points shared.
        if (stream.interpolation_ == Interpolation::faceVarying && stream.indexed_ && count >= points &&
            std::equal(cornerPoints.begin(), cornerPoints.end(), stream.indices_.begin())) {
            stream.interpolation_ = Interpolation::vertex;
            stream.indexed_ = false;
        }
        return stream;
    }

    bool perCorner() const { return interpolation_ == Interpolation::uniform || interpolation_ == Interpolation::faceVarying; }

    // The element for corner `corner` (a faceVertexIndices position) of face `face`, at
    // point `point`.
    std::size_t element(std::size_t face, std::size_t corner, std::size_t point) const {
        std::size_t element = 0;
        switch (interpolation_) {
        case Interpolation::constant: element = 0; break;
        case Interpolation::uniform: element = face; break;
        case Interpolation::vertex: element = point; break;
        case Interpolation::faceVarying: element = corner; break;
        }
        return indexed_ ? static_cast<std::size_t>(indices_[element]) : element;
    }

    // Component `c` of element `e`.
    float at(std::size_t e, int c) const {
        return values_[e * static_cast<std::size_t>(width_) + static_cast<std::size_t>(c)];
    }

private:
    int width_ = 1;
    UsdStageValue::Floats values_;  // a view of the layer's value, which outlives the stream
    // A view of the primvar's indices, which outlive the stream, or of indexScratch_ when
    // they had to be narrowed (moving the stream keeps the scratch buffer where it is).
    std::span<const std::int32_t> indices_;
    IntArray::Narrow indexScratch_;
    bool indexed_ = false;
    Interpolation interpolation_ = Interpolation::vertex;
};

// The 32-bit values of an int array property (see IntArray::narrow), or nullopt.
std::optional<std::span<const std::int32_t>> intsOf(const UsdStage::Prim& prim, const std::string& name,
                                                    IntArray::Narrow& scratch) {
    const UsdStage::Property* property = prim.property(name);
    const Value* value = property ? property->value() : nullptr;
    const IntArray* ints = value ? value->get<IntArray>() : nullptr;
    if (!ints) return std::nullopt;
    return ints->narrow(scratch);
}

// Whether every index of `face` is below `indexable`, at most 2^31: seen as unsigned, a
// negative index is past them all.
inline bool inRange(std::span<const std::int32_t> face, std::size_t indexable) {
    return std::all_of(face.begin(), face.end(), [indexable](std::int32_t i) { return static_cast<std::uint32_t>(i) < indexable; });
}

// Writes the fan triangles (0, k, k + 1) of `face` that name three different points to
// `out`, as vertex(k) indices, reversed when `leftHanded`; returns how many indices it wrote.
template <class Vertex>
std::size_t writeFanTriangles(std::span<const std::int32_t> face, bool leftHanded, std::uint32_t* out, Vertex&& vertex) {
    std::size_t written = 0;
    for (std::size_t k = 1; k + 1 < face.size(); ++k) {
        if (face[0] == face[k] || face[k] == face[k + 1] || face[0] == face[k + 1]) continue;
        out[written] = vertex(0);
        out[written + 1] = vertex(leftHanded ? k + 1 : k);
        out[written + 2] = vertex(leftHanded ? k : k + 1);
        written += 3;
    }
    return written;
}

} // namespace

std::optional<ImportedMesh> UsdSceneMesh::build(const UsdStage::Prim& prim, const Streams& streams, int material,
                                                const std::vector<FaceSubset>& subsets) {
    const UsdStage::Property* pointsProperty = prim.property("points");
    const UsdStageValue::Floats points = UsdStageValue::floats(pointsProperty ? pointsProperty->value() : nullptr, 3);
    IntArray::Narrow countScratch, indexScratch;
    const auto counts = intsOf(prim, "faceVertexCounts", countScratch);
    const auto indices = intsOf(prim, "faceVertexIndices", indexScratch);
    if (points.size() == 0 || !counts || !indices) return std::nullopt;
    const std::size_t pointCount = points.size() / 3;
    const std::size_t indexable = std::min<std::size_t>(pointCount, std::size_t{1} << 31);  // by an int32 index

    // The faces the counts describe, up to the first count that runs past the indices.
    std::size_t faceCount = 0;
    std::size_t corners = 0;
    for (std::int32_t count : *counts) {
        if (count < 0 || static_cast<std::uint64_t>(count) > indices->size() - corners) break;
        corners += static_cast<std::size_t>(count);
        ++faceCount;
    }

    // Group the triangles: each subset in turn (the first subset naming a face takes it),
    // then the faces left over. Each group's triangles are one range of mesh.indices.
    std::vector<std::uint32_t> faceGroup;
    if (!subsets.empty()) {
        faceGroup.assign(faceCount, static_cast<std::uint32_t>(subsets.size()));
        for (std::size_t s = subsets.size(); s-- > 0;) {
            for (std::int32_t f : subsets[s].faces) {
                if (f >= 0 && static_cast<std::size_t>(f) < faceCount) faceGroup[static_cast<std::size_t>(f)] = static_cast<std::uint32_t>(s);
            }
        }
    }
    // Locals rather than captures, so the loops below keep them in registers.
    const std::size_t leftover = subsets.size();  // the group of faces no subset claims
    const std::uint32_t* const groupData = faceGroup.empty() ? nullptr : faceGroup.data();
    const std::int32_t* const countData = counts->data();
    const std::int32_t* const indexData = indices->data();
    // Room for every group's triangles if no face drops any, from the counts alone, so the
    // indices are read once; what dropped faces leave unused is closed up at the end.
    std::vector<std::size_t> groupStart(subsets.size() + 2, 0);
    std::size_t leftoverRoom = 0;
    std::size_t cornerRoom = 0;  // corners of faces that may keep a triangle
    for (std::size_t f = 0; f < faceCount; ++f) {
        const auto count = static_cast<std::size_t>(countData[f]);
        if (count < 3) continue;
        if (groupData) groupStart[groupData[f] + 1] += 3 * (count - 2);
        else leftoverRoom += 3 * (count - 2);
        cornerRoom += count;
    }
    groupStart[leftover + 1] += leftoverRoom;
    for (std::size_t g = 1; g < groupStart.size(); ++g) groupStart[g] += groupStart[g - 1];
    if (groupStart.back() == 0) return std::nullopt;

    const std::string normalsName = prim.property("primvars:normals") ? "primvars:normals" : "normals";
    const auto cornerPoints = indices->first(corners);
    const auto normals = Stream::read(prim, normalsName, 3, pointCount, faceCount, cornerPoints);
    const auto primvar = [&](const std::string& name, int width) {
        return name.empty() ? std::nullopt : Stream::read(prim, "primvars:" + name, width, pointCount, faceCount, cornerPoints);
    };
    const auto texCoords = primvar(streams.texCoords[0], 2);
    const auto texCoords1 = primvar(streams.texCoords[1], 2);
    const auto colors = primvar(streams.displayColor ? "displayColor" : "", 3);
    const auto opacities = colors ? primvar("displayOpacity", 1) : std::nullopt;
    const auto perCornerStream = [](const std::optional<Stream>& stream) { return stream && stream->perCorner(); };
    const bool perCorner = perCornerStream(normals) || perCornerStream(texCoords) || perCornerStream(texCoords1) ||
                           perCornerStream(colors) || perCornerStream(opacities);
    const auto orientation = UsdStageValue::text(prim.property("orientation") ? prim.property("orientation")->value() : nullptr);
    const bool leftHanded = orientation && *orientation == "leftHanded";

    ImportedMesh mesh;
    mesh.name = prim.name;
    const std::size_t vertexRoom = perCorner ? cornerRoom : pointCount;
    mesh.positions.resize(vertexRoom);
    if (normals) mesh.normals.resize(vertexRoom);
    if (texCoords) mesh.texCoords.resize(vertexRoom);
    if (texCoords1) mesh.texCoords1.resize(vertexRoom);
    if (colors) mesh.colors.resize(vertexRoom);
    mesh.indices.resize(groupStart.back());
    if (const UsdStage::Property* doubleSided = prim.property("doubleSided"))
        mesh.doubleSided = UsdStageValue::number(doubleSided->value()).value_or(0) != 0;
    const auto setVertex = [&](std::size_t v, std::size_t face, std::size_t corner, std::size_t point) {
        mesh.positions[v] = QVector3D(points[point * 3], points[point * 3 + 1], points[point * 3 + 2]);
        if (normals) {
            const std::size_t e = normals->element(face, corner, point);
            mesh.normals[v] = QVector3D(normals->at(e, 0), normals->at(e, 1), normals->at(e, 2));
        }
        if (texCoords) {
            const std::size_t e = texCoords->element(face, corner, point);
            mesh.texCoords[v] = QVector2D(texCoords->at(e, 0), texCoords->at(e, 1));
        }
        if (texCoords1) {
            const std::size_t e = texCoords1->element(face, corner, point);
            mesh.texCoords1[v] = QVector2D(texCoords1->at(e, 0), texCoords1->at(e, 1));
        }
        if (colors) {
            const std::size_t e = colors->element(face, corner, point);
            const float alpha = opacities ? opacities->at(opacities->element(face, corner, point), 0) : 1.0f;
            mesh.colors[v] = QVector4D(colors->at(e, 0), colors->at(e, 1), colors->at(e, 2), alpha);
        }
    };
    // Per-point streams: keep the points and index them. A uniform stream is impossible
    // here, so the face passed is never read.
    if (!perCorner) {
        for (std::size_t p = 0; p < pointCount; ++p) setVertex(p, 0, 0, p);
    }

    // Write each face's kept triangles at its group's cursor, in vertex indices of `mesh`;
    // with per-corner vertices, a face that keeps a triangle adds its corners. The two cases
    // run as separate loops so the common per-point one stays small.
    std::vector<std::size_t> groupCursor(groupStart.begin(), groupStart.end() - 1);
    std::uint32_t* const out = mesh.indices.data();
    const auto eachUsableFace = [&](auto&& visit) {  // three corners or more, all in range
        for (std::size_t f = 0, first = 0; f < faceCount; ++f) {
            const auto count = static_cast<std::size_t>(countData[f]);
            const std::span<const std::int32_t> face(indexData + first, count);
            if (count >= 3 && inRange(face, indexable)) visit(f, first, face, groupCursor[groupData ? groupData[f] : leftover]);
            first += count;
        }
    };
    std::size_t vertexCount = pointCount;
    if (perCorner) {
        vertexCount = 0;
        eachUsableFace([&](std::size_t f, std::size_t first, std::span<const std::int32_t> face, std::size_t& cursor) {
            const std::size_t written = writeFanTriangles(face, leftHanded, out + cursor, [base = vertexCount](std::size_t k) {
                return static_cast<std::uint32_t>(base + k);
            });
            cursor += written;
            if (written == 0) return;
            for (std::size_t k = 0; k < face.size(); ++k) setVertex(vertexCount++, f, first + k, static_cast<std::size_t>(face[k]));
        });
    } else {
        eachUsableFace([&](std::size_t, std::size_t, std::span<const std::int32_t> face, std::size_t& cursor) {
            if (face.size() == 3) {  // most meshes are all triangles: no fan to walk
                const auto a = static_cast<std::uint32_t>(face[0]), b = static_cast<std::uint32_t>(face[1]),
                           c = static_cast<std::uint32_t>(face[2]);
                if (a == b || b == c || a == c) return;
                out[cursor] = a;
                out[cursor + 1] = leftHanded ? c : b;
                out[cursor + 2] = leftHanded ? b : c;
                cursor += 3;
                return;
            }
            cursor += writeFanTriangles(face, leftHanded, out + cursor, [face](std::size_t k) {
                return static_cast<std::uint32_t>(face[k]);
            });
        });
    }

    // Close up the room dropped faces left, group by group, and name each group's range.
    std::size_t end = 0;
    for (std::size_t g = 0; g + 1 < groupStart.size(); ++g) {
        const std::size_t written = groupCursor[g] - groupStart[g];
        if (written == 0) continue;
        if (end != groupStart[g]) std::copy(out + groupStart[g], out + groupCursor[g], out + end);
        mesh.subsets.push_back({static_cast<std::uint32_t>(end), static_cast<std::uint32_t>(written),
                                g < subsets.size() ? subsets[g].material : material});
        end += written;
    }
    if (end == 0) return std::nullopt;
    mesh.indices.resize(end);
    mesh.positions.resize(vertexCount);
    if (normals) mesh.normals.resize(vertexCount);
    if (texCoords) mesh.texCoords.resize(vertexCount);
    if (texCoords1) mesh.texCoords1.resize(vertexCount);
    if (colors) mesh.colors.resize(vertexCount);
    return mesh;
}

} // namespace orvanta::import::usd
