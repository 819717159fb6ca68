#pragma once
// The demo's restaurant, "Orvanta Bistro": the eight procedural dishes with their menu
// pictures and prices, linked to where the loopback server serves them. Between them the
// model links name USDZ packages with a crate layer, USDZ packages with a text layer and
// GLB files.
// Thread: main thread (see each method for what it needs).

#include "core/Result.h"

#include <OrvantaARFoodSDK/Restaurant.h>

#include <QString>

namespace orvanta::demo {

class SampleRestaurant {
public:
    static constexpr const char* name = "Orvanta Bistro";

    // The folder under `cacheRoot` that holds the current generator version's files.
    static QString servedFolder(const QString& cacheRoot);
    // Writes what is missing from the served folder: the models, and their pictures unless
    // `withPictures` is false (drawing needs OpenGL). Returns the folder.
    static core::Result<QString> prepare(const QString& cacheRoot, bool withPictures = true);
    // The restaurant, its links under `baseUrl` (the server's, without a trailing '/').
    static Restaurant restaurant(const QString& baseUrl);
};

} // namespace orvanta::demo
