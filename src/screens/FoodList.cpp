#include "screens/FoodList.h"

namespace orvanta {

FoodList::FoodList(QObject* parent) : QObject(parent) {}

void FoodList::setViewModel(FoodViewModel* viewModel) {
    if (viewModel_ == viewModel) return;
    if (viewModel_) disconnect(viewModel_, nullptr, this, nullptr);
    viewModel_ = viewModel;
    if (viewModel_) {
        connect(viewModel_, &FoodViewModel::foodsChanged, this, [this] { cards_.setFoods(viewModel_->foods()); });
        cards_.setFoods(viewModel_->foods());
    } else {
        cards_.setFoods({});
    }
    emit viewModelChanged();
}

void FoodList::setNavigateToFoodAR(bool navigate) {
    if (navigateToFoodAR_ == navigate) return;
    navigateToFoodAR_ = navigate;
    emit navigateToFoodARChanged();
}

void FoodList::tap(const Food& food) {
    viewModel_->rearrangedFoods(food);
    viewModel_->updatedSelectedFood(food);
    goToFoodAR();
}

void FoodList::tapAt(int index) {
    if (!viewModel_ || index < 0 || index >= static_cast<int>(viewModel_->foods().size())) return;
    tap(viewModel_->foods()[static_cast<std::size_t>(index)]);
}

void FoodList::back() { emit dismissRequested(); }

void FoodList::goToFoodAR() { setNavigateToFoodAR(true); }

} // namespace orvanta
