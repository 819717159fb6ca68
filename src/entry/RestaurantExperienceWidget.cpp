#include <OrvantaARFoodSDK/RestaurantExperienceWidget.h>

#include <QQuickWindow>
#include <QVBoxLayout>

namespace orvanta {

RestaurantExperienceWidget::RestaurantExperienceWidget(std::unique_ptr<RestaurantExperienceView> view, QWidget* parent)
    : QWidget(parent), window_(new QQuickWindow), view_(std::move(view)) {
    view_->setParentItem(window_->contentItem());
    view_->setSize(window_->size());
    connect(window_, &QWindow::widthChanged, view_.get(), [this](int width) { view_->setWidth(width); });
    connect(window_, &QWindow::heightChanged, view_.get(), [this](int height) { view_->setHeight(height); });
    view_->forceActiveFocus();
    auto* layout = new QVBoxLayout(this); // Qt ownership: the widget's layout
    layout->setContentsMargins(0, 0, 0, 0);
    // The container widget takes over the window.
    layout->addWidget(QWidget::createWindowContainer(window_, this));
}

RestaurantExperienceWidget::~RestaurantExperienceWidget() {
    // The view leaves the window before either goes.
    view_.reset();
}

} // namespace orvanta
