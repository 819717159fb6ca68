#include <OrvantaARFoodSDK/HostingController.h>

#include <QQuickItem>

#include <cassert>

namespace orvanta::ui {

HostingController::HostingController(std::unique_ptr<QQuickItem> rootView, QObject* parent)
    : ViewController(parent), pending_(std::move(rootView)), rootView_(pending_.get()) {
    assert(rootView_);
}

QQuickItem* HostingController::rootView() const { return rootView_; }

std::unique_ptr<QQuickItem> HostingController::loadView() { return std::move(pending_); }

} // namespace orvanta::ui
