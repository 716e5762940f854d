// How results read inside the library: by the sign, and with exceptions turned into codes in one function.

#pragma once

#include <utility>

#include "zrcore/base.h"

// The sign alone tells failure: positive successes exist.
[[nodiscard]] constexpr bool Failed(ZRRESULT result) noexcept { return result < 0; }

// Turns whatever escapes the body into one code. The body's locks and holders have let go by then.
template <class Body>
[[nodiscard]] ZRRESULT Guarded(ZRRESULT onException, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return onException;
  }
}
