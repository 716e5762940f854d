// Uuid is a 128-bit identifier (zrcore/uuid.h).
//
//     inline constexpr zr::Uuid kMars("31AD0869-8AC8-4D25-A11C-A887BE515257");
//     zr::Uuid fresh = zr::Uuid::Generate();
//
// A Uuid is a ZRUUID: its address may be passed wherever the C boundary wants a const ZRUUID*. It is a plain value that
// owns nothing. Use constexpr for literals, so that the compiler refuses a wrong digit.

#ifndef ZR_UUID_HPP
#define ZR_UUID_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zrcore/uuid.h"

namespace zr {

namespace detail {

// Not constexpr: a call of it in a constant expression is what makes the compiler refuse the literal.
[[noreturn]] inline void NotAHexadecimalDigit() { std::abort(); }
[[noreturn]] inline void NotAHyphen() { std::abort(); }

}  // namespace detail

/// Uuid is a ZRUUID with a constructor for literals, and with operators.
class Uuid : public ZRUUID {
 public:
  /// Makes the nil identifier, sixteen zero bytes.
  constexpr Uuid() noexcept : ZRUUID{} {}
  /// Copies a record.
  constexpr Uuid(const ZRUUID& record) noexcept : ZRUUID(record) {}
  /// Reads a literal such as "31AD0869-8AC8-4D25-A11C-A887BE515257". In a constant expression a wrong digit does not
  /// compile; elsewhere it terminates the process. A literal of another length never compiles.
  template <std::size_t size>
  constexpr explicit Uuid(const char (&text)[size]) noexcept : ZRUUID{} {
    static_assert(size == 37, "the text of an identifier has 36 characters, without braces");
    if (text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') detail::NotAHyphen();
    data1 = Number(text, 8);
    data2 = static_cast<uint16_t>(Number(text + 9, 4));
    data3 = static_cast<uint16_t>(Number(text + 14, 4));
    for (int byte = 0; byte < 8; ++byte) {
      data4[byte] = static_cast<uint8_t>(Number(text + (byte < 2 ? 19 : 20) + byte * 2, 2));
    }
  }

  /// Generate returns a random identifier (version 4), or the nil identifier if the system has no random bytes. Throws
  /// std::bad_alloc when out of memory.
  [[nodiscard]] static Uuid Generate() {
    ZRUUID* made = ZrGenerateUUID();
    const Uuid copy(*made);
    ZrDestroyUUID(made);
    return copy;
  }

  /// Parse reads the text form, in all variants that ZrUUIDFromString accepts. ZR_R_INVALID_ARGUMENTS for other
  /// texts.
  static Result<Uuid> Parse(const char* text) noexcept {
    Uuid parsed;
    if (const ZRRESULT result = ZrUUIDFromString(text, &parsed); Failed(result)) return Failure{result};
    return parsed;
  }
  static Result<Uuid> Parse(const std::string& text) noexcept { return Parse(text.c_str()); }
  /// A view is copied first, because it has no terminator.
  static Result<Uuid> Parse(std::string_view text) noexcept {
    // The export reads at most a quotation mark, a brace and the identifier.
    constexpr std::size_t kIdentifier = 36, kLongest = kIdentifier + 2;
    if (text.size() < kIdentifier) return Failure{ZR_R_INVALID_ARGUMENTS};
    char terminated[kLongest + 1];
    std::memcpy(terminated, text.data(), kIdentifier);
    std::size_t size = kIdentifier;
    for (; size < text.size() && size < kLongest; ++size) terminated[size] = text[size];
    terminated[size] = 0;
    return Parse(static_cast<const char*>(terminated));
  }

  /// ToString returns the text form in upper case, in braces. Throws std::bad_alloc when out of memory.
  [[nodiscard]] String ToString() const {
    String text;
    if (Failed(ZrStringFromUUID(this, text.Put())) || text.Get() == nullptr) detail::OutOfMemory();
    return text;
  }

  /// IsNil returns whether all bytes are zero.
  [[nodiscard]] constexpr bool IsNil() const noexcept { return *this == Uuid(); }

  friend constexpr bool operator==(const Uuid& left, const Uuid& right) noexcept {
    return ((left.FirstHalf() ^ right.FirstHalf()) | (left.LastHalf() ^ right.LastHalf())) == 0;
  }
  friend constexpr bool operator!=(const Uuid& left, const Uuid& right) noexcept { return !(left == right); }
  /// The order is that of the text forms (ZRUUIDLess).
  friend bool operator<(const Uuid& left, const Uuid& right) noexcept { return ZRUUIDLess(&left, &right); }
  friend bool operator>(const Uuid& left, const Uuid& right) noexcept { return ZRUUIDGreater(&left, &right); }

 private:
  // The bytes as two numbers. Compilers turn each into one load, which they do not do for a loop over the bytes.
  [[nodiscard]] constexpr uint64_t FirstHalf() const noexcept {
    return data1 | static_cast<uint64_t>(data2) << 32 | static_cast<uint64_t>(data3) << 48;
  }
  [[nodiscard]] constexpr uint64_t LastHalf() const noexcept {
    return data4[0] | static_cast<uint64_t>(data4[1]) << 8 | static_cast<uint64_t>(data4[2]) << 16 |
           static_cast<uint64_t>(data4[3]) << 24 | static_cast<uint64_t>(data4[4]) << 32 |
           static_cast<uint64_t>(data4[5]) << 40 | static_cast<uint64_t>(data4[6]) << 48 |
           static_cast<uint64_t>(data4[7]) << 56;
  }

  static constexpr uint32_t Number(const char* text, int digits) noexcept {
    uint32_t number = 0;
    for (int at = 0; at < digits; ++at) number = number << 4 | Digit(text[at]);
    return number;
  }
  static constexpr uint32_t Digit(char character) noexcept {
    if (character >= '0' && character <= '9') return static_cast<uint32_t>(character - '0');
    if (character >= 'A' && character <= 'F') return static_cast<uint32_t>(character - 'A' + 10);
    if (character >= 'a' && character <= 'f') return static_cast<uint32_t>(character - 'a' + 10);
    detail::NotAHexadecimalDigit();
  }
};
static_assert(sizeof(Uuid) == sizeof(ZRUUID), "a Uuid is its record");

}  // namespace zr

template <>
struct std::hash<zr::Uuid> {
  std::size_t operator()(const zr::Uuid& uuid) const noexcept {
    uint64_t halves[2];
    std::memcpy(halves, &uuid, sizeof halves);
    return static_cast<std::size_t>(halves[0] ^ (halves[1] * 0x9E3779B97F4A7C15));
  }
};

#endif
