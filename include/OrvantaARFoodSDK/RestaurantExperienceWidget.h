#pragma once
// The kit's root view for hosts built on Qt Widgets: a widget that shows a
// RestaurantExperienceView in a Qt Quick window of its own, embedded in the widget.
// Thread: main thread, with the application object made (a QApplication).

#include <OrvantaARFoodSDK/RestaurantExperienceView.h>

#include <QWidget>

#include <memory>

class QQuickWindow;

namespace orvanta {

class RestaurantExperienceWidget : public QWidget {
    Q_OBJECT

public:
    // Shows `view` (the result of RestaurantSDK::makeRestaurantView), which the widget now owns.
    explicit RestaurantExperienceWidget(std::unique_ptr<RestaurantExperienceView> view, QWidget* parent = nullptr);
    ~RestaurantExperienceWidget() override;

    RestaurantExperienceView* view() const { return view_.get(); }
    QQuickWindow* quickWindow() const { return window_; }

private:
    QQuickWindow* window_; // Qt ownership: its container widget's
    std::unique_ptr<RestaurantExperienceView> view_;
};

} // namespace orvanta
