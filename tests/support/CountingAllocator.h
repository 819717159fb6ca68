#pragma once
// Counts the heap allocations of the program that uses it: the global operator new is
// replaced (CountingAllocator.cpp, linked in when one of these functions is called) by one
// that counts every call before allocating.
// Thread: any. The process-wide count includes every thread (a renderer's too); the
// thread's own count only the calling thread's.

#include <cstdint>

namespace orvanta::testing {

// Number of operator new calls (all forms) since the program started, on every thread.
std::uint64_t allocationCount();
// Number of operator new calls made by the calling thread.
std::uint64_t threadAllocationCount();

} // namespace orvanta::testing
