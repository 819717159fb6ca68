#pragma once
// Keeps an item as wide as its parent item and as tall as the parent less a top inset, also
// when the parent is resized. Only the size follows; the position stays the caller's, so
// slides can animate it. Moving the item to another parent ends the link to the old one.
// Thread: main thread.

#include <QtGlobal>

class QQuickItem;

namespace orvanta::ui {

class FillParent {
public:
    // Makes `item` a child item of `parent` sized to it (less `topInset` in height) from now on.
    static void apply(QQuickItem* item, QQuickItem* parent, qreal topInset = 0);
    // Ends the size link and takes `item` out of its parent item.
    static void release(QQuickItem* item);
};

} // namespace orvanta::ui
