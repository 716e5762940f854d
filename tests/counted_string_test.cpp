#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "tests/support/text.h"

static const std::vector<std::optional<Units>> kTexts = {std::nullopt,         Units(),          W("a"), W("abc"),
                                                         Units(W("ab\0c"), 4), Units(40, W('x'))};

// What a terminated scan of `text` finds.
static Units Terminated(const std::optional<Units>& text) { return text ? Units(text->c_str()) : Units(); }

static Units Resized(Units units, std::size_t length) {
  units.resize(length);
  return units;
}

TEST(CountedString, CreatorsFromTextFollowTheirRules) {
  using Creator = ZRRESULT (*)(const WCHAR*, int32_t, ZRSTR*);
  for (Creator create :
       {Creator{ZrCreateZRSTRfromWCHAR}, Creator{ZrCreateZRSTRfromUTF16}, Creator{ZrCreateStringLen_2}}) {
    for (const auto& text : kTexts) {
      for (int32_t length : {INT32_MIN, -2, -1, 0, 1, 2, 3, 5, 40, 100}) {
        SCOPED_TRACE(testing::Message() << "text of " << (text ? int(text->size()) : -1) << ", length " << length);
        ZRSTR string = reinterpret_cast<ZRSTR>(&string);
        const ZRRESULT result = create(text ? text->c_str() : nullptr, length, &string);
        if (length < -1 || (!text && length == -1)) {
          EXPECT_EQ(result, ZR_R_INVALID_ARGUMENTS);
          EXPECT_EQ(string, reinterpret_cast<ZRSTR>(&string)) << "a refusal leaves the variable";
          continue;
        }
        const Owned owned(string);
        const Owned shared(ZrCopyString(nullptr));
        ASSERT_EQ(result, ZR_R_OK);
        const Units found = Terminated(text);
        const bool isShared = text && (found.empty() || length == 0);
        EXPECT_EQ(string == shared.string, isShared);
        EXPECT_EQ(ContentOf(string),
                  isShared ? Units() : Resized(found, length < 0 ? found.size() : std::size_t(length)));
        EXPECT_TRUE(isShared || ZrStringRefCount(string) == 1);
      }
    }
  }
  EXPECT_EQ(ZrCreateZRSTRfromWCHAR(W("a"), 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateString(nullptr), nullptr);
  EXPECT_EQ(ContentOf(Owned(ZrCreateString(W("text")))), W("text"));
}

TEST(CountedString, CreatorsOfExactLengthsNeverShare) {
  const Owned shared(ZrCopyString(nullptr));
  for (const auto& text : kTexts) {
    for (uint32_t length : {0u, 1u, 2u, 3u, 5u, 41u, 0xFFFFFFFFu}) {
      if (!text && length == 0xFFFFFFFF) continue;  // reads the null text, by contract
      const Units found = Terminated(text);
      const Owned string(ZrCreateStringLen(text ? text->c_str() : nullptr, length));
      EXPECT_EQ(ContentOf(string), length == 0xFFFFFFFF ? found : Resized(found, length));
      EXPECT_NE(string.string, shared.string);
    }
  }
  const unsigned char bytes[] = {0x61, 0, 0, 0x62, 0x63};
  for (uint32_t length = 0; length <= sizeof bytes; ++length) {
    for (const void* data : {static_cast<const void*>(bytes), static_cast<const void*>(nullptr)}) {
      const Owned string(ZrCreateStringByteLen(data, length));
      EXPECT_EQ(ZrStringByteLen(string), length);
      EXPECT_EQ(ZrStringLen(string), length / 2);
      EXPECT_NE(string.string, shared.string);
      for (uint32_t at = 0; at < length + 2; ++at) {
        EXPECT_EQ(reinterpret_cast<unsigned char*>(string.string)[at], data && at < length ? bytes[at] : 0);
      }
    }
  }
}

// Texts at every place in a 16-byte vector, ending at every place: a scan in vectors must find the same end. The last
// unit of each is the last of a page with none behind it.
TEST(CountedString, FindsTheTerminatorWhereverTheTextLies) {
  const GuardedPage page;
  for (std::size_t length = 1; length < 40; ++length) {
    const Units text(length, WCHAR{0x100});  // a unit with a zero byte is no end
    EXPECT_EQ(ZrStringLen(Owned(ZrCreateString(page.Put(text)))), length);
    for (std::size_t start = 0; start < 16; ++start) {
      const Units buffer = Units(start, WCHAR{0}) + text;
      EXPECT_EQ(ZrStringLen(Owned(ZrCreateString(buffer.c_str() + start))), length);
    }
  }
}

TEST(CountedString, CopiesAndReleasesByReference) {
  const Owned empty(ZrCopyString(nullptr));
  const uint32_t before = ZrStringRefCount(empty);
  EXPECT_EQ(Owned(ZrCopyString(nullptr)).string, empty.string);
  EXPECT_EQ(ZrStringRefCount(empty), before);
  EXPECT_EQ(ZrStringLen(empty), 0u);

  const Owned text(Units(W("text")));
  {
    const Owned copy(ZrCopyString(text));
    EXPECT_EQ(copy.string, text.string);
    EXPECT_EQ(ZrStringRefCount(text), 2u);
    const Owned deep(ZrDeepCopyString(text));
    EXPECT_NE(deep.string, text.string);
    EXPECT_EQ(ContentOf(deep), W("text"));
    EXPECT_EQ(ZrStringRefCount(text), 2u);
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  const Owned deepNothing(ZrDeepCopyString(nullptr));
  EXPECT_TRUE(deepNothing.string != nullptr && deepNothing.string != empty.string);
  EXPECT_EQ(ZrStringRefCount(nullptr) + ZrStringLen(nullptr) + ZrStringByteLen(nullptr), 0u);
  ZrDestroyString(nullptr);
}

TEST(CountedString, TheSharedEmptyStringOutlivesTooManyReleases) {
  const ZRSTR empty = ZrCopyString(nullptr);
  for (uint32_t releases = ZrStringRefCount(empty) + 2; releases > 0; --releases) ZrDestroyString(empty);
  EXPECT_EQ(ZrStringRefCount(empty), 1u);
  EXPECT_EQ(Owned(ZrCopyString(nullptr)).string, empty);
}

TEST(CountedString, RecreatesInPlace) {
  ZRSTR string = ZrCreateString(W("old"));
  EXPECT_EQ(ZrReCreateString(&string, nullptr), 0);
  EXPECT_EQ(ZrReCreateStringLen(&string, nullptr, 4), 0);
  EXPECT_EQ(ContentOf(string), W("old"));
  EXPECT_EQ(ZrReCreateString(nullptr, W("a")), 0);
  EXPECT_EQ(ZrReCreateStringLen(nullptr, W("a"), 1), 0);
  EXPECT_EQ(ZrReCreateString(&string, W("newer")), 1);
  EXPECT_EQ(ContentOf(string), W("newer"));
  EXPECT_EQ(ZrReCreateStringLen(&string, W("newest"), 3), 1);
  EXPECT_EQ(ContentOf(string), W("new"));
  ZrDestroyString(string);
}

TEST(CountedString, Appends) {
  const Owned text(Units(W("a\0b"), 3)), empty(ZrCreateStringLen(nullptr, 0)), odd(ZrCreateStringByteLen("xyz", 3));
  EXPECT_EQ(ContentOf(Owned(ZrAppendStrings(text, text))), Units(W("a\0ba\0b"), 6));
  EXPECT_EQ(ContentOf(Owned(ZrAppendStrings(text, empty))), ContentOf(text));
  EXPECT_NE(Owned(ZrAppendStrings(text, empty)).string, text.string);
  EXPECT_EQ(Owned(ZrAppendStrings(text, nullptr)).string, text.string);
  EXPECT_EQ(Owned(ZrAppendStrings(nullptr, text)).string, text.string);
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  const Owned nothing(ZrAppendStrings(nullptr, nullptr)), shared(ZrCopyString(nullptr));
  EXPECT_TRUE(ZrStringLen(nothing) == 0 && nothing.string != shared.string);
  EXPECT_EQ(ZrStringByteLen(Owned(ZrAppendStrings(odd, odd))), 6u) << "byte lengths add up";
}

struct Comparison {
  std::optional<Units> left, right;
  int byBytes, byUnits;  // against the right as a terminated text
};

TEST(CountedString, Compares) {
  const Comparison kRows[] = {
      {std::nullopt, std::nullopt, 0, 0},
      {std::nullopt, Units(), 0, 0},
      {Units(), W("a"), -1, -1},
      {W("a"), std::nullopt, 1, 1},
      {W("abc"), W("abd"), -1, -1},
      {W("abc"), W("ab"), 1, 1},
      {W("\x0100"), W("\x00FF"), -1, 1},     // the low byte decides, or the unit
      {Units(W("a\0b"), 3), W("a"), 1, 0},   // what follows a zero unit counts, or doesn't
      {Units(W("\0b"), 2), W("a"), -1, -1},  // not empty, though its first unit is zero
      {Units(W("\0b"), 2), std::nullopt, 1, 1},
  };
  for (const Comparison& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    const Owned left(row.left), right(row.right);
    const auto sign = [](int32_t order) { return (order > 0) - (order < 0); };
    int32_t order = 99;
    EXPECT_EQ(ZrCompareString(left, right, &order), ZR_R_OK);
    EXPECT_EQ(sign(order), row.byBytes);
    EXPECT_EQ(ZrCompareString(right, left, &order), ZR_R_OK);
    EXPECT_EQ(sign(order), -row.byBytes);
    EXPECT_EQ(ZrCompareStringW(left, row.right ? row.right->c_str() : nullptr, &order), ZR_R_OK);
    EXPECT_EQ(order, row.byUnits);
  }
  const Owned odd(ZrCreateStringByteLen(W("xy"), 3));
  int32_t order = 99;
  EXPECT_EQ(ZrCompareStringW(odd, W("xyz"), &order), ZR_R_OK);
  EXPECT_EQ(order, -1) << "half a unit behind the last one reads as the end";
  EXPECT_EQ(ZrCompareString(nullptr, nullptr, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCompareStringW(nullptr, nullptr, nullptr), ZR_R_INVALID_ARGUMENTS);
}
