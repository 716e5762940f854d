// Tests the reason that a failed load reports on POSIX systems. The tests replace the dynamic loader's message.

#include "platform/module.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/text.h"

// The linker redirects the library's calls of dlerror to this wrapper, which returns the text that a test sets.
static const char* g_loaderText = nullptr;

extern "C" {
char* __real_dlerror();
char* __wrap_dlerror() {
  char* text = __real_dlerror();
  return g_loaderText == nullptr ? text : const_cast<char*>(g_loaderText);
}
}

// The file does not exist, and each row replaces the loader's message about it.
TEST(PosixModule, LoadFailureReasonIsOneLineWithoutThePath) {
  const std::string path = "/nowhere/file", limit(kModuleReasonUnits - 1, 'x');
  const struct {
    std::string message;
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
      {limit + "\xF0\x9F\xAA\x90", Widened(limit)},  // half a surrogate pair is dropped
  };
  for (const auto& [message, expected] : kRows) {
    g_loaderText = message.c_str();
    Units reason;
    EXPECT_EQ(PlatformLoadModule(Widened(path).c_str(), reason), nullptr);
    EXPECT_EQ(reason, expected) << message;
  }
  g_loaderText = nullptr;
}
