// fmt::formatter for the values of the C++ layer, for programs that use the library {fmt}, version 8 or later. zr.hpp
// does not include this header.
//
//     #include <zr/fmt.hpp>
//     #include <zr/zr.hpp>
//     fmt::print("{:>10}: {}\n", zr::String(u"Mars"), zr::TimeSpan::Hours(2));
//
// It formats the same types with the same texts as ostream.hpp. The format options are those of a string.

#ifndef ZR_FMT_HPP
#define ZR_FMT_HPP

#include <fmt/format.h>

#include <string_view>
#include <type_traits>

#include "zr/text_form.hpp"

/// Formats a value as its text form in UTF-8, with width, fill, alignment and precision as for a string.
///
/// Throws std::bad_alloc when out of memory.
template <class T>
struct fmt::formatter<T, char, std::enable_if_t<zr::detail::kHasTextForm<T>>> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const T& value, Context& context) const {
    return fmt::formatter<std::string_view>::format(zr::detail::TextForm(value), context);
  }
};

#endif
