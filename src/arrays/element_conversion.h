// The conversion of a block of elements to another type.

#pragma once

#include <cstdint>

// Converts plain elements, writing every one of the target; zero for one that doesn't convert. Whether all converted.
using BulkConversion = bool(const void* source, void* target, uint32_t count) noexcept;

// Null for tags that aren't both those of numbers.
[[nodiscard]] BulkConversion* FindBulkConversion(uint16_t sourceTag, uint16_t targetTag) noexcept;

// Converts elements of any two tags, into a block of zero elements. Whether all converted.
[[nodiscard]] bool ConvertElements(uint16_t sourceTag, const void* source, uint16_t targetTag, void* target,
                                   uint32_t count);
