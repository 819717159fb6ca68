#pragma once
// A screen's controller: it owns the item it shows (its view) and presents other controllers
// modally over its window. A presented controller's view slides up over the window's content,
// full size or as a page sheet, and slides down again when dismissed; the presenter owns the
// presented controller until then and deletes it afterwards. A controller presents at most
// one other at a time, and presentations chain: the presented one may present again.
//
// Controllers inside a navigation controller have it as their parent controller: they share
// its window and its presenter, so a screen deep in a stack can dismiss the whole stack.
// Thread: main thread, every method.

#include <OrvantaARFoodSDK/ModalPresentationStyle.h>

#include <QObject>
#include <QPointer>
#include <QQuickItem>

#include <functional>
#include <memory>

class QPropertyAnimation;

namespace orvanta::ui {

class Window;

class ViewController : public QObject {
    Q_OBJECT

public:
    explicit ViewController(QObject* parent = nullptr);
    ~ViewController() override;

    // The item this controller shows, made by loadView() on first use; the controller owns it.
    // Main thread.
    QQuickItem* view();

    // Presents `controller` (not presented or placed anywhere yet) over this controller and
    // takes ownership of it. Its view goes over the content of this controller's view's window,
    // full size for fullScreen (on an opaque background) and overFullScreen (with this
    // controller showing through), otherwise inset from the top with rounded corners; when
    // `animated` it slides up from the bottom in 0.3 s and `completion` runs when the slide
    // ends, otherwise `completion` runs at once. It takes the keyboard focus. A controller
    // that already presents one refuses with a warning line and changes nothing (`completion`
    // does not run). When this controller's view is in no window, the relation is recorded
    // at once and the view is shown (without a slide, then `completion` runs) when this
    // controller's view enters a window. Main thread.
    void present(ViewController* controller, bool animated, std::function<void()> completion = {});
    // Dismisses what this controller presents (with whatever that one presents in turn), or,
    // when it presents nothing, asks its presenter to dismiss it. The dismissed view leaves the
    // window, sliding down in 0.3 s when `animated`; `completion` runs when it has left (at
    // once when there is nothing to dismiss) and the dismissed controller is deleted later.
    // The relation ends at the call: this controller may present again at once. Main thread.
    void dismiss(bool animated, std::function<void()> completion = {});

    // The controller this one presents, or null. Main thread.
    ViewController* presentedViewController() const;
    // The controller that presents this one (or this one's parent controller), or null.
    // Main thread.
    ViewController* presentingViewController() const;
    // The navigation controller this one is stacked in, or null. Main thread.
    ViewController* parentViewController() const;

    // automatic until set. Main thread.
    ModalPresentationStyle modalPresentationStyle() const;
    void setModalPresentationStyle(ModalPresentationStyle style);

    // The window whose root controller shows this controller through presentations and
    // navigation stacks, or null. Main thread.
    Window* window() const;

    // The controller whose view is `item` or contains it, or null. Main thread.
    static ViewController* owning(const QQuickItem* item);

signals:
    void presentedViewControllerChanged();

protected:
    // Makes this controller's view; the default is an empty item. Main thread.
    virtual std::unique_ptr<QQuickItem> loadView();

private:
    friend class Window;
    friend class NavigationController;

    QString describe() const;
    // True once presented, stacked or made a window's root.
    bool isPlaced() const;
    void showPresented(bool animated, std::function<void()> completion);
    void dismissPresented(bool animated, std::function<void()> completion);

    std::unique_ptr<QQuickItem> view_;
    QPointer<ViewController> presented_;
    ViewController* presenting_ = nullptr;
    ViewController* parentController_ = nullptr;
    QPointer<Window> window_;
    ModalPresentationStyle style_ = ModalPresentationStyle::automatic;
    // The item that carries the presented controller's view in the window, and its slide.
    QPointer<QQuickItem> sheet_;
    QPointer<QPropertyAnimation> slide_;
    QMetaObject::Connection waitForWindow_;
};

} // namespace orvanta::ui
