#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/number_model.h"
#include "tests/support/variant_text.h"

// ---- The decision table once more, and a slow model behind each letter
// -------------------------------------------------

// clang-format off
static constexpr uint16_t kTargets[] = {
  ZR_VT_EMPTY, ZR_VT_BOOL, ZR_VT_I1, ZR_VT_I2, ZR_VT_I4, ZR_VT_I8, ZR_VT_UI1, ZR_VT_UI2, ZR_VT_UI4, ZR_VT_UI8,
  ZR_VT_R4, ZR_VT_R8, ZR_VT_TIME, ZR_VT_CY, ZR_VT_DATETIME, ZR_VT_BYTE, ZR_VT_WORD, ZR_VT_DWORD, ZR_VT_QWORD,
  ZR_VT_BLOB, ZR_VT_UNKNOWN, ZR_VT_OPAQUE, ZR_VT_CHAR32, ZR_VT_VARIANT, ZR_VT_UUID, ZR_VT_STR, ZR_VT_REF, ZR_VT_SREF,
  ZR_VT_DISPATCH};

static constexpr struct { uint16_t source; const char* letters; } kDecisions[] = {
  //               -  ?1248 U248 fd TCD BWDQ bu?c vgsrSd
  {ZR_VT_EMPTY,    "= XXXXX XXXX XX XXX XXXX XXXX XXXXXX"},
  {ZR_VT_BOOL,     "A =YYYY YYYY YY XXX YYYY EXXY XXSXXX"},
  {ZR_VT_I1,       "A N=NNN NNNN NN XXX NNNN EXXN XXSXXX"},
  {ZR_VT_I2,       "A NN=NN NNNN NN XXX NNNN EXXN XXSXXX"},
  {ZR_VT_I4,       "A NNN=N NNNN NN XXX NNNN EXXN XXSXXX"},
  {ZR_VT_I8,       "A NNNN= NNNN NN WWW NNNN EXXN XXSXXX"},
  {ZR_VT_UI1,      "A NNNNN =NNN NN XXX NNNN EXXN XXSXXX"},
  {ZR_VT_UI2,      "A NNNNN N=NN NN XXX NNNN EXXN XXSXXX"},
  {ZR_VT_UI4,      "A NNNNN NN=N NN XXX NNNN EXXN XXSXXX"},
  {ZR_VT_UI8,      "A NNNNN NNN= NN WWW NNNN EXXN XXSXXX"},
  {ZR_VT_R4,       "A NNNNN NNNN =N XXX NNNN EXXN XXSXXX"},
  {ZR_VT_R8,       "A NNNNN NNNN N= QQQ NNNN EXXN XXSXXX"},
  {ZR_VT_TIME,     "A NNNNN NNNN NN =WW NNNN EXXN XXSXXX"},
  {ZR_VT_CY,       "A NNNNN NNNN NN W=W NNNN EXXN XXSXXX"},
  {ZR_VT_DATETIME, "A NNNNN NNNN NN WW= NNNN EXXN XXSXXX"},
  {ZR_VT_BYTE,     "A NNNNN NNNN NN XXX =NNN EXXN XXSXXX"},
  {ZR_VT_WORD,     "A NNNNN NNNN NN XXX N=NN EXXN XXSXXX"},
  {ZR_VT_DWORD,    "A NNNNN NNNN NN XXX NN=N EXXN XXSXXX"},
  {ZR_VT_QWORD,    "A NNNNN NNNN NN WWI NNN= EXXN XXSXXX"},
  {ZR_VT_BLOB,     "A LLLLL LLLL LL XXX LLLL =XXL XUSXXX"},
  {ZR_VT_UNKNOWN,  "A XXXXX XXXX XX XXX XXXX X=XX XXXXXX"},
  {ZR_VT_OPAQUE,   "A XXXXX XXXX XX XXX XXXX XX=X XXXXXX"},
  {ZR_VT_CHAR32,   "A NNNNN NNNN NN XXX NNNN EXX= XXSXXX"},
  {ZR_VT_VARIANT,  "A XXXXX XXXX XX AAA XXXX AXXX =AAAAX"},
  {ZR_VT_UUID,     "A XXXXX XXXX XX XXX XXXX EXXX X=SXXX"},
  {ZR_VT_STR,      "A PPPPP PPPP PP TDT PPPP EXXC XU=FGX"},
  {ZR_VT_REF,      "A XXXXX XXXX XX XXX XXXX EXXX XXS=GX"},
  {ZR_VT_SREF,     "A XXXXX XXXX XX XXX XXXX EXXX XXSF=X"},
  {ZR_VT_DISPATCH, "A XXXXX XXXX XX XXX XXXX XXXX XXXXX="},
};
// clang-format on

static char LetterFor(uint16_t source, uint16_t target) {
  if (source == target) return '=';
  std::size_t column = 0;
  while (column < std::size(kTargets) && kTargets[column] != target) ++column;
  if (column == std::size(kTargets)) return 'A';
  for (const auto& row : kDecisions) {
    if (row.source != source) continue;
    for (const char* letter = row.letters;; ++letter) {
      if (*letter != ' ' && column-- == 0) return *letter;
    }
  }
  return target == ZR_VT_EMPTY ? 'A' : 'X';  // a source without a tag
}

