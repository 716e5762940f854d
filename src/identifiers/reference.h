// The order of references, for the rest of the library.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "zrcore/reference.h"

[[nodiscard]] constexpr bool IsNilRef(const ZRREF& ref) noexcept {
  uint32_t bits = 0;
  for (const uint32_t word : ref.words) bits |= word;
  return bits == 0;
}

// The difference of the first unequal words modulo 2^32, as a signed number; 0 if all are equal.
[[nodiscard]] constexpr int32_t RefDifference(const ZRREF& left, const ZRREF& right) noexcept {
  for (std::size_t word = 0; word < std::size(left.words); ++word) {
    if (left.words[word] != right.words[word]) return static_cast<int32_t>(left.words[word] - right.words[word]);
  }
  return 0;
}

// ZrCompareREF_ThreeWay without its test: RefDifference, and null counts as nil and before all that is not.
[[nodiscard]] constexpr int32_t CompareRefs(const ZRREF* left, const ZRREF* right) noexcept {
  if (left != nullptr && right != nullptr) return RefDifference(*left, *right);
  const bool leftIsNil = left == nullptr || IsNilRef(*left), rightIsNil = right == nullptr || IsNilRef(*right);
  return int{rightIsNil} - int{leftIsNil};
}

struct CSrefOrder {
  int32_t order;    // negative, 0 or positive
  ZRRESULT result;  // for the caller of the export; never to be taken for a failure, the order is always valid
};

// The one decision behind all comparisons of SREFs.
[[nodiscard]] CSrefOrder CompareSrefs(const ZRSREF* left, const ZRSREF* right) noexcept;
