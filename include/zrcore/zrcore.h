// ZrCore: includes all public headers.
//
// Each header can also be included alone. base.h describes the conventions that hold for all of them.

#ifndef ZRCORE_ZRCORE_H
#define ZRCORE_ZRCORE_H

#include "zrcore/array.h"
#include "zrcore/atomic.h"
#include "zrcore/base.h"
#include "zrcore/blob.h"
#include "zrcore/component.h"
#include "zrcore/configuration.h"
#include "zrcore/datetime.h"
#include "zrcore/error_info.h"
#include "zrcore/lifecycle.h"
#include "zrcore/lock.h"
#include "zrcore/memory.h"
#include "zrcore/reference.h"
#include "zrcore/string.h"
#include "zrcore/timespan.h"
#include "zrcore/unicode.h"
#include "zrcore/uuid.h"
#include "zrcore/variant.h"

#endif
