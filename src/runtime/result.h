// Result codes inside the library: how they are tested, and how exceptions become codes.
//
//     if (const ZRRESULT result = Load(); Failed(result)) return result;
//     return Guarded(ZR_R_UNEXPECTED, [&] { return CallForeignCode(); });   // an exception -> ZR_R_UNEXPECTED

#pragma once

#include <utility>

#include "zrcore/base.h"

// Only the sign shows a failure. A comparison with ZR_R_OK would be wrong, because positive results are successes too.
[[nodiscard]] constexpr bool Failed(ZRRESULT result) noexcept { return result < 0; }

// Runs the body and returns its result. Any exception, std::bad_alloc included, becomes the code `onException`.
//
// The guards and holders of the body are destroyed before the catch block runs. No lock of the body is held then.
template <class Body>
[[nodiscard]] ZRRESULT Guarded(ZRRESULT onException, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return onException;
  }
}
