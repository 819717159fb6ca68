#pragma once
// Writes the sample restaurant's dish models into a folder with the kit's own writers: a
// USDZ for every dish (crate or text layer, as its recipe says) and a GLB for the dishes
// served as GLB. File names carry the generator's version, so a changed recipe gets a new
// name, both here and in the kit's download cache; a run that finds every file of the
// current version writes nothing.
// Thread: any; one writer per folder at a time.

#include "DishRecipes.h"
#include "core/Result.h"

#include <string>
#include <vector>

namespace orvanta::demo {

class DishModels {
public:
    // Raise whenever a recipe, a texture or a writer changes what the files hold.
    static constexpr int generatorVersion = 1;

    // "<stem>-v<version><extension>": the name of one of `recipe`'s files.
    static std::string fileName(const DishRecipe& recipe, const char* extension);
    // The file names of `recipe`: its USDZ, its GLB, and the one its menu entry links to.
    static std::string usdzName(const DishRecipe& recipe);
    static std::string glbName(const DishRecipe& recipe);
    static std::string menuModelName(const DishRecipe& recipe);

    // Builds and writes every dish whose files are missing from `folder` (made if needed).
    // Returns how many files were written.
    static core::Result<int> ensure(const std::string& folder);
    // Builds and writes every dish, replacing what is there. Returns how many files were written.
    static core::Result<int> writeAll(const std::string& folder);

private:
    static core::Result<int> write(const std::string& folder, bool keepExisting);
};

} // namespace orvanta::demo
