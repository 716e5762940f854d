// One page of memory, followed by a page that must not be touched. A read past the end of a text that ends with the
// first page is a fault.

#pragma once

#include <algorithm>
#include <memory>

#include "tests/support/system.h"
#include "tests/support/text.h"

class GuardedPage {
 public:
  // Copies the text, with its terminator, to the end of the page. Returns the copy.
  WCHAR* Put(const Units& text) const {
    auto* end = reinterpret_cast<WCHAR*>(page_.get() + kPageSize);
    return std::copy_n(text.c_str(), text.size() + 1, end - text.size() - 1) - text.size() - 1;
  }

 private:
  const std::unique_ptr<char, void (*)(char*)> page_{ReserveGuardedPage(), ReleaseGuardedPage};
};
