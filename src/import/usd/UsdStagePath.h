#pragma once
// Builds and takes apart USD path strings: "/" (pseudo-root), "/A/B" (prims),
// "/A/B.points" (properties), "/A{set=variant}" (a variant) and "/A{set=variant}B" (a prim
// inside a variant).
// Thread: pure functions, any thread.

#include <optional>
#include <string>
#include <string_view>

namespace orvanta::import::usd {

class UsdStagePath {
public:
    // The path of prim `name` under `parent` (a prim, variant or the pseudo-root).
    static std::string child(std::string_view parent, std::string_view name);
    // The path of property `name` of the prim (or variant) at `prim`.
    static std::string property(std::string_view prim, std::string_view name);
    // The path of variant `variant` of set `set` on `prim`; an empty variant names the set.
    static std::string variant(std::string_view prim, std::string_view set, std::string_view variant);
    // The prim part of a property path ("/A/B.c" -> "/A/B"); a prim path is returned as is.
    static std::string_view primOf(std::string_view path);
    // The part after the '.' of a property path, or empty.
    static std::string_view propertyNameOf(std::string_view path);
    // `path` made absolute: relative paths ("Mat", "../Looks/Mat.outputs:surface") are read
    // against the prim at `anchor`, whose variant selections are dropped. nullopt when ".."
    // climbs above the root.
    static std::optional<std::string> absolute(std::string_view anchor, std::string_view path);
    // Rewrites `path` from below `from` to below `to` ("/Src/A.b" with /Src -> /Dst gives
    // "/Dst/A.b"); nullopt when `path` is not at or under `from`.
    static std::optional<std::string> reroot(std::string_view path, std::string_view from, std::string_view to);
    // The last prim name of a prim path ("/A/B" -> "B").
    static std::string_view name(std::string_view primPath);
};

} // namespace orvanta::import::usd
