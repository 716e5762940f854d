// Conversion to numbers, booleans and code points.

#pragma once

#include "variants/target_function.h"

// For the integers from 8 to 64 bits, float and double.
template <class Target>
ZRRESULT ToNumber(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);

TargetFunction ToBool, ToChar32;
