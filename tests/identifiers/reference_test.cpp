// Tests REFs and SREFs: parsing, formatting, copies and order. The functions of a family must agree with each other.

#include "zrcore/reference.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/variant_text.h"

template <auto write = ZrREFToString>
static std::string Formatted(const auto& record) {
  Owned string;
  EXPECT_RESULT(write(&record, &string.string), ZR_R_OK);
  EXPECT_NE(string.string, nullptr);
  return DescribeText(string);
}

static constexpr char kUntouched[] = "9.9.9.9.9.9";  // the out value before the call

// Parses a text. Returns its numbers formatted again, or the out value after a failure. All parsers must agree.
static std::string Parsed(const std::string& bytes) {
  SCOPED_TRACE(testing::PrintToString(bytes));
  const Owned text = StringOf(bytes);
  ZRREF before = {{9, 9, 9, 9, 9, 9}}, split = before, *ref = &before;
  const ZRRESULT result = ZrStringToREF(text, &ref);
  const std::string left = ref != nullptr ? Describe(*ref) : "null";
  EXPECT_EQ(ref != nullptr ? Formatted(*ref) : "null", left);
  ZrDestroyREF(ref != &before ? ref : nullptr);
  const bool isRead = result == ZR_R_OK;
  const ZRRESULT expected = isRead ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS;
  EXPECT_RESULT(result, expected) << "\n  from ZrStringToREF";
  uint32_t* w = split.words;
  EXPECT_RESULT(ZrSplitRefName(text, w, w + 1, w + 2, w + 3, w + 4, w + 5), expected);
  EXPECT_EQ(Describe(split), isRead ? left : kUntouched);
  ZRSREF* sref = nullptr;
  EXPECT_RESULT(ZrStringToSREF(text, &sref), ZR_R_OK);
  EXPECT_EQ(sref->text, isRead ? nullptr : text.string) << "must share the source's string";
  EXPECT_EQ(Formatted<ZrSREFToString>(*sref), isRead ? left : bytes);
  ZrDestroySREF(sref);
  return left;
}

TEST(Reference, ParsesOnlyTheFormatItWrites) {
  using namespace std::string_literals;
  for (const std::string text : {"0.9.10.99.100.999", "1000.9999.10000.99999.100000.999999",
                                 "1000000.9999999.10000000.99999999.100000000.999999999",
                                 "1000000000.2147483647.2147483648.4294967294.4294967295.1"}) {
    EXPECT_EQ(Parsed(text), text);
  }
  for (const auto& text : {" \t\n\r\f\v1.2.3.4.5.6\v\f\r\n\t "s, "1.2.3.4.5.6\0more"s})
    EXPECT_EQ(Parsed(text), "1.2.3.4.5.6");
  for (const auto& text : {""s, "1.2.3.4.5"s, "1.2..4.5.6"s, "1.2.3.4.5. "s, "1.2.3.4.5.6\0."s}) {
    EXPECT_EQ(Parsed(text), kUntouched) << text;
  }
  for (const auto& text :
       {"1. .3.4.5.6"s, "1.2.3.04.5.6"s, "-1.2.3.4.5.6"s, "1.2.3.4.5.6x"s, "4294967296.2.3.4.5.6"s}) {
    EXPECT_EQ(Parsed(text), "null") << text;
  }
}

TEST(Reference, RejectsNullArguments) {
  const Owned text(Widened("1.2.3.4.5.6"));
  ZRREF value = {{1}}, *ref = nullptr;
  ZRSREF source = {&value, nullptr}, *sref = nullptr;
  ZRSTR string = nullptr;
  ExpectRejected({ZrCopyREF(nullptr, &ref), ZrCopySREF(&source, nullptr), ZrREFToString(nullptr, &string),
                  ZrSREFToString(nullptr, &string), ZrStringToREF(nullptr, &ref), ZrStringToSREF(nullptr, &sref),
                  ZrSplitRefName(nullptr, value.words, nullptr, nullptr, nullptr, nullptr, nullptr),
                  ZrCompareREF(&value, &value, nullptr), ZrCompareREF_ThreeWay(&value, &value, nullptr),
                  ZrCompareSREF(&source, &source, nullptr), ZrCompareSREF_ThreeWay(&source, &source, nullptr),
                  ZrCopyREF(&value, nullptr), ZrREFToString(&value, nullptr), ZrSREFToString(&source, nullptr),
                  ZrStringToREF(text, nullptr), ZrStringToSREF(text, nullptr)});
  EXPECT_TRUE(ref == nullptr && sref == nullptr && string == nullptr && value.words[0] == 1);
  EXPECT_RESULT(ZrSplitRefName(text, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), ZR_R_OK)
      << "every out parameter may be null";
  ZrDestroySREF(nullptr);
}

