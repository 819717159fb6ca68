#pragma once
// The dish screen's AR view as a QML item: when it gets its screen it builds the AR container
// from the screen's four bindings (model, placed flag, AR view, tracking state), makes the AR
// view with its session, coaching overlay and classic focus square, and shows it; each new
// model of the screen's view model is handed to the container to place on the table. A placed
// model shows once every texture of the view has been decoded, so it never shows untextured.
// Leaving AR mode destroys the item; the AR view stays bound to the screen (and its session
// runs) until the screen stops it, and coming back builds a new one.
// Thread: main thread.

#include "ar/ARViewContainer.h"
#include "ar/ARViewContainerCoordinator.h"
#include "render/ARViewItem.h"
#include "screens/FoodARView.h"

#include <QPointer>

#include <optional>

namespace orvanta {

class ARViewContainerItem : public render::ARViewItem {
    Q_OBJECT
    Q_PROPERTY(orvanta::FoodARView* screen READ screen WRITE setScreen NOTIFY screenChanged)

public:
    explicit ARViewContainerItem(QQuickItem* parent = nullptr);

    FoodARView* screen() const { return screen_; }
    // Builds the container and its view for `screen`; set once.
    void setScreen(FoodARView* screen);

signals:
    void screenChanged();

private:
    void modelChanged();
    void hideModelWhileTexturesDecode();

    QPointer<FoodARView> screen_;
    std::optional<ARViewContainer> container_;
    ARViewContainer::Context context_;
};

} // namespace orvanta
