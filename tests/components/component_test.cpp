// The road of one object, from a discovery to a module and back, against real loadable files.

#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>
#include <utility>

#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/system.h"

// A result, and what came of it; for most calls what modules were called for.
using Done = std::pair<Result, std::string>;

// One cycle of the library with discoveries that outlive the registry's hold on them.
class ComponentTest : public testing::Test {
 protected:
  ComponentTest() {
    (void)TakeModuleLog();
    EXPECT_RESULT(ZrInitialize(), ZR_R_OK);
  }
  ~ComponentTest() override { EXPECT_RESULT(ZrUninitialize(), ZR_R_OK); }

  FakeDiscovery& New(const std::vector<FakeDiscovery::Entry>& entries) { return discoveries_.emplace_back(entries); }
  uint32_t Add(const std::vector<FakeDiscovery::Entry>& entries) { return New(entries).Add(); }

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
    EXPECT_EQ(reinterpret_cast<uintptr_t>(object), ZR_SUCCEEDED(result) ? number : 0) << Result(result);
    return {result, TakeModuleLog()};
  }
  static ZRRESULT CreateByFunction(const ZRUUID* classId, uint64_t wanted, const ZRUUID* interfaceId,
                                   uint64_t argument2, void** object) {
    WriteModuleLog("function", "create");
    EXPECT_EQ(*interfaceId, ClassId(99));
    EXPECT_EQ(argument2, kArgument2);
    const auto result = static_cast<ZRRESULT>(wanted);
    if (result == ZR_R_UNEXPECTED) throw std::runtime_error("thrown");
    if (ZR_SUCCEEDED(result)) *object = reinterpret_cast<void*>(uintptr_t{classId->data1});
    return result;
  }

  static constexpr ZrModuleEntryPoints kFunction = {CreateByFunction, nullptr, nullptr};

 private:
  static constexpr uint64_t kArgument2 = 0xFEDCBA9876543210;
  std::deque<FakeDiscovery> discoveries_;
};

TEST_F(ComponentTest, DiscoveriesAreAskedInTheOrderOfTheirCookies) {
  FakeDiscovery &first = New({{1, ModulePath("good")}}), &second = New({{1, {}, kFunction}});
  const uint32_t cookie = first.Add();
  EXPECT_EQ(second.Add(), cookie + 1);
  EXPECT_EQ(second.Add(), cookie + 2);
  EXPECT_EQ(first.references + 10 * second.references, 21u);
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.load good.init good.create"));
  EXPECT_EQ(second.asked, 0u);
  EXPECT_EQ(Create(9), Done(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(Create(9), Done(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(first.asked + 10 * second.asked, 43u) << "a failure is not remembered";
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "good.exit good.unload"));
  EXPECT_EQ(Remove(cookie), Done(ZR_R_UNKNOWN_IDENTIFIER, ""));
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "function.create"));
  EXPECT_RESULT(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(first.references + second.references, 0u) << "the last call releases what was never removed";
  EXPECT_RESULT(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(first.Add(), cookie + 3) << "a cookie isn't used again, and a new cycle goes on counting";
}

TEST_F(ComponentTest, WhatIsNoModuleIsToldEachTimeInOneLine) {
  uint32_t number = 0;
  for (const std::string module :
       {"without_init", "without_exit", "without_create", "nowhere", "no_module", "unresolved"}) {
    const bool isLoaded = module.rfind("without", 0) == 0;
    const std::string head = isLoaded ? "Could Not Initialize Component" : "LoadLibrary failed";
    const std::string rest = isLoaded ? "One or more of the functions \"ZrInitModule\", \"ZrExitModule\", "
                                        "\"ZrCreateInstanceModule\" are not exported correctly.\r\n"
                                      : "Error message: \"";  // and the system's words
    const std::string expected =
        "ZrCore: " + head + ". Path: \"" TEST_DIRECTORY "/" + module + MODULE_SUFFIX "\". " + rest;
    const Done unloaded(ZR_R_INVALID_SYSTEM, module + ".load " + module + ".unload"), missing(ZR_R_FILE_NOT_FOUND, "");
    Add({{++number, ModulePath(module.c_str())}});
    for (int time = 1; time <= 2; ++time) {
      SCOPED_TRACE(module + ", attempt " + std::to_string(time));
      const std::string said = DebugOutputOf([&] { EXPECT_EQ(Create(number), isLoaded ? unloaded : missing); });
      EXPECT_EQ(said.substr(0, expected.size()), expected);
      EXPECT_TRUE(said.size() > expected.size() + 10 || said == expected) << said;
      EXPECT_EQ(said.find("\r\n"), said.size() - 2) << said;
    }
  }
}

TEST_F(ComponentTest, ARefusedStartIsNotTriedTwice) {
  const uint32_t cookie = Add({{1, ModulePath("refusing")}});
  EXPECT_EQ(Create(1), Done(ZR_R_NOT_SUPPORTED, "refusing.load refusing.init refusing.unload"));
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "refusing.load refusing.create"));
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "refusing.exit refusing.unload"));
}

