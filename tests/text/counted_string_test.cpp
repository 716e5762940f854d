// Tests counted strings through their exports: creation, references, concatenation and comparison. Comparison is
// checked against std::basic_string.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/guarded_page.h"
#include "tests/support/text.h"

TEST(CountedString, CreatorsHandleNullEmptyAndEveryLength) {
  const Owned shared(ZrCopyString(nullptr)), before(Units(W("before")));
  const struct {
    const char* name;
    ZRRESULT (*create)(const WCHAR*, int32_t, ZRSTR*);
  } kCreators[] = {{"ZrCreateZRSTRfromWCHAR", ZrCreateZRSTRfromWCHAR},
                   {"ZrCreateZRSTRfromUTF16", ZrCreateZRSTRfromUTF16},
                   {"ZrCreateStringLen_2", ZrCreateStringLen_2}};
  for (const WCHAR* text : {static_cast<const WCHAR*>(nullptr), W(""), W("abc")}) {
    for (const int32_t length : {INT32_MIN, -2, -1, 0, 1, 3, 40}) {
      Units expected = text != nullptr ? text : Units();
      const bool isShared = text != nullptr && (expected.empty() || length == 0);
      const bool isRejected = length < -1 || (text == nullptr && length == -1);
      SCOPED_TRACE(testing::Message() << (text ? testing::PrintToString(expected) : "null") << ", length " << length);
      if (length >= 0) expected.resize(static_cast<std::size_t>(length));
      for (const auto& [name, create] : kCreators) {
        SCOPED_TRACE(name);
        ZRSTR string = before;
        EXPECT_RESULT(create(text, length, &string), isRejected ? ZR_R_INVALID_ARGUMENTS : ZR_R_OK);
        EXPECT_EQ(string == before.string, isRejected) << "only a rejected call may leave the variable unchanged";
        if (isRejected) continue;
        EXPECT_EQ(string == shared.string, isShared);
        EXPECT_EQ(ContentOf(Owned(string)), isShared ? Units() : expected);
      }
      if (isRejected) continue;
      const Owned exact(ZrCreateStringLen(text, static_cast<uint32_t>(length)));
      EXPECT_NE(exact.string, shared.string);
      EXPECT_EQ(ContentOf(exact), expected);
    }
  }
  EXPECT_RESULT(ZrCreateZRSTRfromWCHAR(W("a"), 1, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateString(nullptr), nullptr);
}

TEST(CountedString, StoresAnyBytes) {
  const std::string bytes("a\0\0bc", 5), terminator(2, '\0');
  const Owned odd(ZrCreateStringByteLen(bytes.data(), 5)), zeros(ZrCreateStringByteLen(nullptr, 4));
  EXPECT_EQ(ZrStringByteLen(odd), 5u);
  EXPECT_EQ(ZrStringLen(odd), 2u) << "an odd byte length must be rounded down";
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(odd.string), 7), bytes + terminator);
  EXPECT_EQ(ZrStringLen(Owned(ZrCreateString(odd.string))), 3u) << "a scan must also find this terminator";
  EXPECT_EQ(ContentOf(zeros), Units(2, WCHAR{0}));
  EXPECT_NE(Owned(ZrCreateStringByteLen("", 0)).string, Owned(ZrCopyString(nullptr)).string)
      << "must not be the shared empty string";
}

// Texts start and end at every position in a 16-byte vector, and a vectorised scan must find the same end. The page
// after the text must not be read.
TEST(CountedString, FindsTheTerminatorAtAnyPosition) {
  const GuardedPage page;
  for (std::size_t length = 1; length < 40; ++length) {
    const Units text(length, WCHAR{0x100});  // a unit with one zero byte is not the terminator
    for (std::size_t after = 0; after < 8; ++after) {
      EXPECT_EQ(ContentOf(Owned(ZrCreateString(page.Put(text + Units(after, WCHAR{0}))))), text)
          << after << " units after it";
    }
  }
}

