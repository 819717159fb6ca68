#pragma once
// Reads a restaurant's menu from a JSON file, so that a restaurant can try its own models:
//
//   { "name": "Trattoria",
//     "dishes": [ { "name": "Margherita", "picture": "pictures/margherita.png",
//                   "model": "https://example.com/margherita.usdz", "price": 9.5 } ] }
//
// Links with a scheme (http://, https://, file:) are kept as written; a link without one is
// a local path, relative to the JSON file's folder, and becomes a file: URL. A link that is
// empty is kept as it is (the menu shows such a dish without a picture).
//
// Every problem of the file is found in one reading and reported together, one line each,
// naming the file, the line and the field, for example
//   menu.json:7: dish 2: "price" must be a number
// Problems: an unreadable file, invalid JSON, a missing field, a field of the wrong type, no
// dishes, a local model file that does not exist, and a local .gltf that keeps its data in
// other files (the kit downloads one file per dish, so those would be missing).
// Warnings, which do not stop the menu: two dishes whose models have the same file name (the
// kit caches models by that name, so the second dish would show the first one's model), and
// a local picture that does not exist (its spinner would never stop).
// Thread: main thread (it makes Restaurant and Food values).

#include "core/Result.h"

#include <OrvantaARFoodSDK/Restaurant.h>

#include <QString>
#include <QStringList>

namespace orvanta::demo {

class MenuFile {
public:
    static constexpr const char* errorDomain = "MenuFileError";

    struct Menu {
        Restaurant restaurant;
        QStringList warnings; // one line each, in the form of the problems
    };

    // The menu, or an error whose message lists every problem, one per line.
    static core::Result<Menu> read(const QString& path);
};

} // namespace orvanta::demo
