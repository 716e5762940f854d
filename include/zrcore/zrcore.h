// ZrCore: all of the public headers.

#ifndef ZRCORE_ZRCORE_H
#define ZRCORE_ZRCORE_H

#include "zrcore/atomic.h"
#include "zrcore/base.h"
#include "zrcore/component.h"
#include "zrcore/lifecycle.h"
#include "zrcore/lock.h"
#include "zrcore/string.h"
#include "zrcore/unicode.h"
#include "zrcore/uuid.h"

#endif
