#pragma once
// The coloured look of the focus square: a filled plane whose colour tells on a plane, off a
// plane and no tracking apart.
// Thread: a value type (the mesh is shared).

#include "reality/MeshResource.h"

#include <QColor>

#include <memory>

namespace orvanta::focus {

struct ColoredStyle {
    QColor onColor;
    QColor offColor;
    QColor nonTrackingColor;
    std::shared_ptr<const reality::MeshResource> mesh;
};

} // namespace orvanta::focus
