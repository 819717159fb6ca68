#include <OrvantaARFoodSDK/Restaurant.h>

#include <utility>

namespace orvanta {

Restaurant::Restaurant(QString name, std::vector<Food> foods)
    : id_(QUuid::createUuid()), name_(std::move(name)), foods_(std::move(foods)) {}

} // namespace orvanta
