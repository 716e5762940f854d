// The texts of date and time, for the rest of the library.

#pragma once

#include "zrcore/datetime.h"

// The time of day as text: seven digits of ticks, or, in a form of its own with blanks around the colons,
// three of milliseconds.
[[nodiscard]] ZRSTR FormatTime(const ZRDATETIMESTRUCT& record, bool withFraction) noexcept;
