#include <OrvantaARFoodSDK/Food.h>

#include <QHashFunctions>

#include <utility>

namespace orvanta {

Food::Food(QString name, QString imageURL, QString arUSDZLink, double price)
    : id_(QUuid::createUuid()),
      name_(std::move(name)),
      imageURL_(std::move(imageURL)),
      arUSDZLink_(std::move(arUSDZLink)),
      price_(price) {}

} // namespace orvanta

namespace {

// Mixes one more field hash into the running seed; the order of calls matters.
void combine(std::size_t& seed, std::size_t value) {
    seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
}

} // namespace

std::size_t std::hash<orvanta::Food>::operator()(const orvanta::Food& food) const noexcept {
    std::size_t seed = 0;
    combine(seed, qHash(food.id()));
    combine(seed, std::hash<QString>{}(food.name()));
    combine(seed, std::hash<QString>{}(food.imageURL()));
    combine(seed, std::hash<QString>{}(food.arUSDZLink()));
    // std::hash<double> gives 0.0 and -0.0, which compare equal, the same hash.
    combine(seed, std::hash<double>{}(food.price()));
    return seed;
}
