// operator<< for the values of the C++ layer. zr.hpp does not include this header.
//
//     #include <zr/ostream.hpp>
//     #include <zr/zr.hpp>
//     std::cout << zr::String(u"Mars") << ": " << zr::TimeSpan::Hours(2) << '\n';     // Mars: 02:00:00.0000000
//
// It prints String, Uuid, Ref, Sref, DateTime, TimeSpan and Variant as UTF-8. The text is that of ToString; for a
// String, its units up to the first zero unit, with U+FFFD for each lone surrogate. A Variant prints what
// Variant::To<String> returns: a blob, for example, prints its bytes as code units. If the value does not convert to a
// text, the type is printed instead, such as `<EMPTY>`, `<UNKNOWN>` or `<R8 ARRAY>`.
//
// No other type can be printed, not even if it converts to a Variant.

#ifndef ZR_OSTREAM_HPP
#define ZR_OSTREAM_HPP

#include <ostream>
#include <type_traits>

#include "zr/text_form.hpp"

namespace zr {

/// operator<< prints the text form of a value. The stream's width, fill and adjustment apply, and count bytes.
///
/// Throws std::bad_alloc when out of memory. One allocation or more per call.
template <class T, class = std::enable_if_t<detail::kHasTextForm<T>>>
std::ostream& operator<<(std::ostream& out, const T& value) {
  return out << detail::TextForm(value);
}

}  // namespace zr

#endif
