#include "zrcore/reference.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "tests/support/text.h"

// A record that is destroyed at the end.
struct Ref {
  ZRREF* ref = nullptr;
  ~Ref() { ZrDestroyREF(ref); }
};
struct Sref {
  ZRSREF* sref = nullptr;
  Sref() = default;
  Sref(const Sref&) = delete;
  ~Sref() { ZrDestroySREF(sref); }

  // "null", or what each field holds: "ref 1.2.3.4.5.6", "text ...", both with a bar between.
  explicit Sref(const std::string& description) {
    if (description == "null") return;
    sref = ZrCreateSREF();
    const std::size_t bar = description.find('|');
    for (const std::string& field :
         {description.substr(0, bar), bar == std::string::npos ? "" : description.substr(bar + 1)}) {
      if (field.rfind("ref ", 0) == 0) {
        EXPECT_EQ(ZrStringToREF(Owned(Widened(field.substr(4))), &sref->ref), ZR_R_OK) << description;
      } else if (field.rfind("text ", 0) == 0) {
        sref->text =
            ZrCreateStringByteLen(Widened(field.substr(5)).data(), static_cast<uint32_t>(2 * (field.size() - 5)));
      }
    }
  }
};

static std::string Written(const ZRREF& ref) {
  ZRSTR string = nullptr;
  EXPECT_EQ(ZrREFToString(&ref, &string), ZR_R_OK);
  const Units units = ContentOf(Owned(string));
  return std::string(units.begin(), units.end());
}

static ZRREF g_untouched;  // an out-value that nobody may free
static ZRREF* const kUntouched = &g_untouched;