// Wide enough to hold any 64-bit integer and any double as they are.
using Exact = long double;
static_assert(std::numeric_limits<Exact>::digits >= 64);

static Exact ExactOf(const ZRVARIANT& v) {
  switch (v.Type & ZR_VT_TYPEMASK) {
    case ZR_VT_R4:
      return v.Value.r4;
    case ZR_VT_R8:
      return v.Value.r8;
    default:
      return std::strtold(Describe(v).substr(Describe(v).find(' ')).c_str(), nullptr);
  }
}

static ZRRESULT ModelOfRange(const ZRVARIANT& source, uint16_t target, ZRVARIANT& left) {
  static constexpr struct {
    std::array<uint16_t, 4> tags;
    double least, most;
  } kBounds[] = {
      {{ZR_VT_I1}, -128.0, 127.0},
      {{ZR_VT_UI1, ZR_VT_BYTE, ZR_VT_BOOL}, 0.0, 255.0},
      {{ZR_VT_I2}, -32768.0, 32767.0},
      {{ZR_VT_UI2, ZR_VT_WORD}, 0.0, 65535.0},
      {{ZR_VT_I4}, -2147483648.0, 2147483647.0},
      {{ZR_VT_UI4, ZR_VT_DWORD, ZR_VT_CHAR32}, 0.0, 4294967295.0},
      {{ZR_VT_I8}, -9223372036854775808.0, 9223372036854775808.0},
      {{ZR_VT_UI8, ZR_VT_QWORD}, 0.0, 18446744073709551616.0},
      {{ZR_VT_R4}, -3.4028234663852886e38, 3.4028234663852886e38},
      {{ZR_VT_R8}, -1.7976931348623157e308, 1.7976931348623157e308},
  };
  const Exact exact = ExactOf(source);
  const auto checked = static_cast<double>(exact);
  for (const auto& bounds : kBounds) {
    if (std::find(bounds.tags.begin(), bounds.tags.end(), target) == bounds.tags.end()) continue;
    if (!(checked >= bounds.least && bounds.most >= checked)) return ZR_R_INVALID_ARGUMENTS;
  }
  left.Type = target;
  if (target == ZR_VT_R4) {
    left.Value.r4 = static_cast<float>(exact);
  } else if (target == ZR_VT_R8) {
    left.Value.r8 = checked;
  } else {
    const Exact whole = std::trunc(exact);
    const uint64_t word = whole >= 0x1p64L ? uint64_t{1} << 63  // what no 64 bits hold
                          : whole < 0      ? static_cast<uint64_t>(static_cast<int64_t>(whole))
                                           : static_cast<uint64_t>(whole);
    std::memcpy(&left.Value, &word, NameOf(target)->width);
  }
  if (target == ZR_VT_BOOL) left.Value.boolean = left.Value.boolean != 0;
  return ZR_R_OK;
}

static bool IsNeither(const ZRVARIANT& v) {
  return (v.Type & ZR_VT_TYPEMASK) == ZR_VT_SREF && v.Value.sref->ref == nullptr && v.Value.sref->text == nullptr;
}

static ZRRESULT ModelOfWriting(const ZRVARIANT& source, ZRVARIANT& left) {
  const ZRVARIANTVALUE& v = source.Value;
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  ZRDATETIMESTRUCT t = {};
  if (tag == ZR_VT_TIME || tag == ZR_VT_DATETIME) ZrDateTimeToStruct(v.time, &t);
  std::string text;
  switch (tag) {
    case ZR_VT_BOOL:
      text = v.boolean != 0 ? "TRUE" : "FALSE";
      break;
    case ZR_VT_R4:
    case ZR_VT_R8:
      text = PrintedReal(tag == ZR_VT_R4 ? double{v.r4} : v.r8);
      break;
    case ZR_VT_TIME:
      text = Format("%02d:%02d:%02d.%07d", t.hour, t.minute, t.second, t.fraction);
      break;
    case ZR_VT_DATETIME:
      text =
          Format("%4d-%02d-%02d %02d:%02d:%02d.%07d", t.year, t.month, t.day, t.hour, t.minute, t.second, t.fraction);
      break;
    case ZR_VT_CHAR32: {
      const char32_t point = v.char32;
      const ZRRESULT result = ZrCreateZRSTRfromUTF32(&point, 1, &left.Value.string);
      if (ZR_SUCCEEDED(result)) left.Type = ZR_VT_STR;
      return result;
    }
    case ZR_VT_BLOB: {
      left.Type = ZR_VT_STR;
      const std::string bytes = BytesOf(v.blob);
      if (!bytes.empty()) {
        left.Value.string = ZrCreateStringByteLen(bytes.data(), static_cast<uint32_t>(bytes.size()));
      }
      return ZR_R_OK;
    }
    case ZR_VT_UUID:
    case ZR_VT_REF:
    case ZR_VT_SREF:
      if (v.address == nullptr || IsNeither(source)) return ZR_R_INVALID_ARGUMENTS;
      text = DescribePayload(*NameOf(tag), v);
      if (tag == ZR_VT_SREF) text = v.sref->ref != nullptr ? Describe(*v.sref->ref) : DescribeText(v.sref->text);
      break;
    default:
      text = DescribePayload(*NameOf(tag), v);
  }
  left.Type = ZR_VT_STR;
  left.Value.string = ZrCopyString(StringOf(text));
  return ZR_R_OK;
}

