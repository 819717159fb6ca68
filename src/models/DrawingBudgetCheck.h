#pragma once
// Holds an imported scene against a drawing budget, counting every instance without
// expanding any: a scene beyond it gives the import error (limitExceeded) naming each measure
// that is too large, by how much and against which limit.
// Thread: any.

#include "core/Error.h"
#include "import/ImportedScene.h"

#include <OrvantaARFoodSDK/DrawingBudget.h>

#include <optional>

namespace orvanta {

class DrawingBudgetCheck {
public:
    // Nothing when `scene` fits `budget`.
    static std::optional<core::Error> check(const import::ImportedScene& scene,
                                            const DrawingBudget& budget = DrawingBudget::current());
};

} // namespace orvanta
