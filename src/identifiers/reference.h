// The order of references, for the rest of the library.
//
// A REF is six unsigned words. The first unequal pair of words decides, by its difference modulo 2^32 read as a signed
// number. Words more than 2^31 - 1 apart therefore compare in reverse, and the order isn't transitive over the whole
// range: 0 < 0x7FFFFFFF < 0xFFFFFFFE < 0. Callers rely on the exact differences; an ordinary comparison would return
// other numbers.
//
// An SREF is a REF, a text or both. The rules of its order are before CompareSrefs in reference.cpp.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "zrcore/reference.h"

// Nil means that all words are zero.
[[nodiscard]] constexpr bool IsNilRef(const ZRREF& ref) noexcept {
  uint32_t bits = 0;
  for (const uint32_t word : ref.words) bits |= word;
  return bits == 0;
}

// Returns the difference of the first unequal words modulo 2^32, as a signed number; 0 if all words are equal.
[[nodiscard]] constexpr int32_t RefDifference(const ZRREF& left, const ZRREF& right) noexcept {
  for (std::size_t word = 0; word < std::size(left.words); ++word) {
    if (left.words[word] != right.words[word]) return static_cast<int32_t>(left.words[word] - right.words[word]);
  }
  return 0;
}

// ZrCompareREF_ThreeWay without the check of its arguments. Null equals null and nil. If an operand is null, nil comes
// before everything else, even before words whose difference would say the reverse.
[[nodiscard]] constexpr int32_t CompareRefs(const ZRREF* left, const ZRREF* right) noexcept {
  if (left != nullptr && right != nullptr) return RefDifference(*left, *right);
  const bool leftIsNil = left == nullptr || IsNilRef(*left), rightIsNil = right == nullptr || IsNilRef(*right);
  return int{rightIsNil} - int{leftIsNil};
}

struct CSrefOrder {
  int32_t order;    // negative, 0 or positive
  ZRRESULT result;  // for the caller of an export; the order is valid even if this is ZR_R_INVALID_ARGUMENTS
};

// The one comparison that all exports for SREFs use.
[[nodiscard]] CSrefOrder CompareSrefs(const ZRSREF* left, const ZRSREF* right) noexcept;
