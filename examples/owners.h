// Owners of what the library gives: each gives it back at the end of its scope.

#ifndef EXAMPLES_OWNERS_H
#define EXAMPLES_OWNERS_H

#include <zrcore/string.h>
#include <zrcore/variant.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

struct StringRelease {
  void operator()(WCHAR* string) const noexcept { ZrDestroyString(string); }
};
/// StringOwner owns one reference on a counted string, or none.
using StringOwner = std::unique_ptr<WCHAR, StringRelease>;

/// Units shows the content of a string. The length comes from the string's header, so zero units are part of it.
inline std::u16string_view Units(ZRSTR string) noexcept {
  return string == nullptr ? std::u16string_view() : std::u16string_view(string, ZrStringLen(string));
}

/// MakeString gives a string of exactly these units; null if memory or the 32 bits for its length don't suffice.
///
/// By bytes, because the other creators stop copying at a zero unit and need a terminator, which a slice has not.
inline ZRSTR MakeString(std::u16string_view units) noexcept {
  constexpr std::size_t kMostUnits = std::numeric_limits<std::uint32_t>::max() / sizeof(WCHAR) - 1;
  if (units.size() > kMostUnits) return nullptr;
  return ZrCreateStringByteLen(units.data(), static_cast<std::uint32_t>(units.size() * sizeof(WCHAR)));
}

/// CVariantOwner is a ZRVARIANT that begins empty and is cleared at the end.
class CVariantOwner {
 public:
  CVariantOwner() noexcept = default;
  CVariantOwner(CVariantOwner&& other) noexcept : variant_(std::exchange(other.variant_, kEmpty)) {}
  CVariantOwner& operator=(CVariantOwner&& other) noexcept {
    std::swap(variant_, other.variant_);  // what this held goes with the other
    return *this;
  }
  ~CVariantOwner() { (void)ZrVariantClear(&variant_); }

  const ZRVARIANT& Get() const noexcept { return variant_; }

  /// Address is for the library to write to: it releases what the variant held itself.
  ZRVARIANT* Address() noexcept { return &variant_; }

 private:
  static constexpr ZRVARIANT kEmpty = ZR_VARIANT_INIT;
  ZRVARIANT variant_ = kEmpty;
};

#endif
