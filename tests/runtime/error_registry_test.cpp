// Tests the error registry through its exports. The oracle for the built-in codes is the header that defines them.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

#include "tests/support/text.h"

static void CheckRow(uint32_t code, const Units& text, const Units& description) {
  SCOPED_TRACE(Format("code 0x%08X", code));
  Owned first, second, described;
  EXPECT_RESULT(ZrErrorInfoGetText(code, &first.string), ZR_R_OK);
  EXPECT_RESULT(ZrErrorInfoGetText(code, &second.string), ZR_R_OK);
  EXPECT_RESULT(ZrErrorInfoGetDescription(code, &described.string), ZR_R_OK);
  EXPECT_EQ(ContentOf(first), text);
  EXPECT_EQ(ContentOf(described), description);
  EXPECT_EQ(first.string, second.string);
  EXPECT_EQ(ZrStringRefCount(first), 3u) << "the registry and two callers must share one string";
}

// The first call is a registration. When ctest runs each test in its own process, it is the registry's very first use.
TEST(ErrorInfo, NamesEveryHeaderCodeAndRegistersOthersOnce) {
  EXPECT_RESULT(ZrErrorInfoRegister(0x80000000, W("mine"), nullptr), ZR_R_ALREADY_REGISTERED);
  std::ifstream file(BASE_HEADER);
  const std::string header(std::istreambuf_iterator<char>(file), {});
  const std::regex definition("#define (ZR_R_\\w+) +ZR_RESULT_CODE\\((0x\\w+)\\)");  // all but ZR_R_OK
  int codes = 0;
  for (std::sregex_iterator at(header.begin(), header.end(), definition), end; at != end; ++at, ++codes) {
    CheckRow(static_cast<uint32_t>(std::stoul((*at)[2], nullptr, 0)), Widened((*at)[1]),
             W("The component reported a general error"));
  }
  EXPECT_EQ(codes, 33);

  EXPECT_RESULT(ZrErrorInfoRegister(0x8000001E, W("text"), W("description")), ZR_R_OK);
  EXPECT_RESULT(ZrErrorInfoRegister(0x8000001E, W("other"), nullptr), ZR_R_ALREADY_REGISTERED);
  CheckRow(0x8000001E, W("text"), W("description"));
  EXPECT_RESULT(ZrErrorInfoRegister(7, W("no more"), nullptr), ZR_R_OK);
  CheckRow(7, W("no more"), {});
  ZRSTR text = nullptr;
  EXPECT_RESULT(ZrErrorInfoGetText(ZR_R_OK, &text), ZR_R_NOT_EXISTING);
  EXPECT_RESULT(ZrErrorInfoGetDescription(0x8000001F, &text), ZR_R_NOT_EXISTING);
  EXPECT_EQ(text, nullptr) << "a failure must not change the variable";
  ExpectRejected(
      {ZrErrorInfoRegister(9, nullptr, W("d")), ZrErrorInfoGetText(7, nullptr), ZrErrorInfoGetDescription(7, nullptr)});
}
