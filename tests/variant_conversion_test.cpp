#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/number_model.h"
#include "tests/support/variant_text.h"

// ---- What converts to what ------------------------------------------------------------------------------------------

// Numbers: N if in range, Y the byte of a boolean as it is, Q cut off without a check, W the word, I the word behind
// it, L the first bytes of a blob, P read from a text, S to text, E their bytes. X isn't supported, A is refused, and
// of '.' the claims tell.
// clang-format off
static constexpr const char* kTargets[] = {
  " BOOL I1 I2 I4 I8 UI1 UI2 UI4 UI8 R4 R8 BYTE WORD DWORD QWORD ", " CHAR32 ", " TIME CY DATETIME ", " STR ", " BLOB ",
  " UUID ", " REF ", " SREF ", " UNKNOWN OPAQUE VARIANT DISPATCH "};
static constexpr struct { const char *sources, *letters; } kDecisions[] = {
  {" I1 I2 I4 UI1 UI2 UI4 BYTE WORD DWORD R4 ", "NNXSEXXXX"},
  {" CHAR32 ",                                  "NNX.EXXXX"},
  {" I8 UI8 QWORD CY ",                         "NNWSEXXXX"},
  {" TIME DATETIME ",                           "NNW.EXXXX"},
  {" R8 ",                                      "NNQSEXXXX"},
  {" BOOL ",                                    "YYXSEXXXX"},
  {" BLOB ",                                    "LLX.=.XXX"},
  {" UUID ",                                    "XXX..=XXX"},
  {" STR ",                                     "P..=....X"},
  {" REF ",                                     "XXX..X=.X"},
  {" SREF ",                                    "XXX..X.=X"},
  {" VARIANT ",                                 "XXAAAAAAX"},
};
// clang-format on

static char LetterFor(uint16_t source, uint16_t target) {
  const TagName *from = NameOf(source), *to = NameOf(target);
  if (source == target) return '=';
  if (to == nullptr || target == ZR_VT_EMPTY) return 'A';
  if (source == ZR_VT_QWORD && target == ZR_VT_DATETIME) return 'I';
  if (source == ZR_VT_STR && target == ZR_VT_CY) return 'P';
  const auto isIn = [](const TagName& tag, const std::string& names) {
    return names.find(Format(" %s ", tag.name)) != std::string::npos;
  };
  std::size_t column = 0;
  while (!isIn(*to, kTargets[column])) ++column;
  for (const auto& row : kDecisions) {
    if (from != nullptr && isIn(*from, row.sources)) return row.letters[column];
  }
  return 'X';
}

static Exact ExactOf(uint16_t tag, const ZRVARIANTVALUE& value) {
  if (tag == ZR_VT_R4) return value.r4;
  if (tag == ZR_VT_R8) return value.r8;
  return std::strtold(DescribePayload(*NameOf(tag), value).c_str(), nullptr);
}

// Checked in binary64, where the greatest numbers of 64 bits are rounded up.
static bool IsInRange(double number, uint16_t target) {
  if (target == ZR_VT_R4) return std::fabs(number) <= double{FLT_MAX};
  if (target == ZR_VT_R8) return std::fabs(number) <= DBL_MAX;
  const TagName& to = *NameOf(target);
  const int bits = 8 * static_cast<int>(to.width) - (to.isSigned ? 1 : 0);
  return number >= (to.isSigned ? -std::ldexp(1.0, bits) : 0.0) &&
         number <= static_cast<double>(std::ldexp(Exact{1}, bits) - 1);
}

static std::string Written(uint16_t tag, const ZRVARIANTVALUE& value) {
  if (tag == ZR_VT_BOOL) return value.boolean != 0 ? "TRUE" : "FALSE";
  const bool isReal = tag == ZR_VT_R4 || tag == ZR_VT_R8;
  return isReal ? PrintedReal(static_cast<double>(ExactOf(tag, value))) : DescribePayload(*NameOf(tag), value);
}

struct Outcome {
  ZRRESULT result;
  std::string left = "EMPTY";
};

// What a destination becomes with this in Value: after a failure an empty one.
static Outcome Left(ZRRESULT result, uint16_t target, uint64_t word) {
  ZRVARIANT left = ZR_VARIANT_INIT;
  if (ZR_SUCCEEDED(result)) left.Type = target;
  left.Value.ui8 = left.Type == ZR_VT_BOOL ? (word & 0xFF) != 0 : word;
  return {result, Describe(left)};
}

