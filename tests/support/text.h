// Literals and strings in the tests' terms.

#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "zrcore/zrcore.h"

#if defined(_WIN32)
#define WIDE_(text) L##text
#else
#define WIDE_(text) u##text
#endif
#define W(text) WIDE_(text)

using Units = std::basic_string<WCHAR>;

inline Units Widened(const std::string& ascii) { return Units(ascii.begin(), ascii.end()); }

inline Units ContentOf(ZRSTR string) {
  EXPECT_EQ(string && ZrStringByteLen(string) % 2 == 0 ? string[ZrStringLen(string)] : 0, 0) << "the terminator";
  return string ? Units(string, ZrStringLen(string)) : Units();
}

// Gives up its string at the end of the statement or scope.
struct Owned {
  ZRSTR string = nullptr;
  explicit Owned(ZRSTR taken = nullptr) : string(taken) {}
  explicit Owned(const Units& units)
      : string(ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)))) {}
  explicit Owned(const std::optional<Units>& units) : Owned() {
    if (units) *this = Owned(*units);
  }
  Owned(Owned&& other) noexcept : string(std::exchange(other.string, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept { return std::swap(string, other.string), *this; }
  ~Owned() { ZrDestroyString(string); }
  operator ZRSTR() const { return string; }
};

// A page without one behind it.
class GuardedPage {
 public:
  GuardedPage() : page_(mmap(nullptr, 2 * kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    EXPECT_EQ(mprotect(static_cast<char*>(page_) + kSize, kSize, PROT_NONE), 0);
  }
  GuardedPage(const GuardedPage&) = delete;
  GuardedPage& operator=(const GuardedPage&) = delete;
  ~GuardedPage() { munmap(page_, 2 * kSize); }

  // The text with its terminator at the end of the page.
  WCHAR* Put(const Units& text) const {
    auto* end = reinterpret_cast<WCHAR*>(static_cast<char*>(page_) + kSize);
    return std::copy_n(text.c_str(), text.size() + 1, end - text.size() - 1) - text.size() - 1;
  }

 private:
  static constexpr std::size_t kSize = 4096;
  void* page_;
};

inline bool operator==(const ZRUUID& left, const ZRUUID& right) {
  uint8_t equal = 0;
  return ZR_SUCCEEDED(ZrCompareUUID(&left, &right, &equal)) && equal == 1;
}
inline std::ostream& operator<<(std::ostream& out, const ZRUUID& uuid) {
  ZRSTR text = nullptr;
  (void)ZrStringFromUUID(&uuid, &text);
  const Owned owned(text);
  for (WCHAR unit : ContentOf(text)) out << static_cast<char>(unit);
  return out;
}
