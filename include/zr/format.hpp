// std::formatter for the values of the C++ layer, for programs in C++20 whose standard library has the header `format`.
// Elsewhere this header declares nothing. zr.hpp does not include it.
//
//     #include <zr/format.hpp>
//     #include <zr/zr.hpp>
//     std::string line = std::format("{:>10}: {}", zr::String(u"Mars"), zr::TimeSpan::Hours(2));
//
// It formats the same types with the same texts as ostream.hpp. The format options are those of a string.

#ifndef ZR_FORMAT_HPP
#define ZR_FORMAT_HPP

#if __has_include(<format>)
#include <format>
#endif

#if defined(__cpp_lib_format)

#include <string_view>

#include "zr/text_form.hpp"

/// Formats a value as its text form in UTF-8, with width, fill, alignment and precision as for a string.
///
/// Throws std::bad_alloc when out of memory.
template <class T>
requires zr::detail::kHasTextForm<T>
struct std::formatter<T, char> : std::formatter<std::string_view, char> {
  template <class Context>
  auto format(const T& value, Context& context) const {
    return std::formatter<std::string_view, char>::format(zr::detail::TextForm(value), context);
  }
};

#endif

#endif
