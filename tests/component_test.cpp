// The road of one object, from a discovery to a module and back, against real loadable files.

#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>
#include <utility>

#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/system.h"

// A result, and what modules were called for on the way to it.
using Done = std::pair<ZRRESULT, std::string>;

// One cycle of the library with discoveries that outlive the registry's hold on them.
class ComponentTest : public testing::Test {
 protected:
  ComponentTest() {
    (void)TakeModuleLog();
    EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  }
  ~ComponentTest() override { EXPECT_EQ(ZrUninitialize(), ZR_R_OK); }

  FakeDiscovery& New(const std::vector<FakeDiscovery::Entry>& entries = {}) {
    return discoveries_.emplace_back(entries);
  }
  static uint32_t Add(FakeDiscovery& discovery) {
    uint32_t cookie = 0;
    EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    return cookie;
  }
  uint32_t Add(const std::vector<FakeDiscovery::Entry>& entries) { return Add(New(entries)); }

  static Done Remove(uint32_t cookie) {
    const ZRRESULT result = ZrRemoveComponentDiscovery(cookie);
    return {result, TakeModuleLog()};
  }

  // The function or module that is called makes an object that is its class's number, unless it is to fail.
  static Done Create(uint32_t number, ZRRESULT wanted = ZR_R_OK) {
    const ZRUUID classId = ClassId(number), interfaceId = ClassId(99);
    void* object = &object;
    const uint64_t argument = static_cast<uint32_t>(wanted);
    const ZRRESULT result = ZrCreateInstance(&classId, argument, &interfaceId, kArgument2, &object);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(object), ZR_SUCCEEDED(result) ? number : 0);
    return {result, TakeModuleLog()};
  }
  static ZRRESULT CreateByFunction(const ZRUUID* classId, uint64_t wanted, const ZRUUID* interfaceId,
                                   uint64_t argument2, void** object) {
    WriteModuleLog("function", "create");
    EXPECT_TRUE(*interfaceId == ClassId(99) && argument2 == kArgument2);
    const auto result = static_cast<ZRRESULT>(wanted);
    if (result == ZR_R_UNEXPECTED) throw std::runtime_error("thrown");
    if (ZR_SUCCEEDED(result)) *object = reinterpret_cast<void*>(uintptr_t{classId->data1});
    return result;
  }

 private:
  static constexpr uint64_t kArgument2 = 0xFEDCBA9876543210;
  std::deque<FakeDiscovery> discoveries_;
};

TEST_F(ComponentTest, CookiesCountUpAndEachHoldsItsReference) {
  FakeDiscovery& discovery = New();
  const uint32_t first = Add(discovery), second = Add(discovery);
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(discovery.references, 2u);
  EXPECT_EQ(discovery.asked, 0u) << "nothing is asked of it yet";
  EXPECT_EQ(Remove(second).first, ZR_R_OK);
  EXPECT_EQ(discovery.references, 1u);
  EXPECT_EQ(Remove(second).first, ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(discovery.references, 0u) << "the last call releases what was never removed";
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(Add(discovery), first + 2) << "a cookie isn't used again, and a new cycle goes on counting";
}

TEST_F(ComponentTest, WhatIsNoModuleIsToldEachTime) {
  const struct {
    std::string module;
    const char* loaderWords = nullptr;  // if it isn't loaded
  } kRows[] = {
      {"without_init"},
      {"without_exit"},
      {"without_create"},
      {"nowhere", kLoaderWords.notThere},
      {"no_module", kLoaderWords.noModule},
      {"unresolved", kLoaderWords.unresolved},
  };
  for (const auto& row : kRows) {
    const uint32_t cookie = Add({{1, ModulePath(row.module.c_str())}});
    const bool isLoaded = row.loaderWords == nullptr;
    const std::string path = ". Path: \"" TEST_DIRECTORY "/" + row.module + MODULE_SUFFIX "\". ";
    const std::string start = isLoaded ? "ZrCore: Could Not Initialize Component" + path +
                                             "One or more of the functions \"ZrInitModule\", \"ZrExitModule\", "
                                             "\"ZrCreateInstanceModule\" are not exported correctly"
                                       : "ZrCore: LoadLibrary failed" + path + "Error message: \"" + row.loaderWords;
    const std::string end = isLoaded ? ".\r\n" : "\"\r\n";
    const Done done = isLoaded ? Done(ZR_R_INVALID_SYSTEM, row.module + ".load " + row.module + ".unload")
                               : Done(ZR_R_FILE_NOT_FOUND, "");
    for (int attempt = 0; attempt < 2; ++attempt) {
      const std::string said = DebugOutputOf([&] { EXPECT_EQ(Create(1), done) << row.module; });
      EXPECT_EQ(said.rfind(start, 0), 0u) << said;
      EXPECT_EQ(said.find(end), said.size() - end.size()) << "one line: " << said;
    }
    (void)Remove(cookie);
  }
}

TEST_F(ComponentTest, ARefusedStartIsNotTriedTwice) {
  const uint32_t cookie = Add({{1, ModulePath("refusing")}});
  EXPECT_EQ(Create(1), Done(ZR_R_NOT_SUPPORTED, "refusing.load refusing.init refusing.unload"));
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "refusing.load refusing.create"));
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "refusing.exit refusing.unload"));
}

