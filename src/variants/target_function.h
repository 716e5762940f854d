// The signature that all target functions of the conversion engine share: one function converts to one target tag, from
// every source that the table in conversion_rules.h allows for it.
//
// conversion.cpp chooses the function and the rule; the functions are defined in numeric_targets.cpp, text_target.cpp
// and structured_targets.cpp.

#pragma once

#include "variants/conversion_rules.h"
#include "zrcore/variant.h"

// Converts `source` and stores the payload in `value`, which must be all zeros before the call.
//
// `rule` is the table's cell for this source and target. It is never NotSupported, Invalid or Same: those cells do not
// need a function. A function returns ZR_R_NOT_SUPPORTED for the rules of other columns, which it never receives.
//
// After a failure `value` may hold what the function had stored by then, for example the nearest number for a text that
// is out of range. In one case it is a new record that nobody else owns; see ToSREF.
using TargetFunction = ZRRESULT(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
