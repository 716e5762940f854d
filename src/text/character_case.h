// Letter case in the process's default locale: one table of 65536 units for each direction, filled from the locale
// once, on first use.
//
// With a table, mapping a unit is one load; a call into the system would cost as much as all the other work. A loop
// over vectors can't use a table, so each table also says whether the locale maps ASCII in the usual way. If it does,
// vectors of ASCII are mapped by arithmetic. In Turkish it doesn't: the lower case of I is a dotless i.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/locale_text.h"
#include "zrcore/base.h"

class CCaseMap {
 public:
  // Fills the table from `map`. ASCII is plain if exactly the 26 letters from `first` on change, each by `distance`.
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

// The tables of the default locale, and the locale itself. Any thread may ask for a table; the first one fills both.
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

  std::atomic<bool> isRead_{false};  // checked in every call, because std::call_once costs more even when it is done
  std::once_flag once_;
  CharacterLocale locale_ = nullptr;
  CCaseMap lower_, upper_;
};

extern constinit CCharacterCase g_characterCase;

// ZrWCHARCompareNoCase by the given table of lower case. Neither text may be null.
[[nodiscard]] int32_t CompareNoCase(const CCaseMap& lower, const WCHAR* left, const WCHAR* right) noexcept;
