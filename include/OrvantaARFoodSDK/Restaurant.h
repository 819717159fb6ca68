#pragma once
// The menu a host hands to the kit: a random identity, the restaurant's name and its dishes
// in the host's order. An immutable value. Restaurants are not compared or hashed: two built
// from the same inputs never share an identity.

#include <OrvantaARFoodSDK/Food.h>

#include <QString>
#include <QUuid>

#include <vector>

namespace orvanta {

class Restaurant {
public:
    // A restaurant with a new random identity; there is deliberately no way to pass one in.
    // Main thread.
    Restaurant(QString name, std::vector<Food> foods);

    // The fields. Main thread.
    const QUuid& id() const { return id_; }
    const QString& name() const { return name_; }
    const std::vector<Food>& foods() const { return foods_; }

private:
    QUuid id_;
    QString name_;
    std::vector<Food> foods_;
};

} // namespace orvanta
