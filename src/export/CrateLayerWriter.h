#pragma once
// Writes a planned layer as a crate (binary USD 0.8.0) layer, with metersPerUnit 1 and
// upAxis "Y". Arrays are written uncompressed, straight from the scene's vectors.
// Thread: pure function, any thread.

#include "export/UsdLayerPlan.h"

#include <cstdint>
#include <vector>

namespace orvanta::exporter {

class CrateLayerWriter {
public:
    static std::vector<std::uint8_t> write(const UsdLayerPlan& plan);
};

} // namespace orvanta::exporter
