#pragma once
// The local transform of an Xformable prim from its `xformOpOrder`: `transform` (matrix4d),
// `translate`, `scale`, `orient` (quaternion), `rotateX`/`Y`/`Z` and the three-axis rotations
// `rotateXYZ` ... `rotateZYX` (degrees, the first-named axis applied first), each optionally
// suffixed ("xformOp:translate:pivot") or inverted ("!invert!xformOp:translate:pivot").
// Ops are applied in order, the first outermost, so a point is transformed by the last op
// first. Missing or unreadable ops and "!resetXformStack!" are ignored.
// Thread: pure functions, any thread.

#include "import/usd/UsdStage.h"

#include <QMatrix4x4>

namespace orvanta::import::usd {

class UsdXformOps {
public:
    // Thread: any.
    static QMatrix4x4 localTransform(const UsdStage::Prim& prim);
};

} // namespace orvanta::import::usd
