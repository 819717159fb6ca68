#include <OrvantaARFoodSDK/ViewController.h>

#include "core/Log.h"
#include "ui/FillParent.h"
#include "ui/Slide.h"
#include <OrvantaARFoodSDK/Window.h>

#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQuick/private/qquickrectangle_p.h>

#include <cassert>

namespace orvanta::ui {

namespace {

// The view's link back to its controller, read by owning().
constexpr const char* controllerProperty = "_orvantaViewController";
// A page sheet leaves this much of the presenter visible at the top and rounds its corners.
constexpr qreal sheetTopInset = 40;
constexpr qreal sheetCornerRadius = 12;

} // namespace

ViewController::ViewController(QObject* parent) : QObject(parent) {}

ViewController::~ViewController() = default;

QQuickItem* ViewController::view() {
    if (!view_) {
        view_ = loadView();
        assert(view_ && "loadView() must make a view");
        view_->setProperty(controllerProperty, QVariant::fromValue(static_cast<QObject*>(this)));
    }
    return view_.get();
}

std::unique_ptr<QQuickItem> ViewController::loadView() { return std::make_unique<QQuickItem>(); }

void ViewController::present(ViewController* controller, bool animated, std::function<void()> completion) {
    assert(controller && controller != this);
    assert(!controller->isPlaced() && "a controller is shown in one place at a time");
    if (presented_) {
        core::Log::print(QStringLiteral("Warning: %1 cannot present %2: it already presents %3.")
                             .arg(describe(), controller->describe(), presented_->describe())
                             .toStdString());
        return;
    }
    presented_ = controller;
    controller->presenting_ = this;
    controller->setParent(this);
    emit presentedViewControllerChanged();

    if (view()->window()) {
        showPresented(animated, std::move(completion));
        return;
    }
    waitForWindow_ = connect(view(), &QQuickItem::windowChanged, this,
                             [this, completion = std::move(completion)](QQuickWindow* window) mutable {
                                 if (!window) return;
                                 auto pending = std::move(completion);
                                 disconnect(waitForWindow_);
                                 showPresented(false, std::move(pending));
                             });
}

void ViewController::showPresented(bool animated, std::function<void()> completion) {
    ViewController* shown = presented_;
    QQuickItem* content = view()->window()->contentItem();
    const ModalPresentationStyle style = shown->modalPresentationStyle();
    const bool covering = style == ModalPresentationStyle::fullScreen || style == ModalPresentationStyle::overFullScreen;
    const qreal top = covering ? 0 : sheetTopInset;
    const qreal radius = covering ? 0 : sheetCornerRadius;

    QQuickItem* sheet;
    if (style == ModalPresentationStyle::overFullScreen) {
        sheet = new QQuickItem;
    } else {
        // A page sheet reaches one corner radius below the window, so that only its top
        // corners show rounded; the view starts below the rounding and ends at the window's
        // bottom.
        auto* background = new QQuickRectangle;
        background->setRadius(radius);
        background->setColor(QGuiApplication::palette().color(QPalette::Window));
        sheet = background;
    }
    sheet->setParent(this);
    // Above the window's root view, also one set later; later sheets stack above earlier ones.
    sheet->setZ(1);
    sheet_ = sheet;
    FillParent::apply(sheet, content, top - radius);
    FillParent::apply(shown->view(), sheet, 2 * radius);
    shown->view()->setPosition(QPointF(0, radius));
    shown->view()->forceActiveFocus();

    if (animated) {
        slide_ = Slide::start(sheet, "y", content->height(), top, true, std::move(completion));
        return;
    }
    sheet->setY(top);
    if (completion) completion();
}

void ViewController::dismiss(bool animated, std::function<void()> completion) {
    if (presented_) {
        dismissPresented(animated, std::move(completion));
    } else if (ViewController* presenter = presentingViewController()) {
        presenter->dismiss(animated, std::move(completion));
    } else if (completion) {
        completion();
    }
}

void ViewController::dismissPresented(bool animated, std::function<void()> completion) {
    ViewController* leaving = presented_;
    if (leaving->presented_) leaving->dismissPresented(false, {});
    disconnect(waitForWindow_);
    if (slide_) slide_->stop();
    QPointer<QQuickItem> sheet = sheet_;
    sheet_ = nullptr;
    presented_ = nullptr;
    leaving->presenting_ = nullptr;
    emit presentedViewControllerChanged();

    auto finish = [leaving = QPointer<ViewController>(leaving), sheet, completion = std::move(completion)] {
        if (sheet) sheet->deleteLater();
        if (leaving) leaving->deleteLater();
        if (completion) completion();
    };
    if (view()->window()) view()->forceActiveFocus();
    if (animated && sheet && sheet->parentItem()) {
        Slide::start(sheet, "y", sheet->y(), sheet->parentItem()->height(), false, std::move(finish));
        return;
    }
    if (sheet) sheet->setVisible(false);
    finish();
}

ViewController* ViewController::presentedViewController() const { return presented_; }

ViewController* ViewController::presentingViewController() const {
    if (presenting_) return presenting_;
    return parentController_ ? parentController_->presentingViewController() : nullptr;
}

ViewController* ViewController::parentViewController() const { return parentController_; }

ModalPresentationStyle ViewController::modalPresentationStyle() const { return style_; }

void ViewController::setModalPresentationStyle(ModalPresentationStyle style) { style_ = style; }

Window* ViewController::window() const {
    const ViewController* controller = this;
    while (!controller->window_) {
        if (controller->presenting_) {
            controller = controller->presenting_;
        } else if (controller->parentController_) {
            controller = controller->parentController_;
        } else if (controller->view_ && controller->view_->parentItem()) {
            // A view placed inside another controller's view shares that controller's window.
            controller = owning(controller->view_->parentItem());
            if (!controller) return nullptr;
        } else {
            return nullptr;
        }
    }
    return controller->window_;
}

ViewController* ViewController::owning(const QQuickItem* item) {
    for (; item; item = item->parentItem()) {
        if (QObject* controller = item->property(controllerProperty).value<QObject*>())
            return qobject_cast<ViewController*>(controller);
    }
    return nullptr;
}

bool ViewController::isPlaced() const { return presenting_ || parentController_ || window_; }

QString ViewController::describe() const {
    return objectName().isEmpty() ? QString::fromLatin1(metaObject()->className()) : objectName();
}

} // namespace orvanta::ui
