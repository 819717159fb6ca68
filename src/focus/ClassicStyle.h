#pragma once
// The classic look of the focus square: eight glowing bars in one colour.
// Thread: a value type.

#include <QColor>

namespace orvanta::focus {

struct ClassicStyle {
    QColor color;
};

} // namespace orvanta::focus
