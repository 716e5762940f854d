// Functions of a shared library that do almost nothing. They measure the cost of the call itself, and the lower bounds
// by contract use them for the calls that every user of ZrCore makes.

#pragma once

#include <atomic>
#include <cstdint>

#define BOUNDARY_API extern "C" __attribute__((visibility("default")))

BOUNDARY_API void BoundaryNothing() noexcept;

// Adds and removes a reference: the least cost of a reference-counted handle whose functions can't be inlined.
BOUNDARY_API void BoundaryRetain(std::atomic<uint32_t>* count) noexcept;
BOUNDARY_API void BoundaryRelease(std::atomic<uint32_t>* count) noexcept;

BOUNDARY_API int32_t BoundaryIncrement(std::atomic<int32_t>* value) noexcept;  // returns 0 for null
