#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <random>

#include "tests/support/guarded_page.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "tests/support/unicode_check.h"

// Before the library reads it, on first use: the one locale with more than ASCII letters that every system has; or the
// Turkish one, in the child of a test below.
static const bool g_isTurkish = std::getenv("LOCPATH") != nullptr;
[[maybe_unused]] static const bool g_isChosen = g_isTurkish || (ChooseUnicodeLocale(), true);

// What the model says at random, told for some texts. (The byte behind each is its terminator.)
TEST(Unicode, FromUtf8ValidatesLoosely) {
  const struct {
    const char* bytes;
    Units content;
    ZRRESULT result = ZR_R_OK;
  } kRows[] = {
      {"a\xC3\xA9\xE9\x9B\xAA\xF0\x9F\xAA\x90", W("a\x00E9\x96EA\xD83E\xDE90")},
      {"\x80", {}},
      {"a\xC3\x28", {}},
      {"good\xC3", W("good\x00C0")},  // takes the byte behind
      {"\xE2", Units(1, 0), ZR_R_FAILED},
      {"\xF0\x80\x80\xAF", Units({WCHAR{0x2F}, WCHAR{0}}), ZR_R_FAILED},
      {"\xED\xA0\x80", Units(1, WCHAR{0xD800})},
      {"\xFF\xBF\xBF\xBF", Units({WCHAR{0xDFBF}, WCHAR{0xDFFF}})},
  };
  for (const auto& row : kRows) {
    ZRSTR string = nullptr;
    EXPECT_EQ(ZrCreateZRSTRfromUTF8(row.bytes, -1, &string), row.result);
    EXPECT_EQ(ContentOf(Owned(string)), row.content) << testing::PrintToString(row.bytes);
  }
}

