// Ref is a reference by six numbers (zrcore/reference.h).
//
//     zr::Ref ref = zr::Ref::Parse(u"1.2.3.4.5.6").Value();
//
// A Ref is a ZRREF, a plain value that owns nothing: its address may be passed wherever the C boundary wants a const
// ZRREF*.
//
// There is no operator <. The order of references is not transitive: it compares differences that wrap at 32 bits, so
// it must not be used for std::map or std::sort. Compare returns it for those who need it.

#ifndef ZR_REF_HPP
#define ZR_REF_HPP

#include <cstddef>
#include <cstdint>

#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zrcore/reference.h"

namespace zr {

/// Ref is a ZRREF with constructors, texts and operators.
class Ref : public ZRREF {
 public:
  /// Makes a reference of six zeros, which is nil.
  constexpr Ref() noexcept : ZRREF{} {}
  /// Copies a record.
  constexpr Ref(const ZRREF& record) noexcept : ZRREF(record) {}
  /// Makes a reference of six numbers.
  constexpr Ref(uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5) noexcept
      : ZRREF{{w0, w1, w2, w3, w4, w5}} {}

  /// Parse reads six numbers with points between them, as ZrStringToREF does. ZR_R_INVALID_ARGUMENTS for other texts.
  static Result<Ref> Parse(const String& text) noexcept {
    Ref ref;
    uint32_t* words = ref.words;
    const ZRRESULT result = ZrSplitRefName(text.Get(), words, words + 1, words + 2, words + 3, words + 4, words + 5);
    if (Failed(result)) return Failure{result};
    return ref;
  }

  /// ToString returns the six numbers with points between them. Throws std::bad_alloc when out of memory.
  [[nodiscard]] String ToString() const {
    String text;
    if (Failed(ZrREFToString(this, text.Put())) || text.Get() == nullptr) detail::OutOfMemory();
    return text;
  }

  /// Compare returns a negative number, 0 or a positive number. The order is not transitive; see the top of this file.
  [[nodiscard]] static int32_t Compare(const Ref& left, const Ref& right) noexcept {
    int32_t order = 0;
    (void)ZrCompareREF_ThreeWay(&left, &right, &order);
    return order;
  }

  friend constexpr bool operator==(const Ref& left, const Ref& right) noexcept {
    for (int word = 0; word < 6; ++word) {
      if (left.words[word] != right.words[word]) return false;
    }
    return true;
  }
  friend constexpr bool operator!=(const Ref& left, const Ref& right) noexcept { return !(left == right); }
};
static_assert(sizeof(Ref) == sizeof(ZRREF), "a Ref is its record");

}  // namespace zr

template <>
struct std::hash<zr::Ref> {
  std::size_t operator()(const zr::Ref& ref) const noexcept {
    uint64_t mixed = 0;
    for (const uint32_t word : ref.words) mixed = (mixed ^ word) * 0x9E3779B97F4A7C15;
    return static_cast<std::size_t>(mixed ^ mixed >> 32);
  }
};

#endif
