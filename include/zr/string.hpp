// String owns a counted string (zrcore/string.h).
//
//     zr::String name = u"Mars";
//     zr::String title = name + zr::String(u" and its moons");
//     std::puts(title.ToUtf8().c_str());
//
// A String is one pointer. Null is an empty string, and a String without content never allocates. Copies share the
// immutable units, so a copy costs one atomic increment. A moved-from String is empty.
//
// The constructors throw std::bad_alloc when out of memory. Any number of threads may read and copy one String; to
// assign to it meanwhile is a data race.

#ifndef ZR_STRING_HPP
#define ZR_STRING_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "zr/result.hpp"
#include "zrcore/string.h"
#include "zrcore/unicode.h"

namespace zr {

/// StringView is a view of 16-bit code units: std::u16string_view, and std::wstring_view on Windows.
using StringView = std::basic_string_view<WCHAR>;

class String;

namespace detail {

// Texts that a String compares with as views.
template <class Text>
constexpr bool kIsText = std::is_convertible_v<const Text&, StringView> && !std::is_same_v<Text, String> &&
                         !std::is_same_v<Text, std::nullptr_t>;

}  // namespace detail

/// String owns a reference on an immutable string of 16-bit code units, or null, which is an empty string.
class String {
 public:
  /// Makes an empty string.
  String() noexcept = default;
  /// Copies the units of a view, zero units included.
  String(StringView units) : string_(Make(units)) {}
  /// Copies a zero-terminated text, such as a literal. Null makes an empty string.
  String(const WCHAR* text) : string_(text != nullptr && *text != 0 ? Checked(ZrCreateString(text)) : nullptr) {}
  /// Copies the units of a standard string, zero units included.
  String(const std::basic_string<WCHAR>& units) : String(StringView(units)) {}
  /// 8-bit text has no encoding of its own: use FromUtf8.
  String(const char*) = delete;
  String(std::nullptr_t) = delete;

  /// Shares the units with the other string.
  String(const String& other) noexcept : string_(other.string_ != nullptr ? ZrCopyString(other.string_) : nullptr) {}
  String(String&& other) noexcept : string_(std::exchange(other.string_, nullptr)) {}
  String& operator=(String other) noexcept {
    std::swap(string_, other.string_);
    return *this;
  }
  ~String() { Destroy(string_); }

  /// FromUtf8 makes a string of UTF-8. Zero bytes become zero units.
  ///
  /// @return
  ///   - ZR_R_OK                 the string was made.
  ///   - ZR_R_INVALID_ARGUMENTS  the bytes are not sequences of UTF-8, end inside a sequence, or are more than
  ///                             0x7FFFFFFF. Overlong forms of two and three bytes, encoded surrogates and values above
  ///                             U+10FFFF are accepted, as by ZrCreateZRSTRfromUTF8.
  ///   - ZR_R_FAILED             a form of four bytes is overlong.
  /// @throws std::bad_alloc when out of memory.
  static Result<String> FromUtf8(std::string_view bytes) {
    if (bytes.empty()) return String();
    if (bytes.size() > INT32_MAX || EndsInsideSequence(bytes)) return Failure{ZR_R_INVALID_ARGUMENTS};
    String made;
    const ZRRESULT result = ZrCreateZRSTRfromUTF8(bytes.data(), static_cast<int32_t>(bytes.size()), made.Put());
    if (result == ZR_R_NO_MEMORY) detail::OutOfMemory();
    if (Failed(result)) return Failure{result};
    if (made.IsEmpty()) return Failure{ZR_R_INVALID_ARGUMENTS};  // that is how the export reports bad bytes
    return made;
  }

  /// FromUtf32 makes a string of code points.
  ///
  /// @return ZR_R_INVALID_ARGUMENTS for more than 0x7FFFFFFF code points; otherwise as ZrCreateZRSTRfromUTF32
  ///         (unicode.h).
  /// @throws std::bad_alloc when out of memory.
  static Result<String> FromUtf32(std::u32string_view codePoints) {
    if (codePoints.size() > INT32_MAX) return Failure{ZR_R_INVALID_ARGUMENTS};
    if (codePoints.empty()) return String();
    String made;
    const ZRRESULT result =
        ZrCreateZRSTRfromUTF32(codePoints.data(), static_cast<int32_t>(codePoints.size()), made.Put());
    if (result == ZR_R_NO_MEMORY) detail::OutOfMemory();
    if (Failed(result)) return Failure{result};
    return made;
  }

  /// Adopt takes a reference that the caller owns.
  [[nodiscard]] static String Adopt(ZRSTR string) noexcept {
    String made;
    made.string_ = string;
    return made;
  }
  /// Share adds a reference. Null stays null.
  [[nodiscard]] static String Share(ZRSTR string) noexcept {
    return Adopt(string != nullptr ? ZrCopyString(string) : nullptr);
  }

