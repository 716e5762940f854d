// Target functions for numbers, booleans and code points; see target_function.h for what all of them share.

#pragma once

#include "variants/target_function.h"

// To a number. Instantiated for the signed and unsigned integers of 8 to 64 bits, for float and for double. Several
// tags share an instantiation: ZR_VT_UI4 and ZR_VT_DWORD are both ToNumber<uint32_t>.
template <class Target>
ZRRESULT ToNumber(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);

// To ZR_VT_BOOL, 0 or 1, and to ZR_VT_CHAR32, which is the first code point of a text and not a parsed number.
TargetFunction ToBool, ToChar32;
