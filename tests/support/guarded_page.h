// A page without one behind it.

#pragma once

#include <algorithm>
#include <memory>

#include "tests/support/system.h"
#include "tests/support/text.h"

class GuardedPage {
 public:
  // The text with its terminator at the end of the page.
  WCHAR* Put(const Units& text) const {
    auto* end = reinterpret_cast<WCHAR*>(page_.get() + kPageSize);
    return std::copy_n(text.c_str(), text.size() + 1, end - text.size() - 1) - text.size() - 1;
  }

 private:
  const std::unique_ptr<char, void (*)(char*)> page_{ReserveGuardedPage(), ReleaseGuardedPage};
};
