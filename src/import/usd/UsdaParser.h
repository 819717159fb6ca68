#pragma once
// Reads a USDA (text) layer into a Layer: layer metadata, prims with their metadata,
// attributes (values, time samples, connections, metadata), relationships, references and
// payloads with their list-op prefixes, and variant sets. Metadata the kit does not use is
// skipped. Nesting deeper than UsdaValueReader::maxNesting is refused.
//
// Fields written (USD's names): "/" gets defaultPrim, upAxis (Token), metersPerUnit
// (DoubleArray), documentation, primChildren. A prim gets specifier (Token "def", "over" or
// "class"), typeName (Token), primChildren, properties, variantSetChildren (TokenArray),
// and from its metadata kind, apiSchemas, references, payload, inherits, specializes,
// variantSelection, variantSetNames (StringArray), active, instanceable, customData...
// A property gets typeName (Token, "float3[]" or "rel"), variability (Token "uniform" when
// uniform), custom, default, timeSamples, connectionPaths or targetPaths, interpolation,
// elementSize. A variant set "/P{set=}" gets variantChildren; its variants are "/P{set=v}".
// Thread: any; no shared state.

#include "core/Result.h"
#include "import/usd/UsdLayer.h"

#include <string>
#include <string_view>

namespace orvanta::import::usd {

class UsdaParser {
public:
    // Parses `text`, which must start with "#usda". Errors are ImportErrorCode::malformedData
    // with the identifier and line. Thread: any.
    static core::Result<Layer> parse(std::string_view text, std::string identifier);
};

} // namespace orvanta::import::usd
