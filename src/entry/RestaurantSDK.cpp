#include <OrvantaARFoodSDK/RestaurantSDK.h>

#include <OrvantaARFoodSDK/HostingController.h>
#include <OrvantaARFoodSDK/ViewController.h>

#include "ar/ARSourceSetting.h"
#include "core/TemporaryDirectory.h"

namespace orvanta {

RestaurantSDK& RestaurantSDK::shared() {
    static RestaurantSDK instance;
    return instance;
}

std::unique_ptr<RestaurantSDK::RestaurantView> RestaurantSDK::makeRestaurantView(const Restaurant& restaurant,
                                                                                 const QString& clientId) {
    return std::make_unique<RestaurantExperienceView>(restaurant, clientId);
}

void RestaurantSDK::startRestaurantExperience(const Restaurant& restaurant, const QString& clientId, ui::ViewController* in) {
    auto hosting = std::make_unique<ui::HostingController>(makeRestaurantView(restaurant, clientId));
    hosting->setModalPresentationStyle(ui::ModalPresentationStyle::fullScreen);
    // The presenter owns what it presents; the kit keeps no reference.
    in->present(hosting.release(), true);
}

bool RestaurantSDK::clearModelCache(QString* whyNot) {
    const auto removed = core::TemporaryDirectory::clear();
    if (!removed && whyNot) *whyNot = QString::fromStdString(removed.error().localizedDescription());
    return removed.ok();
}

bool RestaurantSDK::setARSource(const ARSource& source, QString* whyNot) {
    const auto chosen = ARSourceSetting::choose(source);
    if (!chosen && whyNot) *whyNot = QString::fromStdString(chosen.error().localizedDescription());
    return chosen.ok();
}

ARSource RestaurantSDK::arSource() { return ARSourceSetting::current(); }

} // namespace orvanta
