// The signature that all target functions of the conversion engine share: one function converts to one target tag.

#pragma once

#include "variants/conversion_rules.h"
#include "zrcore/variant.h"

// Converts `source` and stores the payload in `value`. `rule` is a rule of the target's column in the table of
// conversion_rules.h, never NotSupported or Invalid. `value` is zero before the call. After a failure it may hold what
// the function has stored until then.
using TargetFunction = ZRRESULT(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);
