// Target functions for numbers, booleans and code points; see target_function.h for what all of them share.

#pragma once

#include "text/counted_string.h"
#include "variants/target_function.h"

// To a number. Instantiated for the signed and unsigned integers of 8 to 64 bits, for float and for double. Several
// tags share an instantiation: ZR_VT_UI4 and ZR_VT_DWORD are both ToNumber<uint32_t>.
template <class Target>
ZRRESULT ToNumber(Rule rule, const ZRVARIANT& source, ZRVARIANTVALUE& value);

// The rule Parse of ToNumber: parses a number or a word such as "TRUE". ZR_R_FAILED if the text is neither, or if the
// number is out of range; `number` is then what ToNumber stores in that case. The text must not be null. Throws
// std::bad_alloc for float, double and uint64_t; a negative number for uint64_t is parsed as a real number first.
// Instantiated as ToNumber.
template <class Target>
[[nodiscard]] ZRRESULT ParseNumber(ZRSTR text, Target& number);

// To ZR_VT_BOOL, 0 or 1, and to ZR_VT_CHAR32, which is the first code point of a text and not a parsed number.
TargetFunction ToBool, ToChar32;
