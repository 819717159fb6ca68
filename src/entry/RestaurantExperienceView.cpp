#include <OrvantaARFoodSDK/RestaurantExperienceView.h>

#include "core/Log.h"
#include "entry/ContentViewContainer.h"
#include "screens/ScreensModule.h"
#include <OrvantaARFoodSDK/ViewController.h>
#include <OrvantaARFoodSDK/Window.h>
#include <OrvantaARFoodSDK/WindowScene.h>

#include <QQmlComponent>
#include <QQmlEngine>

#include <cstdlib>

namespace orvanta {

RestaurantExperienceView::RestaurantExperienceView(Restaurant restaurant, QString clientId, QQuickItem* parent)
    : QQuickItem(parent), restaurant_(restaurant), clientId_(clientId) {
    container_ = new ContentViewContainer(std::move(restaurant), std::move(clientId), this); // Qt ownership
    setFlag(ItemIsFocusScope);
    QQmlComponent component(&ScreensModule::engine(), ScreensModule::layout("RestaurantExperience.qml"));
    if (component.isReady())
        content_ = qobject_cast<QQuickItem*>(
            component.createWithInitialProperties({{"experience", QVariant::fromValue(static_cast<QObject*>(this))}}));
    if (!content_) {
        // The layouts are compiled into the kit: failing to build one is a fault of the kit.
        core::Log::print("The kit's root view could not be built: " + component.errorString().toStdString());
        std::abort();
    }
    content_->setParent(this);
    content_->setParentItem(this);
    content_->setSize(size());
    content_->setFocus(true);
}

RestaurantExperienceView::~RestaurantExperienceView() {
    // The scene's root view leaves the window before this view's children go.
    ownScene_.reset();
}

void RestaurantExperienceView::setRestaurant(Restaurant restaurant) {
    restaurant_ = restaurant;
    static_cast<ContentViewContainer*>(container_)->setRestaurant(std::move(restaurant));
}

void RestaurantExperienceView::setClientId(QString clientId) {
    clientId_ = clientId;
    static_cast<ContentViewContainer*>(container_)->setClientId(std::move(clientId));
}

QObject* RestaurantExperienceView::container() const { return container_; }

void RestaurantExperienceView::dismiss() {
    emit dismissRequested();
    if (ui::ViewController* controller = ui::ViewController::owning(this)) controller->dismiss(true);
}

void RestaurantExperienceView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (content_) content_->setSize(newGeometry.size());
}

void RestaurantExperienceView::itemChange(ItemChange change, const ItemChangeData& value) {
    QQuickItem::itemChange(change, value);
    if (change != ItemSceneChange) return;
    ownScene_.reset();
    // A controller that shows this view is already in a scene's window.
    if (!value.window || ui::ViewController::owning(this)) return;
    ownScene_ = std::make_unique<ui::WindowScene>();
    auto* window = new ui::Window(ownScene_.get(), value.window); // the scene owns it
    auto* root = new ui::ViewController;
    window->setRootViewController(root); // the window owns it; its view is an empty item
    // When what the root presented goes, the keyboard comes back to the kit's screens.
    connect(root, &ui::ViewController::presentedViewControllerChanged, this, [this, root] {
        if (!root->presentedViewController()) forceActiveFocus();
    });
}

} // namespace orvanta