static ZRRESULT ModelOfBytes(const ZRVARIANT& source, ZRVARIANT& left) {
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const ZRVARIANTVALUE& v = source.Value;
  const void* bytes = &v;
  std::size_t count = NameOf(tag)->width;
  const uint8_t truth = v.boolean != 0;
  if (tag == ZR_VT_BOOL) bytes = &truth;
  ZRSTR text = tag == ZR_VT_STR ? v.string : nullptr;
  if (tag == ZR_VT_UUID || tag == ZR_VT_REF || tag == ZR_VT_SREF) {
    if (v.address == nullptr || IsNeither(source)) return ZR_R_INVALID_ARGUMENTS;
    bytes = v.address;
    count = tag == ZR_VT_UUID ? 16 : 24;
    if (tag == ZR_VT_SREF) {
      bytes = v.sref->ref;
      if (v.sref->ref == nullptr) text = v.sref->text;
    }
  }
  if (tag == ZR_VT_STR || text != nullptr) {
    bytes = text;
    count = ZrStringByteLen(text);
  }
  left.Type = ZR_VT_BLOB;
  left.Value.blob = ZrCreateBlob(static_cast<uint32_t>(count), bytes);
  return ZR_R_OK;
}

// The result, and the record that a destination becomes: after a failure an empty one, with remains in Value.
static ZRRESULT Model(const ZRVARIANT& source, uint16_t target, OwnedVariant& left) {
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const ZRVARIANTVALUE& v = source.Value;
  ZRRESULT result = ZR_R_OK;
  const auto store = [&](uint64_t word, uint16_t as) {
    left.Value.ui8 = word;
    left.Type = ZR_SUCCEEDED(result) ? as : uint16_t{ZR_VT_EMPTY};
    return result;
  };
  const Units text = tag == ZR_VT_STR ? ContentOf(v.string) : Units();
  switch (LetterFor(tag, target)) {
    case 'A':
      return ZR_R_INVALID_ARGUMENTS;
    case 'N':
      return ModelOfRange(source, target, left);
    case 'Y': {
      ModelNumber number;
      StoreAs(target == ZR_VT_CHAR32 ? uint16_t{ZR_VT_UI4} : target, v.boolean, number);
      return store(number.word, target);
    }
    case 'L': {
      const std::string bytes = BytesOf(v.blob);
      uint64_t word = 0;
      std::memcpy(&word, bytes.data(), std::min(bytes.size(), NameOf(target)->width));
      return store(target == ZR_VT_BOOL ? word != 0 : word, target);
    }
    case 'P': {
      const ModelNumber number = ModelOfText(text, target);
      result = number.result;
      return store(number.word, target);
    }
    case 'D': {
      char* end = nullptr;
      const std::string narrow = Narrowed(text);
      const long long number = std::strtoll(narrow.c_str(), &end, 10);
      result = *end == 0 || *end == 'd' || *end == 'D' ? ZR_R_OK : ZR_R_FAILED;
      return store(static_cast<uint64_t>(number), target);
    }
    case 'C': {
      char32_t point = 0;
      int32_t one = 1;
      result = ZrCreateUTF32fomZRSTR(Owned(text), -1, &point, &one);
      return store(point, target);
    }
    case 'W':
      return store(v.ui8, target);
    case 'I':
      return store(static_cast<uint64_t>(*static_cast<const int64_t*>(v.address)), target);
    case 'Q':
      return store(
          v.r8 >= -0x1p63 && v.r8 < 0x1p63 ? static_cast<uint64_t>(std::llrint(std::trunc(v.r8))) : uint64_t{1} << 63,
          target);
    case 'T': {
      ZRDATETIMESTRUCT t;
      const Owned string(text);
      if ((target == ZR_VT_TIME ? ZrTimeStringToDateTimeStruct : ZrDateTimeStringToDateTimeStruct)(string, &t) == 0) {
        return ZR_R_INVALID_ARGUMENTS;
      }
      ZRDATETIME count = 0;
      ZrDateTimeFromStruct(&t, &count);
      return store(static_cast<uint64_t>(count), target);
    }
    case 'S':
      return ModelOfWriting(source, left);
    case 'E':
      return ModelOfBytes(source, left);
    case 'U': {
      ZRUUID uuid = {};
      if (tag == ZR_VT_BLOB) {
        const std::string bytes = BytesOf(v.blob);
        if (bytes.empty()) return ZR_R_FAILED;
        std::memcpy(&uuid, bytes.data(), std::min<std::size_t>(bytes.size(), 16));
      } else {
        std::string bytes;  // UTF-8, of units below 0x800
        for (WCHAR unit : text) {
          bytes += unit < 0x80
                       ? std::string(1, static_cast<char>(unit))
                       : std::string{static_cast<char>(0xC0 | unit >> 6), static_cast<char>(0x80 | (unit & 0x3F))};
        }
        result = ZrUUIDFromString(bytes.c_str(), &uuid);
      }
      if (ZR_SUCCEEDED(result)) (void)ZrCopyUUID(&uuid, &left.Value.uuid);
      left.Type = ZR_SUCCEEDED(result) ? target : uint16_t{ZR_VT_EMPTY};
      return result;
    }
    case 'F': {
      ZRREF* ref = nullptr;
      if (tag == ZR_VT_STR) {
        result = ZrStringToREF(Owned(text), &ref);
      } else if (v.sref == nullptr || IsNeither(source)) {
        result = ZR_R_INVALID_ARGUMENTS;
      } else {
        result = v.sref->ref != nullptr ? ZrCopyREF(v.sref->ref, &ref) : ZrStringToREF(v.sref->text, &ref);
      }
      left.Value.ref = ref;
      left.Type = ZR_SUCCEEDED(result) ? target : uint16_t{ZR_VT_EMPTY};
      return result;
    }
    case 'G':
      if (tag == ZR_VT_STR) {
        result = ZrStringToSREF(Owned(text), &left.Value.sref);
      } else if (v.ref == nullptr) {
        return ZR_R_INVALID_ARGUMENTS;
      } else {
        left.Value.sref = ZrCreateSREF();
        (void)ZrCopyREF(v.ref, &left.Value.sref->ref);
      }
      left.Type = target;
      return result;
    default:
      return ZR_R_NOT_SUPPORTED;
  }
}

