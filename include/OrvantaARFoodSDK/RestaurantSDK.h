#pragma once
// The kit's entry point: the one RestaurantSDK of the process, made on first use.
//
//     auto view = orvanta::RestaurantSDK::shared().makeRestaurantView(restaurant, "client-id");
//     view->setParentItem(window.contentItem());
//
// Thread: main thread, with the application object made.

#include <OrvantaARFoodSDK/ARSource.h>
#include <OrvantaARFoodSDK/RestaurantExperience.h>

namespace orvanta {

class RestaurantSDK final : public RestaurantExperience {
public:
    static RestaurantSDK& shared();

    RestaurantSDK(const RestaurantSDK&) = delete;
    RestaurantSDK& operator=(const RestaurantSDK&) = delete;

    std::unique_ptr<RestaurantView> makeRestaurantView(const Restaurant& restaurant, const QString& clientId) override;
    void startRestaurantExperience(const Restaurant& restaurant, const QString& clientId, ui::ViewController* in) override;

    // Empties the kit's model cache: the kit's own folder inside the temporary directory
    // ($TMPDIR when set, else /tmp), "OrvantaARFoodSDK-<uid>". Nothing outside that folder is
    // touched. Models are cached by their link's file name and never refreshed, so a host
    // that replaced a model under the same name clears the cache to show the new one.
    // Returns false, with the reason in `whyNot` when given, if the folder could not be emptied.
    static bool clearModelCache(QString* whyNot = nullptr);

    // Chooses where AR views opened from now on take their camera picture and tracking from
    // (ARSource.h; the simulated room until a host chooses). The table card text and the
    // calibration file are checked here: on a mistake the current source stays and false is
    // returned, with the reason (naming the wrong field) in `whyNot` when given. An AR view
    // already open keeps its source until the guest opens AR again.
    static bool setARSource(const ARSource& source, QString* whyNot = nullptr);
    static ARSource arSource();

private:
    RestaurantSDK() = default;
};

} // namespace orvanta