// Fields of packed records may have odd addresses. The test itself must not read the text as 16-bit units.
TEST(CountedString, CreatesFromTextAtAnOddAddress) {
  for (const Units& text : {Units(W("")), Units(W("odd"))}) {
    std::vector<char> bytes(1 + (text.size() + 1) * sizeof(WCHAR));
    std::memcpy(bytes.data() + 1, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    EXPECT_EQ(ContentOf(Owned(ZrCreateString(reinterpret_cast<const WCHAR*>(bytes.data() + 1)))), text);
  }
}

TEST(CountedString, CopiesShareOneReferenceCountedBlock) {
  const Owned text(Units(W("text"))), empty(ZrCopyString(nullptr));
  {
    const Owned copy(ZrCopyString(text)), deep(ZrDeepCopyString(text)), deepNothing(ZrDeepCopyString(nullptr));
    EXPECT_EQ(copy.string, text.string);
    EXPECT_EQ(ZrStringRefCount(text), 2u);
    EXPECT_NE(deep.string, text.string);
    EXPECT_EQ(ContentOf(deep), W("text"));
    EXPECT_NE(deepNothing.string, empty.string);
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  EXPECT_EQ(ZrStringRefCount(nullptr) + ZrStringLen(nullptr) + ZrStringByteLen(nullptr) + ZrStringLen(empty), 0u);
  ZrDestroyString(nullptr);
  for (uint32_t releases = ZrStringRefCount(empty) + 2; releases > 0; --releases) ZrDestroyString(empty);
  EXPECT_EQ(ZrStringRefCount(empty), 1u) << "the shared empty string must survive too many releases";
}

TEST(CountedString, ReCreateReplacesTheString) {
  ZRSTR string = ZrCreateString(W("old"));
  EXPECT_EQ(ZrReCreateString(&string, nullptr) + ZrReCreateStringLen(&string, nullptr, 4), 0);
  EXPECT_EQ(ZrReCreateString(nullptr, W("a")) + ZrReCreateStringLen(nullptr, W("a"), 1), 0);
  EXPECT_EQ(ContentOf(string), W("old"));
  EXPECT_EQ(ZrReCreateString(&string, W("newer")), 1);
  EXPECT_EQ(ContentOf(string), W("newer"));
  EXPECT_EQ(ZrReCreateStringLen(&string, W("newest"), 3), 1);
  EXPECT_EQ(ContentOf(Owned(string)), W("new"));
}

TEST(CountedString, AppendConcatenatesBytes) {
  const Owned text(Units(W("a\0b"), 3)), empty(ZrCreateStringLen(nullptr, 0)), odd(ZrCreateStringByteLen("xyz", 3));
  EXPECT_EQ(ContentOf(Owned(ZrAppendStrings(text, text))), Units(W("a\0ba\0b"), 6));
  EXPECT_EQ(ZrStringByteLen(Owned(ZrAppendStrings(odd, odd))), 6u) << "the byte length must be the sum of both";
  EXPECT_NE(Owned(ZrAppendStrings(text, empty)).string, text.string);
  EXPECT_EQ(Owned(ZrAppendStrings(text, nullptr)).string, text.string);
  EXPECT_EQ(Owned(ZrAppendStrings(nullptr, text)).string, text.string);
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  EXPECT_NE(Owned(ZrAppendStrings(nullptr, nullptr)).string, Owned(ZrCopyString(nullptr)).string);
}

TEST(CountedString, ComparesByBytesOrByUnits) {
  const Units kTexts[] = {{}, W("a"), W("abc"), Units(W("ab\0c"), 4), Units(W("\0b"), 2), W("\x00FF"), W("\x0100")};
  const auto bytesOf = [](const Units& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR));
  };
  int32_t order = 99;
  for (const Units& left : kTexts) {
    for (const Units& right : kTexts) {
      SCOPED_TRACE(testing::PrintToString(left) + " and " + testing::PrintToString(right));
      const Owned leftString(left.empty() ? Owned() : Owned(left)), rightString(right);
      EXPECT_RESULT(ZrCompareString(leftString, rightString, &order), ZR_R_OK);
      EXPECT_EQ(SignOf(order), SignOf(bytesOf(left).compare(bytesOf(right))));
      // A string that begins with a zero unit is not empty, although the comparison by units ends there.
      const Units rightText = right.c_str();
      EXPECT_RESULT(ZrCompareStringW(leftString, right.empty() ? nullptr : right.c_str(), &order), ZR_R_OK);
      EXPECT_EQ(order, !left.empty() && rightText.empty() ? 1 : SignOf(Units(left.c_str()).compare(rightText)));
    }
  }
  ExpectRejected({ZrCompareString(nullptr, nullptr, nullptr), ZrCompareStringW(nullptr, nullptr, nullptr)});
}
