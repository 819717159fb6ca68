#pragma once
// The USD prims that describe an ImportedScene, before they are written as text or crate:
// one Xform per node (its transform as xformOp:transform), a Mesh per mesh a node draws
// (points, triangle faces, vertex normals, `st`/`st1` coordinates, displayColor and
// displayOpacity, doubleSided, GeomSubsets per material) and a Material per material, each a
// UsdPreviewSurface whose textures are UsdUVTexture shaders reading through a
// UsdPrimvarReader_float2 and, when moved, a UsdTransform2d.
//
// A mesh several nodes draw is written once, in a class prim under "Prototypes", and each
// node draws it through an instanceable prim referencing that class.
//
// UsdPreviewSurface has no factor beside a texture, so a textured input's factor goes into
// the texture's scale (and bias). Large arrays are views of the scene's own vectors; the few
// arrays USD needs in another shape (face counts, colours split into colour and opacity)
// are kept in the plan. Facts USD cannot hold are listed in `notes`.
// Thread: a value type; build it on any thread.

#include "import/ImportedScene.h"

#include <QMatrix4x4>
#include <QVector2D>
#include <QVector3D>
#include <QVector4D>

#include <cstdint>
#include <deque>
#include <string>
#include <variant>
#include <vector>

namespace orvanta::exporter {

struct UsdToken {
    std::string text;
};

struct UsdAssetPath {
    std::string path;
};

// `count` elements of `width` floats each.
struct UsdFloatArray {
    const float* data = nullptr;
    std::size_t count = 0;
    int width = 1;
};

struct UsdIntArray {
    const std::int32_t* data = nullptr;
    std::size_t count = 0;
};

using UsdPlanValue = std::variant<std::monostate, bool, float, UsdToken, UsdAssetPath, QVector2D, QVector3D,
                                  QVector4D, QMatrix4x4, UsdFloatArray, UsdIntArray, std::vector<std::string>>;

struct UsdPlanProperty {
    std::string name;            // "points", "inputs:diffuseColor", "material:binding"
    std::string typeName;        // "point3f[]", "color3f", ...; empty for a relationship
    UsdPlanValue value;          // monostate: declared without a value
    bool uniform = false;
    std::string interpolation;   // primvars only
    std::string target;          // connection (attributes) or target (relationships) path
};

struct UsdPlanPrim {
    std::string path;
    std::string name;
    std::string typeName;
    bool isClass = false;            // "class" rather than "def": a prototype, not drawn
    bool instanceable = false;
    std::string reference;           // a prim of this layer it references; empty for none
    std::vector<std::string> apiSchemas;
    std::vector<int> children;   // indices into UsdLayerPlan::prims
    std::vector<UsdPlanProperty> properties;
};

// An image the package carries, named by its path inside the package.
struct UsdPlanTexture {
    std::string path;
    QByteArray bytes;
};

struct UsdLayerPlan {
    std::string defaultPrim;
    std::vector<UsdPlanPrim> prims;     // prims[0] is the one root prim, parents before children
    std::vector<UsdPlanTexture> textures;
    std::vector<std::string> notes;     // what the layer does not carry over

    // Plans the layer of `scene`. Thread: any; `scene` must outlive the plan.
    static UsdLayerPlan of(const import::ImportedScene& scene);

    // Storage for arrays the plan made itself (stable addresses).
    std::deque<std::vector<float>> floatStorage;
    std::deque<std::vector<std::int32_t>> intStorage;
};

} // namespace orvanta::exporter
