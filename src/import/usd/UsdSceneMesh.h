#pragma once
// Triangulates one Mesh prim into an ImportedMesh.
//
// Faces come from faceVertexCounts and faceVertexIndices and are fan-triangulated; faces
// with fewer than three corners or an index outside `points` are dropped, as are triangles
// that repeat a point, and counts running past the index list end the mesh there.
// orientation = "leftHanded" reverses the winding. Normals (`primvars:normals`, else
// `normals`), two texture-coordinate sets (the named primvars) and, when asked for, the
// colours of `primvars:displayColor` with `primvars:displayOpacity` may each be constant,
// uniform, vertex, varying or faceVarying, indexed or not; a stream whose length does not match its
// interpolation is left out. While every stream is per point the points are kept and
// indexed; a uniform or faceVarying stream makes one vertex per face corner instead, except
// an indexed faceVarying stream whose indices are the corners' points, which is per point.
// Triangles are grouped by the given face subsets, each with its material, then the faces
// no subset claims. `doubleSided` is copied.
// Thread: pure functions, any thread.

#include "import/ImportedScene.h"
#include "import/usd/UsdStage.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvanta::import::usd {

class UsdSceneMesh {
public:
    struct FaceSubset {
        std::vector<std::int32_t> faces;  // face indices of the mesh
        int material = -1;
    };

    struct Streams {
        std::array<std::string, 2> texCoords;  // primvar names without "primvars:"; empty: none
        bool displayColor = false;
    };

    // The mesh of `prim`, or nullopt when it has no triangle. `material` is used for faces
    // no subset claims. Thread: any.
    static std::optional<ImportedMesh> build(const UsdStage::Prim& prim, const Streams& streams, int material,
                                             const std::vector<FaceSubset>& subsets);
};

} // namespace orvanta::import::usd
