#include <gtest/gtest.h>

#include <string>

#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/system.h"

TEST(Lifecycle, TheGuardComesAfterTheResultsThatAreClearedFirst) {
  FakeDiscovery discovery;
  const ZRUUID classId = ClassId(1);
  uint32_t cookie = 9;
  void* object = &object;
  IZrConfiguration* configuration = reinterpret_cast<IZrConfiguration*>(&configuration);
  ZRUUID untouched = classId;
  ZRSTR name = reinterpret_cast<ZRSTR>(&name);
  EXPECT_EQ(ZrAddComponentDiscovery(&discovery, nullptr), ZR_R_INVALID_ARGUMENTS);
  for (ZRRESULT result :
       {ZrAddComponentDiscovery(nullptr, &cookie), ZrRemoveComponentDiscovery(1),
        ZrCreateInstance(&classId, 0, &classId, 0, nullptr), ZrCreateInstance(&classId, 0, &classId, 0, &object),
        ZrQueryComponentConfiguration(&classId, nullptr, nullptr),
        ZrQueryComponentConfiguration(&classId, nullptr, &configuration), ZrCLSIDFromClassName(nullptr, nullptr),
        ZrCLSIDFromClassName(nullptr, &untouched), ZrClassNameFromCLSID(&classId, nullptr),
        ZrClassNameFromCLSID(&classId, &name)}) {
    EXPECT_EQ(result, ZR_R_NO_INIT);
  }
  EXPECT_TRUE(cookie == 0 && object == nullptr && configuration == nullptr);
  EXPECT_TRUE(untouched == classId && name == reinterpret_cast<ZRSTR>(&name));

  // A surplus call is harmless, the others are counted.
  for (ZRRESULT result : {ZrUninitialize(), ZrInitialize(), ZrInitialize(), ZrUninitialize()}) {
    EXPECT_EQ(result, ZR_R_OK);
  }
  cookie = 9;
  EXPECT_EQ(ZrAddComponentDiscovery(nullptr, &cookie), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(ZrCreateInstance(&classId, 0, &classId, 0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrCreateInstance(&classId, 0, &classId, 0, &object), ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(ZrRemoveComponentDiscovery(1), ZR_R_NO_INIT);
}

TEST(Lifecycle, TeardownTellsWhatWasLeft) {
  const std::string discoveries = "Not all Component-Discoveries removed while destroying CGlobalData";
  const std::string assemblies = "Not all Component-Assemblies removed while destroying CGlobalData";
  const std::string components = "Not all Components removed while destroying CGlobalData";
  const std::pair<const char*, std::string> kRows[] = {
      {"balanced", ""},  // the last ZrUninitialize cleared what nobody removed
      {"object", discoveries + assemblies + components},
      {"removed", assemblies},                // an assembly stays registered after its classes
      {"left-behind", discoveries},           // a thread holds the lock for ever and keeps nobody from ending
      {"throwing-stream", ""},                // the texts are lost, the teardown goes on
      {"unload", discoveries + "|unloaded"},  // unloading the library is the same teardown
  };
  for (const auto& [state, text] : kRows) {
    const ProgramOutput output = OutputOfProgram(TEST_DIRECTORY "/teardown_child", state);
    EXPECT_TRUE(output.isGood) << state;
    EXPECT_EQ(output.text, text) << state;
  }
}
