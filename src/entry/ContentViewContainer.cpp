#include "entry/ContentViewContainer.h"

namespace orvanta {

ContentViewContainer::ContentViewContainer(FoodViewModel* foodVM, Restaurant restaurant, QString clientId,
                                           QObject* parent)
    : QObject(parent), foodVM_(foodVM ? foodVM : new FoodViewModel(this)), restaurant_(std::move(restaurant)),
      clientId_(std::move(clientId)) {}

void ContentViewContainer::appear() { foodVM_->setFoods(restaurant_.foods()); }

} // namespace orvanta
