#pragma once
// What a host can ask of the kit: its root view to place in the host's own tree, or the whole
// experience presented full screen over one of the host's controllers.
// Thread: main thread.

#include <OrvantaARFoodSDK/Restaurant.h>
#include <OrvantaARFoodSDK/RestaurantExperienceView.h>
#include <OrvantaARFoodSDK/ViewController.h>

#include <QString>

#include <memory>

namespace orvanta {

class RestaurantExperience {
public:
    // The kind of view makeRestaurantView returns.
    using RestaurantView = RestaurantExperienceView;

    virtual ~RestaurantExperience() = default;

    // A new root view for a copy of `restaurant`; the host owns it and shows it.
    virtual std::unique_ptr<RestaurantView> makeRestaurantView(const Restaurant& restaurant, const QString& clientId) = 0;
    // Presents a new root view full screen, animated, from exactly the controller `in`, and
    // returns at once. The menu's back arrow closes it.
    virtual void startRestaurantExperience(const Restaurant& restaurant, const QString& clientId, ui::ViewController* in) = 0;
};

} // namespace orvanta