// ---- Every source against every target -----------------------------------------------------------------------------

// A failure that leaves a record behind, which by contract nobody owns: somebody has to.
static void TakeLostRecord(OwnedVariant& left) {
  ASSERT_EQ(left.Type, ZR_VT_EMPTY);
  ASSERT_NE(left.Value.sref, nullptr);
  ZrDestroySREF(std::exchange(left.Value.sref, nullptr));
}

// As a copy of a value stands, marker words of another kind being copied with numbers alone.
static std::string Restored(const OwnedVariant& source) {
  OwnedVariant copy;
  (void)ZrVariantCopy(&copy, &source);
  return Describe(copy);
}

static void CheckApart(const OwnedVariant& source, uint16_t target) {
  OwnedVariant expected;
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const bool isSame = tag == target;
  const ZRRESULT result = isSame ? ZR_R_OK : Model(source, target, expected);
  const std::string before = Describe(source);
  const uint32_t objects = g_object.references;
  OwnedVariant apart = Before();
  ASSERT_EQ(ZrVariantChangeType(&apart, &source, 0x12345678, target), result);
  if (LetterFor(tag, target) == 'G' && ZR_FAILED(result)) TakeLostRecord(apart);
  EXPECT_EQ(Describe(apart), isSame ? Restored(source) : Describe(expected));
  EXPECT_EQ(Describe(source), before) << "a source is only read";
  EXPECT_EQ(ZrStringRefCount(g_before), 1u) << "what the destination held is released";
  EXPECT_EQ(g_object.references, objects + (apart.Value.unknown == &g_object ? 1 : 0));
  // Another way, where the destination holds nothing to release.
  OwnedVariant number = Value("I4 7");
  ASSERT_EQ(ZrVariantChangeType(&number, &source, 0, target), result);
  if (LetterFor(tag, target) == 'G' && ZR_FAILED(result)) TakeLostRecord(number);
  EXPECT_EQ(Describe(number), Describe(apart));
}

static void CheckInPlace(OwnedVariant& source, uint16_t target) {
  OwnedVariant expected;
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const bool isSame = tag == target;
  const ZRRESULT result = isSame ? ZR_R_OK : Model(source, target, expected);
  source.Reserved2 = 7;
  const std::string failed = isSame ? Describe(source) : Restored(source);
  const uint32_t objects = g_object.references;
  ASSERT_EQ(ZrVariantChangeType(&source, &source, 0, target), result);
  EXPECT_EQ(Describe(source), isSame || ZR_FAILED(result) ? failed : Describe(expected));
  EXPECT_EQ(g_object.references, objects);
}

static const int64_t g_count = 123456789012345678;

static std::vector<std::string> Split(const std::string& list, char separator) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  for (std::size_t to; (to = list.find(separator, from)) != std::string::npos; from = to + 1) {
    parts.push_back(list.substr(from, to - from));
  }
  parts.push_back(list.substr(from));
  return parts;
}

