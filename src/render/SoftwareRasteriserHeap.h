#pragma once
// Keeps the memory a software rasteriser frees between frames instead of handing it back to
// the system.
//
// Mesa's llvmpipe allocates its vertex and bin buffers for every frame and frees them at the
// end of it. With glibc's defaults the freed top of the heap is given back whenever more than
// 128 KB lie free there, so the next frame takes every page again through a page fault: a dish
// of 10,000 instanced seeds (980,000 triangles) spent about 45 % of each frame's processor time
// in those faults. Raising the allocator's trim threshold keeps the pages; the peak stays the
// same, and the resident size simply does not shrink between frames.
//
// It changes the process's allocator, so it is done only when the driver is a software
// rasteriser; with a GPU nothing changes.
// Thread: main thread, after the application object exists.

namespace orvanta::render {

class SoftwareRasteriserHeap {
public:
    // Decided once per process; later calls return the first answer. True when the setting is
    // in effect.
    static bool keepFreedMemory();
};

} // namespace orvanta::render
