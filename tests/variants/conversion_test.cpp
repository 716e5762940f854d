// Tests the conversions of variants. A table of rules predicts the result of every source type and target type, a table
// of claims lists what the rules leave open, and the C library is the oracle for numbers as text.

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <random>

#include "tests/support/array_samples.h"
#include "tests/support/number_model.h"

// ---- The model: a rule for each source and target -------------------------------------------------------------------

// One row per kind of source and one column per kind of target. The table follows the contract and is independent of
// the library's own table. Kinds are the lower-case letters of tag_names.h. The rules are upper case:
//
//     X  rejected with ZR_R_NOT_SUPPORTED              A  rejected with ZR_R_INVALID_ARGUMENTS
//     N  the number if it is in the target's range     Y  the byte of a boolean, unchanged
//     Q  the number, truncated without a range check   L  the first bytes of a blob
//     W  the 64 bits, unchanged                        I  the 64 bits at the address that the number is taken for
//     P  the number at the start of a text             D  the same in base 10, without words such as TRUE
//     S  the value as text                             E  a blob of the value's bytes
//     =  a copy                                        .  no model: kClaims has the expectations
// clang-format off
static constexpr std::string_view kTargets =  "bnqfd c ty s l u r g";  // other kinds are never targets
static constexpr std::pair<const char*, const char*> kDecisions[] = {
  {"nf",                                      "NNNNN N XX S E X X X"},
  {"c",                                       "NNNNN N XX . E X X X"},
  {"qy",                                      "NNNNN N WW S E X X X"},  // except ZR_VT_QWORD to ZR_VT_DATETIME: I
  {"t",                                       "NNNNN N WW . E X X X"},
  {"d",                                       "NNNNN N QQ S E X X X"},
  {"b",                                       "YYYYY Y XX S E X X X"},
  {"l",                                       "LLLLL L XX . = . X X"},
  {"u",                                       "XXXXX X XX . . = X X"},
  {"s",                                       "PPPPP . .D = . . . ."},
  {"r",                                       "XXXXX X XX . . X = ."},
  {"g",                                       "XXXXX X XX . . X . ="},
  {"v",                                       "XXXXX X AA A A A A A"},
};
// clang-format on

static char LetterFor(uint16_t source, uint16_t target) {
  const TagName* to = NameOf(target);
  if (source == target) return '=';
  if (to == nullptr || target == ZR_VT_EMPTY) return 'A';
  if (source == ZR_VT_QWORD && target == ZR_VT_DATETIME) return 'I';
  const std::size_t column = kTargets.find(to->kind);
  for (const auto& [sources, letters] : kDecisions) {
    if (IsOfKind(source, sources) && column != std::string_view::npos) return letters[column];
  }
  return 'X';
}

// The check uses binary64, where the largest 64-bit integers are rounded up.
static bool IsInRange(double number, uint16_t target) {
  if (target == ZR_VT_R4) return std::fabs(number) <= double{std::numeric_limits<float>::max()};
  if (target == ZR_VT_R8) return std::isfinite(number);
  const TagName& to = *NameOf(target);
  const int bits = 8 * static_cast<int>(to.width) - (to.isSigned ? 1 : 0);
  return number >= (to.isSigned ? -std::ldexp(1.0, bits) : 0.0) &&
         number <= static_cast<double>(std::ldexp(Exact{1}, bits) - 1);
}

struct Outcome {
  std::string destination = "EMPTY";
  ZRRESULT result = ZR_R_OK;
};

// The outcome for a destination with this number in Value. After a failure the destination is empty.
static Outcome OutcomeOf(uint16_t target, const ModelNumber& number) {
  ZRVARIANT destination = ZR_VARIANT_INIT;
  if (ZR_SUCCEEDED(number.result)) destination.Type = target;
  destination.Value.ui8 = destination.Type == ZR_VT_BOOL ? (number.word & 0xFF) != 0 : number.word;
  return {Describe(destination), number.result};
}

