// The text of a REF, read and written.

#pragma once

#include <cstddef>
#include <cstdint>

#include "text/code_units.h"
#include "zrcore/reference.h"

enum class RefReading : uint8_t {
  Read,
  NotSixFields,  // not five dots, or nothing between two of them
  NotCanonical,  // six fields, but not as a REF is written
};

// Reads the text of a REF, with white space around it. `ref` is unspecified unless it was read.
[[nodiscard]] RefReading ReadRef(CTextView text, ZRREF& ref) noexcept;

// A new string; null when memory is exhausted.
[[nodiscard]] ZRSTR WriteRef(const ZRREF& ref) noexcept;

// As "%d.%d.%d.%d.%d.%d" writes it, terminated.
inline constexpr std::size_t kSignedRefUnits = 6 * 11 + 5 + 1;
void WriteSignedRef(const ZRREF& ref, WCHAR (&text)[kSignedRefUnits]) noexcept;
