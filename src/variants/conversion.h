// The conversion engine: the scalar conversion that ZrVariantChangeType and arrays share.

#pragma once

#include <cstdint>

#include "variants/conversion_rules.h"

// Converts a scalar by value to a tag other than its own and stores the payload; the source is read only. On a failure
// `value`, which has to be zero before, may hold what the target function had stored by then.
//
// A string in the source must not be null, and a ZRSREF has a ref or a text: that is what LendCopy gives.
[[nodiscard]] ZRRESULT ConvertScalar(const ZRVARIANT& source, uint16_t target, ZRVARIANTVALUE& value);

// The rule from one tag without flags to another: NotSupported or Invalid also where the target takes nothing at all.
[[nodiscard]] Rule RuleOf(uint16_t source, uint16_t target) noexcept;

// A scalar as ZrVariantCopy would give it, but with the payload of the original and without an owner.
[[nodiscard]] ZRVARIANT LendCopy(const ZRVARIANT& original) noexcept;