// Texts of all kinds, between bars.
static std::vector<std::string> Texts() {
  using namespace std::string_literals;
  std::vector<std::string> texts = Split(
      "| |0|7|-7|+7|12d|12D|12f|12dd|12d | 12|\t\n\v\f\r12|12 |1 2|- 1|--1|+-1|d|f|-d|1.5|1.5f|1.5F|1.5d|1.5ff|0x10|"
      "0X1f|0x|0x1g| 0x10|-0x10|+0x10|0xx|0xfd|0xfg|0x80|0xffffffff|0x7fffffff|0x80000000|0xffffffffffffffff|"
      "0x7fffffffffffffff|0x1.8p1|-0x1.8p1|+0x.8p-1f|0x-1|0x 1|0x0x1|TRUE|true|TrUe|ZR_TRUE|zr_True|FALSE|fAlSe|"
      "ZR_FALSE|Zr_false|TRUE | TRUE|TRUEX|ZR_|YES|127|128|-128|-129|255|256|300|300x|32768|-32769|65536|2147483647|"
      "2147483648|-2147483649|4294967296|9223372036854775807|9223372036854775808|-9223372036854775809|"
      "18446744073709551615|18446744073709551616|99999999999999999999999999|-99999999999999999999999999d|-0|-1| -1|"
      "-0.0|-0.5|-1e-400|-1e400|-inf|-nan|inf|INFINITY|infinit|nan|NaN(1)|nan(|inff|1e3|1e|1e+|1e5f|1e39|-1e39|1e-50|"
      "1e400|1e-400|.|.5|5.|+.5|-.|1,5|1..2|3.4028236e38|0.1|16777217|4.9e-324|1.7976931348623159e308|12\0xyz|"
      "TRUE\0x|0x\0|\0|\0007|5\xb2|\xa0"
      "7|65|\xe9t\xe9|1601-01-01|2012-03-04|2012-03-04 05:06:07.1234567|"
      "04.03.2012 05:06:07.1234567|25:61:99.9999999|05:06|5|1.2.3.4.5.6| 1.2.3.4.5.6 |1.2.3.4.5|1.2.3.4.5.06|"
      "01234567-89ab-cdef-0123-456789abcdef|{01234567-89AB-CDEF-0123-456789ABCDEF}|"
      "\"{01234567-89AB-CDEF-0123-456789ABCDEF}\"|01234567-89ab-cdef-0123-456789abcdeg|"
      "01234567-89ab-cdef-0123-456789abcde|01234567-89ab-cdef-0123-456789abcdef\xe9|"
      "01234567\xe9-89ab-cdef-0123-456789abcdef|"
      "01234567-89ab-cdef-0123-456789abcdef and a tail that is far longer than any other one"s,
      '|');
  texts.push_back(std::string(400, '9'));
  texts.push_back("0." + std::string(400, '1') + "f");
  texts.push_back(std::string(60, ' ') + "12");
  texts.push_back(std::string(60, '0') + "12.5");
  return texts;
}

static std::vector<std::string> Sources() {
  std::vector<std::string> sources = Split(
      "EMPTY|EMPTY 5|14 5|16 0|22 1|23 1|24 1|28 1|40 1|47 1|54 1|60 1|4095 1|UNKNOWN null|UNKNOWN object|"
      "DISPATCH null|DISPATCH object|VARIANT 0|VARIANT 9|OPAQUE 9|BLOB null|BLOB |BLOB 00|BLOB 02|BLOB ff|BLOB 8081|"
      "BLOB 818283|BLOB 41004200|BLOB 000000000000f87f|BLOB 0000c07f|BLOB 00112233445566778899aabbccddeeff|"
      "BLOB 001122334455667788990a|BLOB 00112233445566778899aabbccddeeff00|UUID null|"
      "UUID 00000000-0000-0000-0000-000000000000|UUID 01234567-89ab-cdef-0123-456789abcdef|REF null|REF 0.0.0.0.0.0|"
      "REF 4294967295.2.3.4.5.2147483648|SREF null|SREF neither|SREF text |SREF text name|SREF text  1.2.3.4.5.6 |"
      "SREF text 1.2.3.4.5.6x|SREF 1.2.3.4.5.6|SREF 1.2.3.4.5.6 text name|STR null",
      '|');
  static constexpr struct {
    const char *tags, *numbers;
  } kNumbers[] = {
      {"I1 I2 I4 I8 TIME DATETIME CY",
       "0 1 -1 5 127 128 -128 -129 255 256 32767 32768 -32768 -32769 65535 65536 2147483647 2147483648 -2147483648 "
       "-2147483649 4294967295 4294967296 16777217 9007199254740993 864000000001 131277024001234567 "
       "9223372036854775295 9223372036854775296 9223372036854775807 -9223372036854775808 9223371761976868863"},
      {"BOOL UI1 UI2 UI4 UI8 BYTE WORD DWORD QWORD CHAR32",
       "0 1 2 65 127 128 200 255 256 32768 55296 65535 65536 1114111 1114112 2147483648 4294967295 16777219 4294967296 "
       "9223372036854775807 9223372036854775808 9223372036854776832 9223372036854776833 18446744073709551615 "
       "18446744073709550592 18446744073709550591 9223372586610589697"},
      {"R4 R8",
       "0 -0.0 0.49999999 0.5 -0.5 -0.99 -1 -1.5 1.5 127 127.5 128 -128 -128.5 255 255.0001 0.1 1e-7 5e-7 65535.5 "
       "32767.25 2147483647 2147483647.5 2147483648 -2147483648.5 4294967295 4294967295.5 4294967296 0x1p62 0x1p63 "
       "-0x1p63 0x1.fffffffffffffp62 0x1.0000000000001p63 -0x1.0000000000001p63 0x1.fffffep63 0x1p64 "
       "0x1.fffffffffffffp63 0x1.0000000000001p64 0x1.fffffep127 -0x1.fffffep127 0x1.ffffffp127 0x1.fffffe0000001p127 "
       "0x1.fffffffffffffp1023 5e-324 1e-45 1e300 inf -inf nan -nan 1234567.0000005 0x1p44 17592186044415.998"},
  };
  for (const auto& row : kNumbers) {
    for (const std::string& tag : Split(row.tags, ' ')) {
      for (const std::string& number : Split(row.numbers, ' ')) sources.push_back(tag + " " + number);
    }
  }
  sources.push_back("QWORD " + std::to_string(reinterpret_cast<uintptr_t>(&g_count)));
  for (const std::string& text : Texts()) sources.push_back("STR " + text);
  return sources;
}