static Outcome Model(char letter, const ZRVARIANT& source, uint16_t target) {
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const ZRVARIANTVALUE& from = source.Value;
  const std::string payload = IsNumber(tag) ? DescribePayload(*NameOf(tag), from) : "";
  const Exact number = tag == ZR_VT_R4 ? from.r4 : tag == ZR_VT_R8 ? from.r8 : std::strtold(payload.c_str(), nullptr);
  const bool fitsInt64 = number >= -0x1p63L && number < 0x1p63L;
  uint64_t word = tag == ZR_VT_BOOL ? number != 0 : from.ui8;
  if (letter == '=') return {Describe(source)};
  if (letter == 'W') return OutcomeOf(target, {ZR_R_OK, word});
  if (letter == 'I') return OutcomeOf(target, {ZR_R_OK, *static_cast<const uint64_t*>(from.address)});
  if (letter == 'Q') return OutcomeOf(target, {ZR_R_OK, WordOf(target, fitsInt64 ? number : -0x1p63L)});
  if (letter == 'P' || letter == 'D') return OutcomeOf(target, ModelOfText(ContentOf(from.string), target));
  if (letter == 'S' && tag == ZR_VT_BOOL) return {number != 0 ? "STR TRUE" : "STR FALSE"};
  if (letter == 'S') return {"STR " + (IsReal(tag) ? PrintedReal(static_cast<double>(number)) : payload)};
  if (letter == 'E') return {"BLOB " + Hexadecimal({reinterpret_cast<const char*>(&word), NameOf(tag)->width})};
  if (letter == 'Y' || (letter == 'N' && IsInRange(static_cast<double>(number), target))) {
    return OutcomeOf(target, {ZR_R_OK, WordOf(target, number)});
  }
  if (letter == 'L') {
    const std::string bytes = BytesOf(from.blob) + std::string(8, 0);
    word = 0;
    std::memcpy(&word, bytes.data(), NameOf(target)->width);
    return OutcomeOf(target, {ZR_R_OK, word});
  }
  return {"EMPTY", letter == 'X' ? ZR_R_NOT_SUPPORTED : ZR_R_INVALID_ARGUMENTS};
}

