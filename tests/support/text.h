// Strings as test values, and assertions that many tests use.

#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>
#include <string>

#include "tests/support/result_names.h"
#include "tests/support/units.h"
#include "zrcore/zrcore.h"

inline Units ContentOf(ZRSTR string) {
  EXPECT_EQ(string && ZrStringByteLen(string) % 2 == 0 ? string[ZrStringLen(string)] : 0, 0)
      << "the terminator must be 0";
  return string ? Units(string, ZrStringLen(string)) : Units();
}

inline int SignOf(int32_t order) { return (order > 0) - (order < 0); }

// Expects a call to return a result. The failure message shows the call and the names of both results.
#define EXPECT_RESULT(call, expected) EXPECT_PRED_FORMAT2(IsResult, call, expected)
#define ASSERT_RESULT(call, expected) ASSERT_PRED_FORMAT2(IsResult, call, expected)

inline testing::AssertionResult IsResult(const char* call, const char*, Result result, Result expected) {
  if (result == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << call << "\n  returned " << result << "\n  expected " << expected;
}

// Expects each of the calls between a pair of braces to return the same result.
#define ExpectEach(expected, ...) ExpectEachOf(__FILE__, __LINE__, #__VA_ARGS__, expected, __VA_ARGS__)
#define ExpectRejected(...) ExpectEachOf(__FILE__, __LINE__, #__VA_ARGS__, ZR_R_INVALID_ARGUMENTS, __VA_ARGS__)

inline void ExpectEachOf(const char* file, int line, const std::string& calls, Result expected,
                         std::initializer_list<ZRRESULT> results) {
  std::size_t begin = 1, end = 1;
  for (const Result result : results) {
    for (int depth = 0; end + 1 < calls.size() && (depth > 0 || calls[end] != ','); ++end) {
      depth += (calls[end] == '(') - (calls[end] == ')');  // the comma after a call is outside all parentheses
    }
    const testing::AssertionResult outcome = IsResult(calls.substr(begin, end - begin).c_str(), "", result, expected);
    if (!outcome) ADD_FAILURE_AT(file, line) << outcome.message();
    end += 2;
    begin = end;
  }
}

inline bool operator==(const ZRUUID& left, const ZRUUID& right) {
  uint8_t equal = 0;
  return ZR_SUCCEEDED(ZrCompareUUID(&left, &right, &equal)) && equal == 1;
}
inline std::ostream& operator<<(std::ostream& out, const ZRUUID& uuid) {
  Owned text;
  (void)ZrStringFromUUID(&uuid, &text.string);
  return out << Narrowed(ContentOf(text));
}