static Outcome Model(char letter, const ZRVARIANT& source, uint16_t target) {
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const ZRVARIANTVALUE& from = source.Value;
  const Exact number = IsNumber(tag) ? ExactOf(tag, from) : 0;
  switch (letter) {
    case 'N':
      if (!IsInRange(static_cast<double>(number), target)) return {ZR_R_INVALID_ARGUMENTS};
      [[fallthrough]];
    case 'Y':
      return Left(ZR_R_OK, target, WordOf(target, number));
    case 'Q':
      return Left(ZR_R_OK, target, WordOf(target, from.r8 >= -0x1p63 && from.r8 < 0x1p63 ? number : -0x1p63L));
    case 'W':
      return Left(ZR_R_OK, target, from.ui8);
    case 'I':
      return Left(ZR_R_OK, target, *static_cast<const uint64_t*>(from.address));
    case 'L': {
      const std::string bytes = BytesOf(from.blob) + std::string(8, 0);
      uint64_t word = 0;
      std::memcpy(&word, bytes.data(), NameOf(target)->width);
      return Left(ZR_R_OK, target, word);
    }
    case 'P': {
      const ModelNumber parsed = ModelOfText(ContentOf(from.string), target);
      return Left(parsed.result, target, parsed.word);
    }
    case 'S':
      return {ZR_R_OK, "STR " + Written(tag, from)};
    case 'E': {
      const uint64_t word = tag == ZR_VT_BOOL ? number != 0 : from.ui8;
      OwnedVariant left = Value("BLOB null");
      left.Value.blob = ZrCreateBlob(static_cast<uint32_t>(NameOf(tag)->width), &word);
      return {ZR_R_OK, Describe(left)};
    }
    case '=':
      return {ZR_R_OK, Describe(source)};
    default:
      return {letter == 'X' ? ZR_R_NOT_SUPPORTED : ZR_R_INVALID_ARGUMENTS};
  }
}

