#pragma once
// A material drawn in its colour whatever the lighting.
// Thread: a value type.

#include <QColor>

namespace orvanta::reality {

struct UnlitMaterial {
    QColor color = Qt::white; // alpha is the opacity
    friend bool operator==(const UnlitMaterial&, const UnlitMaterial&) = default;
};

} // namespace orvanta::reality