// The expectations that the rules leave open.
static constexpr ZRRESULT kRejected = ZR_R_INVALID_ARGUMENTS;
static constexpr struct {
  const char *source, *destination;  // after a failure: only the name of the target type
  ZRRESULT result = ZR_R_OK;
} kClaims[] = {
    // clang-format off
    // The range check uses binary64, where the bounds of 64-bit integers are rounded up. The number is then truncated.
    {"R8 127.5", "I1", kRejected}, {"R8 -0.5", "I1 0"}, {"UI8 9223372036854776832", "I8 -9223372036854774784"},
    {"R8 18446744073709551616", "UI8 9223372036854775808"}, {"R8 nan", "CY -9223372036854775808"},
    {"STR 0x80000000", "R8 2147483648"}, {"STR -0x10", "R8 -16"}, {"STR zr_TRUE", "R4 1"}, {"STR 1e39", "R4 inf"},
    // Characters and times. The last row is a time of 25 hours.
    {"STR 65", "CHAR32 54"}, {"STR \xe9t\xe9", "CHAR32 233"}, {"STR null", "CHAR32 0"},
    {"CHAR32 65536", "STR \\ud800\\udc00"}, {"CHAR32 1114112", "STR \\udc00\\udc00"},
    {"STR x", "TIME", kRejected}, {"STR x", "DATETIME", kRejected}, {"STR 01:00:00.0000005", "TIME 36000000005"},
    {"STR 04.03.2012 05:06:07.1234567", "DATETIME 129753111671234567"},
    {"DATETIME 129753111671234567", "STR 2012-03-04 05:06:07.1234567"}, {"TIME 900000000000", "STR 01:00:00.0000000"},
    // Records and blobs to texts.
    {"UUID 01234567-89ab-cdef-0123-456789abcdef", "STR {01234567-89AB-CDEF-0123-456789ABCDEF}"},
    {"REF 4294967295.2.3.4.5.6", "STR 4294967295.2.3.4.5.6"}, {"SREF 1.2.3.4.5.6 text name", "STR 1.2.3.4.5.6"},
    {"SREF text name", "STR name"}, {"SREF neither", "STR", kRejected}, {"SREF null", "STR", kRejected},
    {"REF null", "STR", kRejected}, {"UUID null", "STR", kRejected}, {"BLOB null", "STR null"}, {"BLOB ", "STR null"},
    {"BLOB 41004200", "STR AB"},
    // Records and texts to blobs.
    {"UUID 01234567-89ab-cdef-0123-456789abcdef", "BLOB 67452301ab89efcd0123456789abcdef"},
    {"REF 1.2.3.4.5.256", "BLOB 010000000200000003000000040000000500000000010000"}, {"SREF text a", "BLOB 6100"},
    {"SREF 1.2.3.4.5.256 text a", "BLOB 010000000200000003000000040000000500000000010000"},
    {"STR A\xe9", "BLOB 4100e900"}, {"STR null", "BLOB null"}, {"SREF text ", "BLOB null"},
    {"UUID null", "BLOB", kRejected}, {"REF null", "BLOB", kRejected}, {"SREF neither", "BLOB", kRejected},
    // Blobs, texts and records to records. A UUID is parsed as UTF-8.
    {"BLOB 00112233445566778899aabbccddeeff00", "UUID {33221100-5544-7766-8899-AABBCCDDEEFF}"},
    {"BLOB 41", "UUID {00000041-0000-0000-0000-000000000000}"}, {"BLOB ", "UUID", ZR_R_FAILED},
    {"STR 01234567-89ab-cdef-0123-456789abcdef", "UUID {01234567-89AB-CDEF-0123-456789ABCDEF}"},
    {"STR 01234567-89ab-cdef-0123-456789abcdef\xe9 and a tail that is longer than any other",
     "UUID {01234567-89AB-CDEF-0123-456789ABCDEF}"}, {"STR 01234567\xe9-89ab-cdef-0123-456789ab", "UUID", kRejected},
    {"STR  1.2.3.4.5.6 ", "REF 1.2.3.4.5.6"}, {"STR 1.2.3.4.5", "REF", kRejected}, {"SREF text name", "REF", kRejected},
    {"SREF text 1.2.3.4.5.6", "REF 1.2.3.4.5.6"}, {"SREF 1.2.3.4.5.6 text name", "REF 1.2.3.4.5.6"},
    {"SREF neither", "REF", kRejected}, {"REF 1.2.3.4.5.6", "SREF 1.2.3.4.5.6"}, {"REF null", "SREF", kRejected},
    {"STR name", "SREF text name"}, {"STR 1.2.3.4.5.6", "SREF 1.2.3.4.5.6"},
    // clang-format on
};

// ---- Every source to every target -----------------------------------------------------------------------------------

