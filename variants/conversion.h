// The conversion engine: the scalar conversion that ZrVariantChangeType and arrays share, and its target functions.

#pragma once

#include <cstdint>

#include "variants/conversion_rules.h"

// Converts a scalar by value to a tag other than its own and stores the payload; the source is read only. On a failure
// `value`, which has to be zero before, may hold what the target function had stored by then.
//
// A string in the source must not be null, and a ZRSREF has a ref or a text: that is what a copy of a value has.
[[nodiscard]] ZRRESULT ConvertScalar(const ZRVARIANT& source, uint16_t target, ZRVARIANTVALUE& value);

// A function a target. `rule` is one of those in the target's column but NotSupported and Invalid.
using TargetFunction = ZRRESULT(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);

TargetFunction ToBool, ToI1, ToI2, ToI4, ToI8, ToUI1, ToUI2, ToUI4, ToUI8, ToR4, ToR8, ToChar32;
TargetFunction ToCY, ToTime, ToDateTime, ToStr, ToBlob, ToUUID, ToREF, ToSREF;
