#pragma once
// A controller whose view is an item made elsewhere (the kit's root view): it takes the item
// over and shows it as its view, sized by wherever the controller is shown.
// Thread: main thread, every method.

#include <OrvantaARFoodSDK/ViewController.h>

namespace orvanta::ui {

class HostingController : public ViewController {
    Q_OBJECT

public:
    // Takes ownership of `rootView` (not null). Main thread.
    explicit HostingController(std::unique_ptr<QQuickItem> rootView, QObject* parent = nullptr);

    // The hosted item, which is this controller's view. Main thread.
    QQuickItem* rootView() const;

protected:
    std::unique_ptr<QQuickItem> loadView() override;

private:
    std::unique_ptr<QQuickItem> pending_;
    QQuickItem* rootView_;
};

} // namespace orvanta::ui
