#include "entry/ContentViewContainer.h"

namespace orvanta {

ContentViewContainer::ContentViewContainer(Restaurant restaurant, QString clientId, QObject* parent)
    : QObject(parent), restaurant_(std::move(restaurant)), clientId_(std::move(clientId)) {}

void ContentViewContainer::appear() { foodVM_.setFoods(restaurant_.foods()); }

} // namespace orvanta
