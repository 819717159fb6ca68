#include "render/SoftwareRasteriserHeap.h"

#include "render/GlSupport.h"

#include <malloc.h>

namespace orvanta::render {

bool SoftwareRasteriserHeap::keepFreedMemory() {
    static const bool kept = [] {
        if (!GlSupport::canCreateContext() || !GlSupport::isSoftwareRasteriser()) return false;
        // Free memory at the top of the heap is trimmed only past 1 GiB.
        return mallopt(M_TRIM_THRESHOLD, 1 << 30) == 1;
    }();
    return kept;
}

} // namespace orvanta::render
