#pragma once
// The AR source of the process (ARSource.h, chosen by the host through RestaurantSDK): its
// card text and calibration file are checked once, when it is chosen, and every AR view
// that is not given a backend of its own gets one for it (ARViewContainer::makeUIView).
// Thread: main thread.

#include "arsession/SessionBackend.h"
#include "core/Result.h"

#include <OrvantaARFoodSDK/ARSource.h>

#include <memory>

namespace orvanta {

class ARSourceSetting {
public:
    // Errors of choose(): code 1, the message names the field at fault.
    static constexpr const char* errorDomain = "ARSourceError";

    // Makes `source` the current choice and returns it, or returns why it cannot be used (a
    // bad card text, an unreadable calibration file, a missing folder) and keeps the current one.
    static core::Result<ARSource> choose(const ARSource& source);
    static ARSource current();
    // A tracking backend for the current choice; null for the simulated room (the view's own
    // default).
    static std::unique_ptr<arsession::SessionBackend> makeBackend();
};

} // namespace orvanta
