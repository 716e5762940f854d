// The conversion of a block of elements to another element type, for CZrSafeArrayAccessor::ConvertFrom.
//
// There are two ways. Numbers convert to numbers in loops over the whole block, and so do numbers to texts and texts to
// numbers. FindBulkConversion chooses the loop once per array. All other elements convert one by one, as variants, by
// ConvertElements. Both follow the rules for elements, which differ a little from those for variants; see
// element_conversion.cpp.

#pragma once

#include <cstdint>

// Converts `count` elements. Writes every element of the target, with zero for an element that does not convert.
// Returns whether all elements converted. Throws std::bad_alloc only if the target's elements are numbers: those that
// were written before need not be released.
using BulkConversion = bool(const void* source, void* target, uint32_t count);

// The loop for two tags; null if such elements convert one by one.
[[nodiscard]] BulkConversion* FindBulkConversion(uint16_t sourceTag, uint16_t targetTag) noexcept;

// Converts elements of any two tags. The target must be a block of empty elements, as AllocateData creates it; an
// element that does not convert is left empty. Returns whether all elements converted. Throws std::bad_alloc.
[[nodiscard]] bool ConvertElements(uint16_t sourceTag, const void* source, uint16_t targetTag, void* target,
                                   uint32_t count);
