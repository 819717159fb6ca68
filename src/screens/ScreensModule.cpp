#include "screens/ScreensModule.h"

#include "screens/ARViewContainerItem.h"
#include "screens/FoodARView.h"
#include "screens/FoodCardsModel.h"
#include "screens/FoodList.h"
#include "screens/ImagePreviewView.h"
#include "screens/PictureItem.h"
#include "screens/TapArea.h"
#include "screens/ThreeDViewerItem.h"

#include "core/Log.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QPointer>
#include <QQmlEngine>

#include <cassert>

// The layouts are compiled into the static library; a static library's resources are
// registered by name from code that is sure to be linked.
static void initialiseScreenLayouts() { Q_INIT_RESOURCE(screens); }

namespace orvanta {

namespace {

void registerTypes() {
    constexpr const char* module = "OrvantaARFoodSDK";
    qmlRegisterType<FoodList>(module, 1, 0, "FoodList");
    qmlRegisterType<FoodARView>(module, 1, 0, "FoodARView");
    qmlRegisterType<ImagePreviewView>(module, 1, 0, "ImagePreviewView");
    qmlRegisterType<ARViewContainerItem>(module, 1, 0, "ARViewContainerItem");
    qmlRegisterType<ThreeDViewerItem>(module, 1, 0, "ThreeDViewerItem");
    qmlRegisterType<PictureItem>(module, 1, 0, "PictureItem");
    qmlRegisterType<TapArea>(module, 1, 0, "TapArea");
    const QString madeByTheKit = QStringLiteral("made by the kit");
    qmlRegisterUncreatableType<FoodViewModel>(module, 1, 0, "FoodViewModel", madeByTheKit);
    qmlRegisterUncreatableType<OrvARViewModel>(module, 1, 0, "OrvARViewModel", madeByTheKit);
    qmlRegisterUncreatableType<ImagePreview>(module, 1, 0, "ImagePreview", madeByTheKit);
    qmlRegisterUncreatableType<FoodCardsModel>(module, 1, 0, "FoodCardsModel", madeByTheKit);
}

// The symbols' font, from Debian's fonts-material-design-icons-iconfont.
constexpr const char* iconFontPath = "/usr/share/fonts/truetype/material-design-icons-iconfont/MaterialIcons-Regular.ttf";

void loadIconFont() {
    if (QFontDatabase::addApplicationFont(QString::fromLatin1(iconFontPath)) < 0)
        core::Log::print(std::string("The screens' symbols are missing: no icon font at ") + iconFontPath);
}

} // namespace

QQmlEngine& ScreensModule::engine() {
    static QPointer<QQmlEngine> engine;
    if (!engine) {
        assert(QCoreApplication::instance() && "the kit's views need the application object");
        static const bool registered = (initialiseScreenLayouts(), registerTypes(), loadIconFont(), true);
        (void)registered;
        engine = new QQmlEngine(QCoreApplication::instance()); // Qt ownership: the application's child
        // Goes while the application still runs its events: the engine's picture loader
        // thread cannot be stopped from the application's destructor.
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, engine, &QObject::deleteLater);
    }
    return *engine;
}

QUrl ScreensModule::layout(const char* fileName) {
    return QUrl(QStringLiteral("qrc:/orvanta/screens/") + QLatin1String(fileName));
}

} // namespace orvanta