// What the letters don't tell, and what the model would get wrong if it were: one row a claim.
static constexpr ZRRESULT kRefused = ZR_R_INVALID_ARGUMENTS;
static constexpr struct {
  const char* source;
  uint16_t target;
  ZRRESULT result;
  const char* left = "EMPTY";
} kClaims[] = {
    // clang-format off
    // Numbers, which are checked before they are cut, and rounded once.
    {"R8 127.5", ZR_VT_I1, kRefused}, {"R8 -0.5", ZR_VT_I1, ZR_R_OK, "I1 0"}, {"R8 0.5", ZR_VT_BOOL, ZR_R_OK, "BOOL 0"},
    {"BOOL 255", ZR_VT_I1, ZR_R_OK, "I1 -1"}, {"R8 nan", ZR_VT_CY, ZR_R_OK, "CY -9223372036854775808"},
    {"UI8 9223372036854776832", ZR_VT_I8, ZR_R_OK, "I8 -9223372036854774784"},
    {"R8 18446744073709551616", ZR_VT_UI8, ZR_R_OK, "UI8 9223372036854775808"},
    {"UI8 9223372586610589697", ZR_VT_R4, ZR_R_OK, "R4 9.22337314e+18"}, {"14 5", 14, ZR_R_OK, "14"},
    // Texts as numbers. A failure isn't normalised; what isn't below zero, but nearly, wraps.
    {"STR 1.5d", ZR_VT_R8, ZR_R_FAILED, "EMPTY 3ff8000000000000"}, {"STR 300", ZR_VT_BOOL, ZR_R_FAILED, "EMPTY ff"},
    {"STR 0x80000000", ZR_VT_R4, ZR_R_FAILED, "EMPTY 4f000000"}, {"STR 0x80000000", ZR_VT_R8, ZR_R_OK, "R8 2147483648"},
    {"STR -0x10", ZR_VT_I4, ZR_R_FAILED}, {"STR -0x10", ZR_VT_R8, ZR_R_OK, "R8 -16"},
    {"STR 0x1", ZR_VT_CY, ZR_R_FAILED}, {"STR zr_TRUE", ZR_VT_R4, ZR_R_OK, "R4 1"}, {"STR TRUE", ZR_VT_CY, ZR_R_FAILED},
    {"STR 1e39", ZR_VT_R4, ZR_R_OK, "R4 inf"}, {"STR -1e-400", ZR_VT_UI8, ZR_R_FAILED, "EMPTY ffffffffffffffff"},
    {"STR 99999999999999999999d", ZR_VT_I8, ZR_R_OK, "I8 9223372036854775807"},
    // Characters and times; the last is one of 25 hours.
    {"STR 65", ZR_VT_CHAR32, ZR_R_OK, "CHAR32 54"}, {"STR \xe9t\xe9", ZR_VT_CHAR32, ZR_R_OK, "CHAR32 233"},
    {"STR null", ZR_VT_CHAR32, ZR_R_OK, "CHAR32 0"}, {"CHAR32 65536", ZR_VT_STR, ZR_R_OK, "STR \\ud800\\udc00"},
    {"CHAR32 1114112", ZR_VT_STR, ZR_R_OK, "STR \\udc00\\udc00"}, {"STR x", ZR_VT_TIME, kRefused},
    {"STR 01:00:00.0000005", ZR_VT_TIME, ZR_R_OK, "TIME 36000000005"}, {"STR x", ZR_VT_DATETIME, kRefused},
    {"STR 04.03.2012 05:06:07.1234567", ZR_VT_DATETIME, ZR_R_OK, "DATETIME 129753111671234567"},
    {"DATETIME 129753111671234567", ZR_VT_STR, ZR_R_OK, "STR 2012-03-04 05:06:07.1234567"},
    {"TIME 900000000000", ZR_VT_STR, ZR_R_OK, "STR 01:00:00.0000000"},
    // Texts of records and blobs.
    {"UUID 01234567-89ab-cdef-0123-456789abcdef", ZR_VT_STR, ZR_R_OK, "STR {01234567-89AB-CDEF-0123-456789ABCDEF}"},
    {"REF 4294967295.2.3.4.5.6", ZR_VT_STR, ZR_R_OK, "STR 4294967295.2.3.4.5.6"}, {"REF null", ZR_VT_STR, kRefused},
    {"SREF 1.2.3.4.5.6 text name", ZR_VT_STR, ZR_R_OK, "STR 1.2.3.4.5.6"}, {"UUID null", ZR_VT_STR, kRefused},
    {"SREF text name", ZR_VT_STR, ZR_R_OK, "STR name"}, {"SREF neither", ZR_VT_STR, kRefused},
    {"SREF null", ZR_VT_STR, kRefused}, {"BLOB null", ZR_VT_STR, ZR_R_OK, "STR null"},
    {"BLOB ", ZR_VT_STR, ZR_R_OK, "STR null"}, {"BLOB 41004200", ZR_VT_STR, ZR_R_OK, "STR AB"},
    // Bytes of records and texts.
    {"UUID 01234567-89ab-cdef-0123-456789abcdef", ZR_VT_BLOB, ZR_R_OK, "BLOB 67452301ab89efcd0123456789abcdef"},
    {"REF 1.2.3.4.5.256", ZR_VT_BLOB, ZR_R_OK, "BLOB 010000000200000003000000040000000500000000010000"},
    {"SREF 1.2.3.4.5.256 text a", ZR_VT_BLOB, ZR_R_OK, "BLOB 010000000200000003000000040000000500000000010000"},
    {"SREF text a", ZR_VT_BLOB, ZR_R_OK, "BLOB 6100"}, {"STR A\xe9", ZR_VT_BLOB, ZR_R_OK, "BLOB 4100e900"},
    {"STR null", ZR_VT_BLOB, ZR_R_OK, "BLOB null"}, {"SREF text ", ZR_VT_BLOB, ZR_R_OK, "BLOB null"},
    {"UUID null", ZR_VT_BLOB, kRefused}, {"REF null", ZR_VT_BLOB, kRefused}, {"SREF neither", ZR_VT_BLOB, kRefused},
    // Records out of blobs, texts and each other. A UUID is read in UTF-8.
    {"BLOB 00112233445566778899aabbccddeeff00", ZR_VT_UUID, ZR_R_OK, "UUID {33221100-5544-7766-8899-AABBCCDDEEFF}"},
    {"BLOB 41", ZR_VT_UUID, ZR_R_OK, "UUID {00000041-0000-0000-0000-000000000000}"},
    {"STR {01234567-89ab-cdef-0123-456789abcdef}", ZR_VT_UUID, ZR_R_OK, "UUID {01234567-89AB-CDEF-0123-456789ABCDEF}"},
    {"STR 01234567-89ab-cdef-0123-456789abcdef and a tail that is far longer than any other one", ZR_VT_UUID, ZR_R_OK,
     "UUID {01234567-89AB-CDEF-0123-456789ABCDEF}"}, {"BLOB ", ZR_VT_UUID, ZR_R_FAILED},
    {"STR 01234567-89ab-cdef-0123-456789abcdeg", ZR_VT_UUID, kRefused},
    {"STR 01234567\xe9-89ab-cdef-0123-456789abcdef", ZR_VT_UUID, kRefused},
    {"STR 01234567-89ab-cdef-0123-456789abcdef\xe9", ZR_VT_UUID, ZR_R_OK,
     "UUID {01234567-89AB-CDEF-0123-456789ABCDEF}"}, {"BLOB null", ZR_VT_UUID, ZR_R_FAILED},
    {"STR  1.2.3.4.5.6 ", ZR_VT_REF, ZR_R_OK, "REF 1.2.3.4.5.6"}, {"STR 1.2.3.4.5", ZR_VT_REF, kRefused},
    {"SREF text 1.2.3.4.5.6", ZR_VT_REF, ZR_R_OK, "REF 1.2.3.4.5.6"}, {"SREF text name", ZR_VT_REF, kRefused},
    {"SREF 1.2.3.4.5.6 text name", ZR_VT_REF, ZR_R_OK, "REF 1.2.3.4.5.6"}, {"SREF neither", ZR_VT_REF, kRefused},
    {"STR name", ZR_VT_SREF, ZR_R_OK, "SREF text name"}, {"STR 1.2.3.4.5.6", ZR_VT_SREF, ZR_R_OK, "SREF 1.2.3.4.5.6"},
    {"REF 1.2.3.4.5.6", ZR_VT_SREF, ZR_R_OK, "SREF 1.2.3.4.5.6"}, {"REF null", ZR_VT_SREF, kRefused},
    // clang-format on
};

