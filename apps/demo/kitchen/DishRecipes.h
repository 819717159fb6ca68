#pragma once
// The sample restaurant's eight dishes, each built procedurally on its own plate (or board)
// at true size: metres, y up, resting on y = 0, 15 to 35 cm across. Every dish says how its
// model file is written, so that between them the menu exercises every model path the kit
// reads: USDZ with a binary crate layer, USDZ with a text layer, and GLB.
// Thread: any; the recipes are pure functions.

#include "import/ImportedScene.h"

#include <string>
#include <vector>

namespace orvanta::demo {

// How a dish's menu model is stored.
enum class DishFormat { usdzCrate, usdzText, glb };

struct DishRecipe {
    std::string name;  // as the menu shows it
    std::string stem;  // file names: <stem>-v<version>.<ext>
    double price;      // pounds sterling
    DishFormat format; // the file the menu links to (a GLB dish also gets a crate USDZ)
    import::ImportedScene (*build)();
};

class DishRecipes {
public:
    // The eight dishes in menu order.
    static const std::vector<DishRecipe>& all();
};

} // namespace orvanta::demo
