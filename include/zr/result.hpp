// Results of the C++ layer: a value or a failure code, an exception for code that prefers one, and the way back from
// exceptions to codes.
//
//     zr::Result<double> number = value.To<double>();
//     if (!number) return number.Code();      // no exception
//     Use(*number);
//     Use(value.To<double>().Value());        // throws zr::Error on failure
//
// A code of zero or above is a success. Positive codes are kept: Code() returns 1, for example, if not every element of
// an array could be converted.
//
// Without exceptions (-fno-exceptions) everything works except Value(), which does not exist then. Out of memory, which
// the layer otherwise reports as std::bad_alloc, terminates the process.

#ifndef ZR_RESULT_HPP
#define ZR_RESULT_HPP

#include <cassert>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "zrcore/base.h"
#include "zrcore/datetime.h"
#include "zrcore/error_info.h"
#include "zrcore/unicode.h"

#if defined(__cpp_exceptions) || defined(_CPPUNWIND)
#define ZR_EXCEPTIONS 1
#else
#define ZR_EXCEPTIONS 0
#endif

namespace zr {

/// Failed returns whether a result code is a failure. The sign alone decides.
[[nodiscard]] constexpr bool Failed(ZRRESULT code) noexcept { return code < 0; }

namespace detail {

// Reports out of memory: throws std::bad_alloc, or terminates the process if exceptions are disabled.
[[noreturn]] inline void OutOfMemory() {
#if ZR_EXCEPTIONS
  throw std::bad_alloc();
#else
  std::abort();
#endif
}

// Copies a string as UTF-8, up to its first zero unit. A lone surrogate becomes U+FFFD.
inline std::string Utf8Of(ZRSTR string) {
  const int32_t size = ZrZRSTRtoUTF8(string, nullptr, 0);  // counts the terminator; 0 for null
  std::string bytes(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
  if (size > 0) (void)ZrZRSTRtoUTF8(string, &bytes[0], size);
  bytes.pop_back();
  return bytes;
}

inline std::string ErrorText(ZRRESULT code) {
  std::string text;
  struct Registered {
    ZRSTR string = nullptr;
    ~Registered() { ZrDestroyString(string); }
  } registered;
  if (!Failed(ZrErrorInfoGetText(static_cast<uint32_t>(code), &registered.string))) {
    text = Utf8Of(registered.string) + " ";
  }
  text += "(0x";
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += "0123456789ABCDEF"[static_cast<uint32_t>(code) >> shift & 0xF];
  }
  return text + ")";
}

}  // namespace detail

/// Error is what Result::Value throws: a result code, and the text that is registered for it (error_info.h).
class Error : public std::runtime_error {
 public:
  /// Makes an exception for a failure code. Throws std::bad_alloc when out of memory.
  explicit Error(ZRRESULT code) : std::runtime_error(detail::ErrorText(code)), code_(code) {}

  /// Code returns the result code, which is negative.
  [[nodiscard]] ZRRESULT Code() const noexcept { return code_; }

 private:
  ZRRESULT code_;
};

/// Failure is a failure code that converts to every Result.
struct Failure {
  ZRRESULT code;  ///< negative
};

/// Result is a value of type T with a success code, or a failure code.
///
/// T must have a default constructor, which makes the value of a failure. A Result that is dropped causes a warning.
///
/// A code is a number: if T is a number or bool, `return code;` makes a success with the code as its value. Return
/// Failure{code}.
template <class T>
class [[nodiscard]] Result {
 public:
  /// Makes a failure. `failure.code` must be negative.
  Result(Failure failure) noexcept(std::is_nothrow_default_constructible_v<T>) : code_(failure.code) {
    assert(Failed(code_));
  }
  /// Makes a success. `code` must be zero or above.
  Result(const T& value, ZRRESULT code = ZR_R_OK) noexcept(std::is_nothrow_copy_constructible_v<T>)
      : value_(value), code_(code) {
    assert(!Failed(code_));
  }
  // A separate overload, because C++17 moves a returned local variable only into a parameter that is a T&&.
  Result(T&& value, ZRRESULT code = ZR_R_OK) noexcept(std::is_nothrow_move_constructible_v<T>)
      : value_(std::move(value)), code_(code) {
    assert(!Failed(code_));
  }

