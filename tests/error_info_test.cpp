#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "tests/support/text.h"

static constexpr char kDescription[] = "The component reported a general error";

static Units TextOf(uint32_t code) {
  ZRSTR text = nullptr;
  EXPECT_EQ(ZrErrorInfoGetText(code, &text), ZR_R_OK) << std::hex << code;
  return ContentOf(Owned(text));
}

static Units DescriptionOf(uint32_t code) {
  ZRSTR description = nullptr;
  EXPECT_EQ(ZrErrorInfoGetDescription(code, &description), ZR_R_OK) << std::hex << code;
  return ContentOf(Owned(description));
}

// Where ctest runs each test in a process of its own, this registration is the very first call.
TEST(ErrorInfo, BuiltInCodesComeBeforeTheFirstRegistration) {
  EXPECT_EQ(ZrErrorInfoRegister(0x80000000, W("mine"), nullptr), ZR_R_ALREADY_REGISTERED);
  EXPECT_EQ(TextOf(0x80000000), W("ZR_R_FAILED"));
}

TEST(ErrorInfo, NamesEveryCodeOfTheHeader) {
  std::ifstream header(BASE_HEADER);
  std::map<uint32_t, std::string> codes;
  const std::regex definition("#define (ZR_R_\\w+) +ZR_RESULT_CODE\\((\\w+)\\).*");
  std::smatch match;
  for (std::string line; std::getline(header, line);) {
    if (!std::regex_match(line, match, definition)) continue;
    codes[static_cast<uint32_t>(std::stoul(match[2], nullptr, 0))] = match[1];
  }
  ASSERT_EQ(codes.erase(0), 1u);
  EXPECT_EQ(codes.size(), 33u);
  for (const auto& [code, name] : codes) {
    EXPECT_EQ(TextOf(code), Widened(name));
    EXPECT_EQ(DescriptionOf(code), Widened(kDescription));
  }
  // None between, around and behind.
  for (uint32_t code : {0u, 1u, 0xC9u, 0xCBu, 0x7FFFFFFFu, 0x8000001Fu, 0x80000022u, 0xFFFFFFFFu}) {
    ZRSTR text = nullptr;
    EXPECT_EQ(ZrErrorInfoGetText(code, &text), ZR_R_NOT_EXISTING) << code;
    EXPECT_EQ(ZrErrorInfoGetDescription(code, &text), ZR_R_NOT_EXISTING);
    EXPECT_EQ(text, nullptr) << "unchanged";
  }
}

TEST(ErrorInfo, RegistersOnce) {
  const Units text = W("text"), description = W("description");
  EXPECT_EQ(ZrErrorInfoRegister(0x8000001E, text.c_str(), description.c_str()), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoRegister(0x8000001E, W("other"), nullptr), ZR_R_ALREADY_REGISTERED);
  EXPECT_EQ(TextOf(0x8000001E), text);
  EXPECT_EQ(DescriptionOf(0x8000001E), description);
  EXPECT_EQ(ZrErrorInfoRegister(7, W(""), nullptr), ZR_R_OK);
  EXPECT_EQ(TextOf(7), Units());
  EXPECT_EQ(DescriptionOf(7), Units());

  EXPECT_EQ(ZrErrorInfoRegister(8, nullptr, W("d")), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrErrorInfoGetText(7, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrErrorInfoGetDescription(7, nullptr), ZR_R_INVALID_ARGUMENTS);
}

TEST(ErrorInfo, GivesReferencesOfOneString) {
  ZRSTR first = nullptr, second = nullptr;
  EXPECT_EQ(ZrErrorInfoGetText(0xCA, &first), ZR_R_OK);
  EXPECT_EQ(ZrErrorInfoGetText(0xCA, &second), ZR_R_OK);
  const Owned firstOwner(first), secondOwner(second);
  EXPECT_EQ(first, second);
  EXPECT_EQ(ZrStringRefCount(first), 3u);
}
