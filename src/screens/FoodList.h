#pragma once
// The menu screen's state and actions: the grid of the menu's dishes in the host's order, the
// tap that reorders the dishes around the chosen one, records it and raises the flag that
// pushes the dish screen, and the back arrow that closes the whole experience. FoodList.qml
// lays it out.
// Thread: main thread.

#include "screens/FoodCardsModel.h"

#include <OrvantaARFoodSDK/FoodViewModel.h>

#include <QObject>
#include <QPointer>

namespace orvanta {

class FoodList : public QObject {
    Q_OBJECT
    Q_PROPERTY(orvanta::FoodViewModel* viewModel READ viewModel WRITE setViewModel NOTIFY viewModelChanged)
    Q_PROPERTY(bool navigateToFoodAR READ navigateToFoodAR WRITE setNavigateToFoodAR NOTIFY navigateToFoodARChanged)
    Q_PROPERTY(orvanta::FoodCardsModel* cards READ cards CONSTANT)

public:
    explicit FoodList(QObject* parent = nullptr);

    FoodViewModel* viewModel() const { return viewModel_; }
    void setViewModel(FoodViewModel* viewModel);
    bool navigateToFoodAR() const { return navigateToFoodAR_; }
    // The navigation stack clears it when the dish screen is left.
    void setNavigateToFoodAR(bool navigate);
    FoodCardsModel* cards() { return &cards_; }

    // A tap on the card of `food`: the view model's `rearrangedFoods` puts it first, its
    // `selectedFood` becomes it, then the dish screen is pushed.
    void tap(const Food& food);
    Q_INVOKABLE void tapAt(int index);
    // The back arrow: closes the experience.
    Q_INVOKABLE void back();

signals:
    void viewModelChanged();
    void navigateToFoodARChanged();
    // The environment's dismiss action, run by the back arrow.
    void dismissRequested();

private:
    void goToFoodAR();

    QPointer<FoodViewModel> viewModel_;
    bool navigateToFoodAR_ = false;
    FoodCardsModel cards_;
};

} // namespace orvanta
