#include "arsession/ARPlaneAnchor.h"

#include <array>
#include <utility>

namespace orvanta::arsession {

namespace {

constexpr std::array<std::pair<ARPlaneAnchor::Alignment, std::string_view>, 2> alignmentNames{{
    {ARPlaneAnchor::Alignment::horizontal, "horizontal"},
    {ARPlaneAnchor::Alignment::vertical, "vertical"},
}};

constexpr std::array<std::pair<ARPlaneAnchor::Classification, std::string_view>, 8> classificationNames{{
    {ARPlaneAnchor::Classification::none, "none"},
    {ARPlaneAnchor::Classification::wall, "wall"},
    {ARPlaneAnchor::Classification::floor, "floor"},
    {ARPlaneAnchor::Classification::ceiling, "ceiling"},
    {ARPlaneAnchor::Classification::table, "table"},
    {ARPlaneAnchor::Classification::seat, "seat"},
    {ARPlaneAnchor::Classification::window, "window"},
    {ARPlaneAnchor::Classification::door, "door"},
}};

template <class Table, class Value>
std::string_view nameIn(const Table& table, Value value) {
    for (const auto& [v, text] : table)
        if (v == value) return text;
    return {};
}

template <class Table>
auto valueIn(const Table& table, std::string_view text) -> std::optional<typename Table::value_type::first_type> {
    for (const auto& [v, name] : table)
        if (name == text) return v;
    return std::nullopt;
}

} // namespace

std::string_view ARPlaneAnchor::name(Alignment alignment) { return nameIn(alignmentNames, alignment); }
std::string_view ARPlaneAnchor::name(Classification classification) {
    return nameIn(classificationNames, classification);
}
std::optional<ARPlaneAnchor::Alignment> ARPlaneAnchor::alignmentNamed(std::string_view text) {
    return valueIn(alignmentNames, text);
}
std::optional<ARPlaneAnchor::Classification> ARPlaneAnchor::classificationNamed(std::string_view text) {
    return valueIn(classificationNames, text);
}

} // namespace orvanta::arsession
