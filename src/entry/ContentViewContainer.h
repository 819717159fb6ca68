#pragma once
// The menu screen's container: holds the menu state of one root view (made once, with the
// view, unless the caller hands one in) and, each time the menu comes on screen, sets its dishes to the restaurant's. It
// does not touch the reordered dishes or the selection.
// Thread: main thread.

#include <OrvantaARFoodSDK/FoodViewModel.h>
#include <OrvantaARFoodSDK/Restaurant.h>

#include <QObject>

namespace orvanta {

class ContentViewContainer : public QObject {
    Q_OBJECT
    Q_PROPERTY(orvanta::FoodViewModel* foodVM READ foodVM CONSTANT)

public:
    // `foodVM` null makes a new, empty one that this container owns; a given one stays the
    // caller's and must outlive the container.
    ContentViewContainer(FoodViewModel* foodVM, Restaurant restaurant, QString clientId, QObject* parent = nullptr);
    ContentViewContainer(Restaurant restaurant, QString clientId, QObject* parent = nullptr)
        : ContentViewContainer(nullptr, std::move(restaurant), std::move(clientId), parent) {}

    FoodViewModel* foodVM() { return foodVM_; }
    const Restaurant& restaurant() const { return restaurant_; }
    void setRestaurant(Restaurant restaurant) { restaurant_ = std::move(restaurant); }
    const QString& clientId() const { return clientId_; }
    void setClientId(QString clientId) { clientId_ = std::move(clientId); }

    // The menu came on screen: `foodVM.foods` = the restaurant's dishes (one notification).
    Q_INVOKABLE void appear();

private:
    FoodViewModel* foodVM_; // Qt ownership when made here: a child of this container
    Restaurant restaurant_;
    QString clientId_;
};

} // namespace orvanta
