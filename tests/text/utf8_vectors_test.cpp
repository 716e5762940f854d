// Compares the Unicode conversions with the slow model on random texts, in each form that this processor can run, and
// without a form.

#include "text/utf8_vectors.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/guarded_page.h"
#include "tests/support/random_seed.h"
#include "tests/support/unicode_check.h"

// Runs the test once with each form that this processor can run, and once without a form. The library then uses what it
// has chosen for itself.
template <class Test>
static void WithEachForm(Test test) {
  static constexpr const char* kNames[] = {"without a form", "AVX-512", "AVX2", "NEON"};
  const Utf8Form chosen = g_utf8Form;
  for (const Utf8Form form : kUtf8Forms) {
    if (!CanRun(form)) continue;
    g_utf8Form = form;
    SCOPED_TRACE(kNames[static_cast<size_t>(form)]);
    test();
  }
  g_utf8Form = chosen;
}

// Ranges of code points, as the first and the count: six ranges of text, then the limits of each encoding, and
// surrogates.
static constexpr char32_t kRanges[][2] = {{0x20, 0x5F},     {0xA0, 0x760},    {0x4E00, 0x1000}, {0xFF80, 0x80},
                                          {0x1F600, 0x100}, {0x7A, 0x10},     {0x7F0, 0x20},    {0xFFF0, 0x20},
                                          {0x10FFF0, 0x20}, {0x1FFFF0, 0x20}, {0xD7FE, 0x804}};

// The texts are runs of characters of one range, long enough for the vectors and for the rest after them. A text has
// one error or none.
TEST(Utf8Vectors, ConversionsMatchTheModelInEachForm) {
  const uint32_t seed = RandomSeed(42);
  for (uint32_t round = 0; round < 4300; ++round) {
    std::mt19937 random(seed + round);
    const auto pick = [&random](size_t below) { return static_cast<uint32_t>(random() % below); };
    std::vector<char32_t> points;
    std::vector<uint8_t> bytes;
    std::vector<WCHAR> units;
    for (size_t runs = 1 + pick(4); runs != 0; --runs) {
      const size_t range = pick(pick(8) == 0 ? std::size(kRanges) : 6), other = pick(6), every = 1 + pick(150);
      for (size_t length = pick(pick(3) == 0 ? 150 : 40); length != 0; --length) {
        const auto& [first, count] = kRanges[pick(every) == 1 ? other : range];
        points.push_back(first + pick(count));
        for (const WCHAR unit : model::Units(points.back())) units.push_back(unit);
        const size_t size = pick(2000) == 0 ? 4 : model::SequenceSize(points.back());  // sometimes overlong
        for (const char byte : model::Sequence(points.back(), size)) bytes.push_back(static_cast<uint8_t>(byte));
      }
    }
    const uint32_t fault = pick(6);
    const auto corrupt = [&](auto& text, uint32_t value) {
      if (text.empty()) return;
      const auto place = text.begin() + pick(text.size());
      if (fault == 0) *place = static_cast<std::decay_t<decltype(*place)>>(value);
      if (fault == 1) text.erase(place);
      if (fault == 2) text.erase(text.end() - pick(std::min<size_t>(text.size(), 4)), text.end());
    };
    corrupt(bytes, pick(0x100));
    corrupt(units, pick(8) == 0 ? 0 : 0xD800 + pick(0x800));
    corrupt(points, pick(size_t{1} << pick(33)));
    const int32_t length = pick(2) == 0 || units.empty() ? -1 : static_cast<int32_t>(1 + pick(units.size()));
    const auto stray = static_cast<int32_t>(pick(1200));
    const auto expectNone = [&](const std::string& difference) {
      ASSERT_TRUE(difference.empty()) << DescribeRound(seed, round) << "\n" << difference;
    };
    expectNone(FirstDifference(
        {CheckFromUtf32(points), CheckRanges({bytes.begin(), bytes.end()}, units, points)}));  // the same in every form
    WithEachForm([&] {
      expectNone(
          FirstDifference({CheckFromUtf8(bytes, static_cast<uint8_t>(stray)), CheckWriters(units, length, stray)}));
    });
    if (testing::Test::HasFatalFailure()) return;
  }
}

// ASCII characters follow a truncated sequence, or half of a surrogate pair, at each position around the end of a
// vector. Blocks of ASCII are counted without a check of each character.
TEST(Utf8Vectors, DetectATruncatedCharacterBeforeABlockOfAscii) {
  WithEachForm([] {
    for (const std::string cut : {"\xC3", "\xE2\x82", "\xF0\x9F\xAA"}) {
      for (size_t place = 56; place < 72; ++place) {
        std::vector<uint8_t> bytes(200, 'a');
        std::copy(cut.begin(), cut.end(), bytes.begin() + static_cast<std::ptrdiff_t>(place));
        EXPECT_EQ(CheckFromUtf8(bytes, 'b'), "") << cut.size() << " bytes of a sequence at " << place;
      }
    }
    for (size_t place = 24; place < 72; ++place) {
      std::vector<WCHAR> units(200, 'a');
      units[place] = 0xD83D;
      EXPECT_EQ(CheckWriters(units, -1, 300), "") << "a lone surrogate at " << place;
    }
  });
}

// An overlong form, which yields one unit rather than two, at each place among characters of four bytes.
TEST(Utf8Vectors, DecodeAnOverlongFormAmongCharactersOfFourBytes) {
  WithEachForm([] {
    for (size_t place = 0; place < 40; ++place) {
      std::string text;
      for (size_t at = 0; at < 40; ++at) text += at == place ? "\xF0\x82\x82\xAC" : "\xF0\x9F\x98\x80";
      EXPECT_EQ(CheckFromUtf8({text.begin(), text.end()}, 'b'), "") << "at " << place;
    }
  });
}

