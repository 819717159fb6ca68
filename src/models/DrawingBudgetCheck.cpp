#include "models/DrawingBudgetCheck.h"

#include "import/ImportError.h"

#include <cstdio>
#include <string>

namespace orvanta {

namespace {

// "384,400,000 triangles after instancing, 379,400,000 over the budget of 5,000,000 (76.9 times)"
std::string overrun(std::uint64_t value, std::uint64_t limit, const char* what) {
    const auto grouped = [](std::uint64_t n) {
        std::string digits = std::to_string(n);
        for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3) digits.insert(static_cast<std::size_t>(at), ",");
        return digits;
    };
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, "%.1f", limit == 0 ? 0.0 : static_cast<double>(value) / static_cast<double>(limit));
    return grouped(value) + " " + what + ", " + grouped(value - limit) + " over the budget of " + grouped(limit) +
           (limit == 0 ? "" : " (" + std::string(ratio) + " times)");
}

} // namespace

std::optional<core::Error> DrawingBudgetCheck::check(const import::ImportedScene& scene, const DrawingBudget& budget) {
    const import::DrawCost cost = scene.drawCost();
    std::string excess;
    if (cost.triangles > budget.maxTriangles) excess = overrun(cost.triangles, budget.maxTriangles, "triangles after instancing");
    if (cost.drawCalls > budget.maxDrawCalls)
        excess += (excess.empty() ? "" : "; ") + overrun(cost.drawCalls, budget.maxDrawCalls, "draw calls");
    if (excess.empty()) return std::nullopt;
    return import::importError(import::ImportErrorCode::limitExceeded, "The model is too heavy to draw: " + excess);
}

} // namespace orvanta