  /// Code returns the result code; a positive success is kept.
  [[nodiscard]] ZRRESULT Code() const noexcept { return code_; }
  /// Returns whether this is a success; never whether the value is true.
  [[nodiscard]] explicit operator bool() const noexcept { return !Failed(code_); }

#if ZR_EXCEPTIONS
  /// Value returns the value, or throws Error after a failure. It does not exist without exceptions.
  [[nodiscard]] T& Value() & {
    Check();
    return value_;
  }
  [[nodiscard]] const T& Value() const& {
    Check();
    return value_;
  }
  [[nodiscard]] T Value() && {
    Check();
    return std::move(value_);
  }
#endif

  /// ValueOr returns the value, or `other` after a failure.
  [[nodiscard]] T ValueOr(T other) const& { return *this ? value_ : std::move(other); }
  [[nodiscard]] T ValueOr(T other) && { return *this ? std::move(value_) : std::move(other); }

  /// The value without a check: after a failure, a T made by the default constructor. On a temporary Result, `*` moves
  /// the value out, so `for (x : *array.Lend())` is safe.
  [[nodiscard]] T& operator*() & noexcept { return value_; }
  [[nodiscard]] const T& operator*() const& noexcept { return value_; }
  [[nodiscard]] T operator*() && { return std::move(value_); }
  [[nodiscard]] T* operator->() noexcept { return &value_; }
  [[nodiscard]] const T* operator->() const noexcept { return &value_; }

 private:
#if ZR_EXCEPTIONS
  void Check() const {
    if (Failed(code_)) throw Error(code_);
  }
#endif

  T value_{};
  ZRRESULT code_;
};

/// Result<void> is a result code that must not be dropped.
template <>
class [[nodiscard]] Result<void> {
 public:
  /// Makes a success with ZR_R_OK.
  Result() noexcept = default;
  /// Makes a failure.
  Result(Failure failure) noexcept : code_(failure.code) {}
  /// Makes a success or a failure, by the sign of the code.
  explicit Result(ZRRESULT code) noexcept : code_(code) {}

  /// Code returns the result code; a positive success is kept.
  [[nodiscard]] ZRRESULT Code() const noexcept { return code_; }
  /// Returns whether this is a success.
  [[nodiscard]] explicit operator bool() const noexcept { return !Failed(code_); }
#if ZR_EXCEPTIONS
  /// Throws Error if this is a failure. It does not exist without exceptions.
  void Value() const {
    if (Failed(code_)) throw Error(code_);
  }
#endif

 private:
  ZRRESULT code_ = ZR_R_OK;
};

/// Guard calls `body` and turns whatever it throws into a result code.
///
/// Use it where C++ code is called through the boundary, because an exception must not leave a module. `body` returns a
/// ZRRESULT, a Result<void> or nothing. Object and ZR_MODULE use it.
///
/// @return
///   - what `body` returned, or ZR_R_OK if it returns nothing
///   - Error::Code, for an Error
///   - the code of a CZrException
///   - ZR_R_NO_MEMORY, for std::bad_alloc
///   - ZR_R_UNEXPECTED, for every other exception
template <class Body>
[[nodiscard]] ZRRESULT Guard(Body&& body) noexcept {
  const auto call = [&]() -> ZRRESULT {
    using Returned = decltype(body());
    if constexpr (std::is_void_v<Returned>) {
      body();
      return ZR_R_OK;
    } else if constexpr (std::is_same_v<Returned, ZRRESULT>) {
      return body();
    } else {
      return body().Code();
    }
  };
#if ZR_EXCEPTIONS
  try {
    return call();
  } catch (const Error& error) {
    return error.Code();
  } catch (const CZrException& exception) {
    return exception.code;
  } catch (const std::bad_alloc&) {
    return ZR_R_NO_MEMORY;
  } catch (...) {
    return ZR_R_UNEXPECTED;
  }
#else
  return call();
#endif
}

/// RegisterError registers a text and a description for a result code of a module. Error::what and TextOf return them.
/// They stay registered until the process ends.
///
/// @param text         reads a zero-terminated text.
/// @param description  the same; null means none.
/// @return
///   - ZR_R_OK                  the code has a text now.
///   - ZR_R_ALREADY_REGISTERED  the code had a text already, which stays.
///   - another code             as ZrErrorInfoRegister (error_info.h).
/// @throws std::bad_alloc when out of memory.
///
/// Any thread, any time.
inline Result<void> RegisterError(ZRRESULT code, const WCHAR* text, const WCHAR* description = nullptr) {
  return Result<void>(ZrErrorInfoRegister(static_cast<uint32_t>(code), text, description));
}

}  // namespace zr

#endif
