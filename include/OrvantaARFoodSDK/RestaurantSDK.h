#pragma once
// The kit's entry point: the one RestaurantSDK of the process, made on first use.
//
//     auto view = orvanta::RestaurantSDK::shared().makeRestaurantView(restaurant, "client-id");
//     view->setParentItem(window.contentItem());
//
// Thread: main thread, with the application object made.

#include <OrvantaARFoodSDK/RestaurantExperience.h>

namespace orvanta {

class RestaurantSDK final : public RestaurantExperience {
public:
    static RestaurantSDK& shared();

    RestaurantSDK(const RestaurantSDK&) = delete;
    RestaurantSDK& operator=(const RestaurantSDK&) = delete;

    std::unique_ptr<RestaurantView> makeRestaurantView(const Restaurant& restaurant, const QString& clientId) override;
    void startRestaurantExperience(const Restaurant& restaurant, const QString& clientId, ui::ViewController* in) override;

private:
    RestaurantSDK() = default;
};

} // namespace orvanta
