#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <thread>

#include "components/component_management.h"
#include "tests/support/fake_discovery.h"
#include "tests/support/system.h"

TEST(Lifecycle, TheGuardComesAfterTheResultsThatAreClearedFirst) {
  const ZRUUID classId = ClassId(1);
  uint32_t cookie = 9;
  void* object = &object;
  IZrConfiguration* configuration = reinterpret_cast<IZrConfiguration*>(&configuration);
  ZRUUID untouched = classId;
  ZRSTR name = reinterpret_cast<ZRSTR>(&name);
  ExpectEach(ZR_R_NO_INIT, {ZrAddComponentDiscovery(nullptr, &cookie), ZrRemoveComponentDiscovery(1),
                            ZrCreateInstance(&classId, 0, &classId, 0, &object),
                            ZrQueryComponentConfiguration(&classId, nullptr, &configuration),
                            ZrCLSIDFromClassName(nullptr, &untouched), ZrClassNameFromCLSID(&classId, &name)});
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(configuration, nullptr);
  EXPECT_EQ(untouched, classId);
  EXPECT_EQ(name, reinterpret_cast<ZRSTR>(&name));

  // A surplus call is harmless, the others are counted.
  ExpectEach(ZR_R_OK, {ZrUninitialize(), ZrInitialize(), ZrInitialize(), ZrUninitialize()});
  cookie = 9;
  ExpectRefused({ZrAddComponentDiscovery(nullptr, &cookie), ZrCreateInstance(&classId, 0, &classId, 0, nullptr),
                 ZrQueryComponentConfiguration(&classId, nullptr, nullptr), ZrCLSIDFromClassName(nullptr, nullptr),
                 ZrClassNameFromCLSID(&classId, nullptr)});
  EXPECT_EQ(cookie, 0u);
  EXPECT_RESULT(ZrUninitialize(), ZR_R_OK);
  EXPECT_RESULT(ZrRemoveComponentDiscovery(1), ZR_R_NO_INIT);
  EXPECT_RESULT(ZrAddComponentDiscovery(nullptr, nullptr), ZR_R_INVALID_ARGUMENTS) << "looked for ahead of the guard";
}

static const std::string kDiscoveries = "Not all Component-Discoveries removed while destroying CGlobalData";
static const std::string kAssemblies = "Not all Component-Assemblies removed while destroying CGlobalData";
static const std::string kComponents = "Not all Components removed while destroying CGlobalData";

// As a thread does that the system ends in the middle; that must keep nobody else from ending.
static void HoldForever() ZR_UNCHECKED { ComponentRegistry().ManagementLock().Enter(); }

// Ends the process in some state, and what the library tells on the error stream, where a death test looks.
static void EndAfter(void (*action)(uint32_t cookie)) {
  auto& discovery = *new FakeDiscovery({{1, ModulePath("good")}});  // outlives every teardown
  std::cout.rdbuf(std::cerr.rdbuf());
  ZrInitialize();
  action(discovery.Add());
  std::exit(0);
}

TEST(LifecycleDeathTest, TeardownTellsWhatWasLeft) {
  // The last ZrUninitialize clears what nobody removed.
  EXPECT_EXIT(EndAfter([](uint32_t) { ZrUninitialize(); }), testing::ExitedWithCode(0), testing::Eq(""));

  EXPECT_EXIT(EndAfter([](uint32_t) { CreateObject(1); }), testing::ExitedWithCode(0),
              testing::Eq(kDiscoveries + kAssemblies + kComponents));

  // An assembly stays registered after its classes.
  EXPECT_EXIT(EndAfter([](uint32_t cookie) { CreateObject(1), ZrRemoveComponentDiscovery(cookie); }),
              testing::ExitedWithCode(0), testing::Eq(kAssemblies));

  EXPECT_EXIT(EndAfter([](uint32_t) { std::thread(HoldForever).join(); }), testing::ExitedWithCode(0),
              testing::Eq(kDiscoveries));

  // A stream that throws loses the texts and ends nothing else.
  EXPECT_EXIT(EndAfter([](uint32_t) {
                static struct : std::streambuf {
                } full;
                std::cout.rdbuf(&full);
                std::cout.exceptions(std::ios::badbit);
              }),
              testing::ExitedWithCode(0), testing::Eq(""));
}

// Of another copy of the library than the one that this program is made of.
TEST(Lifecycle, UnloadingIsTheSameTeardown) {
  void* library = OpenLibrary(ZRCORE_LIBRARY);
  ASSERT_NE(library, nullptr);
#define FIND(name) reinterpret_cast<decltype(&name)>(FindInLibrary(library, #name))
  FakeDiscovery discovery;
  uint32_t cookie = 0;
  EXPECT_RESULT(FIND(ZrInitialize)(), ZR_R_OK);
  EXPECT_RESULT(FIND(ZrAddComponentDiscovery)(&discovery, &cookie), ZR_R_OK);
  EXPECT_EQ(FIND(ZrWCHARCompareNoCase)(W("Text"), W("TEXT")), 0);  // this and the next allocate what they keep
  EXPECT_RESULT(FIND(ZrErrorInfoRegister)(1, W("mine"), nullptr), ZR_R_OK);
  std::ostringstream told;
  std::streambuf* const before = std::cout.rdbuf(told.rdbuf());
  CloseLibrary(library);
  std::cout.rdbuf(before);
  EXPECT_EQ(told.str(), kDiscoveries);
  EXPECT_EQ(discovery.references, 0u);
}
