// Tests the values of the C++ layer where they decide something of their own: texts, tags, checks of indices, the
// access flag and result codes. The exports that they call are the oracle for conversions.

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <mutex>
#include <new>
#include <span>
#include <thread>
#include <vector>

#include "tests/support/race.h"
#include "tests/support/variant_text.h"
#include "zr/zr.hpp"

static const ZRRESULT kRejected = ZR_R_INVALID_ARGUMENTS, kUnsupported = ZR_R_NOT_SUPPORTED;

// ---- Texts ----------------------------------------------------------------------------------------------------------

TEST(String, ReadsUtf8) {
  using namespace std::string_literals;
  static const struct {
    std::string bytes;
    ZRRESULT code;
    Units units = {};
  } kTexts[] = {
      {"", ZR_R_OK, W("")},
      {"Mars", ZR_R_OK, W("Mars")},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", ZR_R_OK, W("\u00E9\u20AC\U0001F600")},
      {"a\0b"s, ZR_R_OK, Units(W("a\0b"), 3)},
      {"\0"s, ZR_R_OK, Units(1, 0)},
      {"\xC1\x81", ZR_R_OK, W("A")},  // an overlong form
      {"\xED\xA0\x80", ZR_R_OK, Units(1, static_cast<WCHAR>(0xD800))},
      {"\xF0\x80\x81\x81", ZR_R_FAILED},
      {"\x80", kRejected},
      {"\xC3(", kRejected},
      {"a\xC3", kRejected},  // the last sequence is truncated
      {"\xE2\x82", kRejected},
      {"\xE2", kRejected},
      {"\xF0\x9F\x98", kRejected},
      {"\xF0\x9F", kRejected},
      {"\xF0", kRejected},
      {"\xC3\xA9\x80", kRejected},
  };
  for (const auto& [bytes, code, units] : kTexts) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    const std::vector<char> exact(bytes.begin(), bytes.end());  // nothing may be read past its end
    const zr::Result<zr::String> string = zr::String::FromUtf8({exact.data(), exact.size()});
    EXPECT_RESULT(string.Code(), code);
    EXPECT_TRUE(*string == units);
    EXPECT_LE(string->ReferenceCount(), 1u);  // returned without a copy
  }
}

TEST(String, WritesUtf8AndCodePoints) {
  const zr::String text = W("\u00E9\U0001F600z");
  EXPECT_EQ(text.ToUtf8(), "\xC3\xA9\xF0\x9F\x98\x80z");
  EXPECT_EQ(text.ToUtf32().Value(), U"\u00E9\U0001F600z");
  EXPECT_TRUE(zr::String::FromUtf32(U"\u00E9\U0001F600z").Value() == text);
  const zr::String zeros = zr::StringView(W("a\0b"), 3);
  EXPECT_EQ(zeros.ToUtf8(), "a");
  EXPECT_EQ(zeros.ToUtf32()->size(), 3u);
  EXPECT_EQ(zr::String().ToUtf8() + zr::String(W("")).ToUtf8(), "");
  EXPECT_TRUE(zr::String().ToUtf32()->empty() && zr::String::FromUtf32({})->IsEmpty());
  const WCHAR high = static_cast<WCHAR>(0xD83D), low = static_cast<WCHAR>(0xDE00);
  for (const Units& lone : {Units{high}, Units{low}, Units{low, high}, Units{high, high, low}, Units{high, 'a'}}) {
    EXPECT_RESULT(zr::String(lone).ToUtf32().Code(), kRejected);
    EXPECT_EQ(zr::String(lone).ToUtf8().rfind("\xEF\xBF\xBD", 0), 0u);
  }
}

