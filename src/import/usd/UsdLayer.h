#pragma once
// One USD layer as read from a file (text or crate), before composition: a flat table of
// specs keyed by path, each with its fields. Both readers fill this; composition and scene
// extraction read it.
//
// Paths are strings in USD's syntax: "/" (pseudo-root), "/Dish/Mesh", "/Dish/Mesh.points",
// "/Dish{shading=red}Mesh" for specs inside a variant.
// Thread: a value type.

#include "import/usd/UsdValue.h"

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta::import::usd {

enum class SpecType { pseudoRoot, prim, attribute, relationship, variantSet, variant, other };
enum class Specifier { def, over, classSpec };

struct Spec {
    SpecType type = SpecType::other;
    // Field name -> value, with USD's field names: "typeName", "specifier", "primChildren",
    // "properties", "default", "timeSamples", "variability", "connectionPaths", "targetPaths",
    // "references", "payload", "variantSelection", "variantSetNames", "variantChildren",
    // "apiSchemas", "interpolation", "elementSize", ... Unknown fields are kept as read.
    std::unordered_map<std::string, Value> fields;

    const Value* field(const std::string& name) const {
        auto it = fields.find(name);
        return it == fields.end() ? nullptr : &it->second;
    }
};

struct Layer {
    std::string identifier;                          // the layer's path inside its package, or file name
    std::unordered_map<std::string, Spec> specs;     // by path; "/" holds layer metadata
                                                     // ("defaultPrim", "upAxis", "metersPerUnit")
    const Spec* spec(const std::string& path) const {
        auto it = specs.find(path);
        return it == specs.end() ? nullptr : &it->second;
    }
};

} // namespace orvanta::import::usd
