#pragma once
// The most one model may ask of the renderer. A model beyond it is refused when it is loaded,
// before anything is drawn, with a "ModelImportError" error (code 5) that names what is too
// large and by how much; the downloaded file stays in the cache.
//
//     orvanta::DrawingBudget budget;
//     budget.maxTriangles = 2'000'000; // a slower device
//     orvanta::DrawingBudget::setCurrent(budget);
//
// Thread: a value type. setCurrent on the main thread; loads that start afterwards use it.

#include <cstdint>

namespace orvanta {

struct DrawingBudget {
    // Triangles drawn per frame, every instance of an instanced mesh counted.
    std::uint64_t maxTriangles = 5'000'000;
    // Draw calls per frame: one per mesh part, one per part for all instances of an instanced mesh.
    std::uint64_t maxDrawCalls = 100'000;

    // The budget the kit loads models under (the defaults above until a host sets another).
    static DrawingBudget current();
    static void setCurrent(const DrawingBudget& budget);
};

} // namespace orvanta