// Converts a value into a destination that owns a string, into one that owns nothing, and in place.
static void CheckConversion(const std::string& text, uint16_t target, const Outcome* claim = nullptr) {
  static const int64_t kCount = 123456789012345678;
  OwnedVariant source = Value(text), copy, owner = Before(), number = Value("I4 7");
  const uint16_t tag = source.Type & ZR_VT_TYPEMASK;
  const bool isByRef = (source.Type & ZR_VT_BYREF) != 0, isRejected = isByRef && tag != target;
  const char letter = isRejected ? 'X' : LetterFor(tag, target);
  if (letter == '.' && claim == nullptr) return;
  if (letter == 'I') source.Value.ui8 = reinterpret_cast<uintptr_t>(&kCount);
  // Only copies of numbers copy the marker words. These bits of the tag word have no meaning.
  source.Reserved2 = 7;
  if (claim == nullptr && (text.size() + target) % 3 == 0) source.Type |= 0x9000;
  (void)ZrVariantCopy(&copy, &source);
  const std::string before = Describe(source);
  SCOPED_TRACE(testing::PrintToString(text) + " (" + TagWordName(source.Type) + ") to " + TagWordName(target));
  const Outcome expected = claim != nullptr ? *claim : Model(letter, copy, target);
  for (OwnedVariant* apart : {&owner, &number}) {
    const std::string old = Describe(*apart), after = isRejected ? old : expected.destination;
    ASSERT_RESULT(ZrVariantChangeType(apart, &source, 0x12345678, target), expected.result) << "  into " << old;
    // By contract this failure leaks a record, which is destroyed here.
    const bool leaksRecord = tag == ZR_VT_REF && target == ZR_VT_SREF && expected.result == kRejected;
    if (leaksRecord) ZrDestroySREF(std::exchange(apart->Value.sref, nullptr));
    EXPECT_EQ(Describe(*apart), after) << "  into " << old;
    EXPECT_EQ(Describe(source), before) << "a conversion must not change its source";
  }
  EXPECT_EQ(ZrStringRefCount(g_before), isRejected ? 2u : 1u) << "the old value of the destination must be released";
  // A failure in place leaves the value that ZrVariantCopy makes of the source.
  const std::string inPlace = tag == target || isRejected  ? before
                              : ZR_FAILED(expected.result) ? Describe(copy)
                                                           : expected.destination;
  ASSERT_RESULT(ZrVariantChangeType(&source, &source, 0, target), expected.result);
  EXPECT_EQ(Describe(source), inPlace);
}

TEST(VariantConversion, EverySourceAndTargetMatchTheModel) {
  std::vector<uint16_t> targets = {0xFFF, 0x1004, 0x2004, 0x4004, 0x8004, 0x1032, 0x8000, 0x4000 | ZR_VT_SREF};
  std::vector<std::string> sources = Split("STR 12f|STR 300|BLOB 818283|BLOB 000000000000f87f");
  for (uint16_t tag = 0; tag <= 60; ++tag) {
    targets.push_back(tag);
    const std::string name = NameOf(tag) != nullptr ? NameOf(tag)->name : std::to_string(tag);
    sources.push_back(name + "+5000 2147221520");
    for (const std::string& value : TextsOf(tag)) sources.push_back(name + " " + value);
  }
  const Owned empty(ZrCopyString(nullptr));
  const uint32_t empties = ZrStringRefCount(empty), objects = g_object.references;
  for (const std::string& text : sources) {
    for (const uint16_t target : targets) CheckConversion(text, target);
    EXPECT_EQ(g_object.references, objects) << "references to the object after " << text;
    EXPECT_EQ(ZrStringRefCount(empty), empties) << "references to the empty string after " << text;
    if (HasFailure()) return;
  }
  for (const auto& row : kClaims) {
    const Outcome claim{ZR_SUCCEEDED(row.result) ? row.destination : "EMPTY", row.result};
    CheckConversion(row.source, Value(row.destination).Type, &claim);
  }
  EXPECT_EQ(g_object.references, objects);
  EXPECT_EQ(ZrStringRefCount(empty), empties);
}

// ---- Numbers as text, compared with the C library -------------------------------------------------------------------

TEST(VariantConversion, ParsesNumbersLikeTheCLibrary) {
  const std::vector<std::string> heads = Split("||-| -| +|\t\n\v\f\r|0x|-0x");
  const std::vector<std::string> pieces = Split(
      "0|1|9|12|-|+|.|e|E|d|D|f|F| |\t\n\v\f\r|x|0x|0X|p1|,|ZR_|zr_|TRUE|TrUe|FALSE|fAlSe|inf|INFINITY|nan|NaN(1)|(|"
      "127|128|129|255|256|32767|32768|32769|65535|65536|2147483647|2147483648|2147483649|4294967295|4294967296|"
      "80000000|7fffffff|ffffffffffffffff|9223372036854775807|9223372036854775808|18446744073709551615|"
      "18446744073709551616|1e400|e-400|3.4028236e38|16777217|4.9e-324|1.7976931348623159e308|"
      "0000000000000000000000000000000|9999999999999999999999999999999|\xb2");
  std::mt19937 random(12);
  for (int round = 0; round < 25000 && !HasFailure(); ++round) {
    std::string text = heads[random() % heads.size()];
    for (std::size_t count = random() % 4; count > 0; --count) text += pieces[random() % pieces.size()];
    if (round % 16 == 0) text.insert(random() % (text.size() + 1), 1, '\0');
    if (round % 16 == 1) text.insert(random() % (text.size() + 1), 300, '7');
    CheckConversion("STR " + text, kTagNames[random() % std::size(kTagNames)].tag);
  }
  for (const char* word : {"zr_false", "ZR_True", "FALSe"}) CheckConversion(std::string("STR ") + word, ZR_VT_I2);
}

