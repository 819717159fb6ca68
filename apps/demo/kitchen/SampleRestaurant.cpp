#include "SampleRestaurant.h"

#include "DishModels.h"
#include "MenuPictures.h"

#include <QDir>

namespace orvanta::demo {

QString SampleRestaurant::servedFolder(const QString& cacheRoot) {
    return QDir(cacheRoot).filePath(QStringLiteral("kitchen-v%1").arg(DishModels::generatorVersion));
}

core::Result<QString> SampleRestaurant::prepare(const QString& cacheRoot, bool withPictures) {
    const QString folder = servedFolder(cacheRoot);
    const auto models = DishModels::ensure(folder.toStdString());
    if (!models) return models.error();
    if (withPictures) {
        const auto pictures = MenuPictures::ensure(folder.toStdString());
        if (!pictures) return pictures.error();
    }
    return folder;
}

Restaurant SampleRestaurant::restaurant(const QString& baseUrl) {
    std::vector<Food> foods;
    for (const DishRecipe& recipe : DishRecipes::all()) {
        foods.emplace_back(QString::fromStdString(recipe.name),
                           baseUrl + '/' + QString::fromStdString(MenuPictures::pictureName(recipe)),
                           baseUrl + '/' + QString::fromStdString(DishModels::menuModelName(recipe)), recipe.price);
    }
    return Restaurant(name, std::move(foods));
}

} // namespace orvanta::demo
