#include "import/usd/UsdSceneMesh.h"

#include "import/usd/UsdStageValue.h"

namespace orvanta::import::usd {

namespace {

enum class Interpolation { constant, uniform, vertex, faceVarying };

// One face of the mesh: its corners are faceVertexIndices[first .. first + count).
struct Face {
    std::size_t first = 0;
    std::size_t count = 0;
};

// A per-point, per-face or per-corner stream of `width` floats, maybe indexed.
class Stream {
public:
    Stream() = default;
    Stream(Stream&&) = default;
    Stream& operator=(Stream&&) = default;
    Stream(const Stream&) = delete;  // a copy's index view would point into the original
    Stream& operator=(const Stream&) = delete;

    static std::optional<Stream> read(const UsdStage::Prim& prim, const std::string& name, int width,
                                      std::size_t points, std::size_t faces, std::size_t corners) {
        const UsdStage::Property* property = prim.property(name);
        if (!property) return std::nullopt;
        Stream stream;
        stream.width_ = width;
        stream.values_ = UsdStageValue::numbers(property->value(), width);
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
        return stream;
    }

    bool perCorner() const { return interpolation_ == Interpolation::uniform || interpolation_ == Interpolation::faceVarying; }

    // Component `c` of the element for corner `corner` (a faceVertexIndices position) of
    // face `face`, at point `point`.
    float at(std::size_t face, std::size_t corner, std::size_t point, int c) const {
        std::size_t element = 0;
        switch (interpolation_) {
        case Interpolation::constant: element = 0; break;
        case Interpolation::uniform: element = face; break;
        case Interpolation::vertex: element = point; break;
        case Interpolation::faceVarying: element = corner; break;
        }
        if (indexed_) element = static_cast<std::size_t>(indices_[element]);
        return static_cast<float>(values_[element * static_cast<std::size_t>(width_) + static_cast<std::size_t>(c)]);
    }

private:
    int width_ = 1;
    std::vector<double> values_;
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

} // namespace

std::optional<ImportedMesh> UsdSceneMesh::build(const UsdStage::Prim& prim, const std::string& texCoordPrimvar,
                                                int material, const std::vector<FaceSubset>& subsets) {
    const UsdStage::Property* pointsProperty = prim.property("points");
    const std::vector<double> points = UsdStageValue::numbers(pointsProperty ? pointsProperty->value() : nullptr, 3);
    IntArray::Narrow countScratch, indexScratch;
    const auto counts = intsOf(prim, "faceVertexCounts", countScratch);
    const auto indices = intsOf(prim, "faceVertexIndices", indexScratch);
    if (points.empty() || !counts || !indices) return std::nullopt;
    const std::size_t pointCount = points.size() / 3;

    // Every face keeps its position so subsets and uniform streams can name it; invalid
    // faces keep count 0.
    std::vector<Face> faces;
    faces.reserve(counts->size());
    std::size_t cursor = 0;
    for (std::int32_t count : *counts) {
        if (count < 0 || static_cast<std::uint64_t>(count) > indices->size() - cursor) break;
        Face face{cursor, static_cast<std::size_t>(count)};
        cursor += face.count;
        const bool inRange = std::all_of(indices->begin() + static_cast<std::ptrdiff_t>(face.first),
                                         indices->begin() + static_cast<std::ptrdiff_t>(cursor), [&](std::int32_t i) {
                                             return i >= 0 && static_cast<std::size_t>(i) < pointCount;
                                         });
        if (face.count < 3 || !inRange) face.count = 0;
        faces.push_back(face);
    }
    const std::size_t corners = cursor;

    const std::string normalsName = prim.property("primvars:normals") ? "primvars:normals" : "normals";
    const auto normals = Stream::read(prim, normalsName, 3, pointCount, faces.size(), corners);
    const auto texCoords = texCoordPrimvar.empty()
                               ? std::nullopt
                               : Stream::read(prim, "primvars:" + texCoordPrimvar, 2, pointCount, faces.size(), corners);
    const bool perCorner = (normals && normals->perCorner()) || (texCoords && texCoords->perCorner());
    const auto orientation = UsdStageValue::text(prim.property("orientation") ? prim.property("orientation")->value() : nullptr);
    const bool leftHanded = orientation && *orientation == "leftHanded";

    ImportedMesh mesh;
    mesh.name = prim.name;
    const auto addVertex = [&](std::size_t face, std::size_t corner, std::size_t point) {
        mesh.positions.emplace_back(static_cast<float>(points[point * 3]), static_cast<float>(points[point * 3 + 1]),
                                    static_cast<float>(points[point * 3 + 2]));
        if (normals)
            mesh.normals.emplace_back(normals->at(face, corner, point, 0), normals->at(face, corner, point, 1),
                                      normals->at(face, corner, point, 2));
        if (texCoords) mesh.texCoords.emplace_back(texCoords->at(face, corner, point, 0), texCoords->at(face, corner, point, 1));
    };
    if (!perCorner) {
        // Per-point streams: keep the points and index them. A uniform stream is impossible
        // here, so the face passed is never read.
        for (std::size_t p = 0; p < pointCount; ++p) addVertex(0, 0, p);
    }

    // Triangles per face, in vertex indices of `mesh`. Fan triangles that repeat a point are
    // dropped, and a face left with none adds no vertices.
    std::vector<std::vector<std::uint32_t>> faceTriangles(faces.size());
    std::vector<std::size_t> fan;
    for (std::size_t f = 0; f < faces.size(); ++f) {
        const Face& face = faces[f];
        const auto point = [&](std::size_t k) { return (*indices)[face.first + k]; };
        fan.clear();
        for (std::size_t k = 1; k + 1 < face.count; ++k) {
            if (point(0) != point(k) && point(k) != point(k + 1) && point(0) != point(k + 1)) fan.push_back(k);
        }
        if (fan.empty()) continue;
        std::vector<std::uint32_t> corner(face.count);
        for (std::size_t k = 0; k < face.count; ++k) {
            const auto p = static_cast<std::size_t>(point(k));
            if (perCorner) {
                corner[k] = static_cast<std::uint32_t>(mesh.positions.size());
                addVertex(f, face.first + k, p);
            } else {
                corner[k] = static_cast<std::uint32_t>(p);
            }
        }
        for (std::size_t k : fan)
            faceTriangles[f].insert(faceTriangles[f].end(),
                                    {corner[0], corner[leftHanded ? k + 1 : k], corner[leftHanded ? k : k + 1]});
    }

    // Group the triangles: each subset in turn (the first subset naming a face takes it),
    // then the faces left over.
    std::vector<std::size_t> group(faces.size(), subsets.size());
    for (std::size_t s = subsets.size(); s-- > 0;) {
        for (std::int32_t f : subsets[s].faces) {
            if (f >= 0 && static_cast<std::size_t>(f) < faces.size()) group[static_cast<std::size_t>(f)] = s;
        }
    }
    std::vector<std::vector<std::size_t>> facesOf(subsets.size() + 1);
    for (std::size_t f = 0; f < faces.size(); ++f) facesOf[group[f]].push_back(f);
    for (std::size_t g = 0; g < facesOf.size(); ++g) {
        ImportedSubset subset;
        subset.firstIndex = static_cast<std::uint32_t>(mesh.indices.size());
        subset.material = g < subsets.size() ? subsets[g].material : material;
        for (std::size_t f : facesOf[g]) mesh.indices.insert(mesh.indices.end(), faceTriangles[f].begin(), faceTriangles[f].end());
        subset.indexCount = static_cast<std::uint32_t>(mesh.indices.size()) - subset.firstIndex;
        if (subset.indexCount > 0) mesh.subsets.push_back(subset);
    }
    if (mesh.indices.empty()) return std::nullopt;
    return mesh;
}

} // namespace orvanta::import::usd