// Two paths are two assemblies: of one file too, and where they differ in case only.
TEST_F(ComponentTest, ClassesOfOnePathShareTheAssembly) {
  const uint32_t cookie = Add({{1, ModulePath("good")}, {2, ModulePath("./good")}, {5, ModulePath("Good"), kFunction}});
  const uint32_t otherCookie = Add({{3, ModulePath("good"), kFunction}});
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.load good.init good.create"));
  EXPECT_EQ(Create(3), Done(ZR_R_OK, "good.create"));
  EXPECT_EQ(Create(2), Done(ZR_R_OK, "good.init good.create"));
  EXPECT_EQ(Create(5), Done(ZR_R_OK, "function.create"));
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.create"));

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
static void Exit() { WriteModuleLog("function", "exit"); }

TEST_F(ComponentTest, EntryPointsServeWithoutAFile) {
  FakeDiscovery& discovery = New({{1, {}, kFunction},
                                  {2, {}, {CreateByFunction, Init, Exit}},
                                  {3, Units(), {CreateByFunction, Init, nullptr}},
                                  {4, {}, {nullptr, Init, Exit}}});
  const uint32_t cookie = discovery.Add();
  for (const ZRRESULT wanted : {ZR_R_OK, ZR_R_NO_AGGREGATION, ZR_R_SAME_VALUE, ZR_R_UNEXPECTED}) {
    EXPECT_EQ(Create(1, wanted), Done(wanted, "function.create"));
  }
  EXPECT_EQ(Create(2), Done(ZR_R_OK, "function.init function.create"));
  EXPECT_EQ(Create(3), Done(ZR_R_OK, "function.init function.create"));
  EXPECT_EQ(Create(4), Done(ZR_R_FAILED, ""));
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "function.exit"));
  discovery.Add();
  EXPECT_EQ(Create(2), Done(ZR_R_OK, "function.init function.create")) << "they outlive the end of their assembly";
}

TEST_F(ComponentTest, NamesAreLearntOnceAndKept) {
  FakeDiscovery& discovery = New({{1, {}, {}, Units(W("Learnt.Once"))}, {2, {}}});
  const uint32_t cookie = discovery.Add();
  const ZRUUID ids[] = {ClassId(1), ClassId(2), ClassId(3)};
  const Owned known(Units(W("Learnt.Once"))), unknown(Units(W("learnt.once")));
  ZRUUID classId;
  ZRSTR none;
  for (const ZRRESULT removal : {ZR_R_OK, ZR_R_UNKNOWN_IDENTIFIER}) {
    Owned name;
    classId = ids[2];
    none = known;
    EXPECT_RESULT(ZrCLSIDFromClassName(known, &classId), ZR_R_OK);
    EXPECT_RESULT(ZrClassNameFromCLSID(&ids[0], &name.string), ZR_R_OK);
    EXPECT_RESULT(ZrClassNameFromCLSID(&ids[1], &none), ZR_R_OK);
    EXPECT_EQ(classId, ids[0]);
    EXPECT_EQ(ContentOf(name), W("Learnt.Once"));
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(discovery.asked, 3u);
    EXPECT_RESULT(Remove(cookie).first, removal);
  }
  none = known;
  EXPECT_RESULT(ZrCLSIDFromClassName(unknown, &classId), ZR_R_FAILED) << "exact, case too";
  EXPECT_RESULT(ZrClassNameFromCLSID(&ids[2], &none), ZR_R_FAILED);
  EXPECT_EQ(classId, ids[0]) << "not cleared";
  EXPECT_EQ(none, known.string) << "not cleared";
}

