#include <OrvantaARFoodSDK/FoodViewModel.h>

#include <OrvantaARFoodSDK/Rearranged.h>

#include <utility>

namespace orvanta {

FoodViewModel::FoodViewModel(QObject* parent) : QObject(parent) {}

void FoodViewModel::setFoods(std::vector<Food> foods) {
    foods_ = std::move(foods);
    emit foodsChanged();
}

void FoodViewModel::setRearrangedFoods(std::vector<Food> foods) {
    rearrangedFoods_ = std::move(foods);
    emit rearrangedFoodsChanged();
}

void FoodViewModel::setSelectedFood(std::optional<Food> food) {
    selectedFood_ = std::move(food);
    emit selectedFoodChanged();
}

void FoodViewModel::updateFoodList(const Restaurant& restaurant) {
    setFoods(restaurant.foods());
}

void FoodViewModel::rearrangedFoods(const Food& selectedFood) {
    setRearrangedFoods(rearranged(foods_, selectedFood));
}

void FoodViewModel::updatedSelectedFood(const Food& food) {
    setSelectedFood(food);
}

} // namespace orvanta
