#pragma once
// The configuration and appearance state of a focus square: its style, whether the classic
// bars are open, the bars themselves, and the ray-cast targets tried in order each frame.
// Thread: a value type; the ready-made values and defaultPlane on the main thread.

#include "arsession/ARRaycastQuery.h"
#include "focus/ClassicStyle.h"
#include "focus/ColoredStyle.h"

#include <QColor>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace orvanta::focus {

class Segment;

class FocusIndicatorComponent {
public:
    using Style = std::variant<ClassicStyle, ColoredStyle>;

    // `style`, open bars, no bars yet, and ray casts against existing plane geometry first and
    // estimated planes second.
    explicit FocusIndicatorComponent(Style style);

    Style style;
    bool isOpen = true;
    std::vector<std::shared_ptr<Segment>> segments;
    std::vector<arsession::ARRaycastQuery::Target> allowedRaycasts{
        arsession::ARRaycastQuery::Target::existingPlaneGeometry,
        arsession::ARRaycastQuery::Target::estimatedPlane,
    };

    // The style's payload when the style is classic (resp. coloured), else none.
    std::optional<ClassicStyle> classicStyle() const;
    std::optional<ColoredStyle> coloredStyle() const;

    // Amber: red 1.0, green 0.8, blue 0.0, alpha 1.0.
    static QColor defaultColor();
    // The fill mesh of the ready-made `plane` component: a 0.1 m × 0.1 m plane. Replaceable.
    static std::shared_ptr<const reality::MeshResource>& defaultPlane();
    // Classic bars in the default colour.
    static FocusIndicatorComponent classic();
    // A filled default plane: green on a plane, orange off a plane, red at 20 % opacity while
    // not tracking.
    static FocusIndicatorComponent plane();
};

} // namespace orvanta::focus