TEST(Unicode, CreatorsAndWritersRefuse) {
  ZRSTR string = nullptr;
  const ZRSTR untouched = reinterpret_cast<ZRSTR>(&string);
  const Owned shared(ZrCopyString(nullptr)), text(Units(W("a\xD800")));
  string = untouched;
  EXPECT_EQ(ZrCreateZRSTRfromUTF8(nullptr, 0, &string), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateZRSTRfromUTF8("a", -2, &string), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateZRSTRfromUTF32(nullptr, 0, &string), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateZRSTRfromUTF32(U"a", INT32_MIN, &string), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrUTF8toZRSTR("a", 0, &string), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrUTF8toZRSTR(nullptr, 1, &string), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(string, untouched);
  EXPECT_EQ(ZrUTF8toZRSTR("a", 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateZRSTRfromUTF32(U"a", 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  for (int way = 0; way < 4; ++way) {
    EXPECT_EQ(way == 0   ? ZrCreateZRSTRfromUTF8("a", 0, &string)
              : way == 1 ? ZrCreateZRSTRfromUTF8("", -1, &string)
              : way == 2 ? ZrUTF8toZRSTR("", -1, &string)
                         : ZrCreateZRSTRfromUTF32(U"", -1, &string),
              ZR_R_OK);
    EXPECT_EQ(Owned(string).string, shared.string);
  }

  const auto checkWriter = [&](auto write, auto unit) {
    decltype(unit) buffer[4] = {};
    for (int32_t length : {0, -2, INT32_MIN}) {
      int32_t capacity = -1;
      EXPECT_EQ(write(text, length, buffer, &capacity), ZR_R_INVALID_ARGUMENTS);
      EXPECT_EQ(capacity, -1);
    }
    int32_t capacity = -2;
    EXPECT_EQ(write(text, -1, buffer, &capacity), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(write(text, -1, buffer, nullptr), ZR_R_INVALID_ARGUMENTS);
    for (capacity = 0; capacity < 2; ++capacity) {
      EXPECT_EQ(write(text, -1, static_cast<decltype(&buffer[0])>(nullptr), &capacity), ZR_R_INVALID_ARGUMENTS);
    }
    capacity = -1;
    EXPECT_EQ(write(nullptr, -1, buffer, &capacity), ZR_R_INVALID_ARGUMENTS) << "here null is no empty string";
    EXPECT_EQ(write(shared, -1, buffer, &capacity), ZR_R_OK);
    EXPECT_EQ(capacity, 1);
  };
  checkWriter(ZrCreateWCHARfromZRSTR, WCHAR{});
  checkWriter(ZrCreateUTF16fromZRSTR, WCHAR{});
  checkWriter(ZrCreateUTF32fomZRSTR, char32_t{});
  checkWriter(ZrCreateUTF8fromZRSTR, char{});
  int32_t capacity = -1;
  EXPECT_EQ(ZrCreateWCHARfromZRSTR(text, INT32_MAX, nullptr, &capacity), ZR_R_INVALID_ARGUMENTS);
  char byte = 'x';
  capacity = 0;
  EXPECT_EQ(ZrCreateUTF8fromZRSTR(text, -1, &byte, &capacity), ZR_R_FAILED);
  EXPECT_EQ(byte, 'x');
}

// The published examples of what looks like a mistake: sizes that fail or cut, and limits that are one short.
TEST(Unicode, OdditiesThatCallersRelyOn) {
  const Owned snow(Units(W("\x96EA")));
  char bytes[8] = "xxxxxxx";
  int32_t capacity = 2;
  EXPECT_EQ(ZrCreateUTF8fromZRSTR(snow, -1, bytes, &capacity), ZR_R_OK);
  EXPECT_EQ(std::string(bytes, 3), std::string("\xE9\0x", 3)) << "cut inside a character";
  capacity = 5;
  EXPECT_EQ(ZrCreateUTF8fromZRSTR(snow, -1, bytes, &capacity), ZR_R_FAILED) << "too large";
  EXPECT_EQ(std::string(bytes, 5), "\xE9\x9B\xAAxx");

  const std::vector<char32_t> kLimits[] = {{0x7F}, {0x7FF}, {0xFFFF}, {0x1FFFFE}, {0x1FFFFF}};
  const char* kBytes[] = {"\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xF7\xBF\xBF\xBE", nullptr};
  for (size_t i = 0; i < std::size(kBytes); ++i) {
    char* buffer = nullptr;
    const ZRRESULT result = ZrUTF32toUTF8(kLimits[i].data(), kLimits[i].data() + 1, 0, &buffer);
    EXPECT_EQ(result, kBytes[i] ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS);
    EXPECT_STREQ(buffer, kBytes[i] ? kBytes[i] : "");
    std::free(buffer);
  }
  char32_t* points = nullptr;
  const WCHAR units[3] = {};
  EXPECT_EQ(ZrUTF16toUTF32(units + 1, units, 0, &points), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(points, nullptr);
  EXPECT_EQ(ZrUTF16toUTF32(units, units, 0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrUTF16toUTF32(nullptr, nullptr, 0, &points), ZR_R_OK);
  EXPECT_EQ(points[0], 0u);
  std::free(points);

  WCHAR copy[4] = {1, 2, 3, 4};
  EXPECT_EQ(ZrCopyZRSTR2WCHAR(snow, copy, 0), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCopyZRSTR2WCHAR(nullptr, copy, 1), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCopyWCHAR2ZRSTR(copy, nullptr, 1), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCopyZRSTR2WCHAR(snow, copy, 2), ZR_R_OK);
  EXPECT_EQ(Units(copy, 4), Units({WCHAR{0x96EA}, WCHAR{0}, WCHAR{3}, WCHAR{4}}));
  EXPECT_EQ(ZrCopyWCHAR2ZRSTR(W("ab"), copy, 1), ZR_R_OK);
  EXPECT_EQ(copy[1], 0);
  EXPECT_EQ(ZrZRSTRtoUTF8(nullptr, bytes, 8), 0);
  EXPECT_EQ(ZrZRSTRtoUTF8(snow, nullptr, 8), 0);
  EXPECT_EQ(ZrZRSTRtoUTF8(snow, bytes, -1), 0);
}

// Texts of one kind, mixed, torn and noisy, at lengths around those of the vectors.
TEST(Unicode, AllLayersDoWhatTheModelDoes) {
  std::mt19937 random(2026);
  static constexpr char32_t kFirst[] = {0x20, 0x20, 0xA0, 0x7F0, 0x4E00, 0xFFF0, 0x1F600, 0xD7FE};
  static constexpr char32_t kCount[] = {0x5F, 0x5F, 0x60, 0x20, 0x100, 0x20, 0x50, 0x804};
  const auto pick = [&random](size_t below) { return random() % below; };
  for (int round = 0; round < 6000; ++round) {
    std::vector<char32_t> points(pick(pick(8) == 0 ? 200 : 40));
    const size_t only = pick(2 * std::size(kFirst));
    for (char32_t& point : points) {
      const size_t kind = only < std::size(kFirst) ? (pick(12) != 0 ? only : 0) : pick(std::size(kFirst));
      point = kFirst[kind] + static_cast<char32_t>(pick(kCount[kind]));
    }
    std::vector<WCHAR> units = model::StringFromUtf32(points);
    std::vector<uint8_t> bytes;
    for (char32_t point : points) {
      for (char byte : model::Sequence(point, point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4)) {
        bytes.push_back(static_cast<uint8_t>(byte));
      }
    }
    if (pick(2) == 0) {  // torn: a cut, a wild value
      if (!bytes.empty()) bytes.resize(bytes.size() - pick(std::min<size_t>(bytes.size(), 4)));
      if (pick(2) == 0 && !bytes.empty()) bytes[pick(bytes.size())] = static_cast<uint8_t>(random());
      if (!units.empty()) units[pick(units.size())] = static_cast<WCHAR>(pick(2) == 0 ? 0xD800 + pick(0x800) : pick(2));
      if (!points.empty()) points[pick(points.size())] = static_cast<char32_t>(random());
    }
    const auto length = pick(2) == 0 || units.empty() ? -1 : static_cast<int32_t>(1 + pick(units.size()));
    const char* claim = CheckFromUtf8(bytes, static_cast<uint8_t>(random()));
    if (claim == nullptr) claim = CheckFromUtf32(points);
    if (claim == nullptr) claim = CheckWriters(units, length, static_cast<int32_t>(pick(300)));
    if (claim == nullptr) claim = CheckRanges(std::vector<char>(bytes.begin(), bytes.end()), units, points);
    ASSERT_EQ(claim, nullptr) << "round " << round;
  }
}

// Every unit by the system's own mapping of single characters.
TEST(Unicode, CaseIsThatOfTheUsersLocale) {
  EXPECT_EQ(SystemLower(0xC9), 0xE9u) << "a locale with more than ASCII";
  EXPECT_EQ(SystemLower('I'), g_isTurkish ? 0x131u : 'i');
  const auto lowered = [](Units text) {
    for (WCHAR& unit : text) unit = SystemLower(unit);
    return text;
  };
  for (uint32_t first = 1; first < 0x10000; first += 29) {  // spans that end anywhere in a vector
    Units text, upper;
    for (uint32_t unit = first; unit < std::min(first + 29, 0x10000u); ++unit) text += static_cast<WCHAR>(unit);
    for (WCHAR unit : text) upper += SystemUpper(unit);
    const std::vector<WCHAR> original(text.c_str(), text.c_str() + text.size() + 1);
    std::vector<WCHAR> changed = original;
    EXPECT_EQ(ZrWCHARToLower(changed.data()), ZR_R_OK);
    EXPECT_EQ(Units(changed.data()), lowered(text));
    EXPECT_EQ(ZrWCHARCompareNoCase(changed.data(), original.data()), 0);
    changed = original;
    EXPECT_EQ(ZrWCHARToUpper(changed.data()), ZR_R_OK);
    EXPECT_EQ(Units(changed.data()), upper);
  }

  const GuardedPage page, otherPage;
  std::mt19937 random(5);
  static constexpr WCHAR kUnits[] = W("aAzZ@[`{iI\xC9\xE9\x130\x131\x212A\x4E16\xD83E\xDE90");
  for (int round = 0; round < 20000; ++round) {
    Units left(random() % 40, WCHAR{0});
    for (WCHAR& unit : left) unit = kUnits[random() % (std::size(kUnits) - 1)];
    Units right = left;
    if (random() % 2 == 0) right = lowered(right);
    if (random() % 2 == 0 && !right.empty()) right[random() % right.size()] = static_cast<WCHAR>('a' + random() % 3);
    if (random() % 4 == 0) right.resize(random() % (right.size() + 1));
    const int expected = lowered(left).compare(lowered(right));
    const int32_t order = ZrWCHARCompareNoCase(page.Put(left), otherPage.Put(right));
    ASSERT_EQ((order > 0) - (order < 0), (expected > 0) - (expected < 0)) << "round " << round;
  }
  EXPECT_EQ(ZrWCHARCompareNoCase(nullptr, nullptr), 0);
  EXPECT_EQ(ZrWCHARCompareNoCase(nullptr, W("")), -1);
  EXPECT_EQ(ZrWCHARCompareNoCase(W(""), nullptr), 1);
  EXPECT_EQ(ZrWCHARToLower(nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrWCHARToUpper(nullptr), ZR_R_INVALID_ARGUMENTS);
}

#if defined(__linux__)
// The same in a process whose user's locale has a dotted and a dotless i, made for the occasion by a tool that
// other systems have not got.
TEST(Unicode, CaseIsThatOfATurkishUser) {
  if (!std::filesystem::exists("/usr/share/i18n/locales/tr_TR")) GTEST_SKIP() << "needs the package locales";
  std::string folder = testing::TempDir() + "zrcore-locale-XXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  EXPECT_EQ(std::system(("localedef -i tr_TR -f UTF-8 --no-archive " + folder + "/tr_TR.UTF-8").c_str()), 0);
  // (The C library leaks the path of locales.)
  EXPECT_EQ(std::system(("ASAN_OPTIONS=detect_leaks=0 LC_ALL=tr_TR.UTF-8 LOCPATH=" + folder + " " + self +
                         " --gtest_filter=Unicode.CaseIsThatOfTheUsersLocale >&2")
                            .c_str()),
            0);
  std::filesystem::remove_all(folder);
}
#endif