TEST(String, ComparesWithEveryKindOfText) {
  const zr::String text = W("Mars");
  const Units units = W("Mars"), other = W("Moon");
  EXPECT_TRUE(text == zr::String(units) && text == units && text == zr::StringView(units) && text == W("Mars"));
  EXPECT_TRUE(units == text && zr::StringView(units) == text && W("Mars") == text && other.c_str() != text);
  EXPECT_TRUE(text != other && other != text && text != zr::StringView(other) && zr::StringView(other) != text);
  EXPECT_TRUE(zr::String() == zr::String(W("")) && zr::String() == W("") && zr::String(other.c_str()) > text);
  EXPECT_TRUE(zr::String(W("\u0100")) < zr::String(W("\u00FF")));  // the order of bytes
  for (const WCHAR* literal : {W(""), W("M"), W("Mars"), W("Mars1"), W("\u014D"), W("\u4D00")}) {
    const zr::String right = literal;
    const zr::StringView view = literal;
    const Units standard = literal;
    EXPECT_EQ(text < right, text < view && text < standard && text < literal);
    EXPECT_EQ(view > text && standard > text && literal > text, text < right);
    EXPECT_EQ(text > right, !(text <= view) && text > literal && view < text && !(standard >= text));
    EXPECT_EQ(text <= right, text <= literal && view >= text);
  }
  EXPECT_EQ(std::hash<zr::String>()(text), std::hash<zr::String>()(zr::String(units)));
  EXPECT_EQ(std::hash<zr::String>()(zr::String()), std::hash<zr::String>()(zr::String(W(""))));
}

TEST(String, SharesWhereItCan) {
  const zr::String text = W("Mars");
  zr::String sum = text + zr::String();
  EXPECT_EQ(sum.Get(), text.Get());
  sum += sum;
  EXPECT_TRUE(sum == W("MarsMars") && text == W("Mars"));
  const zr::String copy = text;
  EXPECT_TRUE(copy.Upper() == W("MARS") && copy.Lower() == W("mars") && text == W("Mars"));
  EXPECT_EQ(text.CompareNoCase(W("mARS")), 0);
  EXPECT_EQ(SignOf(text.CompareNoCase(zr::String())), 1);
  EXPECT_TRUE(zr::String().Upper().IsEmpty());
  EXPECT_EQ(zr::String(static_cast<const WCHAR*>(nullptr)).Get(), nullptr);
}

TEST(Blob, ChecksItsBounds) {
  zr::Blob blob = {1, 2, 3};
  EXPECT_EQ(blob.At(2).Value(), 3);
  EXPECT_RESULT(blob.At(3).Code(), kRejected);
  EXPECT_RESULT(zr::Blob().At(0).Code(), kRejected);
  EXPECT_RESULT(zr::Blob().Append("x", 1).Code(), kRejected);
  const zr::Blob copy = blob;
  EXPECT_TRUE(blob.Append(blob) && blob.Remove(0, 1) && blob.Insert(0, "\x09", 1) && blob.Seek(1));
  EXPECT_TRUE(blob.Write("\x08", 1));
  EXPECT_EQ(blob.Position().Value(), 2u);
  EXPECT_TRUE(blob == (zr::Blob{9, 8, 3, 1, 2, 3}) && copy == (zr::Blob{1, 2, 3}) && blob != copy);
  EXPECT_TRUE(zr::Blob() == zr::Blob(nullptr, 0) && zr::Blob() != copy && zr::Blob(nullptr, 2) == (zr::Blob{0, 0}));
  uint8_t bytes[2] = {};
  EXPECT_TRUE(copy.Read(1, bytes, 2) && bytes[0] == 2 && bytes[1] == 3);
}

