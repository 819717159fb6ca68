#include "focus/FocusIndicatorComponent.h"

#include "focus/Segment.h"

namespace orvanta::focus {

namespace {
// The platform's system colours.
const QColor kSystemGreen(52, 199, 89);
const QColor kSystemOrange(255, 149, 0);
const QColor kSystemRed(255, 59, 48);
} // namespace

FocusIndicatorComponent::FocusIndicatorComponent(Style style) : style(std::move(style)) {}

std::optional<ClassicStyle> FocusIndicatorComponent::classicStyle() const {
    if (const auto* classic = std::get_if<ClassicStyle>(&style)) return *classic;
    return std::nullopt;
}

std::optional<ColoredStyle> FocusIndicatorComponent::coloredStyle() const {
    if (const auto* colored = std::get_if<ColoredStyle>(&style)) return *colored;
    return std::nullopt;
}

QColor FocusIndicatorComponent::defaultColor() {
    return QColor::fromRgbF(1.0f, 0.8f, 0.0f, 1.0f);
}

std::shared_ptr<const reality::MeshResource>& FocusIndicatorComponent::defaultPlane() {
    static std::shared_ptr<const reality::MeshResource> mesh = reality::MeshResource::generatePlane(0.1f, 0.1f);
    return mesh;
}

FocusIndicatorComponent FocusIndicatorComponent::classic() {
    return FocusIndicatorComponent(ClassicStyle{defaultColor()});
}

FocusIndicatorComponent FocusIndicatorComponent::plane() {
    QColor nonTracking = kSystemRed;
    nonTracking.setAlphaF(0.2f);
    return FocusIndicatorComponent(ColoredStyle{kSystemGreen, kSystemOrange, nonTracking, defaultPlane()});
}

} // namespace orvanta::focus
