// Tests loading of modules in the platform layer. The same tests run on every system. A port to a new system is
// finished when this test and all others pass.

#include "platform/module.h"

#include <gtest/gtest.h>

#include "tests/support/text.h"

TEST(PlatformModule, ReportsWhyAModuleCannotBeLoaded) {
  const Units kPaths[] = {
      Widened(TEST_DIRECTORY "/no_module" MODULE_SUFFIX),
      Widened("/nowhere/" + std::string(2000, 'x')),       // a long path must not displace the reason
      Widened("/nowhere/two\r\nlines\x7F") + W("\x2028"),  // a newline in a path must not break the line
      Units(1, WCHAR{0xDC00}),
  };
  for (const Units& path : kPaths) {
    SCOPED_TRACE(testing::PrintToString(path.substr(0, 80)));
    Units reason;
    EXPECT_EQ(PlatformLoadModule(path.c_str(), reason), nullptr);
    EXPECT_EQ(reason.find(W("nowhere/")), Units::npos)
        << "the reason must not contain the path, which the caller reports";
    EXPECT_TRUE(reason.size() > 10 && reason.size() <= kModuleReasonUnits) << testing::PrintToString(reason);
    for (WCHAR unit : reason) {
      EXPECT_TRUE(unit >= 0x20 && unit != 0x7F && unit != 0x2028) << testing::PrintToString(reason);
    }
  }
}

TEST(PlatformModule, FindsOnlyFunctionsOfTheModule) {
  Units reason;
  const ModuleHandle module = PlatformLoadModule(Widened(TEST_DIRECTORY "/good" MODULE_SUFFIX).c_str(), reason);
  ASSERT_NE(module, nullptr);
  EXPECT_NE(PlatformFindFunction(module, "ZrInitModule"), nullptr);
  EXPECT_EQ(PlatformFindFunction(module, "UndefinedFunction"), nullptr);
  PlatformReleaseModule(module);
}