TEST_F(ComponentTest, ClassesOfOnePathShareTheAssembly) {
  FakeDiscovery& one = New({{1, ModulePath("good")}, {2, ModulePath("./good")}});
  const uint32_t cookie = Add(one), otherCookie = Add({{3, ModulePath("good")}});
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.load good.init good.create"));
  EXPECT_EQ(Create(3), Done(ZR_R_OK, "good.create"));
  EXPECT_EQ(Create(2), Done(ZR_R_OK, "good.init good.create")) << "two paths are two assemblies, of one file too";
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.create"));
  EXPECT_EQ(one.asked, 3u) << "classes 1 and 2 once each, and class 3 in vain";

  // The removal stops the shared module under the other discovery's class, which is started again while still loaded.
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "good.exit good.exit"));
  EXPECT_EQ(Create(1), Done(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(Create(3), Done(ZR_R_OK, "good.init good.create"));

  // The last class gone, the module is unloaded; another discovery brings it back under its path.
  EXPECT_EQ(Remove(otherCookie), Done(ZR_R_OK, "good.exit good.unload"));
  Add({{4, ModulePath("good")}});
  EXPECT_EQ(Create(4), Done(ZR_R_OK, "good.load good.init good.create"));
}

static ZRRESULT Init() { return WriteModuleLog("function", "init"), ZR_R_SAME_VALUE; }
static ZRRESULT Refuse() { return WriteModuleLog("function", "refuse"), ZR_R_TIMEOUT; }
static void Exit() { WriteModuleLog("function", "exit"); }

TEST_F(ComponentTest, EntryPointsServeWithoutAFile) {
  FakeDiscovery& discovery = New({{1, {}, {CreateByFunction, nullptr, nullptr}},
                                  {2, {}, {CreateByFunction, Init, Exit}},
                                  {3, {}, {CreateByFunction, Refuse, Exit}},
                                  {4, {}, {nullptr, Init, Exit}}});
  const uint32_t cookie = Add(discovery);
  const struct {
    uint32_t number;
    Done done;
  } kRows[] = {
      {1, {ZR_R_OK, "function.create"}},
      {1, {ZR_R_NO_AGGREGATION, "function.create"}},
      {1, {ZR_R_SAME_VALUE, "function.create"}},
      {1, {ZR_R_UNEXPECTED, "function.create"}},
      {2, {ZR_R_OK, "function.init function.create"}},
      {3, {ZR_R_NOT_SUPPORTED, "function.refuse"}},
      {3, {ZR_R_OK, "function.create"}},
      {4, {ZR_R_FAILED, ""}},
  };
  for (const auto& row : kRows) EXPECT_EQ(Create(row.number, row.done.first), row.done);
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "function.exit function.exit"));
  Add(discovery);
  EXPECT_EQ(Create(2), Done(ZR_R_OK, "function.init function.create")) << "they outlive the end of their assembly";
}

TEST_F(ComponentTest, TheLowestCookieThatAnswersWins) {
  const uint32_t cookie = Add({{1, ModulePath("good")}});
  FakeDiscovery& second = New({{1, {}, {CreateByFunction, nullptr, nullptr}}});
  Add(second);
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.load good.init good.create"));
  EXPECT_EQ(second.asked, 0u);
  EXPECT_EQ(Create(9), Done(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(Create(9), Done(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(second.asked, 2u) << "a failure is not remembered";
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "good.exit good.unload"));
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "function.create"));
}