  /// Get lends the string to functions of the C boundary.
  [[nodiscard]] ZRSTR Get() const noexcept { return string_; }
  /// Put releases the string and returns the address for an out-parameter.
  [[nodiscard]] ZRSTR* Put() noexcept {
    Destroy(std::exchange(string_, nullptr));
    return &string_;
  }
  /// Detach gives the reference to the caller, who releases it with ZrDestroyString.
  [[nodiscard]] ZRSTR Detach() noexcept { return std::exchange(string_, nullptr); }

  /// Length returns the number of code units, zero units included.
  [[nodiscard]] uint32_t Length() const noexcept { return ZrStringLen(string_); }
  /// IsEmpty returns whether there are no code units.
  [[nodiscard]] bool IsEmpty() const noexcept { return Length() == 0; }

  /// View lends the units until the String is assigned, moved from or destroyed. A view of a temporary would dangle, so
  /// it does not compile.
  [[nodiscard]] StringView View() const& noexcept {
    return string_ != nullptr ? StringView(string_, Length()) : StringView();
  }
  StringView View() const&& = delete;
  /// The same as View.
  operator StringView() const& noexcept { return View(); }
  operator StringView() const&& = delete;

  /// ToUtf8 copies the text up to its first zero unit. Each lone surrogate becomes U+FFFD. Throws std::bad_alloc when
  /// out of memory.
  [[nodiscard]] std::string ToUtf8() const { return detail::Utf8Of(string_); }

  /// ToUtf32 copies all code points. A lone surrogate fails with ZR_R_INVALID_ARGUMENTS. Throws std::bad_alloc when out
  /// of memory.
  [[nodiscard]] Result<std::u32string> ToUtf32() const {
    const StringView units = View();
    std::size_t pairs = 0;
    for (std::size_t at = 0; at < units.size(); ++at) {
      if ((units[at] & 0xF800) != 0xD800) continue;
      if (units[at] >= 0xDC00 || at + 1 == units.size() || (units[at + 1] & 0xFC00) != 0xDC00) {
        return Failure{ZR_R_INVALID_ARGUMENTS};
      }
      ++pairs;
      ++at;
    }
    char32_t* buffer = nullptr;
    const ZRRESULT result = ZrUTF16toUTF32(units.data(), units.data() + units.size(), 0, &buffer);
    struct Freed {
      char32_t* buffer;
      ~Freed() { std::free(buffer); }
    } const freed{buffer};
    if (Failed(result)) return Failure{result};
    return std::u32string(buffer, units.size() - pairs);
  }

  /// ReferenceCount returns how many references the string has; 0 for null. It may have changed when the call returns.
  [[nodiscard]] uint32_t ReferenceCount() const noexcept { return ZrStringRefCount(string_); }

  /// Lower and Upper return a copy whose units up to the first zero unit are in that letter case, by the rules of the
  /// user's locale. Throws std::bad_alloc when out of memory.
  [[nodiscard]] String Lower() const { return WithCase(ZrWCHARToLower); }
  [[nodiscard]] String Upper() const { return WithCase(ZrWCHARToUpper); }

  /// CompareNoCase returns a negative number, 0 or a positive number: the order of two texts without regard to letter
  /// case, each up to its first zero unit, by the rules of the user's locale.
  [[nodiscard]] int32_t CompareNoCase(const String& other) const noexcept {
    const WCHAR empty[] = {0};  // not static: such a symbol would keep a module from being unloaded
    return ZrWCHARCompareNoCase(string_ != nullptr ? string_ : empty, other.string_ != nullptr ? other.string_ : empty);
  }

  /// Appends. A sum with an empty String shares the units of the other; otherwise it is a new string. Throws
  /// std::bad_alloc when out of memory.
  String& operator+=(const String& other) { return *this = *this + other; }
  friend String operator+(const String& left, const String& right) {
    if (left.string_ == nullptr) return right;
    if (right.string_ == nullptr) return left;
    return Adopt(Checked(ZrAppendStrings(left.string_, right.string_)));
  }