TEST_F(ComponentTest, ExceptionsOfDiscoveriesBecomeCodes) {
  FakeDiscovery& discovery = New({{31, {}, kFunction}});
  std::string thrower = "AddRef";
  discovery.onCall = [&thrower](const char* operation) {
    if (operation == thrower) throw std::runtime_error("thrown");
  };
  uint32_t cookie = 0;
  EXPECT_RESULT(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_UNEXPECTED);
  EXPECT_RESULT(Remove(cookie).first, ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_RESULT(Create(31).first, ZR_R_CLASS_NOT_REGISTERED) << "without a reference it isn't asked";
  thrower = "QueryComponent";
  cookie = discovery.Add();
  EXPECT_RESULT(Create(31).first, ZR_R_REQUEST_ABORTED);
  thrower = "Release";
  EXPECT_RESULT(Create(31).first, ZR_R_OK) << "nothing is half done";
  EXPECT_RESULT(Remove(cookie).first, ZR_R_UNEXPECTED);
  EXPECT_RESULT(Remove(cookie).first, ZR_R_UNKNOWN_IDENTIFIER) << "what was handled stays removed";
}

TEST_F(ComponentTest, DiscoveriesAndModulesMayCallBack) {
  FakeDiscovery& leaving = New({{1, ModulePath("reentering")}});
  FakeDiscovery& other = New({{99, ModulePath("good")}});
  const uint32_t cookie = leaving.Add(), otherCookie = other.Add();
  // Removes itself in the middle of the walk that asks it; the walk goes on with the next one.
  leaving.onCall = [cookie](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || Remove(cookie).first == ZR_R_OK);
  };
  EXPECT_RESULT(Create(9).first, ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(other.asked, 1u);
  EXPECT_EQ(leaving.references, 0u);
  leaving.onCall = nullptr;

  // The module makes an object of the class that is its interface first.
  leaving.Add();
  EXPECT_EQ(Create(1).second, "reentering.load reentering.init reentering.create good.load good.init good.create");
  EXPECT_EQ(Remove(otherCookie), Done(ZR_R_OK, "good.exit good.unload"));
  EXPECT_RESULT(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "reentering.exit reentering.closed reentering.unload");
  EXPECT_RESULT(ZrInitialize(), ZR_R_OK);
}

// The module ends and comes back by another discovery, all in its own ZrExitModule.
TEST_F(ComponentTest, AModuleThatComesBackDuringItsExitIsStartedAnew) {
  for (const bool isUsedAgain : {false, true}) {
    SCOPED_TRACE(isUsedAgain ? "restarted before its class goes" : "removed in its exit");
    FakeDiscovery &first = New({{1, ModulePath("good")}}), &second = New({{2, ModulePath("good")}});
    const uint32_t cookie = first.Add();
    uint32_t secondCookie = 0;
    EXPECT_EQ(Create(1).first, ZR_R_OK);
    const auto comeBack = [&] {
      EXPECT_RESULT(ZrRemoveComponentDiscovery(isUsedAgain ? 0 : cookie),
                    isUsedAgain ? ZR_R_UNKNOWN_IDENTIFIER : ZR_R_OK);
      secondCookie = second.Add();
      EXPECT_RESULT(CreateObject(2), ZR_R_OK);
    };
    SetNextExit([&] {
      if (!isUsedAgain) return comeBack();
      SetNextExit(comeBack);  // in the exit by which the class is forgotten, since this makes the module start again
      EXPECT_RESULT(CreateObject(1), ZR_R_OK);
    });
    const std::string restarted = isUsedAgain ? "good.exit good.init good.create " : "";
    EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, restarted + "good.exit good.init good.create"));
    EXPECT_EQ(first.references, 0u);
    EXPECT_EQ(Create(2), Done(ZR_R_OK, "good.create")) << "it is still loaded and started";
    EXPECT_EQ(Remove(secondCookie), Done(ZR_R_OK, "good.exit good.unload"));
  }
}

// The module comes back in its own ZrExitModule, and goes again. It is unloaded when the first call of it returns.
TEST_F(ComponentTest, AModuleThatComesAndGoesDuringItsExitStaysUntilItReturns) {
  FakeDiscovery &first = New({{1, ModulePath("good")}}), &second = New({{2, ModulePath("good")}});
  const uint32_t cookie = first.Add();
  EXPECT_EQ(Create(1).first, ZR_R_OK);
  SetNextExit([&] {
    EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    const uint32_t secondCookie = second.Add();
    EXPECT_RESULT(CreateObject(2), ZR_R_OK);
    EXPECT_RESULT(ZrRemoveComponentDiscovery(secondCookie), ZR_R_OK);
    WriteModuleLog("the first exit", "returns");
  });
  EXPECT_EQ(Remove(cookie),
            Done(ZR_R_OK, "good.exit good.init good.create good.exit the first exit.returns good.unload"));
}

