// Strings in the tests' terms, and claims that many tests make.

#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>

#include "tests/support/units.h"
#include "zrcore/zrcore.h"

inline Units ContentOf(ZRSTR string) {
  EXPECT_EQ(string && ZrStringByteLen(string) % 2 == 0 ? string[ZrStringLen(string)] : 0, 0) << "the terminator";
  return string ? Units(string, ZrStringLen(string)) : Units();
}

inline int SignOf(int32_t order) { return (order > 0) - (order < 0); }

inline void ExpectEach(ZRRESULT expected, std::initializer_list<ZRRESULT> answers) {
  for (const ZRRESULT& answer : answers) EXPECT_EQ(answer, expected) << "call " << &answer - answers.begin();
}
inline void ExpectRefused(std::initializer_list<ZRRESULT> answers) { ExpectEach(ZR_R_INVALID_ARGUMENTS, answers); }

inline bool operator==(const ZRUUID& left, const ZRUUID& right) {
  uint8_t equal = 0;
  return ZR_SUCCEEDED(ZrCompareUUID(&left, &right, &equal)) && equal == 1;
}
inline std::ostream& operator<<(std::ostream& out, const ZRUUID& uuid) {
  Owned text;
  (void)ZrStringFromUUID(&uuid, &text.string);
  return out << Narrowed(ContentOf(text));
}