TEST(Reference, CopiesEveryPart) {
  for (const std::string parts : {"1.2.3.4.5.6", "text name", "1.2.3.4.5.6 text name", "neither"}) {
    SCOPED_TRACE(parts);
    const OwnedVariant source = Value("SREF " + parts);
    OwnedVariant copy = Value("SREF null");
    copy.Value.sref = source.Value.sref;
    const bool isNothing = parts == "neither";
    EXPECT_RESULT(ZrCopySREF(source.Value.sref, &copy.Value.sref), isNothing ? 1 : ZR_R_OK);
    EXPECT_EQ(Describe(copy), isNothing ? "SREF null" : Describe(source));
    ZRSTR text = source.Value.sref->text;
    EXPECT_EQ(ZrStringRefCount(text), text != nullptr ? 2u : 0u) << "the copy must add one reference";
  }
}

static std::string DescribeOrNull(const auto* record) { return record != nullptr ? Describe(*record) : "null"; }

// Returns the order of two records. The four functions of a family must agree on it.
template <auto compareThreeWay, auto compare, auto isGreater, auto isLess, class Record>
static int32_t OrderOf(const Record* left, const Record* right, ZRRESULT result) {
  SCOPED_TRACE((std::is_same_v<Record, ZRREF> ? "REF " : "SREF ") + DescribeOrNull(left) + " and " +
               DescribeOrNull(right));
  int32_t order = 9;
  uint8_t equal = 9;
  EXPECT_RESULT(compareThreeWay(left, right, &order), result);
  EXPECT_RESULT(compare(left, right, &equal), result);
  EXPECT_EQ(equal, order == 0);
  EXPECT_EQ(isGreater(left, right) - isLess(left, right), SignOf(order));
  return order;
}
static constexpr auto RefOrder = OrderOf<ZrCompareREF_ThreeWay, ZrCompareREF, ZRREFGreater, ZRREFLess, ZRREF>;
static constexpr auto SrefOrder = OrderOf<ZrCompareSREF_ThreeWay, ZrCompareSREF, ZRSREFGreater, ZRSREFLess, ZRSREF>;

TEST(Reference, OrdersByNumbersElseByText) {
  const int32_t min = INT32_MIN, rejected = ZR_R_INVALID_ARGUMENTS;  // the order is valid nevertheless
  const struct {
    std::string left, right;
    int32_t order, reverse;
    ZRRESULT result = ZR_R_OK;
  } kRows[] = {
      // By numbers: the signed difference of the first two words that differ. If it overflows, the order is reversed,
      // or the same in both directions.
      {"null", "0.0.0.0.0.0", 0, 0},
      {"null", "2147483649.0.0.0.0.0", -1, 1},
      {"1.0.0.0.0.0", "0.0.0.0.0.7", 1, -1},
      {"2147483650.0.0.0.0.0", "1.0.0.0.0.0", min + 1, INT32_MAX},
      {"2147483649.0.0.0.0.0", "text 1.0.0.0.0.0", min, min},
      // Every nil value precedes every other value.
      {"text 0.0.0.0.0.0", "0.0.0.0.0.0", 0, 0},
      {"text ", "neither", 0, 0},
      {"text ", "text  0.0.0.0.0.0", -1, 1},
      {"null", "0.0.0.0.0.0 text ", -1, 1},
      // Two REFs by their numbers, whatever the texts; two texts by their bytes.
      {"1.2.3.4.5.6 text b", "1.2.3.4.5.7 text a", -1, 1},
      {"text 10.0.0.0.0.0", "text 9.0.0.0.0.0", -1, 1},
      // A REF and a text: by numbers if the text parses as a REF, else by units.
      {"10.2.3.4.5.6", "text  9.2.3.4.5.6", 1, -1},
      {"4294967295.0.0.0.0.2147483648", "text -1.0.0.0.0.-2147483648", 0, 0, rejected},
      {"1.2.3.4.5.6", "text 1.2.3.4.5.6x", -1, 1, rejected},
      {"1.2.3.4.5.6", "text 1.2.3.4.5", 1, -1, rejected},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.left + " and " + row.right);
    const OwnedVariant left = Value("SREF " + row.left), right = Value("SREF " + row.right);
    const ZRSREF *sref = left.Value.sref, *otherSref = right.Value.sref;
    EXPECT_EQ(SignOf(SrefOrder(sref, otherSref, row.result)), SignOf(row.order));
    EXPECT_EQ(SignOf(SrefOrder(otherSref, sref, row.result)), SignOf(row.reverse));
    if ((row.left + row.right).find("text") != std::string::npos) continue;
    const ZRREF *ref = sref != nullptr ? sref->ref : nullptr, *otherRef = otherSref->ref;
    EXPECT_EQ(RefOrder(ref, otherRef, ZR_R_OK), row.order);
    EXPECT_EQ(RefOrder(otherRef, ref, ZR_R_OK), row.reverse);
  }
  EXPECT_EQ(Formatted<ZrSREFToString>(ZRSREF{}), "");
}
