// The headers that print values: ostream.hpp and, where {fmt} is installed, fmt.hpp.

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "tests/support/units.h"
#include "zr/format.hpp"
#include "zr/ostream.hpp"
#include "zr/zr.hpp"
#if defined(ZR_TEST_FMT)
#include "zr/fmt.hpp"
#endif

// Expects a value to be printed in the same way by every header.
template <class T>
static void ExpectText(const T& value, const std::string& expected) {
  std::ostringstream out;
  out << value;
  EXPECT_EQ(out.str(), expected);
#if defined(ZR_TEST_FMT)
  EXPECT_EQ(fmt::format("{}", value), expected);
#endif
#if defined(__cpp_lib_format)
  EXPECT_EQ(std::format("{}", value), expected);
#endif
}

TEST(TextOutput, PrintsValuesAsUtf8) {
  ExpectText(zr::String(), "");
  ExpectText(zr::String(W("D\u00E9lie \u2126")), "D\xC3\xA9lie \xE2\x84\xA6");
  const WCHAR lone[] = {'a', 0xD800, 'b', 0};
  ExpectText(zr::String(lone),
             "a\xEF\xBF\xBD"
             "b");
  ExpectText(zr::Uuid("01234567-89ab-cdef-0123-456789abcdef"), "{01234567-89AB-CDEF-0123-456789ABCDEF}");
  ExpectText(zr::Ref(1, 2, 3, 4, 5, 4294967295), "1.2.3.4.5.4294967295");
  ExpectText(zr::Sref(), "");
  ExpectText(zr::Sref::Parse(W("Mars")), "Mars");
  ExpectText(zr::DateTime::Parse(W("2012-03-04 05:06:07.0000008")).Value(), "2012-03-04 05:06:07.0000008");
  ExpectText(zr::TimeSpan::Hours(2) + zr::TimeSpan(3), "02:00:00.0000003");
}

TEST(TextOutput, PrintsVariantsAsTheLibraryConvertsThem) {
  ExpectText(zr::Variant(W("text")), "text");
  ExpectText(zr::Variant(true), "TRUE");
  ExpectText(zr::Variant(-5), "-5");
  ExpectText(zr::Variant(1.5), "1.500000");
  ExpectText(zr::Variant(zr::Ref(1, 2, 3, 4, 5, 6)), "1.2.3.4.5.6");
  double number = 2.5;
  ZRVARIANT record = ZR_VARIANT_INIT;
  record.Type = ZR_VT_R8 | ZR_VT_BYREF;
  record.Value.address = &number;
  ExpectText(zr::Variant::Adopt(record), "2.500000");
}

TEST(TextOutput, PrintsTheTypeOfVariantsWithoutText) {
  ExpectText(zr::Variant(), "<EMPTY>");
  ExpectText(zr::Variant(zr::Ptr<IZrUnknown>()), "<UNKNOWN>");
  const zr::Variant array(zr::Array<double>{1, 2});
  ExpectText(array, "<R8 ARRAY>");
  ExpectText(zr::Variant(zr::Array<zr::String>{W("a")}), "<STR ARRAY>");
  ZRVARIANT referred = *array.Get(), record = ZR_VARIANT_INIT;
  record.Type = ZR_VT_VARIANT | ZR_VT_BYREF;
  record.Value.address = &referred;
  ExpectText(zr::Variant::Adopt(record), "<VARIANT BYREF>");
  record.Type = 14;
  ExpectText(zr::Variant::Adopt(record), "<14>");
}

TEST(TextOutput, PadsLikeStrings) {
  std::ostringstream out;
  out << std::setw(8) << std::left << std::setfill('.') << zr::String(W("Mars")) << zr::Variant(7) << '|';
  EXPECT_EQ(out.str(), "Mars....7|");
#if defined(ZR_TEST_FMT)
  EXPECT_EQ(fmt::format("{:>8}|{:.<6}|{:.2}", zr::String(W("D\u00E9lie")), zr::Variant(7), zr::String(W("Mars"))),
            "   D\xC3\xA9lie|7.....|Ma");
#endif
}

// What converts to a Variant must not be copied into one and printed.
template <class T, class = void>
struct Prints : std::false_type {};
template <class T>
struct Prints<T, std::void_t<decltype(std::declval<std::ostream&>() << std::declval<const T&>())>> : std::true_type {};
static_assert(Prints<zr::Variant>::value && !Prints<zr::Blob>::value && !Prints<zr::AnyArray>::value &&
              !Prints<zr::Currency>::value && !Prints<zr::Result<zr::String>>::value);
