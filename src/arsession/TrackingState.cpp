#include "arsession/TrackingState.h"

#include <array>
#include <utility>

namespace orvanta::arsession {

namespace {

constexpr std::array<std::pair<TrackingState, std::string_view>, 6> renderings{{
    {TrackingState::notAvailable(), "notAvailable"},
    {TrackingState::normal(), "normal"},
    {TrackingState::limited(TrackingState::Reason::initializing), "limited(initializing)"},
    {TrackingState::limited(TrackingState::Reason::excessiveMotion), "limited(excessiveMotion)"},
    {TrackingState::limited(TrackingState::Reason::insufficientFeatures), "limited(insufficientFeatures)"},
    {TrackingState::limited(TrackingState::Reason::relocalizing), "limited(relocalizing)"},
}};

} // namespace

std::string TrackingState::description() const {
    for (const auto& [state, text] : renderings)
        if (state == *this) return std::string(text);
    return {}; // unreachable: every state has a rendering
}

std::optional<TrackingState> TrackingState::fromDescription(std::string_view text) {
    for (const auto& [state, rendering] : renderings)
        if (rendering == text) return state;
    return std::nullopt;
}

} // namespace orvanta::arsession
