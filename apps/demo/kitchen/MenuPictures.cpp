#include "MenuPictures.h"

#include "DishModels.h"
#include "ar/ModelPicture.h"

#include <QSaveFile>

#include <filesystem>

namespace orvanta::demo {

std::string MenuPictures::pictureName(const DishRecipe& recipe) {
    return DishModels::fileName(recipe, ".png");
}

core::Result<int> MenuPictures::ensure(const std::string& folder) {
    int drawn = 0;
    for (const DishRecipe& recipe : DishRecipes::all()) {
        const std::filesystem::path target = std::filesystem::path(folder) / pictureName(recipe);
        if (std::filesystem::exists(target)) continue;
        const std::string model = (std::filesystem::path(folder) / DishModels::menuModelName(recipe)).string();
        const auto picture = ModelPicture::render(model, {.size = QSize(size, size)});
        if (!picture) return picture.error();
        // Saved whole or not at all, so that a run cut short draws the picture again.
        QSaveFile file(QString::fromStdString(target.string()));
        if (!file.open(QIODevice::WriteOnly) || !picture->save(&file, "PNG") || !file.commit())
            return core::Error("MenuPicturesError", 1, target.string() + ": " + file.errorString().toStdString());
        ++drawn;
    }
    return drawn;
}

} // namespace orvanta::demo