// Long runs of ASCII, as a whole text and before another character, in strings that begin anywhere in a cache line.
TEST(Utf8Vectors, ConvertLongRunsOfAscii) {
  WithEachForm([] {
    for (size_t size = 500; size < 700; ++size) {
      std::vector<uint8_t> bytes(size);
      for (size_t at = 0; at < size; ++at) bytes[at] = static_cast<uint8_t>('a' + at % 26);
      EXPECT_EQ(CheckFromUtf8(bytes, 'b'), "") << size << " ASCII bytes";
      std::vector<WCHAR> units(bytes.begin(), bytes.end());
      units.back() = 0x20AC;
      EXPECT_EQ(CheckWriters(units, -1, 300), "") << "a unit after " << size - 1 << " ASCII units";
      bytes[size - 2] = 0xC3;
      bytes[size - 1] = 0xA9;
      EXPECT_EQ(CheckFromUtf8(bytes, 'b'), "") << "a character after " << size - 2 << " ASCII bytes";
    }
  });
}

// Every kind of error, and sequences that are accepted although they aren't valid, after texts of every length up to
// several vectors, at the end or with a little more text after them.
TEST(Utf8Vectors, FindEachErrorAfterTextOfEveryLength) {
  const std::string kBytes[] = {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
  const std::string kBadBytes[] = {
      "\x80",     "\xC3",         "\xE2",     "\xE2\x82", "\xF0\x9F\x98",     "\xC3\xC3",
      "\xE2\xE2", "\xC3\xA9\x80", "\xFF\x80", "\xF0\x9F", "\xF0\x80\x80\x80", "\xFC\x90\x80\x80"};
  const Units kUnits[] = {{'a'}, {0xE9}, {0x20AC}, {0xD83D, 0xDE00}};
  const Units kBadUnits[] = {{0xD83D}, {0xDE00}, {0xDE00, 0xD83D}, {0xD83D, 0xD83D, 0xDE00}};
  WithEachForm([&] {
    for (size_t length = 0; length <= 300; ++length) {
      for (size_t kind = 0; kind < std::size(kBytes); ++kind) {
        const auto repeat = [](auto text, const auto& character, size_t size) {
          while (text.size() < size) text += character;
          return text;
        };
        // Each length has a third of the errors; the next lengths have the others.
        for (size_t at = (length + kind) % 3, after = length; at < std::size(kBadBytes); at += 3, ++after) {
          const std::string before = repeat(std::string(), kBytes[kind], length);
          const std::string text = repeat(before + kBadBytes[at], kBytes[kind], before.size() + after % 8);
          ASSERT_EQ(CheckFromUtf8({text.begin(), text.end()}, 'b'), "") << length << " bytes, then " << at;
        }
        const Units before = repeat(Units(), kUnits[kind], length), &error = kBadUnits[(length + kind) % 4];
        const Units text = repeat(before + error, kUnits[kind], before.size() + length % 8);
        ASSERT_EQ(CheckWriters({text.begin(), text.end()}, -1, static_cast<int32_t>(length)), "") << length;
      }
    }
  });
}

// Texts and buffers begin or end with a page, so that an access outside them is a fault. They have every length up to
// several vectors; a buffer has exactly the size of the text, or half of it.
TEST(Utf8Vectors, StayWithinTheTextAndTheBuffer) {
  const GuardedPage textPage, bufferPage;
  const std::u32string run(40, U'r'), zeros(40, U'\0');  // zeros, so that no other unit hides the bits of U+0080
  const std::u32string kPatterns[] = {U"a",
                                      U"\xE9",
                                      U"\x20AC",
                                      U"\x1F600",
                                      U"a\xE9\x20AC\x1F600",
                                      zeros + U"\x80",
                                      run + U"\xE9\xE9\xE9" + run + U"\x20AC\x1F600"};
  WithEachForm([&] {
    for (const std::u32string& pattern : kPatterns) {
      std::u32string points;
      for (std::string bytes; bytes.size() < 300;) {
        points.push_back(pattern[(points.size() + 1) % pattern.size()]);
        Units units;
        for (const char32_t point : points) units += model::Units(point);
        bytes = model::Encoded(points);
        for (const bool isAtEnd : {false, true}) {
          SCOPED_TRACE(Escaped(points) + (isAtEnd ? " at the end" : " at the beginning") + " of a page");
          char* const text = textPage.Place<char>(bytes.size(), isAtEnd);
          std::copy(bytes.begin(), bytes.end(), text);
          Owned string;
          ASSERT_RESULT(ZrCreateZRSTRfromUTF8(text, static_cast<int32_t>(bytes.size()), &string.string), ZR_R_OK);
          ASSERT_EQ(Escaped(ContentOf(string)), Escaped(units));

          WCHAR* const source = textPage.Place<WCHAR>(units.size(), isAtEnd);
          std::copy(units.begin(), units.end(), source);
          const auto length = static_cast<int32_t>(units.size());
          int32_t size = -1;
          ASSERT_RESULT(ZrCreateUTF8fromZRSTR(source, length, nullptr, &size), ZR_R_OK);
          ASSERT_EQ(static_cast<size_t>(size), bytes.size() + 1);
          for (int32_t capacity : {size, size / 2}) {
            const auto written = static_cast<size_t>(capacity);
            char* const buffer = bufferPage.Place<char>(written, isAtEnd);
            ASSERT_RESULT(ZrCreateUTF8fromZRSTR(source, length, buffer, &capacity), ZR_R_OK);
            ASSERT_EQ(Escaped(std::string(buffer, written)), Escaped(bytes.substr(0, written - 1) + '\0'));
          }
        }
      }
    }
  });
}