// ---- Every source against every target ------------------------------------------------------------------------------

// Apart, where the destination holds something to release and where it doesn't, and in place.
static void CheckConversion(const std::string& text, uint16_t target, const Outcome* claim = nullptr) {
  SCOPED_TRACE(text + " to " + std::to_string(target));
  static const int64_t kCount = 123456789012345678;
  OwnedVariant source = Value(text), copy, owner = Before(), number = Value("I4 7");
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const bool isByRef = (source.Type & ZR_VT_BYREF) != 0, isRefused = isByRef && tag != target;
  const char letter = isRefused ? 'X' : LetterFor(tag, target);
  if (letter == '.' && claim == nullptr) return;
  if (letter == 'I') source.Value.ui8 = reinterpret_cast<uintptr_t>(&kCount);
  // Marker words are copied with numbers alone, and these bits of the tag word mean nothing.
  source.Reserved2 = 7;
  if (claim == nullptr && (text.size() + target) % 3 == 0) source.Type |= 0x9000;
  (void)ZrVariantCopy(&copy, &source);
  const std::string before = Describe(source);
  const Outcome expected = claim != nullptr ? *claim : Model(letter, copy, target);
  for (OwnedVariant* apart : {&owner, &number}) {
    const std::string left = isRefused ? Describe(*apart) : expected.left;
    ASSERT_EQ(ZrVariantChangeType(apart, &source, 0x12345678, target), expected.result);
    if (tag == ZR_VT_REF && target == ZR_VT_SREF && expected.result == kRefused) {
      // A failure that leaves a record behind, which by contract nobody owns: somebody has to.
      ASSERT_EQ(apart->Type, ZR_VT_EMPTY);
      ASSERT_NE(apart->Value.sref, nullptr);
      ZrDestroySREF(std::exchange(apart->Value.sref, nullptr));
    }
    EXPECT_EQ(Describe(*apart), left);
    EXPECT_EQ(Describe(source), before) << "a source is only read";
  }
  EXPECT_EQ(ZrStringRefCount(g_before), isRefused ? 2u : 1u) << "what the destination held is released";
  // In place a failure leaves what a copy is.
  const std::string inPlace = tag == target || isRefused   ? before
                              : ZR_FAILED(expected.result) ? Describe(copy)
                                                           : expected.left;
  ASSERT_EQ(ZrVariantChangeType(&source, &source, 0, target), expected.result);
  EXPECT_EQ(Describe(source), inPlace);
}