TEST(VariantConversion, EverySourceAndTarget) {
  std::vector<uint16_t> targets = {0xFFF, 0x1004, 0x2004, 0x4004, 0x8004, 0x1032, 0x8000, 0x4000 | ZR_VT_SREF};
  for (uint16_t target = 0; target <= 60; ++target) targets.push_back(target);
  const std::vector<std::string> sources = Sources();
  const Owned empty(ZrCopyString(nullptr));
  const uint32_t empties = ZrStringRefCount(empty), objects = g_object.references;
  for (std::size_t row = 0; row < sources.size(); ++row) {
    std::string text = sources[row];
    text.insert(std::min(text.find(' '), text.size()), row % 5 == 1 ? "+1000" : row % 5 == 2 ? "+8000" : "");
    for (const uint16_t target : targets) {
      SCOPED_TRACE(text + " to " + std::to_string(target));
      OwnedVariant source = Value(text);
      const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
      if (LetterFor(tag, target) == 'I' && source.Value.address != &g_count) continue;  // an address, and a wrong one
      CheckApart(source, target);
      CheckInPlace(source, target);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_EQ(g_object.references, objects);
  EXPECT_EQ(ZrStringRefCount(empty), empties);
}

TEST(VariantConversion, ReferencesAreOnlyCopied) {
  for (uint16_t tag = 0; tag <= 60; ++tag) {
    for (const int word : {0, int{tag}, ZR_VT_I4, ZR_VT_STR, 54, tag | ZR_VT_BYREF}) {
      const auto target = static_cast<uint16_t>(word);
      SCOPED_TRACE(std::to_string(tag) + " to " + std::to_string(target));
      uint64_t behind = 0;
      ZRVARIANT source = ByRef(static_cast<uint16_t>(tag | 0x1000), &behind);
      const std::string before = Describe(source);
      OwnedVariant apart = Before();
      EXPECT_EQ(ZrVariantChangeType(&apart, &source, 0, target), tag == target ? ZR_R_OK : ZR_R_NOT_SUPPORTED);
      if (tag != target) {
        EXPECT_EQ(Describe(apart), "STR before");
      } else if (NameOf(tag) == nullptr || tag == ZR_VT_EMPTY) {
        EXPECT_EQ(apart.Type, source.Type);
        EXPECT_EQ(apart.Value.address, nullptr) << "a bad tag is handed on, and nothing else";
      } else {
        EXPECT_EQ(Describe(apart), before);
      }
      EXPECT_EQ(ZrVariantChangeType(&source, &source, 0, target), tag == target ? ZR_R_OK : ZR_R_NOT_SUPPORTED);
      EXPECT_EQ(Describe(source), before);
    }
  }
  OwnedVariant variant = Before();
  EXPECT_EQ(ZrVariantChangeType(&variant, nullptr, 0, ZR_VT_STR), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrVariantChangeType(nullptr, &variant, 0, ZR_VT_STR), ZR_R_INVALID_POINTER);
  EXPECT_EQ(Describe(variant), "STR before");
}

// What the models above would get wrong if they were: one row a claim.
TEST(VariantConversion, Claims) {
  static constexpr ZRRESULT kRange = ZR_R_INVALID_ARGUMENTS, kFailed = ZR_R_FAILED;
  const struct {
    const char* source;
    uint16_t target;
    ZRRESULT result;
    const char* left;
  } kRows[] = {
      {"R8 127.5", ZR_VT_I1, kRange, "EMPTY"},  // checked before it is cut
      {"R8 -0.5", ZR_VT_I1, ZR_R_OK, "I1 0"},
      {"R8 0.5", ZR_VT_BOOL, ZR_R_OK, "BOOL 0"},
      {"I4 -1", ZR_VT_BOOL, kRange, "EMPTY"},
      {"BOOL 255", ZR_VT_I1, ZR_R_OK, "I1 -1"},
      {"BOOL 2", ZR_VT_BLOB, ZR_R_OK, "BLOB 01"},
      {"R8 9223372036854775808", ZR_VT_I8, ZR_R_OK, "I8 -9223372036854775808"},
      {"UI8 9223372036854776832", ZR_VT_I8, ZR_R_OK, "I8 -9223372036854774784"},
      {"R8 18446744073709551616", ZR_VT_UI8, ZR_R_OK, "UI8 9223372036854775808"},
      {"R8 9223372036854777856", ZR_VT_UI8, ZR_R_OK, "UI8 9223372036854777856"},
      {"UI8 9223372586610589697", ZR_VT_R4, ZR_R_OK, "R4 9.22337314e+18"},  // rounded once
      {"R8 nan", ZR_VT_R8, ZR_R_OK, "R8 nan"},
      {"R8 nan", ZR_VT_CY, ZR_R_OK, "CY -9223372036854775808"},
      {"BLOB 0102030405", ZR_VT_I2, ZR_R_OK, "I2 513"},
      {"BLOB 000000000000f87f", ZR_VT_R8, ZR_R_OK, "R8 nan"},
      {"BLOB null", ZR_VT_STR, ZR_R_OK, "STR null"},
      {"BLOB 41", ZR_VT_UUID, ZR_R_OK, "UUID {00000041-0000-0000-0000-000000000000}"},
      {"BLOB ", ZR_VT_UUID, kFailed, "EMPTY"},
      {"VARIANT 9", ZR_VT_I4, ZR_R_NOT_SUPPORTED, "EMPTY"},
      {"VARIANT 9", ZR_VT_STR, ZR_R_INVALID_ARGUMENTS, "EMPTY"},
      {"EMPTY", 14, ZR_R_INVALID_ARGUMENTS, "EMPTY"},  // the target is looked at first
      {"14 5", 14, ZR_R_OK, "14"},
      {"STR 12d", ZR_VT_I4, ZR_R_OK, "I4 12"},
      {"STR 12f", ZR_VT_I4, kFailed, "EMPTY c"},
      {"STR 1.5d", ZR_VT_R8, kFailed, "EMPTY 3ff8000000000000"},
      {"STR 0x80000000", ZR_VT_R4, kFailed, "EMPTY 4f000000"},
      {"STR 0x80000000", ZR_VT_R8, ZR_R_OK, "R8 2147483648"},
      {"STR -0x10", ZR_VT_I4, kFailed, "EMPTY"},
      {"STR -0x10", ZR_VT_R8, ZR_R_OK, "R8 -16"},
      {"STR zr_TRUE", ZR_VT_R4, ZR_R_OK, "R4 1"},
      {"STR 300", ZR_VT_I1, kFailed, "EMPTY 7f"},
      {"STR 300", ZR_VT_BOOL, kFailed, "EMPTY ff"},  // a failure isn't normalised
      {"STR -1", ZR_VT_UI8, kFailed, "EMPTY"},
      {"STR -1e-400", ZR_VT_UI8, kFailed, "EMPTY ffffffffffffffff"},  // not below zero, and then it wraps
      {"STR 99999999999999999999", ZR_VT_I8, ZR_R_OK, "I8 9223372036854775807"},
      {"STR 1e39", ZR_VT_R4, ZR_R_OK, "R4 inf"},
      {"STR 0x10", ZR_VT_CY, kFailed, "EMPTY"},
      {"STR TRUE", ZR_VT_CY, kFailed, "EMPTY"},
      {"STR 65", ZR_VT_CHAR32, ZR_R_OK, "CHAR32 54"},
      {"STR 01:00:00.0000005", ZR_VT_TIME, ZR_R_OK, "TIME 36000000005"},
      {"STR name", ZR_VT_SREF, ZR_R_OK, "SREF text name"},
      {"SREF 1.2.3.4.5.6 text name", ZR_VT_STR, ZR_R_OK, "STR 1.2.3.4.5.6"},
      {"TIME 900000000000", ZR_VT_STR, ZR_R_OK, "STR 01:00:00.0000000"},  // 25 hours
      {"DATETIME 0", ZR_VT_STR, ZR_R_OK, "STR 1601-01-01 00:00:00.0000000"},
      {"R4 0.1", ZR_VT_STR, ZR_R_OK, "STR 0.100000"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.source) + " to " + std::to_string(row.target));
    OwnedVariant source = Value(row.source), apart = Before();
    const std::string before = Describe(source);
    EXPECT_EQ(ZrVariantChangeType(&apart, &source, 0, row.target), row.result);
    EXPECT_EQ(Describe(apart), row.left);
    EXPECT_EQ(ZrVariantChangeType(&source, &source, 0, row.target), row.result);
    if (before != "14 5") {
      EXPECT_EQ(Describe(source), ZR_SUCCEEDED(row.result) ? row.left : before);
    }
  }
}

// ---- Real numbers as text
// ------------------------------------------------------------------------------------------------

// Expects that numbers are written as the C library writes them, and read as it reads them.
static void CheckRealText(uint16_t tag, double real) {
  const std::string printed = PrintedReal(real);
  Units expected(printed.size(), WCHAR{0});
  wchar_t wide[400];
  expected.resize(std::mbstowcs(wide, printed.c_str(), 400));
  std::copy_n(wide, expected.size(), expected.begin());
  OwnedVariant number;
  number.Type = tag;
  if (tag == ZR_VT_R4) number.Value.r4 = static_cast<float>(real);
  if (tag == ZR_VT_R8) number.Value.r8 = real;
  ASSERT_EQ(ZrVariantChangeType(&number, &number, 0, ZR_VT_STR), ZR_R_OK);
  ASSERT_EQ(ContentOf(number.Value.string), expected) << printed;
  ASSERT_EQ(ZrVariantChangeType(&number, &number, 0, ZR_VT_R8), ZR_R_OK) << printed;
  const double read = std::strtod(printed.c_str(), nullptr);
  ASSERT_EQ(std::memcmp(&number.Value.r8, &read, sizeof read), 0) << printed;
}

static void CheckManyReals(int rounds) {
  std::mt19937_64 random(11);
  for (double real :
       {0.0, 0.5e-6, 1.5e-6, 2.5e-6, 0.9999995, 0x1p-27, 0x1p-20, 0x1p44, 0x1p53, 1e300, 5e-324, 1.0 / 0.0}) {
    for (double near : {std::nextafter(real, 0.0), real, std::nextafter(real, HUGE_VAL)}) {
      CheckRealText(ZR_VT_R8, near);
      CheckRealText(ZR_VT_R8, -near);
    }
  }
  for (int round = 0; round < rounds && !testing::Test::HasFatalFailure(); ++round) {
    const uint64_t bits = random();
    double any;
    std::memcpy(&any, &bits, sizeof any);
    CheckRealText(ZR_VT_R8, any);
    const double ordinary = std::ldexp(static_cast<double>(static_cast<int64_t>(bits)), -static_cast<int>(bits % 90));
    CheckRealText(ZR_VT_R8, ordinary);
    CheckRealText(ZR_VT_R4, double{static_cast<float>(ordinary)});
    CheckRealText(ZR_VT_R8, static_cast<double>(bits >> (13 + bits % 40)) / 128);  // half a millionth behind the last
  }
}

// In the user's locale, for the point is the locale's.
TEST(VariantConversion, RealsAsTheCLibraryWritesAndReadsThem) {
  std::setlocale(LC_ALL, "");
  CheckManyReals(10000);
  OwnedVariant source = Value("STR 1.5"), number;
  char* end = nullptr;
  const double expected = std::strtod("1.5", &end);
  EXPECT_EQ(ZrVariantChangeType(&number, &source, 0, ZR_VT_R8), *end == 0 ? ZR_R_OK : ZR_R_FAILED);
  EXPECT_EQ(number.Value.r8, expected);
  // A number that ends ahead of the point, which may be longer than one byte.
  wchar_t point = 0;
  std::mbtowc(&point, std::localeconv()->decimal_point, MB_CUR_MAX);
  source = Value("STR  1f");
  ZRSTR& text = source.Value.string;
  const Owned rest(Units{static_cast<WCHAR>(point), WCHAR{'5'}});
  ZrDestroyString(std::exchange(text, ZrAppendStrings(text, rest)));
  EXPECT_EQ(ZrVariantChangeType(&number, &source, 0, ZR_VT_R8), ZR_R_OK);
  EXPECT_EQ(number.Value.r8, 1.0);
  std::setlocale(LC_ALL, "C");
}

TEST(VariantConversion, TextsAsTheCLibraryReadsThem) {
  std::mt19937 random(12);
  static constexpr char kUnits[] = "001239.eE+-xXfFdDinaptrueTRUE() \t\x7f";
  for (int round = 0; round < 10000; ++round) {
    std::string text(random() % 12, ' ');
    for (char& unit : text) unit = kUnits[random() % sizeof kUnits];  // zero units too
    if (round % 4 == 0)
      text = Format("%.*g", 1 + static_cast<int>(random() % 20),
                    std::ldexp(random(), 600 - static_cast<int>(random() % 1200)));
    for (const uint16_t target : std::initializer_list<uint16_t>{ZR_VT_I2, ZR_VT_I8, ZR_VT_UI8, ZR_VT_R4, ZR_VT_R8}) {
      const ModelNumber expected = ModelOfText(Widened(text), target);
      OwnedVariant source = Value("STR " + text), number;
      ASSERT_EQ(ZrVariantChangeType(&number, &source, 0, target), expected.result) << text << " to " << target;
      ASSERT_EQ(number.Value.ui8, expected.word) << text << " to " << target;
    }
  }
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
