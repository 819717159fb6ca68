#pragma once
// Finds the kit's named items in a window, the way the sample app's walkthrough and the
// benchmarks drive the kit: by the names its layouts give their controls. A view's
// delegates have no object parent, so the search walks the visual tree.
// Thread: main thread.

#include <QList>

class QQuickItem;
class QString;

namespace orvanta::demo {

class WindowItems {
public:
    // The first visible item named `name` under `root`, or null.
    static QQuickItem* find(QQuickItem* root, const QString& name);
    // Every visible item named `name` under `root`, in the tree's order (what is drawn last, last).
    static QList<QQuickItem*> findAll(QQuickItem* root, const QString& name);
};

} // namespace orvanta::demo