// Those of the claims, others, and of each type of number those at the bounds of the others.
static std::vector<std::string> Sources() {
  std::vector<std::string> sources = Split(
      "EMPTY|EMPTY 5|UNKNOWN object|DISPATCH object|VARIANT 9|BLOB 00|BLOB 818283|BLOB 000000000000f87f|"
      "BLOB 001122334455667788|STR |STR 12f|STR -1");
  for (const auto& row : kClaims) sources.push_back(row.source);
  static const std::vector<std::string> kIntegers = Split(
      "0|1|-1|2|65|127|128|-128|-129|255|256|32767|32768|-32768|-32769|55296|65535|65536|1114111|1114112|16777217|"
      "2147483647|2147483648|-2147483648|-2147483649|4294967295|4294967296|9007199254740993|131277024001234567|"
      "9223372036854775295|9223372036854775296|-9223372036854775808|9223371761976868863|9223372036854776832|"
      "9223372036854776833|18446744073709550592|18446744073709550591");
  static const std::vector<std::string> kReals = Split(
      "0|-0.0|0.5|-0.5|-1|1.5|127|127.5|-128|-128.5|255|255.0001|0.1|5e-7|65535.5|2147483647|2147483647.5|"
      "-2147483648.5|4294967295|4294967295.5|0x1p63|-0x1p63|0x1.fffffffffffffp62|0x1.0000000000001p63|"
      "-0x1.0000000000001p63|0x1.fffffep63|0x1p64|0x1.0000000000001p64|0x1.fffffep127|-0x1.fffffep127|"
      "0x1.fffffe0000001p127|1e300|-inf|nan");
  for (uint16_t tag = 0; tag <= 60; ++tag) {
    sources.push_back(std::to_string(tag) + "+5000 2147221520");
    if (NameOf(tag) == nullptr) sources.push_back(std::to_string(tag) + " 5");
    if (!IsNumber(tag)) continue;
    for (const std::string& number : tag == ZR_VT_R4 || tag == ZR_VT_R8 ? kReals : kIntegers) {
      sources.push_back(NameOf(tag)->name + (" " + number));
    }
  }
  return sources;
}

TEST(VariantConversion, EverySourceAndTarget) {
  std::vector<uint16_t> targets = {0xFFF, 0x1004, 0x2004, 0x4004, 0x8004, 0x1032, 0x8000, 0x4000 | ZR_VT_SREF};
  for (uint16_t target = 0; target <= 60; ++target) targets.push_back(target);
  const Owned empty(ZrCopyString(nullptr));
  const uint32_t empties = ZrStringRefCount(empty), objects = g_object.references;
  for (const std::string& text : Sources()) {
    for (const uint16_t target : targets) {
      CheckConversion(text, target);
      if (HasFailure()) return;
    }
  }
  for (const auto& row : kClaims) {
    const Outcome claim{row.result, row.left};
    CheckConversion(row.source, row.target, &claim);
  }
  EXPECT_EQ(g_object.references, objects);
  EXPECT_EQ(ZrStringRefCount(empty), empties);
  OwnedVariant variant = Before();
  EXPECT_EQ(ZrVariantChangeType(&variant, nullptr, 0, ZR_VT_STR), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantChangeType(nullptr, &variant, 0, ZR_VT_STR), ZR_R_INVALID_POINTER);
  EXPECT_EQ(Describe(variant), "STR before");
}

// ---- Texts and numbers by the C library -----------------------------------------------------------------------------

TEST(VariantConversion, TextsAsTheCLibraryReadsThem) {
  const std::vector<std::string> heads = Split("||-| -| +|\t\n\v\f\r|0x|-0x");
  const std::vector<std::string> pieces = Split(
      "0|1|9|12|-|+|.|e|E|d|D|f|F| |\t\n\v\f\r|x|0x|0X|p1|,|ZR_|zr_|TRUE|TrUe|FALSE|fAlSe|inf|INFINITY|nan|NaN(1)|(|"
      "127|128|129|255|256|32767|32768|32769|65535|65536|2147483647|2147483648|2147483649|4294967295|4294967296|"
      "80000000|7fffffff|ffffffffffffffff|9223372036854775807|9223372036854775808|18446744073709551615|"
      "18446744073709551616|1e400|e-400|3.4028236e38|16777217|4.9e-324|1.7976931348623159e308|"
      "0000000000000000000000000000000|9999999999999999999999999999999|\xb2");
  std::vector<uint16_t> targets;
  for (const TagName& row : kTagNames) {
    if (LetterFor(ZR_VT_STR, row.tag) == 'P') targets.push_back(row.tag);
  }
  std::mt19937 random(12);
  for (int round = 0; round < 15000 && !HasFailure(); ++round) {
    std::string text = heads[random() % heads.size()];
    for (std::size_t count = random() % 4; count > 0; --count) text += pieces[random() % pieces.size()];
    if (round % 16 == 0) text.insert(random() % (text.size() + 1), 1, '\0');
    if (round % 16 == 1) text.insert(random() % (text.size() + 1), 300, '7');
    CheckConversion("STR " + text, targets[random() % targets.size()]);
  }
}