// The exit by which a class is forgotten throws. The exception's own code is in the module, which has to stay for it.
TEST_F(ComponentTest, AModuleThatThrowsInItsExitStaysLoaded) {
  const uint32_t cookie = Add({{1, ModulePath("throwing")}});
  EXPECT_EQ(Create(1).first, ZR_R_OK);
  SetNextExit([] { EXPECT_RESULT(CreateObject(1), ZR_R_OK); });  // is started again, and so stopped again
  EXPECT_EQ(Remove(cookie), Done(ZR_R_UNEXPECTED,
                                 "throwing.exit throwing.init throwing.create throwing.exit "
                                 "throwing.caught"));
  EXPECT_EQ(Remove(cookie), Done(ZR_R_OK, "throwing.unload"));
}

// A discovery may remove itself while it is asked. It is released when the class is known and bound, or before the next
// discovery is asked.
TEST_F(ComponentTest, ADiscoveryIsReleasedWhenItsAnswerIsKept) {
  FakeDiscovery &leaving = New({{1, {}, kFunction}}), &next = New({{2, {}, kFunction}}), &last = New({});
  const uint32_t cookie = leaving.Add(), nextCookie = next.Add();
  last.Add();
  Result created = ZR_R_TIMEOUT;
  leaving.onCall = [&](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || ZrRemoveComponentDiscovery(cookie) == ZR_R_OK);
    if (operation == "Release") created = Create(1).first;
  };
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "function.create"));
  EXPECT_RESULT(created, ZR_R_OK);
  EXPECT_EQ(leaving.asked + next.asked, 1u) << "the class was known when Release ran";

  leaving.onCall = nullptr;
  next.onCall = [&](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || ZrRemoveComponentDiscovery(nextCookie) == ZR_R_OK);
    EXPECT_TRUE(operation != "Release" || ZrRemoveComponentDiscovery(nextCookie + 1) == ZR_R_OK);
  };
  EXPECT_EQ(Create(9), Done(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_TRUE(next.asked == 1 && last.asked == 0) << "it was gone when the walk came to it";
}

// What a discovery reported in a lookup inside another one is not its own once that other one has its answer.
TEST_F(ComponentTest, AReplacedClassStaysWhenItsFirstReporterIsRemoved) {
  FakeDiscovery &first = New({{1, {}, kFunction}}), &second = New({{1, ModulePath("good")}});
  first.Add();
  const uint32_t secondCookie = second.Add();
  first.onCall = [&](const std::string& operation) {
    if (operation != "QueryComponent" || first.isRefusing) return;
    first.isRefusing = true;
    EXPECT_EQ(Create(1), Done(ZR_R_OK, "good.load good.init good.create"));
    first.isRefusing = false;
  };
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "function.create"));
  EXPECT_EQ(Remove(secondCookie), Done(ZR_R_OK, "")) << "the module has no class of this discovery any more";
  EXPECT_EQ(Create(1), Done(ZR_R_OK, "function.create"));
  EXPECT_EQ(first.asked, 2u);
}

// Everything is gone all the same, and the first of what was thrown reaches the host.
TEST_F(ComponentTest, WhatModulesThrowAtTheEndPassesThrough) {
  static int exits = 0;
  constexpr auto kThrow = [] { throw ++exits; };
  FakeDiscovery& discovery =
      New({{1, {}, {CreateByFunction, Init, kThrow}}, {2, {}, {CreateByFunction, nullptr, kThrow}}});
  discovery.Add();
  EXPECT_EQ(Create(1).first, ZR_R_OK);
  EXPECT_EQ(Create(2).first, ZR_R_OK);
  discovery.onCall = [](const std::string& operation) {
    if (operation == "Release") throw std::runtime_error("lost");
  };
  int thrown = 0;
  try {
    (void)ZrUninitialize();
  } catch (int number) {
    thrown = number;
  }
  EXPECT_TRUE(thrown == 1 && exits == 2) << thrown << " of " << exits;
  discovery.onCall = nullptr;
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(Create(1).first, ZR_R_CLASS_NOT_REGISTERED);
}

// The class is struck off while its module makes the object: the object is given, the class is gone.
TEST_F(ComponentTest, AModuleMayRemoveItsDiscoveryInTheMiddle) {
  static uint32_t removed = 0;
  constexpr auto kCreate = [](const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) -> ZRRESULT {
    EXPECT_TRUE(removed == 0 || ZrRemoveComponentDiscovery(removed) == ZR_R_OK);
    return *object = object, ZR_R_OK;
  };
  FakeDiscovery& discovery = New({{1, {}, {kCreate, nullptr, Exit}}});
  const uint32_t cookie = discovery.Add();
  EXPECT_EQ(CreateObject(1), ZR_R_OK);
  removed = cookie;
  EXPECT_EQ(CreateObject(1), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "function.exit");
  EXPECT_EQ(discovery.references, 0u);
  EXPECT_EQ(CreateObject(1), ZR_R_CLASS_NOT_REGISTERED);
}
