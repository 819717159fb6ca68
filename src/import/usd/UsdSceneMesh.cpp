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

// Calls `keep(k)` for each fan triangle (0, k, k + 1) of `face` (its point indices) whose
// three points differ.
template <class Keep> void forEachFanTriangle(std::span<const std::int32_t> face, Keep&& keep) {
    for (std::size_t k = 1; k + 1 < face.size(); ++k) {
        if (face[0] != face[k] && face[k] != face[k + 1] && face[0] != face[k + 1]) keep(k);
    }
}

} // namespace

std::optional<ImportedMesh> UsdSceneMesh::build(const UsdStage::Prim& prim, const std::string& texCoordPrimvar,
                                                int material, const std::vector<FaceSubset>& subsets) {
    const UsdStage::Property* pointsProperty = prim.property("points");
    const UsdStageValue::Floats points = UsdStageValue::floats(pointsProperty ? pointsProperty->value() : nullptr, 3);
    IntArray::Narrow countScratch, indexScratch;
    const auto counts = intsOf(prim, "faceVertexCounts", countScratch);
    const auto indices = intsOf(prim, "faceVertexIndices", indexScratch);
    if (points.size() == 0 || !counts || !indices) return std::nullopt;
    const std::size_t pointCount = points.size() / 3;

    // The kept triangles of every face, so subsets and uniform streams can name faces by
    // position. A face with fewer than three corners or an index outside `points` keeps none.
    std::vector<std::uint32_t> faceTriangles;
    faceTriangles.reserve(counts->size());
    std::size_t corners = 0;
    std::size_t keptCorners = 0;  // corners of faces that keep a triangle
    for (std::int32_t count : *counts) {
        if (count < 0 || static_cast<std::uint64_t>(count) > indices->size() - corners) break;
        const auto face = indices->subspan(corners, static_cast<std::size_t>(count));
        corners += face.size();
        const bool inRange = std::all_of(face.begin(), face.end(), [&](std::int32_t i) {
            return i >= 0 && static_cast<std::size_t>(i) < pointCount;
        });
        std::uint32_t triangles = 0;
        if (inRange) forEachFanTriangle(face, [&](std::size_t) { ++triangles; });
        if (triangles > 0) keptCorners += face.size();
        faceTriangles.push_back(triangles);
    }
    const std::size_t faceCount = faceTriangles.size();

    const std::string normalsName = prim.property("primvars:normals") ? "primvars:normals" : "normals";
    const auto cornerPoints = indices->first(corners);
    const auto normals = Stream::read(prim, normalsName, 3, pointCount, faceCount, cornerPoints);
    const auto texCoords = texCoordPrimvar.empty()
                               ? std::nullopt
                               : Stream::read(prim, "primvars:" + texCoordPrimvar, 2, pointCount, faceCount, cornerPoints);
    const bool perCorner = (normals && normals->perCorner()) || (texCoords && texCoords->perCorner());
    const auto orientation = UsdStageValue::text(prim.property("orientation") ? prim.property("orientation")->value() : nullptr);
    const bool leftHanded = orientation && *orientation == "leftHanded";

    ImportedMesh mesh;
    mesh.name = prim.name;
    const std::size_t vertexCount = perCorner ? keptCorners : pointCount;
    mesh.positions.reserve(vertexCount);
    if (normals) mesh.normals.reserve(vertexCount);
    if (texCoords) mesh.texCoords.reserve(vertexCount);
    const auto addVertex = [&](std::size_t face, std::size_t corner, std::size_t point) {
        mesh.positions.emplace_back(points[point * 3], points[point * 3 + 1], points[point * 3 + 2]);
        if (normals) {
            const std::size_t e = normals->element(face, corner, point);
            mesh.normals.emplace_back(normals->at(e, 0), normals->at(e, 1), normals->at(e, 2));
        }
        if (texCoords) {
            const std::size_t e = texCoords->element(face, corner, point);
            mesh.texCoords.emplace_back(texCoords->at(e, 0), texCoords->at(e, 1));
        }
    };
    if (!perCorner) {
        // Per-point streams: keep the points and index them. A uniform stream is impossible
        // here, so the face passed is never read.
        for (std::size_t p = 0; p < pointCount; ++p) addVertex(0, 0, p);
    }

    // Group the triangles: each subset in turn (the first subset naming a face takes it),
    // then the faces left over. Each group's triangles are one range of mesh.indices.
    std::vector<std::uint32_t> group;
    if (!subsets.empty()) {
        group.assign(faceCount, static_cast<std::uint32_t>(subsets.size()));
        for (std::size_t s = subsets.size(); s-- > 0;) {
            for (std::int32_t f : subsets[s].faces) {
                if (f >= 0 && static_cast<std::size_t>(f) < faceCount) group[static_cast<std::size_t>(f)] = static_cast<std::uint32_t>(s);
            }
        }
    }
    const auto groupOf = [&](std::size_t f) { return group.empty() ? subsets.size() : group[f]; };
    std::vector<std::size_t> groupEnd(subsets.size() + 1, 0);  // first the index count of each group
    for (std::size_t f = 0; f < faceCount; ++f) groupEnd[groupOf(f)] += 3 * std::size_t{faceTriangles[f]};
    std::size_t total = 0;
    for (std::size_t& end : groupEnd) end = total += end;
    if (total == 0) return std::nullopt;
    for (std::size_t g = 0; g < groupEnd.size(); ++g) {
        const std::size_t first = g == 0 ? 0 : groupEnd[g - 1];
        if (groupEnd[g] == first) continue;
        mesh.subsets.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(groupEnd[g] - first),
                                g < subsets.size() ? subsets[g].material : material});
    }
    // With one group, face order is group order: triangles are appended to a buffer reserved
    // once, never zero-filled. Several groups are written at their cursors into a buffer
    // sized once.
    const bool inFaceOrder = mesh.subsets.size() == 1;
    if (inFaceOrder) mesh.indices.reserve(total);
    else mesh.indices.resize(total);

    // Write each face's triangles at its group's cursor, in vertex indices of `mesh`. A face
    // left with no triangle adds no vertices.
    std::vector<std::size_t> groupCursor(groupEnd.size(), 0);
    for (std::size_t g = 1; g < groupEnd.size(); ++g) groupCursor[g] = groupEnd[g - 1];
    std::size_t first = 0;
    for (std::size_t f = 0; f < faceCount; first += static_cast<std::size_t>((*counts)[f]), ++f) {
        if (faceTriangles[f] == 0) continue;
        const auto face = indices->subspan(first, static_cast<std::size_t>((*counts)[f]));
        const std::size_t base = mesh.positions.size();
        const auto vertex = [&](std::size_t k) {
            return static_cast<std::uint32_t>(perCorner ? base + k : static_cast<std::size_t>(face[k]));
        };
        if (perCorner) {
            for (std::size_t k = 0; k < face.size(); ++k) addVertex(f, first + k, static_cast<std::size_t>(face[k]));
        }
        std::size_t& cursor = groupCursor[groupOf(f)];
        forEachFanTriangle(face, [&](std::size_t k) {
            const std::uint32_t triangle[3] = {vertex(0), vertex(leftHanded ? k + 1 : k), vertex(leftHanded ? k : k + 1)};
            if (inFaceOrder) mesh.indices.insert(mesh.indices.end(), std::begin(triangle), std::end(triangle));
            else std::copy(std::begin(triangle), std::end(triangle), mesh.indices.begin() + static_cast<std::ptrdiff_t>(cursor));
            cursor += 3;
        });
    }
    return mesh;
}

} // namespace orvanta::import::usd
