// The reason that a failed load reports, made of the dynamic loader's text.

#include "platform/module.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/text.h"

// The linker redirects the library's calls of dlerror to this wrapper, which returns the text that a test has set.
static const char* g_loaderText = nullptr;

extern "C" {
char* __real_dlerror();
char* __wrap_dlerror() {
  char* text = __real_dlerror();
  return g_loaderText == nullptr ? text : const_cast<char*>(g_loaderText);
}
}

// What the loader says of a file that is not there, put in its mouth.
TEST(PosixModule, TheReasonOfAFailedLoadIsOneLineWithoutThePath) {
  const std::string path = "/nowhere/file", limit(kModuleReasonUnits - 1, 'x');
  const struct {
    std::string said;
    Units reason;
  } kRows[] = {
      {path + ": not there", W("not there")},
      {path + "2: not there", W("/nowhere/file2: not there")},
      {path + " not there", W("/nowhere/file not there")},
      {"/nowhere/: needed by " + path + ": not there", W("/nowhere/: needed by /nowhere/file: not there")},
      {"a\x1F"
       "b\x7F"
       "c\xC2\x85"
       "d\xE2\x80\xA8"
       "e\xE2\x80\xA9"
       "f \xC2\x84",
       W("a b c d e f \x0084")},
      {limit + "yz", Widened(limit + "y")},
      {limit + "\xF0\x9F\xAA\x90", Widened(limit)},  // half a character is no text
  };
  for (const auto& [said, expected] : kRows) {
    g_loaderText = said.c_str();
    Units reason;
    EXPECT_EQ(PlatformLoadModule(Widened(path).c_str(), reason), nullptr);
    EXPECT_EQ(reason, expected) << said;
  }
  g_loaderText = nullptr;
}
