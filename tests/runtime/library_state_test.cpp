// Tests initialisation, shutdown and teardown of the library: the check for initialisation in the component exports,
// the messages about components that are left at the end of the process, and the unloading of the library.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <thread>

#include "components/component_registry.h"
#include "tests/support/fake_discovery.h"
#include "tests/support/system.h"

TEST(LibraryState, OutParametersAreClearedBeforeTheInitializationCheck) {
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

  // An extra ZrUninitialize has no effect. Calls of ZrInitialize are counted.
  ExpectEach(ZR_R_OK, {ZrUninitialize(), ZrInitialize(), ZrInitialize(), ZrUninitialize()});
  cookie = 9;
  ExpectRejected({ZrAddComponentDiscovery(nullptr, &cookie), ZrCreateInstance(&classId, 0, &classId, 0, nullptr),
                  ZrQueryComponentConfiguration(&classId, nullptr, nullptr), ZrCLSIDFromClassName(nullptr, nullptr),
                  ZrClassNameFromCLSID(&classId, nullptr)});
  EXPECT_EQ(cookie, 0u);
  EXPECT_RESULT(ZrUninitialize(), ZR_R_OK);
  EXPECT_RESULT(ZrRemoveComponentDiscovery(1), ZR_R_NO_INIT);
  EXPECT_RESULT(ZrAddComponentDiscovery(nullptr, nullptr), ZR_R_INVALID_ARGUMENTS)
      << "a null cookie must be reported before the initialization check";
}

static const std::string kDiscoveries = "Not all Component-Discoveries removed while destroying CGlobalData";
static const std::string kAssemblies = "Not all Component-Assemblies removed while destroying CGlobalData";
static const std::string kComponents = "Not all Components removed while destroying CGlobalData";

// Acquires the management lock and never releases it, as a thread does that the system terminates. The process must
// still be able to end.
static void AcquireAndNeverRelease() ZR_UNCHECKED { ComponentRegistry().ManagementLock().Enter(); }

// Ends the process after an action. The library's messages go to the error stream, which a death test reads.
static void ExitAfter(void (*action)(uint32_t cookie)) {
  auto& discovery = *new FakeDiscovery({{1, ModulePath("good")}});  // must outlive every teardown
  std::cout.rdbuf(std::cerr.rdbuf());
  ZrInitialize();
  action(discovery.Add());
  std::exit(0);
}

TEST(LibraryStateDeathTest, TeardownReportsWhatWasLeft) {
  // The last ZrUninitialize removes everything.
  EXPECT_EXIT(ExitAfter([](uint32_t) { ZrUninitialize(); }), testing::ExitedWithCode(0), testing::Eq(""));

  EXPECT_EXIT(ExitAfter([](uint32_t) { CreateObject(1); }), testing::ExitedWithCode(0),
              testing::Eq(kDiscoveries + kAssemblies + kComponents));

  // An assembly stays registered after its classes are removed.
  EXPECT_EXIT(ExitAfter([](uint32_t cookie) { CreateObject(1), ZrRemoveComponentDiscovery(cookie); }),
              testing::ExitedWithCode(0), testing::Eq(kAssemblies));

  EXPECT_EXIT(ExitAfter([](uint32_t) { std::thread(AcquireAndNeverRelease).join(); }), testing::ExitedWithCode(0),
              testing::Eq(kDiscoveries));

  // A stream that throws loses the messages and has no other effect.
  EXPECT_EXIT(ExitAfter([](uint32_t) {
                static struct : std::streambuf {
                } full;
                std::cout.rdbuf(&full);
                std::cout.exceptions(std::ios::badbit);
              }),
              testing::ExitedWithCode(0), testing::Eq(""));
}

// Loads and unloads the shared library. It is a second copy, because this program is linked with the library's objects.
TEST(LibraryState, UnloadingRunsTheSameTeardown) {
  void* library = OpenLibrary(ZRCORE_LIBRARY);
  ASSERT_NE(library, nullptr);
#define FIND(name) reinterpret_cast<decltype(&name)>(FindInLibrary(library, #name))
  FakeDiscovery discovery;
  uint32_t cookie = 0;
  EXPECT_RESULT(FIND(ZrInitialize)(), ZR_R_OK);
  EXPECT_RESULT(FIND(ZrAddComponentDiscovery)(&discovery, &cookie), ZR_R_OK);
  // The next two calls allocate memory that the library keeps until its teardown.
  EXPECT_EQ(FIND(ZrWCHARCompareNoCase)(W("Text"), W("TEXT")), 0);
  EXPECT_RESULT(FIND(ZrErrorInfoRegister)(1, W("mine"), nullptr), ZR_R_OK);
  std::ostringstream output;
  std::streambuf* const before = std::cout.rdbuf(output.rdbuf());
  CloseLibrary(library);
  std::cout.rdbuf(before);
  EXPECT_EQ(output.str(), kDiscoveries);
  EXPECT_EQ(discovery.references, 0u);
}
