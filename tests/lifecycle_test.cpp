#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"

TEST(Lifecycle, TheGuardComesAfterTheResultsThatAreClearedFirst) {
  FakeDiscovery discovery;
  const ZRUUID classId = ClassId(1);
  uint32_t cookie = 9;
  EXPECT_EQ(ZrAddComponentDiscovery(&discovery, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrAddComponentDiscovery(nullptr, &cookie), ZR_R_NO_INIT);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(ZrRemoveComponentDiscovery(1), ZR_R_NO_INIT);
  void* object = &object;
  EXPECT_EQ(ZrCreateInstance(&classId, 0, &classId, 0, nullptr), ZR_R_NO_INIT);
  EXPECT_EQ(ZrCreateInstance(&classId, 0, &classId, 0, &object), ZR_R_NO_INIT);
  EXPECT_EQ(object, nullptr);
  IZrConfiguration* configuration = reinterpret_cast<IZrConfiguration*>(&configuration);
  EXPECT_EQ(ZrQueryComponentConfiguration(&classId, nullptr, nullptr), ZR_R_NO_INIT);
  EXPECT_EQ(ZrQueryComponentConfiguration(&classId, nullptr, &configuration), ZR_R_NO_INIT);
  EXPECT_EQ(configuration, nullptr);
  ZRUUID untouched = classId;
  ZRSTR name = reinterpret_cast<ZRSTR>(&name);
  EXPECT_EQ(ZrCLSIDFromClassName(nullptr, nullptr), ZR_R_NO_INIT);
  EXPECT_EQ(ZrCLSIDFromClassName(nullptr, &untouched), ZR_R_NO_INIT);
  EXPECT_EQ(ZrClassNameFromCLSID(&classId, nullptr), ZR_R_NO_INIT);
  EXPECT_EQ(ZrClassNameFromCLSID(&classId, &name), ZR_R_NO_INIT);
  EXPECT_TRUE(untouched == classId && name == reinterpret_cast<ZRSTR>(&name));

  EXPECT_EQ(ZrUninitialize(), ZR_R_OK) << "a surplus call is harmless";
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  cookie = 9;
  EXPECT_EQ(ZrAddComponentDiscovery(nullptr, &cookie), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(ZrCreateInstance(&classId, 0, &classId, 0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateInstance(&classId, 0, &classId, 0, &object), ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK) << "calls are counted";
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(discovery.references, 0u);
}

// What a child process writes on its standard output stream while it ends.
static std::string OutputOf(const std::string& arguments) {
  FILE* child = popen(("timeout 20 " TEST_DIRECTORY "/teardown_child " + arguments).c_str(), "r");
  std::string output;
  for (int byte; (byte = fgetc(child)) != EOF;) output += static_cast<char>(byte);
  EXPECT_EQ(pclose(child), 0) << arguments;
  return output;
}

TEST(Lifecycle, TeardownTellsWhatWasLeft) {
  const std::string discoveries = "Not all Component-Discoveries removed while destroying CGlobalData";
  const std::string assemblies = "Not all Component-Assemblies removed while destroying CGlobalData";
  const std::string components = "Not all Components removed while destroying CGlobalData";
  EXPECT_EQ(OutputOf("balanced"), "") << "the last ZrUninitialize cleared what nobody removed";
  EXPECT_EQ(OutputOf("initialized"), "");
  EXPECT_EQ(OutputOf("used"), "") << "three times loaded, used all over and unloaded";
  EXPECT_EQ(OutputOf("late-reference"), "") << "a record that is released after the library's end goes to the heap";
  EXPECT_EQ(OutputOf("discovery"), discoveries);
  EXPECT_EQ(OutputOf("object"), discoveries + assemblies + components);
  EXPECT_EQ(OutputOf("removed"), assemblies) << "an assembly stays registered after its classes";
  EXPECT_EQ(OutputOf("left-behind"), discoveries) << "a thread that holds the lock for ever keeps nobody from ending";
  EXPECT_EQ(OutputOf("throwing-stream"), "") << "the texts are lost, the teardown goes on";
  EXPECT_EQ(OutputOf("unload"), discoveries + "|unloaded") << "unloading the library is the same teardown";
}
