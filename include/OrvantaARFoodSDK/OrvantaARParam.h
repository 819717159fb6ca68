#pragma once
// The two inputs of the kit bundled in one object, for hosts that prefer to pass one value
// around: the client identifier, then the restaurant. The kit itself neither makes nor reads it.
// Thread: any; immutable.

#include <OrvantaARFoodSDK/Restaurant.h>

#include <QString>

namespace orvanta {

class OrvantaARParam {
public:
    OrvantaARParam(QString clientId, Restaurant restaurant)
        : clientId_(std::move(clientId)), restaurant_(std::move(restaurant)) {}

    const QString& clientId() const { return clientId_; }
    const Restaurant& restaurant() const { return restaurant_; }

private:
    QString clientId_;
    Restaurant restaurant_;
};

} // namespace orvanta