TEST(Uuid, ReadsAndWritesTexts) {
  constexpr zr::Uuid kSample("31AD0869-8ac8-4D25-A11C-A887BE515257");
  static_assert(kSample.data1 == 0x31AD0869 && kSample.data4[0] == 0xA1 && kSample.data4[7] == 0x57 &&
                !kSample.IsNil());
  EXPECT_EQ(kSample.ToString().ToUtf8(), "{31AD0869-8AC8-4D25-A11C-A887BE515257}");
  const zr::Uuid parsed = zr::Uuid::Parse(kSample.ToString().ToUtf8()).Value();
  EXPECT_EQ(parsed, kSample);
  const std::string longText = "\"" + kSample.ToString().ToUtf8() + " and more";
  for (std::size_t size = 38; size <= longText.size(); ++size) {
    const std::vector<char> exact(longText.begin(), longText.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(zr::Uuid::Parse(std::string_view(exact.data(), size)).Value(), kSample);
  }
  EXPECT_EQ(std::hash<zr::Uuid>()(parsed), std::hash<zr::Uuid>()(kSample));
  EXPECT_TRUE(zr::Uuid() < kSample && kSample > zr::Uuid() && !(kSample < kSample) && zr::Uuid::Generate() != kSample);
  for (const std::string& text : {std::string(), std::string("{31AD0869"), std::string(36, 'x')}) {
    EXPECT_RESULT(zr::Uuid::Parse(text).Code(), kRejected);
    EXPECT_RESULT(zr::Uuid::Parse(std::string_view(text)).Code(), kRejected);
  }
}

TEST(Ref, ReadsAndWritesTexts) {
  const zr::Ref ref = zr::Ref::Parse(W("1.2.3.4.5.4294967295")).Value();
  EXPECT_TRUE(ref == zr::Ref(1, 2, 3, 4, 5, 0xFFFFFFFF) && ref != zr::Ref() && zr::Ref::Compare(ref, ref) == 0);
  EXPECT_EQ(ref.ToString().ToUtf8(), "1.2.3.4.5.4294967295");
  for (const WCHAR* text : {W(""), W("1.2.3.4.5"), W("Mars")}) EXPECT_FALSE(zr::Ref::Parse(text));
  EXPECT_FALSE(zr::Ref::Parse(zr::String()));
  const zr::Sref byNumbers = zr::Sref::Parse(W("1.2.3.4.5.6")), byText = zr::Sref::Parse(W("Mars"));
  EXPECT_TRUE(byNumbers == zr::Sref(zr::Ref(1, 2, 3, 4, 5, 6)) && byNumbers != byText && byText != zr::Sref());
  EXPECT_EQ(byText.ToString().ToUtf8() + zr::Sref().ToString().ToUtf8(), "Mars");
  EXPECT_EQ(zr::Sref::Parse(zr::String()).Get(), nullptr);
}

TEST(Time, ReadsWritesAndCounts) {
  const zr::DateTime start = zr::DateTime::Parse(W("2012-03-04 05:06:07.1234567")).Value();
  EXPECT_EQ((start + zr::TimeSpan::Days(1)).ToString().ToUtf8(), "2012-03-05 05:06:07.1234567");
  EXPECT_EQ(start.ToDateString().ToUtf8() + " " + start.ToTimeString().ToUtf8(), start.ToString().ToUtf8());
  EXPECT_TRUE(start + zr::TimeSpan::Hours(2) - start == zr::TimeSpan::Minutes(120) && start > zr::DateTime());
  EXPECT_EQ(zr::DateTime(start.Fields()), start);
  EXPECT_TRUE(zr::TimeSpan(INT64_MAX) + zr::TimeSpan(1) == zr::TimeSpan(INT64_MIN));
  EXPECT_EQ(zr::TimeSpan::Parse(W("1.02:03:04.0000005"))->Ticks(), zr::TimeSpan::Hours(26).Ticks() + 1840000005);
  EXPECT_EQ(zr::TimeSpan::ParseTimeOfDay(W("02:03:04")).Value(), zr::TimeSpan::Seconds(7384));
  EXPECT_EQ((zr::TimeSpan::Hours(3) + zr::TimeSpan::Milliseconds(1)).ToString().ToUtf8(), "03:00:00.0010000");
  EXPECT_FALSE(zr::TimeSpan::Parse(W("words")));
  EXPECT_FALSE(zr::DateTime::Parse(zr::String()));
  EXPECT_EQ(zr::DateTime::FromTimeT(1330837567).ToTimeT().Value(), 1330837567);
  const zr::DateTime tooEarly = zr::DateTime::Parse(W("1950-01-01")).Value();  // the export throws
  EXPECT_LT(tooEarly.ToTimeT().Code(), 0);
}

// ---- Variants -------------------------------------------------------------------------------------------------------

TEST(Variant, TheTypeOfTheValueDecidesTheTag) {
  const auto object = zr::Ptr<IZrDispatch>::Share(&g_object);
  // clang-format off
  const std::pair<zr::Variant, int> kVariants[] = {
      {{}, ZR_VT_EMPTY}, {true, ZR_VT_BOOL}, {int8_t{1}, ZR_VT_I1}, {int16_t{1}, ZR_VT_I2}, {1, ZR_VT_I4},
      {1LL, ZR_VT_I8}, {1L, sizeof(long) == 8 ? ZR_VT_I8 : ZR_VT_I4}, {uint8_t{1}, ZR_VT_UI1}, {uint16_t{1}, ZR_VT_UI2},
      {1u, ZR_VT_UI4}, {1ULL, ZR_VT_UI8}, {1.0f, ZR_VT_R4}, {1.0, ZR_VT_R8}, {U'1', ZR_VT_CHAR32},
      {zr::DateTime(1), ZR_VT_DATETIME}, {zr::TimeSpan(1), ZR_VT_TIME}, {zr::Currency{1}, ZR_VT_CY},
      {W("text"), ZR_VT_STR}, {zr::StringView(W("text")), ZR_VT_STR}, {Units(W("text")), ZR_VT_STR},
      {zr::String(W("text")), ZR_VT_STR},
      {zr::Blob{1}, ZR_VT_BLOB}, {zr::Uuid::Generate(), ZR_VT_UUID}, {zr::Ref(), ZR_VT_REF}, {zr::Sref(), ZR_VT_SREF},
      {zr::Ptr<IZrUnknown>(object), ZR_VT_UNKNOWN}, {object, ZR_VT_UNKNOWN}, {zr::AnyArray(), ZR_VT_EMPTY},
      {zr::AnyArray(zr::Array<double>(2)), ZR_VT_R8 | ZR_VT_ARRAY}, {zr::Array<bool>(2), ZR_VT_BOOL | ZR_VT_ARRAY},
  };
  // clang-format on
  for (const auto& [variant, type] : kVariants) EXPECT_EQ(TagWordName(variant.Type()), TagWordName(unsigned(type)));
  EXPECT_EQ(g_object.references, 3u);
}

template <class T>
static void CheckConversion(const zr::Variant& source) {
  const uint16_t tag = zr::ValueTraits<T>::kTag;
  SCOPED_TRACE(Describe(*source.Get()) + " to " + TagWordName(tag));
  zr::Variant own, expected;
  ZRRESULT code = ZrVariantCopyInd(own.Put(), source.Get());
  if (code == ZR_R_OK && own.IsArray()) {
    code = kUnsupported;
  } else if (code == ZR_R_OK) {
    code = ZrVariantChangeType(expected.Put(), own.Get(), 0, tag);
  }
  const zr::Result<T> converted = source.To<T>();
  EXPECT_RESULT(converted.Code(), code);
  EXPECT_EQ(source.Is<T>(), source.Type() == tag);
  if (!converted) return;
  EXPECT_EQ(Describe(*zr::Variant(*converted).Get()), Describe(*expected.Get()));
}
template <class... T>
static void CheckConversions(const zr::Variant& source) {
  (CheckConversion<T>(source), ...);
}

TEST(Variant, ConvertsAsTheLibraryDoes) {
  ZRSTR text = const_cast<ZRSTR>(W("12"));
  zr::Variant inner = 7, array = zr::Array<zr::String>{W("1"), W("2")};
  // clang-format off
  std::vector<zr::Variant> sources = {{}, true, -1, 200, 70000u, 1LL << 40, ~0ULL, 0.5f, -2.75, 1e300, U'A',
      zr::DateTime(129753111671234567), zr::TimeSpan::Hours(2), zr::Currency{-5}, W("12"), W("-1"), W("1.5"),
      W("TRUE"), W("words"), W(""), W("1.2.3.4.5.6"), W("{31AD0869-8AC8-4D25-A11C-A887BE515257}"), zr::String(),
      zr::Blob{1, 2, 3}, zr::Blob(), zr::Uuid::Generate(), zr::Ref(1, 2, 3, 4, 5, 6), zr::Sref::Parse(W("Mars")),
      zr::Sref(zr::Ref(1, 2, 3, 4, 5, 6)), zr::Sref(), zr::Ptr<IZrUnknown>::Share(&g_object), array, zr::Array<int>{3}};
  // clang-format on
  const auto addReference = [&](uint16_t type, const void* address) {
    ZRVARIANT record = ZR_VARIANT_INIT;
    record.Type = static_cast<uint16_t>(type | ZR_VT_BYREF);
    record.Value.address = const_cast<void*>(address);
    sources.push_back(zr::Variant::Adopt(record));
  };
  zr::Variant string = W("12");
  text = string.Get()->Value.string;
  addReference(ZR_VT_STR, &text);
  addReference(ZR_VT_I4, &inner.Get()->Value);
  addReference(ZR_VT_VARIANT, inner.Get());
  addReference(ZR_VT_VARIANT, array.Get());
  addReference(ZR_VT_STR | ZR_VT_ARRAY, &array.Get()->Value);
  for (const zr::Variant& source : sources) {
    CheckConversions<bool, int8_t, int16_t, int32_t, int64_t, uint8_t, uint16_t, uint32_t, uint64_t, float, double,
                     char32_t, zr::DateTime, zr::TimeSpan, zr::Currency, zr::String, zr::Blob, zr::Uuid, zr::Ref,
                     zr::Sref, zr::Ptr<IZrUnknown>>(source);
  }
}

TEST(Variant, KeepsItsValueAfterAFailure) {
  zr::Variant text = W("words");
  EXPECT_RESULT(text.ChangeType(ZR_VT_I4).Code(), ZR_R_FAILED);
  EXPECT_EQ(text, zr::Variant(W("words")));
  EXPECT_TRUE(text != zr::Variant(1) && zr::Variant(1) != zr::Variant(1u) && !text.IsContentEmpty());
  EXPECT_RESULT(text.ToArray().Code(), kUnsupported);
  EXPECT_RESULT(text.TakeArray().Code(), kUnsupported);
  EXPECT_RESULT(zr::Variant::CopyOf({999, 0, 0, 0, {}}).Code(), kRejected);
}

TEST(Variant, GivesItsArray) {
  const zr::Array<double> doubles = {1, 2};
  zr::Variant variant = doubles;
  ZRSAFEARRAY held = variant.Get()->Value.array;
  EXPECT_NE(held, doubles.Get());
  EXPECT_TRUE(variant.ToArray().Value() == doubles.Any());
  EXPECT_RESULT(zr::Array<int>::From(variant).Code(), kUnsupported);
  EXPECT_EQ(zr::Array<double>::From(std::move(variant))->Get(), held);
  EXPECT_TRUE(variant.IsEmpty());

  variant = W("text");
  ZRSTR text = variant.Get()->Value.string;
  EXPECT_EQ(std::move(variant).To<zr::String>()->Get(), text);  // moved out
  EXPECT_TRUE(variant.IsEmpty());
}

// ---- Arrays ---------------------------------------------------------------------------------------------------------

template <class T>
static void CheckElements(const T& first, const T& second) {
  SCOPED_TRACE(TagWordName(zr::Array<T>::kTag));
  zr::Array<T> array = {first, second};
  EXPECT_TRUE(array.At(0).Value() == first && array.At(1).Value() == second && !(first == second));
  zr::Array<T> copy = array;
  EXPECT_TRUE(array.Set(second, 0));
  EXPECT_TRUE(array.At(0).Value() == second && copy.At(0).Value() == first && copy != array);
  EXPECT_TRUE(zr::Array<T>::From(array.Any()).Value() == array && zr::Array<T>::From(array).Value() == array);
  EXPECT_RESULT((zr::Array<std::conditional_t<std::is_same_v<T, int>, char32_t, int>>::From(array.Any()).Code()),
                kUnsupported);
  EXPECT_EQ(array.Lend().Value().size(), 2u);
}

TEST(Array, HasElementsOfEveryType) {
  CheckElements(false, true);
  CheckElements<int8_t>(-1, 2);
  CheckElements<int16_t>(-1, 2);
  CheckElements(-1, 2);
  CheckElements<int64_t>(-1, 2);
  CheckElements<uint8_t>(1, 255);
  CheckElements<uint16_t>(1, 2);
  CheckElements<uint32_t>(1, 2);
  CheckElements<uint64_t>(1, 2);
  CheckElements(0.5f, 1.5f);
  CheckElements(0.5, 1.5);
  CheckElements(U'a', U'b');
  CheckElements(zr::DateTime(1), zr::DateTime(2));
  CheckElements(zr::TimeSpan(1), zr::TimeSpan(2));
  CheckElements(zr::Currency{1}, zr::Currency{2});
  CheckElements(zr::Uuid(), zr::Uuid::Generate());
  CheckElements<zr::String>(W("Mars"), W("Moon"));
  CheckElements(zr::Blob{1, 2}, zr::Blob{3});
  CheckElements(zr::Ref(), zr::Ref(1, 2, 3, 4, 5, 6));
  CheckElements(zr::Sref::Parse(W("Mars")), zr::Sref(zr::Ref(1, 2, 3, 4, 5, 6)));
  CheckElements<zr::Variant>(1, zr::Array<zr::String>{W("Mars")});
  CheckElements(zr::Ptr<IZrUnknown>(), zr::Ptr<IZrUnknown>::Share(&g_object));
  EXPECT_EQ(g_object.references, 0u);
  EXPECT_RESULT(zr::Array<zr::Sref>(1).Set(zr::Sref(), 0).Code(), kRejected);
}

TEST(Array, ChecksEachIndex) {
  zr::Array<int> array = zr::Array<int>({zr::Bound{2, -1}, zr::Bound{3, 10}});
  for (int row = -1; row < 1; ++row) {
    for (uint32_t column = 10; column < 13; ++column) EXPECT_TRUE(array.Set(row * 100 + int(column), row, column));
  }
  EXPECT_EQ(array.At(-1, 12).Value(), -88);
  EXPECT_EQ(array.At(int64_t{-1}, std::size_t{12}).Value(), -88);
  ExpectEach(kRejected, {array.At(-2, 12).Code(), array.At(1, 10).Code(), array.At(0, 13).Code(), array.At(0, 9).Code(),
                         array.At(0).Code(), array.At(0, 10, 0).Code(), array.At(0, 10 + (int64_t{1} << 32)).Code(),
                         array.At(INT64_MIN, 10).Code(), array.Set(1, 0, 13).Code(), array.Set(1, 0).Code()});
  EXPECT_TRUE(array.Redim({zr::Bound{6, 0}}));
  EXPECT_EQ(array.At(2).Value(), -88);
  EXPECT_EQ(array.Bounds()[0].elementCount, 6u);
  zr::Array<int> null;
  EXPECT_RESULT(null.At(0).Code(), ZR_R_INVALID_POINTER);
  EXPECT_RESULT(null.Lend().Code(), ZR_R_INVALID_POINTER);
  EXPECT_TRUE(null.Size() == 0 && null.Bounds().count == 0 && null == zr::Array<int>() && null != zr::Array<int>(0));
  EXPECT_RESULT(zr::Array<int>(0).At(0).Code(), kRejected);
  zr::Array<int8_t> wrapped({{65537, 0}, {65536, 0}});  // the storage has 65536 elements
  ExpectEach(kRejected, {wrapped.At(16384, 0).Code(), wrapped.Set(1, 16384, 0).Code()});
}

TEST(Array, LendsItsElementsOnce) {
  zr::Array<double> array = {1, 2}, other = {3};
  auto lent = array.Lend().Value();
  const std::span<double> span = lent;
  span[1] = 5;
  ExpectEach(ZR_R_INVALID_OBJECT_STATE, {array.At(0).Code(), array.Set(1, 0).Code(), array.Lend().Code()});
  lent = other.Lend().Value();  // returns the elements of the first array at once
  EXPECT_EQ(array.At(1).Value(), 5);
  EXPECT_RESULT(other.Lend().Code(), ZR_R_INVALID_OBJECT_STATE);
  auto moved = std::move(lent);
  EXPECT_TRUE(moved[0] == 3 && lent.empty());
  EXPECT_RESULT(other.At(0).Code(), ZR_R_INVALID_OBJECT_STATE);
  moved = {};
  double sum = 0;
  for (const double element : *std::as_const(array).Lend()) sum += element;
  EXPECT_EQ(sum, 6);
  zr::Array<double> empty(0);
  EXPECT_TRUE(array.Lend() && other.Lend() && empty.Lend()->empty());
  try {
    auto again = array.Lend().Value();
    throw std::exception();
  } catch (const std::exception&) {
    EXPECT_TRUE(array.Lend());
  }
}

TEST(Array, ConvertsItsElements) {
  const zr::Array<zr::String> texts = {W("1"), W("words")};
  const auto numbers = texts.To<int>();
  EXPECT_EQ(numbers.Code(), 1);
  EXPECT_TRUE(numbers.Value() == (zr::Array<int>{1, 0}));
  EXPECT_RESULT(texts.To<zr::Variant>().Code(), ZR_R_OK);
  EXPECT_RESULT(zr::Array<int>().To<double>().Code(), ZR_R_INVALID_POINTER);
}

// ---- Results and locks ----------------------------------------------------------------------------------------------

TEST(Result, HasAValueOrACode) {
  const zr::Result<bool> no = false;
  zr::Result<zr::String> failed = zr::Failure{ZR_R_FAILED};
  EXPECT_TRUE(no && !*no && !failed && zr::Result<void>() && zr::Result<int>(5, 1));
  EXPECT_EQ(zr::Result<int>(5, 1).Code(), 1);
  EXPECT_TRUE(failed.ValueOr(W("other")) == W("other") && zr::Result<zr::String>(W("a")).ValueOr(W("other")) == W("a"));
  EXPECT_THROW((void)failed.Value(), zr::Error);
  EXPECT_THROW(zr::Result<void>(ZR_R_FAILED).Value(), zr::Error);
  try {
    (void)std::as_const(failed).Value();
  } catch (const zr::Error& error) {
    EXPECT_RESULT(error.Code(), ZR_R_FAILED);
    EXPECT_STREQ(error.what(), "ZR_R_FAILED (0x80000000)");
  }
  EXPECT_STREQ(zr::Error(-1).what(), "(0xFFFFFFFF)");
  EXPECT_TRUE(zr::TextOf(ZR_R_FAILED).Value() == W("ZR_R_FAILED") && !zr::DescriptionOf(ZR_R_FAILED)->IsEmpty());
  EXPECT_RESULT(zr::TextOf(-1).Code(), ZR_R_NOT_EXISTING);
  EXPECT_RESULT(zr::RegisterError(ZR_R_FAILED, W("x")).Code(), ZR_R_ALREADY_REGISTERED);
}

TEST(Result, GuardTurnsEverythingIntoACode) {
  EXPECT_RESULT(zr::Guard([] {}), ZR_R_OK);
  EXPECT_RESULT(zr::Guard([] { return ZRRESULT{7}; }), 7);
  EXPECT_RESULT(zr::Guard([] { return zr::Result<void>(ZR_R_TIMEOUT); }), ZR_R_TIMEOUT);
  EXPECT_RESULT(zr::Guard([] { throw zr::Error(ZR_R_CANCELLED); }), ZR_R_CANCELLED);
  EXPECT_RESULT(zr::Guard([] { (void)zr::Variant(W("x")).To<int>().Value(); }), ZR_R_FAILED);
  EXPECT_RESULT(zr::Guard([] { throw CZrException{ZR_R_EXISTS}; }), ZR_R_EXISTS);
  EXPECT_RESULT(zr::Guard([] { throw std::bad_alloc(); }), ZR_R_NO_MEMORY);
  EXPECT_RESULT(zr::Guard([] { throw std::bad_array_new_length(); }), ZR_R_NO_MEMORY);
  EXPECT_RESULT(zr::Guard([] { throw std::runtime_error(""); }), ZR_R_UNEXPECTED);
  EXPECT_RESULT(zr::Guard([] { throw 1; }), ZR_R_UNEXPECTED);
}

TEST(Lock, ExcludesOtherThreads) {
  zr::Lock lock;
  int count = 0;
  Race(1000, [&](int) {
    const std::lock_guard hold(lock);
    ++count;
  });
  EXPECT_EQ(count, 1000 * kThreads);
  const std::lock_guard hold(lock);
  std::thread([&] { EXPECT_FALSE(lock.try_lock()); }).join();
  ASSERT_TRUE(lock.try_lock());  // recursive
  lock.unlock();
}