TEST_F(ComponentTest, NamesAreLearntOnceAndKept) {
  FakeDiscovery& discovery = New({{1, {}, {}, W("Learnt.Once")}, {2, {}, {}, {}}});
  const uint32_t cookie = Add(discovery);
  const ZRUUID one = ClassId(1), nameless = ClassId(2), unknown = ClassId(3);
  for (const ZRRESULT removal : {ZR_R_OK, ZR_R_UNKNOWN_IDENTIFIER}) {
    ZRUUID classId = {};
    EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Learnt.Once"))), &classId), ZR_R_OK);
    EXPECT_EQ(classId, one);
    ZRSTR name = nullptr;
    EXPECT_EQ(ZrClassNameFromCLSID(&one, &name), ZR_R_OK);
    EXPECT_EQ(ContentOf(Owned(name)), W("Learnt.Once"));
    name = nullptr;
    EXPECT_EQ(ZrClassNameFromCLSID(&nameless, &name), ZR_R_OK);
    EXPECT_EQ(name, nullptr) << "a null name is stored as null";
    EXPECT_EQ(discovery.asked, 3u);
    EXPECT_EQ(Remove(cookie).first, removal);
  }
  ZRUUID untouched = one;
  ZRSTR name = reinterpret_cast<ZRSTR>(&name);
  EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("learnt.once"))), &untouched), ZR_R_FAILED) << "exact, case too";
  EXPECT_EQ(ZrClassNameFromCLSID(&unknown, &name), ZR_R_FAILED);
  EXPECT_TRUE(untouched == one && name == reinterpret_cast<ZRSTR>(&name)) << "failures clear nothing";
  EXPECT_EQ(ZrCLSIDFromClassName(nullptr, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrClassNameFromCLSID(&one, nullptr), ZR_R_INVALID_ARGUMENTS);
}

TEST_F(ComponentTest, ExceptionsOfDiscoveriesBecomeCodes) {
  FakeDiscovery& discovery = New({{31, {}, {CreateByFunction, nullptr, nullptr}, W("Thrower")}});
  std::string thrower = "AddRef";
  discovery.onCall = [&thrower](const char* operation) {
    if (operation == thrower) throw std::runtime_error("thrown");
  };
  uint32_t cookie = 0;
  EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_UNEXPECTED);
  EXPECT_EQ(Remove(cookie).first, ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(Create(31).first, ZR_R_CLASS_NOT_REGISTERED) << "without a reference it isn't asked";
  thrower = "QueryComponent";
  cookie = Add(discovery);
  EXPECT_EQ(Create(31).first, ZR_R_REQUEST_ABORTED);
  ZRUUID classId = ClassId(31);
  ZRSTR name = nullptr;
  thrower = "QueryClassName";
  EXPECT_EQ(ZrClassNameFromCLSID(&classId, &name), ZR_R_FAILED);
  thrower = "QueryClassId";
  EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Thrower"))), &classId), ZR_R_FAILED);
  EXPECT_EQ(Create(31).first, ZR_R_OK) << "the lock was left and nothing is half done";
  thrower = "Release";
  EXPECT_EQ(Remove(cookie).first, ZR_R_UNEXPECTED);
  EXPECT_EQ(Remove(cookie).first, ZR_R_UNKNOWN_IDENTIFIER) << "what was handled stays removed";
}

TEST_F(ComponentTest, DiscoveriesAndModulesMayCallBack) {
  FakeDiscovery& leaving = New({{1, ModulePath("reentering")}});
  FakeDiscovery& other = New({{99, ModulePath("good")}});
  const uint32_t cookie = Add(leaving), otherCookie = Add(other);
  // Removes itself in the middle of the walk that asks it; the walk goes on with the next one.
  leaving.onCall = [cookie](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryClassId" || Remove(cookie).first == ZR_R_OK);
  };
  ZRUUID classId;
  EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Nobody.Knows"))), &classId), ZR_R_FAILED);
  EXPECT_EQ(other.asked, 1u);
  EXPECT_EQ(leaving.references, 0u);

  // Found from the moment it is registered. (The module makes an object of the class that is its interface first.)
  leaving.onCall = [](const std::string& operation) {
    const char* log =
        "reentering.load reentering.init reentering.asked reentering.create good.load good.init good.create";
    EXPECT_TRUE(operation != "AddRef" || Create(1) == Done(ZR_R_OK, log));
  };
  Add(leaving);
  leaving.onCall = nullptr;
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "reentering.create good.create"));
  EXPECT_EQ(Remove(otherCookie), Done(ZR_R_OK, "good.exit good.unload"));
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "reentering.exit reentering.closed reentering.unload");
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
}
