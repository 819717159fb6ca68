#pragma once
// Extracts an ImportedScene from a composed stage.
//
// Defined, active, visible prims of type Xform, Scope, SkelRoot, Mesh, PointInstancer or no
// type become nodes (all but Scope with their transform ops); any other prim type is left
// out with everything below it. Instanceable prims composed from the same arcs share one
// prototype: the first is built, later ones copy its nodes and draw the same meshes. A
// PointInstancer gets one node per instance (position, orientation, scale) holding a
// prototype it names, built under the first instance using it and shared the same way;
// its own children are drawn only as prototypes. A Mesh carries its triangulated mesh, bound to the material of
// the nearest `material:binding` on it or an ancestor, split by its GeomSubsets of family
// "materialBind" (or that bind a material). Texture coordinates are read from the primvar
// the bound material's textures name, else `primvars:st`, else the first texCoord2 primvar.
// Node 0 is the root: it turns the stage into Y-up metres (`upAxis` Z is rotated to Y,
// `metersPerUnit`, 0.01 when unstated, scales).
// The stage is used up: each Mesh prim's arrays are released (UsdStage::releaseArrays) as
// soon as its mesh is built, keeping peak memory near the larger of layer and output.
// Thread: pure functions, any thread.

#include "import/ImportedScene.h"
#include "import/usd/UsdStage.h"

namespace orvanta::import::usd {

class UsdSceneBuilder {
public:
    // Thread: any.
    static ImportedScene build(UsdStage&& stage);
};

} // namespace orvanta::import::usd
