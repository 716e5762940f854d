// Target functions for currency, times, blobs, UUIDs and references; see target_function.h for what all of them share.
//
// The payload that ToBlob, ToUUID, ToREF and ToSREF store is owned by the caller afterwards. ToSREF alone may store one
// and fail: for a null REF it stores a new SREF without content, which leaks unless the caller releases it.

#pragma once

#include "variants/target_function.h"

TargetFunction ToCY, ToTime, ToDateTime, ToBlob, ToUUID, ToREF, ToSREF;
