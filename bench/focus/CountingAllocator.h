#pragma once
// Counts the heap allocations of this benchmark program: the global operator new is replaced
// (CountingAllocator.cpp) by one that counts every call before allocating.
// Thread: any; the count is process-wide.

#include <cstdint>

namespace orvanta::bench {

// Number of operator new calls (all forms) since the program started.
std::uint64_t allocationCount();

} // namespace orvanta::bench
