// Conversion to a string.

#pragma once

#include "variants/target_function.h"

TargetFunction ToStr;
