#pragma once
// The screens' QML: registers the screens' state types under the module "OrvantaARFoodSDK",
// makes the layouts compiled into the kit available, and holds the one QML engine that builds
// the kit's views (a child of the application object, so it goes with it).
// Thread: main thread, with the application object made.

#include <QUrl>

class QQmlEngine;

namespace orvanta {

class ScreensModule {
public:
    // The kit's engine, made (and the types registered) on first use.
    static QQmlEngine& engine();
    // The address of one of the screens' layout files, e.g. "RestaurantExperience.qml".
    static QUrl layout(const char* fileName);
};

} // namespace orvanta