TEST(Reference, WritesAsTheCLibrary) {
  std::mt19937 random(5);
  for (int round = 0; round < 5000; ++round) {
    ZRREF ref;
    for (uint32_t& word : ref.words) {
      word = static_cast<uint32_t>(random()) >> (random() % 32);
      if (random() % 4 == 0) {  // beside a power of ten
        word = 1;
        for (auto zeros = random() % 10; zeros > 0; --zeros) word *= 10;
        word -= static_cast<uint32_t>(random() % 2);
      }
    }
    const uint32_t* w = ref.words;
    char expected[72];
    std::snprintf(expected, sizeof expected, "%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]);
    ASSERT_EQ(Written(ref), expected);
    Ref read;
    ASSERT_EQ(ZrStringToREF(Owned(Widened(expected)), &read.ref), ZR_R_OK);
    EXPECT_EQ(Written(*read.ref), expected);
  }
}

enum class Out { Record, Null, Untouched };

static void CheckReading(const std::string& bytes, Out out) {
  SCOPED_TRACE(bytes);
  const Owned text(Widened(bytes));
  Ref read;
  read.ref = kUntouched;
  EXPECT_EQ(ZrStringToREF(text, &read.ref), out == Out::Record ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(read.ref == nullptr, out == Out::Null);
  EXPECT_EQ(read.ref == kUntouched, out == Out::Untouched);
  if (read.ref == kUntouched) read.ref = nullptr;

  std::array<uint32_t, 6> w = {9, 9, 9, 9, 9, 9};
  const ZRRESULT result = ZrSplitRefName(text, &w[0], nullptr, &w[2], &w[3], &w[4], &w[5]);
  Sref sref;
  EXPECT_EQ(ZrStringToSREF(text, &sref.sref), ZR_R_OK);
  EXPECT_EQ(sref.sref->ref != nullptr, out == Out::Record);
  EXPECT_EQ(sref.sref->text, out == Out::Record ? nullptr : text.string) << "the same block";
  ZRSTR written = nullptr;
  EXPECT_EQ(ZrSREFToString(sref.sref, &written), ZR_R_OK);
  const Owned owned(written);
  if (out != Out::Record) {
    EXPECT_EQ(result, ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(w, (std::array<uint32_t, 6>{9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(ContentOf(written), Widened(bytes));
  } else {
    EXPECT_EQ(result, ZR_R_OK);
    const uint32_t* r = read.ref->words;
    EXPECT_EQ(w, (std::array<uint32_t, 6>{r[0], 9, r[2], r[3], r[4], r[5]}));
    EXPECT_EQ(ContentOf(written), Widened(Written(*read.ref)));
  }
}

TEST(Reference, ReadsWhatItWritesAndNothingElse) {
  using namespace std::string_literals;
  const struct {
    Out out;
    std::vector<std::string> texts;
  } kRows[] = {
      {Out::Record, {"1.2.3.4.5.6", "0.0.0.0.0.0", "4294967295.0.10.0.0.4294967295"}},
      {Out::Record, {" \t\n\r\f\v1.2.3.4.5.6\v\f\r\n\t "}},
      {Out::Record, {"1.2.3.4.5.6\0"s, "1.2.3.4.5.6\0more"s}},  // a zero unit ends the comparison
      {Out::Untouched, {"1.2.3.4.5.6\0."s}},                    // but not the count of dots
      {Out::Untouched, {"", "   ", "1.2.3.4.5", "1.2.3.4.5.6.7", "1.2.3.4.5.6.", ".2.3.4.5.6", "1.2..4.5.6"}},
      {Out::Untouched, {"1.2.3.4.5. "}},  // trimmed to an empty field
      {Out::Null, {"1. .3.4.5.6"}},       // a blank inside is a field that reads as 0
      {Out::Null, {"1.2.3.04.5.6", "1.2.3.4.5.00", "+1.2.3.4.5.6", "-1.2.3.4.5.6", "1 .2.3.4.5.6", "1. 2.3.4.5.6"}},
      {Out::Null, {"1.2.3.4.5.6x", "x.2.3.4.5.6", "1.2.3.4.5\0.6"s, "1.2.3.4.5.6 \0"s, "4294967296.2.3.4.5.6"}},
      {Out::Null, {"99999999999999999999999.2.3.4.5.6", "1.2.3.4.5.18446744073709551617"}},
  };
  for (const auto& row : kRows) {
    for (const std::string& text : row.texts) CheckReading(text, row.out);
  }
}

TEST(Reference, NullArguments) {
  const Owned text(Widened("1.2.3.4.5.6"));
  ZRREF value = {{1, 2, 3, 4, 5, 6}};
  ZRSREF source = {&value, nullptr};
  Ref ref;
  Sref sref;
  ZRSTR string = nullptr;
  for (ZRRESULT result :
       {ZrCopyREF(nullptr, &ref.ref), ZrCopyREF(&value, nullptr), ZrCopySREF(nullptr, &sref.sref),
        ZrCopySREF(&source, nullptr), ZrREFToString(nullptr, &string), ZrREFToString(&value, nullptr),
        ZrSREFToString(nullptr, &string), ZrSREFToString(&source, nullptr), ZrStringToREF(nullptr, &ref.ref),
        ZrStringToREF(text, nullptr), ZrStringToSREF(nullptr, &sref.sref), ZrStringToSREF(text, nullptr),
        ZrSplitRefName(nullptr, value.words, nullptr, nullptr, nullptr, nullptr, nullptr),
        ZrCompareREF(&value, &value, nullptr), ZrCompareREF_ThreeWay(&value, &value, nullptr),
        ZrCompareSREF(&source, &source, nullptr), ZrCompareSREF_ThreeWay(&source, &source, nullptr)}) {
    EXPECT_EQ(result, ZR_R_INVALID_ARGUMENTS);
  }
  EXPECT_TRUE(ref.ref == nullptr && sref.sref == nullptr && string == nullptr && value.words[0] == 1);
  ZrDestroyREF(nullptr);
  ZrDestroySREF(nullptr);
}

TEST(Reference, CopiesShareTheTextAndNotTheNumbers) {
  for (const char* description : {"ref 1.2.3.4.5.6", "text free", "text ", "ref 1.2.3.4.5.6|text free"}) {
    SCOPED_TRACE(description);
    const Sref source(description);
    const uint32_t count = ZrStringRefCount(source.sref->text);
    Sref copy;
    ASSERT_EQ(ZrCopySREF(source.sref, &copy.sref), ZR_R_OK);
    EXPECT_EQ(copy.sref->text, source.sref->text);
    EXPECT_EQ(ZrStringRefCount(copy.sref->text), count == 0 ? 0 : count + 1);
    ASSERT_EQ(copy.sref->ref != nullptr, source.sref->ref != nullptr);
    if (copy.sref->ref == nullptr) continue;
    EXPECT_NE(copy.sref->ref, source.sref->ref);
    EXPECT_EQ(Written(*copy.sref->ref), Written(*source.sref->ref));
  }
  const Sref neither("");
  Sref copy;
  copy.sref = neither.sref;
  EXPECT_EQ(ZrCopySREF(neither.sref, &copy.sref), 1) << "a success without a record";
  EXPECT_EQ(copy.sref, nullptr);
  ZRSTR text = nullptr;
  EXPECT_EQ(ZrSREFToString(neither.sref, &text), ZR_R_OK);
  EXPECT_NE(text, nullptr);
  EXPECT_EQ(ZrStringLen(Owned(text)), 0u);
}

static int Sign(int32_t order) { return order < 0 ? -1 : order > 0; }

TEST(Reference, OrdersByTheSignedDifference) {
  const ZRREF nil = {}, one = {{1}}, high = {{0x80000001}}, higher = {{0x80000002}}, last = {{0, 0, 0, 0, 0, 1}},
              smallest = {{0x80000000}};
  const struct {
    const ZRREF *left, *right;
    int32_t order, reverse;
  } kRows[] = {
      {&nil, &nil, 0, 0},
      {nullptr, nullptr, 0, 0},
      {nullptr, &nil, 0, 0},
      {nullptr, &high, -1, 1},
      {&one, &nil, 1, -1},
      {&last, &nil, 1, -1},
      {&one, &last, 1, -1},
      {&higher, &one, -0x7FFFFFFF, 0x7FFFFFFF},  // too far apart: the wrong way round
      {&high, &one, INT32_MIN, INT32_MIN},       // each is less than the other
      {&smallest, &nil, INT32_MIN, INT32_MIN},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    for (bool reversed : {false, true}) {
      const ZRREF* left = reversed ? row.right : row.left;
      const ZRREF* right = reversed ? row.left : row.right;
      const int32_t expected = reversed ? row.reverse : row.order;
      int32_t order = 9;
      uint8_t equal = 9;
      EXPECT_EQ(ZrCompareREF_ThreeWay(left, right, &order), ZR_R_OK);
      EXPECT_EQ(order, expected);
      EXPECT_EQ(ZrCompareREF(left, right, &equal), ZR_R_OK);
      EXPECT_EQ(equal, expected == 0);
      EXPECT_EQ(ZRREFGreater(left, right), expected > 0);
      EXPECT_EQ(ZRREFLess(left, right), expected < 0);
    }
  }
}

TEST(Reference, OrdersNumbersAndTexts) {
  const ZRRESULT refused = ZR_R_INVALID_ARGUMENTS;  // and yet a valid answer
  const struct {
    const char *left, *right;
    int sign;
    ZRRESULT result;
  } kRows[] = {
      // All that is nil, before all that is not.
      {"null", "", 0, ZR_R_OK},
      {"null", "text ", 0, ZR_R_OK},
      {"text 0.0.0.0.0.0", "ref 0.0.0.0.0.0", 0, ZR_R_OK},
      {"null", "text  0.0.0.0.0.0", -1, ZR_R_OK},
      {"null", "ref 0.0.0.0.0.0|text ", -1, ZR_R_OK},
      {"text 0.0.0.0.0.0", "ref 4294967295.0.0.0.0.0", -1, ZR_R_OK},
      {"ref 0.0.0.0.0.0", "text x", -1, ZR_R_OK},
      // Two refs, whatever the texts; two texts, by bytes.
      {"ref 1.2.3.4.5.6|text a", "ref 1.2.3.4.5.6|text b", 0, ZR_R_OK},
      {"ref 1.2.3.4.5.6", "ref 1.2.3.4.5.7|text a", -1, ZR_R_OK},
      {"ref 1.2.3.4.5.6|text a", "text b", -1, ZR_R_OK},
      {"ref 1.2.3.4.5.6|text 1.2.3.4.5.6", "text  1.2.3.4.5.6", 1, ZR_R_OK},
      {"text name", "text name1", -1, ZR_R_OK},
      {"text 10.0.0.0.0.0", "text 9.0.0.0.0.0", -1, ZR_R_OK},
      // A ref and a text: by numbers if it reads as such, else by units.
      {"ref 1.2.3.4.5.6", "text 1.2.3.4.5.6", 0, ZR_R_OK},
      {"ref 10.2.3.4.5.6", "text  9.2.3.4.5.6", 1, ZR_R_OK},
      {"ref 1.2.3.4.5.6", "text  0.0.0.0.0.0 ", 1, ZR_R_OK},
      {"ref 4294967295.0.0.0.0.0", "text -1.0.0.0.0.0", 0, refused},
      {"ref 2147483648.0.0.0.0.0", "text -2147483648.0.0.0.0.0", 0, refused},
      {"ref 1.2.3.4.5.6", "text 1.2.3.4.5.6x", -1, refused},
      {"ref 1.2.3.4.5.6", "text 1.2.3.4.5", 1, refused},
      {"ref 1.2.3.4.5.6", "text 01.2.3.4.5.6", 1, refused},
      {"ref 1.2.3.4.5.6", "text name", -1, refused},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.left) + " and " + row.right);
    const Sref one(row.left), other(row.right);
    for (int direction : {1, -1}) {
      const ZRSREF* left = direction == 1 ? one.sref : other.sref;
      const ZRSREF* right = direction == 1 ? other.sref : one.sref;
      const int sign = row.sign * direction;
      int32_t order = 9;
      uint8_t equal = 9;
      EXPECT_EQ(ZrCompareSREF_ThreeWay(left, right, &order), row.result);
      EXPECT_EQ(Sign(order), sign);
      EXPECT_EQ(ZrCompareSREF(left, right, &equal), row.result);
      EXPECT_EQ(equal, sign == 0);
      EXPECT_EQ(ZRSREFGreater(left, right), sign > 0);
      EXPECT_EQ(ZRSREFLess(left, right), sign < 0);
    }
  }
  // The smallest difference is its own opposite, beside a text too.
  const Sref far("ref 2147483649.0.0.0.0.0"), near("text 1.0.0.0.0.0");
  EXPECT_TRUE(ZRSREFLess(far.sref, near.sref) && ZRSREFLess(near.sref, far.sref));
}
