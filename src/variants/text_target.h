// The target function for ZR_VT_STR; see target_function.h for what all target functions share.

#pragma once

#include "variants/target_function.h"

// Stores a string that the caller owns. Out of memory is a failure only for UUIDs and code points; for all other
// sources the string is null and the result ZR_R_OK. A blob without bytes also becomes a null string.
TargetFunction ToStr;
