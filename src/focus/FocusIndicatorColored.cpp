// FocusIndicator: the look of the square in its style, and how it follows the state.
#include "focus/FocusIndicator.h"

#include "reality/UnlitMaterial.h"

#include <string>

namespace orvanta::focus {

void FocusIndicator::setupClassic(const ClassicStyle& classicStyle) {
    std::vector<std::shared_ptr<Segment>> bars;
    bars.reserve(kClassicSegmentLayout.size());
    for (std::size_t index = 0; index < kClassicSegmentLayout.size(); ++index) {
        const auto [corner, alignment] = kClassicSegmentLayout[index];
        auto bar = std::make_shared<Segment>("s" + std::to_string(index), corner, alignment, classicStyle.color);
        bar->setPosition(cornerPosition(corner, alignment));
        positioningEntity_->addChild(bar);
        bars.push_back(std::move(bar));
    }
    focus_.segments = std::move(bars);
    positioningEntity_->setScale(QVector3D(1.0f, 1.0f, 1.0f) * (size * scaleForClosedSquare));
}

void FocusIndicator::stateChanged(bool newPlane) {
    if (focus_.classicStyle()) {
        if (onPlane_) {
            onPlaneAnimation(newPlane);
        } else {
            offPlaneAniation();
        }
    } else {
        coloredStateChanged();
    }
}

void FocusIndicator::onPlaneAnimation(bool /*newPlane*/) {
    if (!focus_.isOpen) return;
    focus_.isOpen = false;
    for (const auto& bar : focus_.segments) bar->close();
}

void FocusIndicator::offPlaneAniation() {
    if (!focus_.isOpen) {
        focus_.isOpen = true;
        for (const auto& bar : focus_.segments) bar->open();
    }
    positioningEntity_->setScale(QVector3D(size, size, size));
}

void FocusIndicator::coloredStateChanged() {
    const auto* colored = std::get_if<ColoredStyle>(&focus_.style);
    if (!colored || !fillPlane_) return;
    const QColor& color = state_.isInitializing() ? colored->nonTrackingColor
                          : onPlane_              ? colored->onColor
                                                  : colored->offColor;
    // The state changes nearly every frame while the camera moves; the material is rebuilt
    // only when its colour changes, which keeps those frames free of allocations.
    if (fillColor_ == color) return;
    fillColor_ = color;
    fillPlane_->setModel(reality::ModelComponent{colored->mesh, {reality::UnlitMaterial{color}}});
}

} // namespace orvanta::focus
