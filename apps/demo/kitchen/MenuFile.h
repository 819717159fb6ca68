#pragma once
// Reads a restaurant's menu from a JSON file, so that a restaurant can try its own models:
//
//   { "name": "Trattoria",
//     "dishes": [ { "name": "Margherita", "picture": "pictures/margherita.png",
//                   "model": "https://example.com/margherita.usdz", "price": 9.5 } ] }
//
// Links with a scheme (http://, https://, file:) are kept as written; a link without one is
// a local path, relative to the JSON file's folder, and becomes a file: URL. A link that is
// empty is kept as it is (the menu shows such a dish without a picture). Anything else that
// is wrong (unreadable file, invalid JSON, a missing field, a field of the wrong type, no
// dishes) is an error whose message names the file, the line and the field, for example
//   menu.json:7: dish 2: "price" must be a number
// Thread: main thread (it makes Restaurant and Food values).

#include "core/Result.h"

#include <OrvantaARFoodSDK/Restaurant.h>

#include <QString>

namespace orvanta::demo {

class MenuFile {
public:
    static constexpr const char* errorDomain = "MenuFileError";

    static core::Result<Restaurant> read(const QString& path);
};

} // namespace orvanta::demo
