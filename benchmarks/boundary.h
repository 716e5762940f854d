// What a call over the boundary of a shared library costs, with nothing or next to nothing done behind it.

#pragma once

#include <atomic>
#include <cstdint>

#define BOUNDARY_API extern "C" __attribute__((visibility("default")))

BOUNDARY_API void BoundaryNothing() noexcept;

// One reference more, and one less: the least that a counted handle costs a caller who can't see behind it.
BOUNDARY_API void BoundaryRetain(std::atomic<uint32_t>* count) noexcept;
BOUNDARY_API void BoundaryRelease(std::atomic<uint32_t>* count) noexcept;

BOUNDARY_API int32_t BoundaryIncrement(std::atomic<int32_t>* value) noexcept;  // 0 for null
