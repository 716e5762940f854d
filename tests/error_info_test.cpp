#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

#include "tests/support/text.h"

static void CheckRow(uint32_t code, const Units& text, const Units& description) {
  Owned first, second, third;
  EXPECT_EQ(ZrErrorInfoGetText(code, &first.string), ZR_R_OK) << code;
  EXPECT_EQ(ZrErrorInfoGetText(code, &second.string), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoGetDescription(code, &third.string), ZR_R_OK);
  EXPECT_EQ(ContentOf(first), text);
  EXPECT_EQ(ContentOf(third), description);
  EXPECT_EQ(first.string, second.string) << "references of one string";
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
}

// Where ctest runs each test in a process of its own, the first registration is the very first call.
TEST(ErrorInfo, RegistersOnceAndNoBuiltInCode) {
  EXPECT_EQ(ZrErrorInfoRegister(0x80000000, W("mine"), nullptr), ZR_R_ALREADY_REGISTERED);
  EXPECT_EQ(ZrErrorInfoRegister(0x8000001E, W("text"), W("description")), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoRegister(0x8000001E, W("other"), nullptr), ZR_R_ALREADY_REGISTERED);
  CheckRow(0x8000001E, W("text"), W("description"));
  EXPECT_EQ(ZrErrorInfoRegister(7, W("no more"), nullptr), ZR_R_OK);
  CheckRow(7, W("no more"), {});
  ZRSTR text = nullptr;
  EXPECT_EQ(ZrErrorInfoGetText(ZR_R_OK, &text), ZR_R_NOT_EXISTING);
  EXPECT_EQ(ZrErrorInfoGetDescription(0x8000001F, &text), ZR_R_NOT_EXISTING);
  EXPECT_EQ(text, nullptr) << "unchanged";
  ExpectRefused(
      {ZrErrorInfoRegister(9, nullptr, W("d")), ZrErrorInfoGetText(7, nullptr), ZrErrorInfoGetDescription(7, nullptr)});
}
