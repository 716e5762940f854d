#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

#include "tests/support/text.h"

static void CheckRow(uint32_t code, const Units& text, const Units& description) {
  SCOPED_TRACE(testing::Message() << std::hex << code);
  ZRSTR first = nullptr, second = nullptr, third = nullptr;
  EXPECT_EQ(ZrErrorInfoGetText(code, &first), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoGetText(code, &second), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoGetDescription(code, &third), ZR_R_OK);
  const Owned firstOwner(first), secondOwner(second), thirdOwner(third);
  EXPECT_EQ(ContentOf(first), text);
  EXPECT_EQ(ContentOf(third), description);
  EXPECT_EQ(first, second) << "references of one string";
  EXPECT_EQ(ZrStringRefCount(first), 3u);
}

TEST(ErrorInfo, NamesEveryCodeOfTheHeader) {
  std::ifstream file(BASE_HEADER);
  const std::string header(std::istreambuf_iterator<char>(file), {});
  const std::regex definition("#define (ZR_R_\\w+) +ZR_RESULT_CODE\\((0x\\w+)\\)");  // all but ZR_R_OK
  int codes = 0;
  for (std::sregex_iterator at(header.begin(), header.end(), definition), end; at != end; ++at, ++codes) {
    CheckRow(static_cast<uint32_t>(std::stoul((*at)[2], nullptr, 0)), Widened((*at)[1]),
             W("The component reported a general error"));
  }
  EXPECT_EQ(codes, 33);
  // None between, around and behind.
  for (uint32_t code : {0u, 1u, 0xC9u, 0xCBu, 0x7FFFFFFFu, 0x8000001Fu, 0x80000022u, 0xFFFFFFFFu}) {
    ZRSTR text = nullptr;
    EXPECT_EQ(ZrErrorInfoGetText(code, &text), ZR_R_NOT_EXISTING) << code;
    EXPECT_EQ(ZrErrorInfoGetDescription(code, &text), ZR_R_NOT_EXISTING);
    EXPECT_EQ(text, nullptr) << "unchanged";
  }
}

// Where ctest runs each test in a process of its own, the first registration is the very first call.
TEST(ErrorInfo, RegistersOnceAndNoBuiltInCode) {
  EXPECT_EQ(ZrErrorInfoRegister(0x80000000, W("mine"), nullptr), ZR_R_ALREADY_REGISTERED);
  EXPECT_EQ(ZrErrorInfoRegister(0x8000001E, W("text"), W("description")), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoRegister(0x8000001E, W("other"), nullptr), ZR_R_ALREADY_REGISTERED);
  CheckRow(0x8000001E, W("text"), W("description"));
  EXPECT_EQ(ZrErrorInfoRegister(7, W("no more"), nullptr), ZR_R_OK);
  CheckRow(7, W("no more"), {});
  EXPECT_EQ(ZrErrorInfoRegister(8, W(""), nullptr), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoRegister(9, nullptr, W("d")), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrErrorInfoGetText(7, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrErrorInfoGetDescription(7, nullptr), ZR_R_INVALID_ARGUMENTS);
}