static void CheckRealText(uint16_t tag, double real) {
  const std::string printed = PrintedReal(real);
  wchar_t wide[400];
  const Units expected(wide, wide + std::mbstowcs(wide, printed.c_str(), std::size(wide)));
  OwnedVariant number;
  number.Type = tag;
  number.Value.ui8 = WordOf(tag, real);
  ASSERT_RESULT(ZrVariantChangeType(&number, &number, 0, ZR_VT_STR), ZR_R_OK);
  ASSERT_EQ(ContentOf(number.Value.string), expected) << printed;
  ASSERT_RESULT(ZrVariantChangeType(&number, &number, 0, ZR_VT_R8), ZR_R_OK) << printed;
  ASSERT_EQ(number.Value.ui8, WordOf(ZR_VT_R8, std::strtod(printed.c_str(), nullptr))) << printed;
}

// The decimal point is the locale's, which may be longer than one byte.
static void CheckReals() {
  for (double real : {0.0, -0.0, 0.5e-6, -1.5e-6, 2.5e-6, 0.9999995, 0x1p-27, 0x1p-20, 0x1.fffffffffffffp43, 0x1p44,
                      -0x1p53, 1e300, 5e-324, HUGE_VAL, -HUGE_VAL}) {
    CheckRealText(ZR_VT_R8, real);
  }
  std::mt19937_64 random(11);
  for (int round = 0; round < 10000 && !testing::Test::HasFatalFailure(); ++round) {
    const uint64_t bits = random();
    CheckRealText(ZR_VT_R8, std::bit_cast<double>(bits));
    const double ordinary = std::ldexp(static_cast<double>(static_cast<int64_t>(bits)), -static_cast<int>(bits % 90));
    CheckRealText(ZR_VT_R8, ordinary);
    CheckRealText(ZR_VT_R4, double{static_cast<float>(ordinary)});
    CheckRealText(ZR_VT_R8, static_cast<double>(bits >> (13 + bits % 40)) / 128);  // ties in the last printed digit
  }
}

TEST(VariantConversion, FormatsAndParsesRealsLikeTheCLibrary) { CheckReals(); }

#if defined(__linux__)
// Runs in a process with a locale that localedef makes. Other systems do not have this tool.
TEST(VariantConversion, FormatsAndParsesRealsInOtherLocales) {
  if (!std::filesystem::exists("/usr/share/i18n/locales/ps_AF")) GTEST_SKIP() << "needs the package locales";
  const std::string name = "zrcore" + std::to_string(std::random_device()()) + ".UTF-8", folder = testing::TempDir();
  // localedef returns 1 because the locale's sources have warnings.
  (void)!std::system(("localedef -c -i ps_AF -f UTF-8 --no-archive " + folder + name + " 2>&1").c_str());
  const auto check = [&] {
    (void)setenv("LOCPATH", folder.c_str(), 1);
    EXPECT_NE(std::setlocale(LC_ALL, name.c_str()), nullptr);
    CheckReals();
    OwnedVariant source = Value("STR 1.5"), number;
    EXPECT_RESULT(ZrVariantChangeType(&number, &source, 0, ZR_VT_R8), ZR_R_FAILED) << "not the locale's decimal point";
    EXPECT_EQ(number.Value.r8, 1.0);
    std::exit(HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
  std::filesystem::remove_all(folder + name);
}
#endif
