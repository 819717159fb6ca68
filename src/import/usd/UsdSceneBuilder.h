#pragma once
// Extracts an ImportedScene from a composed stage.
//
// Defined, active, visible prims of type Xform, Scope, SkelRoot, Mesh, PointInstancer or no
// type become nodes (all but Scope with their transform ops); any other prim type is left
// out with everything below it. Instanceable prims composed from the same arcs share one
// prototype: two or more of them under one parent become an instance table of the parent's
// node (one entry per prim, its transform) placing a prototype tree built once; a lone one
// is built as a node, or copies the nodes of its prototype built before, drawing the same
// meshes. A PointInstancer's node gets one instance table per prototype it names (position,
// orientation and scale per instance, colour from a displayColor with one value per
// instance), each prototype built once as a tree of its own; its own children are drawn only
// as prototypes. A Mesh carries its triangulated mesh, bound to the material of
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
