// One page of memory between two pages that must not be touched. An access past the end of a text that ends with the
// page is a fault, and so is an access before a text that begins with it.

#pragma once

#include <algorithm>
#include <memory>

#include "tests/support/system.h"
#include "tests/support/text.h"

class GuardedPage {
 public:
  // Returns the place of `count` elements at the end of the page, or at its beginning.
  template <class T>
  T* Place(std::size_t count, bool isAtEnd) const {
    return reinterpret_cast<T*>(isAtEnd ? page_.get() + kPageSize - count * sizeof(T) : page_.get());
  }

  // Copies the text, with its terminator, to the end of the page. Returns the copy.
  WCHAR* Put(const Units& text) const {
    WCHAR* const copy = Place<WCHAR>(text.size() + 1, true);
    std::copy_n(text.c_str(), text.size() + 1, copy);
    return copy;
  }

 private:
  const std::unique_ptr<char, void (*)(char*)> page_{ReserveGuardedPage(), ReleaseGuardedPage};
};
