#pragma once
// The sample restaurant's menu pictures: each dish's model drawn as the 3D viewer frames it,
// 512×512 PNG, written beside the models in the same folder. A picture's name carries the
// generator's version like its model's, so a run that finds them all draws nothing.
// Thread: main thread of a QGuiApplication whose main queue is its event loop; needs OpenGL
// (under Xvfb on a machine without a display).

#include "DishRecipes.h"
#include "core/Result.h"

#include <string>

namespace orvanta::demo {

class MenuPictures {
public:
    static constexpr int size = 512;

    static std::string pictureName(const DishRecipe& recipe);
    // Draws the picture of every dish whose picture is missing from `folder`, from the model
    // its menu entry links to (DishModels::ensure must have written them). Returns how many
    // pictures were drawn.
    static core::Result<int> ensure(const std::string& folder);
};

} // namespace orvanta::demo
