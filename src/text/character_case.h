// Letter case in the process's default locale: a table for each direction, read from the locale once, on first use.
//
// One unit is one look into a table, where a call into the system would cost as much as the rest of the work. For whole
// vectors of units even the tables are too slow, so the tables know whether the locale treats ASCII letters as most do.
// (Where the lower case of I is not i, it doesn't.)

#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/locale_text.h"
#include "zrcore/base.h"

class CCaseMap {
 public:
  // Reads all units through `map`. ASCII is plain if exactly the 26 letters from `first` on change, by `distance`.
  template <class Map>
  void Read(Map map, WCHAR first, int distance) {
    for (std::size_t unit = 0; unit < units_.size(); ++unit) units_[unit] = map(static_cast<WCHAR>(unit));
    isAsciiPlain_ = units_[0] == 0;
    for (std::size_t unit = 0; unit < 0x80; ++unit) {
      const bool changes = unit >= first && unit < first + std::size_t{26};
      const int expected = static_cast<int>(unit) + (changes ? distance : 0);
      isAsciiPlain_ = isAsciiPlain_ && units_[unit] == expected;
    }
  }

  WCHAR operator[](WCHAR unit) const noexcept { return units_[unit]; }
  bool IsAsciiPlain() const noexcept { return isAsciiPlain_; }

 private:
  std::array<WCHAR, 0x10000> units_{};
  bool isAsciiPlain_ = false;
};

class CCharacterCase {
 public:
  constexpr CCharacterCase() = default;
  CCharacterCase(const CCharacterCase&) = delete;
  CCharacterCase& operator=(const CCharacterCase&) = delete;
  ~CCharacterCase() { PlatformCloseCharacterLocale(locale_); }

  const CCaseMap& Lower() { return Ready().lower_; }
  const CCaseMap& Upper() { return Ready().upper_; }

 private:
  CCharacterCase& Ready() {
    if (!isRead_.load(std::memory_order_acquire)) std::call_once(once_, [this] { Read(); });
    return *this;
  }
  void Read();

  std::atomic<bool> isRead_{false};  // what is looked at in every call, since the flag itself costs more
  std::once_flag once_;
  CharacterLocale locale_ = nullptr;
  CCaseMap lower_, upper_;
};

extern constinit CCharacterCase g_characterCase;

// ZrWCHARCompareNoCase by the given table; both texts are there.
[[nodiscard]] int32_t CompareNoCase(const CCaseMap& lower, const WCHAR* left, const WCHAR* right) noexcept;