static void CheckRealText(uint16_t tag, double real) {
  const std::string printed = PrintedReal(real);
  wchar_t wide[400];
  const Units expected(wide, wide + std::mbstowcs(wide, printed.c_str(), std::size(wide)));
  OwnedVariant number;
  number.Type = tag;
  number.Value.ui8 = WordOf(tag, real);
  ASSERT_EQ(ZrVariantChangeType(&number, &number, 0, ZR_VT_STR), ZR_R_OK);
  ASSERT_EQ(ContentOf(number.Value.string), expected) << printed;
  ASSERT_EQ(ZrVariantChangeType(&number, &number, 0, ZR_VT_R8), ZR_R_OK) << printed;
  ASSERT_EQ(number.Value.ui8, WordOf(ZR_VT_R8, std::strtod(printed.c_str(), nullptr))) << printed;
}

// In the user's locale, for the point is the locale's.
TEST(VariantConversion, RealsAsTheCLibraryWritesAndReadsThem) {
  std::setlocale(LC_ALL, "");
  for (double real :
       {0.0, 0.5e-6, 1.5e-6, 2.5e-6, 0.9999995, 0x1p-27, 0x1p-20, 0x1p44, 0x1p53, 1e300, 5e-324, 1.0 / 0.0}) {
    for (double near : {std::nextafter(real, 0.0), real, std::nextafter(real, HUGE_VAL)}) {
      CheckRealText(ZR_VT_R8, near);
      CheckRealText(ZR_VT_R8, -near);
    }
  }
  std::mt19937_64 random(11);
  for (int round = 0; round < 10000 && !HasFatalFailure(); ++round) {
    const uint64_t bits = random();
    CheckRealText(ZR_VT_R8, std::bit_cast<double>(bits));
    const double ordinary = std::ldexp(static_cast<double>(static_cast<int64_t>(bits)), -static_cast<int>(bits % 90));
    CheckRealText(ZR_VT_R8, ordinary);
    CheckRealText(ZR_VT_R4, double{static_cast<float>(ordinary)});
    CheckRealText(ZR_VT_R8, static_cast<double>(bits >> (13 + bits % 40)) / 128);  // half a millionth behind the last
  }
  // A point that isn't the locale's, and a number that ends ahead of the locale's, which may be longer than one byte.
  wchar_t point = 0;
  std::mbtowc(&point, std::localeconv()->decimal_point, MB_CUR_MAX);
  OwnedVariant source = Value("STR 1.5"), number;
  EXPECT_EQ(ZrVariantChangeType(&number, &source, 0, ZR_VT_R8), point == L'.' ? ZR_R_OK : ZR_R_FAILED);
  EXPECT_EQ(number.Value.r8, point == L'.' ? 1.5 : 1.0);
  source = Value("STR null");
  source.Value.string = ZrCopyString(Owned(Units(W(" 1f")) + static_cast<WCHAR>(point) + W("5")));
  EXPECT_EQ(ZrVariantChangeType(&number, &source, 0, ZR_VT_R8), ZR_R_OK);
  EXPECT_EQ(number.Value.r8, 1.0);
  std::setlocale(LC_ALL, "C");
}

#if defined(__linux__)
// The same in processes whose locale has a comma, or a point that is no single byte, made by a tool that other systems
// have not got.
TEST(VariantConversion, RealsInOtherLocales) {
  if (!std::filesystem::exists("/usr/share/i18n/locales/ps_AF")) GTEST_SKIP() << "needs the package locales";
  std::string folder = testing::TempDir() + "zrcore-locale-XXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  for (const std::string name : {"de_DE", "ps_AF"}) {
    const std::string locale = name + ".UTF-8";
    // (A locale may have warnings, which localedef answers with 1. The C library leaks the path of locales.)
    (void)!std::system(
        ("localedef -c -i " + name + " -f UTF-8 --no-archive " + folder + "/" + locale + " 2>&1").c_str());
    const std::string environment = "ASAN_OPTIONS=detect_leaks=0 LC_ALL=" + locale + " LOCPATH=" + folder;
    EXPECT_EQ(std::system((environment + " " + self + " --gtest_filter=VariantConversion.RealsAs* >&2").c_str()), 0);
  }
  std::filesystem::remove_all(folder);
}
#endif
