#include <OrvantaARFoodSDK/DrawingBudget.h>

#include <atomic>

namespace orvanta {

namespace {

// Loads read the budget on worker threads while the host may set it on the main thread.
std::atomic<std::uint64_t> currentMaxTriangles{DrawingBudget{}.maxTriangles};
std::atomic<std::uint64_t> currentMaxDrawCalls{DrawingBudget{}.maxDrawCalls};

} // namespace

DrawingBudget DrawingBudget::current() { return {currentMaxTriangles.load(), currentMaxDrawCalls.load()}; }

void DrawingBudget::setCurrent(const DrawingBudget& budget) {
    currentMaxTriangles.store(budget.maxTriangles);
    currentMaxDrawCalls.store(budget.maxDrawCalls);
}

} // namespace orvanta
