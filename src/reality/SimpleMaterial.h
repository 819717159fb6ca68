#pragma once
// A lit material with one colour, a roughness and a metallic switch.
// Thread: a value type.

#include <QColor>

namespace orvanta::reality {

struct SimpleMaterial {
    QColor color = Qt::white; // alpha is the opacity
    float roughness = 0.5f;   // 0 (mirror) … 1 (matte)
    bool isMetallic = false;
    friend bool operator==(const SimpleMaterial&, const SimpleMaterial&) = default;
};

} // namespace orvanta::reality
