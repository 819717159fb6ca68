#include "ui/FillParent.h"

#include <QQuickItem>

#include <algorithm>

namespace orvanta::ui {

void FillParent::apply(QQuickItem* item, QQuickItem* parent, qreal topInset) {
    release(item);
    item->setParentItem(parent);
    auto fit = [item, parent, topInset] {
        item->setSize(QSizeF(parent->width(), std::max<qreal>(0, parent->height() - topInset)));
    };
    fit();
    QObject::connect(parent, &QQuickItem::widthChanged, item, fit);
    QObject::connect(parent, &QQuickItem::heightChanged, item, fit);
}

void FillParent::release(QQuickItem* item) {
    if (QQuickItem* old = item->parentItem()) QObject::disconnect(old, nullptr, item, nullptr);
    item->setParentItem(nullptr);
}

} // namespace orvanta::ui
