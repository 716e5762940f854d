// The text of a time of day, for the rest of the library.

#pragma once

#include "zrcore/datetime.h"

// Formats the time of day as a new string; null when out of memory. With the fraction it is "05:06:07.1234567". Without
// it, it is the spaced form " 05: 06 : 07. 123", which ends with milliseconds.
[[nodiscard]] ZRSTR FormatTime(const ZRDATETIMESTRUCT& record, bool withFraction) noexcept;
