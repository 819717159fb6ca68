#pragma once
// Writes a planned layer as USD text (usda 1.0), with metersPerUnit 1 and upAxis "Y".
// Floats are written in their shortest form that reads back to the same value.
// Thread: pure function, any thread.

#include "export/UsdLayerPlan.h"

#include <QByteArray>

namespace orvanta::exporter {

class UsdaLayerWriter {
public:
    static QByteArray write(const UsdLayerPlan& plan);
};

} // namespace orvanta::exporter
