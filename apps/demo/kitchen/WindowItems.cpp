#include "WindowItems.h"

#include <QQuickItem>

namespace orvanta::demo {

QQuickItem* WindowItems::find(QQuickItem* root, const QString& name) {
    for (QQuickItem* child : root->childItems()) {
        if (child->objectName() == name && child->isVisible()) return child;
        if (QQuickItem* found = find(child, name)) return found;
    }
    return nullptr;
}

} // namespace orvanta::demo
