#pragma once
// The kit's root view: a navigation stack whose first screen is the restaurant's menu, from
// which the guest opens a dish, photographs it and saves or shares the picture. A host places
// it in its own Qt Quick tree (it fills the size it is given) or lets the kit present it full
// screen (RestaurantSDK::startRestaurantExperience).
//
// A view that no controller of the kit shows (the host placed it in its own window, or the
// widget shows it) brings a window scene of its own while it is in a window, so that what the
// kit presents (the share sheet) has a controller to come from, over the view's window.
//
// The client identifier is carried into the view and stored; nothing in the kit reads it.
// Thread: main thread, with the application object made.

#include <OrvantaARFoodSDK/Restaurant.h>

#include <QQuickItem>
#include <QString>

#include <memory>

namespace orvanta {

namespace ui {
class WindowScene;
} // namespace ui

class RestaurantExperienceView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QObject* container READ container CONSTANT)

public:
    RestaurantExperienceView(Restaurant restaurant, QString clientId, QQuickItem* parent = nullptr);
    ~RestaurantExperienceView() override;

    const Restaurant& restaurant() const { return restaurant_; }
    void setRestaurant(Restaurant restaurant);
    const QString& clientId() const { return clientId_; }
    void setClientId(QString clientId);

    // The menu screen's container (it owns the menu state of this view).
    QObject* container() const;

    // The menu's back arrow: dismisses the kit's presentation when the kit presented the view;
    // either way tells the host through dismissRequested().
    Q_INVOKABLE void dismiss();

signals:
    // The guest asked to leave the experience (the menu's back arrow).
    void dismissRequested();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    Restaurant restaurant_;
    QString clientId_;
    QObject* container_ = nullptr; // Qt ownership: a child of this view
    QQuickItem* content_ = nullptr; // Qt ownership: a child of this view
    // The scene of a view shown by no controller, with one window borrowing the view's.
    std::unique_ptr<ui::WindowScene> ownScene_;
};

} // namespace orvanta
