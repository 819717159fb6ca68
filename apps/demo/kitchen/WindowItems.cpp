#include "WindowItems.h"

#include <QQuickItem>

namespace orvanta::demo {

namespace {

// Appends the visible items named `name` under `root` to `found`; stops after the first when `one`.
void collect(QQuickItem* root, const QString& name, bool one, QList<QQuickItem*>& found) {
    for (QQuickItem* child : root->childItems()) {
        if (one && !found.isEmpty()) return;
        if (child->objectName() == name && child->isVisible()) found.append(child);
        collect(child, name, one, found);
    }
}

} // namespace

QQuickItem* WindowItems::find(QQuickItem* root, const QString& name) {
    QList<QQuickItem*> found;
    collect(root, name, true, found);
    return found.isEmpty() ? nullptr : found.front();
}

QList<QQuickItem*> WindowItems::findAll(QQuickItem* root, const QString& name) {
    QList<QQuickItem*> found;
    collect(root, name, false, found);
    return found;
}

} // namespace orvanta::demo