  /// Two strings are equal if their units are.
  friend bool operator==(const String& left, const String& right) noexcept { return Order(left, right) == 0; }
  friend bool operator!=(const String& left, const String& right) noexcept { return Order(left, right) != 0; }
  /// The order is that of the bytes, as ZrCompareString has it: not the order of code units or of a language.
  friend bool operator<(const String& left, const String& right) noexcept { return Order(left, right) < 0; }
  friend bool operator>(const String& left, const String& right) noexcept { return Order(left, right) > 0; }
  friend bool operator<=(const String& left, const String& right) noexcept { return Order(left, right) <= 0; }
  friend bool operator>=(const String& left, const String& right) noexcept { return Order(left, right) >= 0; }
  // Against a literal, a view or a standard string nothing is allocated.
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator==(const String& left, const Text& right) noexcept {
    return left.View() == StringView(right);
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator!=(const String& left, const Text& right) noexcept {
    return left.View() != StringView(right);
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator==(const Text& left, const String& right) noexcept {
    return StringView(left) == right.View();
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator!=(const Text& left, const String& right) noexcept {
    return StringView(left) != right.View();
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator<(const String& left, const Text& right) noexcept {
    return ViewOrder(left.View(), right) < 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator<(const Text& left, const String& right) noexcept {
    return ViewOrder(left, right.View()) < 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator>(const String& left, const Text& right) noexcept {
    return ViewOrder(left.View(), right) > 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator>(const Text& left, const String& right) noexcept {
    return ViewOrder(left, right.View()) > 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator<=(const String& left, const Text& right) noexcept {
    return ViewOrder(left.View(), right) <= 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator<=(const Text& left, const String& right) noexcept {
    return ViewOrder(left, right.View()) <= 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator>=(const String& left, const Text& right) noexcept {
    return ViewOrder(left.View(), right) >= 0;
  }
  template <class Text, class = std::enable_if_t<detail::kIsText<Text>>>
  friend bool operator>=(const Text& left, const String& right) noexcept {
    return ViewOrder(left, right.View()) >= 0;
  }

 private:
  // The export ignores null too, but the compiler sees this test, so that a moved-from String costs no call.
  static void Destroy(ZRSTR string) noexcept {
    if (string != nullptr) ZrDestroyString(string);
  }

  static ZRSTR Checked(ZRSTR made) {
    if (made == nullptr) detail::OutOfMemory();
    return made;
  }

  static ZRSTR Make(StringView units) {
    if (units.empty()) return nullptr;
    if (units.size() > (UINT32_MAX - 2) / sizeof(WCHAR) - 1) detail::OutOfMemory();  // the length has 32 bits
    return Checked(ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR))));
  }

  // ZrCreateZRSTRfromUTF8 reads the byte after a text whose last sequence lacks one byte. A view need not have one.
  static bool EndsInsideSequence(std::string_view bytes) noexcept {
    for (std::size_t back = 1; back <= 3 && back <= bytes.size(); ++back) {
      const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
      if (byte < 0x80) return false;
      if (byte >= 0xC0) return back < (byte < 0xE0 ? 2u : byte < 0xF0 ? 3u : 4u);
    }
    return false;
  }

  String WithCase(ZRRESULT (*change)(WCHAR*) noexcept) const {
    if (string_ == nullptr) return String();
    String copy = Adopt(Checked(ZrDeepCopyString(string_)));
    (void)change(copy.string_);  // the copy is not shared yet
    return copy;
  }

  static int32_t Order(const String& left, const String& right) noexcept {
    int32_t order = 0;
    (void)ZrCompareString(left.string_, right.string_, &order);
    return order;
  }

  // The same order for texts without a handle.
  static int ViewOrder(StringView left, StringView right) noexcept {
    const std::size_t common = left.size() < right.size() ? left.size() : right.size();
    const int order = common != 0 ? std::memcmp(left.data(), right.data(), common * sizeof(WCHAR)) : 0;
    if (order != 0 || left.size() == right.size()) return order;
    return left.size() < right.size() ? -1 : 1;
  }

  ZRSTR string_ = nullptr;
};
static_assert(sizeof(String) == sizeof(ZRSTR), "a String is its handle");

/// TextOf returns the text that is registered for a result code. ZR_R_NOT_EXISTING if the code has
/// no text, such as ZR_R_OK. Throws std::bad_alloc when out of memory.
inline Result<String> TextOf(ZRRESULT code) {
  String text;
  const ZRRESULT result = ZrErrorInfoGetText(static_cast<uint32_t>(code), text.Put());
  if (Failed(result)) return Failure{result};
  return text;
}

/// DescriptionOf returns the description that is registered for a result code. ZR_R_NOT_EXISTING if the code has no
/// text. Throws std::bad_alloc when out of memory.
inline Result<String> DescriptionOf(ZRRESULT code) {
  String text;
  const ZRRESULT result = ZrErrorInfoGetDescription(static_cast<uint32_t>(code), text.Put());
  if (Failed(result)) return Failure{result};
  return text;
}

}  // namespace zr

template <>
struct std::hash<zr::String> {
  std::size_t operator()(const zr::String& string) const noexcept { return std::hash<zr::StringView>()(string.View()); }
};

#endif
