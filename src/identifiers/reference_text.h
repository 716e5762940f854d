// Parses and formats the text of a REF: "1.2.3.4.5.6".

#pragma once

#include <cstddef>
#include <cstdint>

#include "text/code_units.h"
#include "zrcore/reference.h"

// Callers see which kind of text was refused by what happens to an out-argument.
enum class RefReading : uint8_t {
  Read,
  NotSixFields,  // not exactly five dots, or an empty field
  NotCanonical,  // six fields, but not in the form that WriteRef writes
};

// Parses the text of a REF, which may have white space around it. `ref` is unspecified unless the result is Read.
[[nodiscard]] RefReading ReadRef(CTextView text, ZRREF& ref) noexcept;

// Makes a new string. Returns null when out of memory.
[[nodiscard]] ZRSTR WriteRef(const ZRREF& ref) noexcept;

// Writes what printf writes for "%d.%d.%d.%d.%d.%d", with a terminator: words from 2^31 up are negative. At most six
// words of eleven units ("-2147483648"), five dots and the terminator.
inline constexpr std::size_t kSignedRefUnits = 6 * 11 + 5 + 1;
void WriteSignedRef(const ZRREF& ref, WCHAR (&text)[kSignedRefUnits]) noexcept;
