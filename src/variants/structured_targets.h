// Conversion to currency, times, blobs, UUIDs and references.

#pragma once

#include "variants/target_function.h"

TargetFunction ToCY, ToTime, ToDateTime, ToBlob, ToUUID, ToREF, ToSREF;
