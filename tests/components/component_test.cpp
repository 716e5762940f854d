// Tests the component system through its exports: from a discovery to a module and its objects, and to the end of the
// module. The modules are real loadable files that log their calls; the tests compare this log.

#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>
#include <utility>

#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/system.h"

// A result, and the calls of modules that the log contains.
using Outcome = std::pair<Result, std::string>;

// Initialises the library for one test. The discoveries outlive the registry's references to them.
class ComponentTest : public testing::Test {
 protected:
  ComponentTest() {
    (void)DrainModuleLog();
    EXPECT_RESULT(ZrInitialize(), ZR_R_OK);
  }
  ~ComponentTest() override { EXPECT_RESULT(ZrUninitialize(), ZR_R_OK); }

  FakeDiscovery& New(const std::vector<FakeDiscovery::Entry>& entries) { return discoveries_.emplace_back(entries); }
  uint32_t Add(const std::vector<FakeDiscovery::Entry>& entries) { return New(entries).Add(); }

  static Outcome Remove(uint32_t cookie) {
    const ZRRESULT result = ZrRemoveComponentDiscovery(cookie);
    return {result, DrainModuleLog()};
  }

  // Creates an object of a class. The object is the number of the class, unless the called function must return a
  // failure.
  static Outcome Create(uint32_t number, ZRRESULT wanted = ZR_R_OK) {
    const ZRUUID classId = ClassId(number), interfaceId = ClassId(99);
    void* object = &object;
    const uint64_t argument = static_cast<uint32_t>(wanted);
    const ZRRESULT result = ZrCreateInstance(&classId, argument, &interfaceId, kArgument2, &object);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(object), ZR_SUCCEEDED(result) ? number : 0) << Result(result);
    return {result, DrainModuleLog()};
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

TEST_F(ComponentTest, QueriesDiscoveriesInCookieOrder) {
  FakeDiscovery &first = New({{1, ModulePath("good")}}), &second = New({{1, {}, kFunction}});
  const uint32_t cookie = first.Add();
  EXPECT_EQ(second.Add(), cookie + 1);
  EXPECT_EQ(second.Add(), cookie + 2);
  EXPECT_EQ(first.references + 10 * second.references, 21u);
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "good.load good.init good.create"));
  EXPECT_EQ(second.queries, 0u);
  EXPECT_EQ(Create(9), Outcome(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(Create(9), Outcome(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(first.queries + 10 * second.queries, 43u) << "a failed lookup must not be cached";
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_OK, "good.exit good.unload"));
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_UNKNOWN_IDENTIFIER, ""));
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "function.create"));
  EXPECT_RESULT(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(first.references + second.references, 0u)
      << "the last ZrUninitialize releases discoveries that were never removed";
  EXPECT_RESULT(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(first.Add(), cookie + 3) << "cookies are not reused, not even after ZrInitialize";
}

TEST_F(ComponentTest, ReportsEachFailedLoadInOneLine) {
  uint32_t number = 0;
  for (const std::string module :
       {"without_init", "without_exit", "without_create", "nowhere", "no_module", "unresolved"}) {
    const bool isLoaded = module.rfind("without", 0) == 0;
    const std::string head = isLoaded ? "Could Not Initialize Component" : "LoadLibrary failed";
    const std::string rest = isLoaded ? "One or more of the functions \"ZrInitModule\", \"ZrExitModule\", "
                                        "\"ZrCreateInstanceModule\" are not exported correctly.\r\n"
                                      : "Error message: \"";  // followed by the system's message
    const std::string expected =
        "ZrCore: " + head + ". Path: \"" TEST_DIRECTORY "/" + module + MODULE_SUFFIX "\". " + rest;
    const Outcome unloaded(ZR_R_INVALID_SYSTEM, module + ".load " + module + ".unload"),
        missing(ZR_R_FILE_NOT_FOUND, "");
    Add({{++number, ModulePath(module.c_str())}});
    for (int time = 1; time <= 2; ++time) {
      SCOPED_TRACE(module + ", attempt " + std::to_string(time));
      const std::string output = DebugOutputOf([&] { EXPECT_EQ(Create(number), isLoaded ? unloaded : missing); });
      EXPECT_EQ(output.substr(0, expected.size()), expected);
      EXPECT_TRUE(output.size() > expected.size() + 10 || output == expected) << output;
      EXPECT_EQ(output.find("\r\n"), output.size() - 2) << output;
    }
  }
}

TEST_F(ComponentTest, FailedInitIsNotRetried) {
  const uint32_t cookie = Add({{1, ModulePath("refusing")}});
  EXPECT_EQ(Create(1), Outcome(ZR_R_NOT_SUPPORTED, "refusing.load refusing.init refusing.unload"));
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "refusing.load refusing.create"));
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_OK, "refusing.exit refusing.unload"));
}

// Two paths are two assemblies, even if they name one file or differ only in letter case.
TEST_F(ComponentTest, ClassesWithOnePathShareAnAssembly) {
  const uint32_t cookie = Add({{1, ModulePath("good")}, {2, ModulePath("./good")}, {5, ModulePath("Good"), kFunction}});
  const uint32_t otherCookie = Add({{3, ModulePath("good"), kFunction}});
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "good.load good.init good.create"));
  EXPECT_EQ(Create(3), Outcome(ZR_R_OK, "good.create"));
  EXPECT_EQ(Create(2), Outcome(ZR_R_OK, "good.init good.create"));
  EXPECT_EQ(Create(5), Outcome(ZR_R_OK, "function.create"));
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "good.create"));

  // The removal stops the shared module, which the other discovery's class still uses. The module stays loaded and is
  // initialised again.
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_OK, "good.exit good.exit"));
  EXPECT_EQ(Create(1), Outcome(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_EQ(Create(3), Outcome(ZR_R_OK, "good.init good.create"));

  // Without its last class the module is unloaded. Another discovery loads it again by its path.
  EXPECT_EQ(Remove(otherCookie), Outcome(ZR_R_OK, "good.exit good.unload"));
  Add({{4, ModulePath("good")}});
  EXPECT_EQ(Create(4), Outcome(ZR_R_OK, "good.load good.init good.create"));
}

static ZRRESULT Init() { return WriteModuleLog("function", "init"), ZR_R_SAME_VALUE; }
static void Exit() { WriteModuleLog("function", "exit"); }

TEST_F(ComponentTest, EntryPointsWorkWithoutAModuleFile) {
  FakeDiscovery& discovery = New({{1, {}, kFunction},
                                  {2, {}, {CreateByFunction, Init, Exit}},
                                  {3, Units(), {CreateByFunction, Init, nullptr}},
                                  {4, {}, {nullptr, Init, Exit}}});
  const uint32_t cookie = discovery.Add();
  for (const ZRRESULT wanted : {ZR_R_OK, ZR_R_NO_AGGREGATION, ZR_R_SAME_VALUE, ZR_R_UNEXPECTED}) {
    EXPECT_EQ(Create(1, wanted), Outcome(wanted, "function.create"));
  }
  EXPECT_EQ(Create(2), Outcome(ZR_R_OK, "function.init function.create"));
  EXPECT_EQ(Create(3), Outcome(ZR_R_OK, "function.init function.create"));
  EXPECT_EQ(Create(4), Outcome(ZR_R_FAILED, ""));
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_OK, "function.exit"));
  discovery.Add();
  EXPECT_EQ(Create(2), Outcome(ZR_R_OK, "function.init function.create"))
      << "the entry points must still work after their assembly was destroyed";
}

TEST_F(ComponentTest, ClassNamesAreQueriedOnceAndKept) {
  FakeDiscovery& discovery = New({{1, {}, {}, Units(W("Learnt.Once"))}, {2, {}}});
  const uint32_t cookie = discovery.Add();
  const ZRUUID ids[] = {ClassId(1), ClassId(2), ClassId(3)};
  const Owned known(Units(W("Learnt.Once"))), unknown(Units(W("learnt.once")));
  ZRUUID classId;
  ZRSTR noName;
  for (const ZRRESULT removal : {ZR_R_OK, ZR_R_UNKNOWN_IDENTIFIER}) {
    Owned name;
    classId = ids[2];
    noName = known;
    EXPECT_RESULT(ZrCLSIDFromClassName(known, &classId), ZR_R_OK);
    EXPECT_RESULT(ZrClassNameFromCLSID(&ids[0], &name.string), ZR_R_OK);
    EXPECT_RESULT(ZrClassNameFromCLSID(&ids[1], &noName), ZR_R_OK);
    EXPECT_EQ(classId, ids[0]);
    EXPECT_EQ(ContentOf(name), W("Learnt.Once"));
    EXPECT_EQ(noName, nullptr);
    EXPECT_EQ(discovery.queries, 3u);
    EXPECT_RESULT(Remove(cookie).first, removal);
  }
  noName = known;
  EXPECT_RESULT(ZrCLSIDFromClassName(unknown, &classId), ZR_R_FAILED) << "names are case-sensitive";
  EXPECT_RESULT(ZrClassNameFromCLSID(&ids[2], &noName), ZR_R_FAILED);
  EXPECT_EQ(classId, ids[0]) << "a failure must not clear the variable";
  EXPECT_EQ(noName, known.string) << "a failure must not clear the variable";
}

TEST_F(ComponentTest, DiscoveryExceptionsBecomeResultCodes) {
  FakeDiscovery& discovery = New({{31, {}, kFunction}});
  std::string thrower = "AddRef";
  discovery.onCall = [&thrower](const char* operation) {
    if (operation == thrower) throw std::runtime_error("thrown");
  };
  uint32_t cookie = 0;
  EXPECT_RESULT(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_UNEXPECTED);
  EXPECT_RESULT(Remove(cookie).first, ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_RESULT(Create(31).first, ZR_R_CLASS_NOT_REGISTERED) << "a discovery whose AddRef threw must not be queried";
  thrower = "QueryComponent";
  cookie = discovery.Add();
  EXPECT_RESULT(Create(31).first, ZR_R_REQUEST_ABORTED);
  thrower = "Release";
  EXPECT_RESULT(Create(31).first, ZR_R_OK) << "the class must be complete although the earlier query threw";
  EXPECT_RESULT(Remove(cookie).first, ZR_R_UNEXPECTED);
  EXPECT_RESULT(Remove(cookie).first, ZR_R_UNKNOWN_IDENTIFIER)
      << "the discovery must stay removed although its Release threw";
}

TEST_F(ComponentTest, DiscoveriesAndModulesMayCallTheLibrary) {
  FakeDiscovery& leaving = New({{1, ModulePath("reentering")}});
  FakeDiscovery& other = New({{99, ModulePath("good")}});
  const uint32_t cookie = leaving.Add(), otherCookie = other.Add();
  // The discovery removes itself during a query. The lookup continues with the next discovery.
  leaving.onCall = [cookie](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || Remove(cookie).first == ZR_R_OK);
  };
  EXPECT_RESULT(Create(9).first, ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(other.queries, 1u);
  EXPECT_EQ(leaving.references, 0u);
  leaving.onCall = nullptr;

  // The module first creates an object of the class that the caller passes as the interface.
  leaving.Add();
  EXPECT_EQ(Create(1).second, "reentering.load reentering.init reentering.create good.load good.init good.create");
  EXPECT_EQ(Remove(otherCookie), Outcome(ZR_R_OK, "good.exit good.unload"));
  EXPECT_RESULT(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(DrainModuleLog(), "reentering.exit reentering.closed reentering.unload");
  EXPECT_RESULT(ZrInitialize(), ZR_R_OK);
}

// A module is stopped, and its own ZrExitModule creates an object through another discovery.
TEST_F(ComponentTest, ModuleUsedAgainDuringItsExitIsInitializedAgain) {
  for (const bool isUsedAgain : {false, true}) {
    SCOPED_TRACE(isUsedAgain ? "restarted before its class is removed" : "removed during its exit");
    FakeDiscovery &first = New({{1, ModulePath("good")}}), &second = New({{2, ModulePath("good")}});
    const uint32_t cookie = first.Add();
    uint32_t secondCookie = 0;
    EXPECT_EQ(Create(1).first, ZR_R_OK);
    const auto useAgain = [&] {
      EXPECT_RESULT(ZrRemoveComponentDiscovery(isUsedAgain ? 0 : cookie),
                    isUsedAgain ? ZR_R_UNKNOWN_IDENTIFIER : ZR_R_OK);
      secondCookie = second.Add();
      EXPECT_RESULT(CreateObject(2), ZR_R_OK);
    };
    SetNextExit([&] {
      if (!isUsedAgain) return useAgain();
      // CreateObject starts the module again, so it exits a second time when its class is removed.
      SetNextExit(useAgain);
      EXPECT_RESULT(CreateObject(1), ZR_R_OK);
    });
    const std::string restarted = isUsedAgain ? "good.exit good.init good.create " : "";
    EXPECT_EQ(Remove(cookie), Outcome(ZR_R_OK, restarted + "good.exit good.init good.create"));
    EXPECT_EQ(first.references, 0u);
    EXPECT_EQ(Create(2), Outcome(ZR_R_OK, "good.create")) << "the module must still be loaded and initialized";
    EXPECT_EQ(Remove(secondCookie), Outcome(ZR_R_OK, "good.exit good.unload"));
  }
}

// A module is used again and removed again, both during its own ZrExitModule. It must not be unloaded before the first
// call of ZrExitModule returns.
TEST_F(ComponentTest, ModuleUsedAndRemovedDuringItsExitStaysLoadedUntilItReturns) {
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
            Outcome(ZR_R_OK, "good.exit good.init good.create good.exit the first exit.returns good.unload"));
}

// ZrExitModule throws when the class is removed. The exception's destructor is code of the module, so the module must
// stay loaded.
TEST_F(ComponentTest, ModuleThatThrowsFromItsExitStaysLoaded) {
  const uint32_t cookie = Add({{1, ModulePath("throwing")}});
  EXPECT_EQ(Create(1).first, ZR_R_OK);
  SetNextExit([] { EXPECT_RESULT(CreateObject(1), ZR_R_OK); });  // starts the module again, so it is stopped again
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_UNEXPECTED,
                                    "throwing.exit throwing.init throwing.create throwing.exit "
                                    "throwing.caught"));
  EXPECT_EQ(Remove(cookie), Outcome(ZR_R_OK, "throwing.unload"));
}

// A discovery may remove itself during a query. It is released after the class is stored and bound to its assembly, or
// before the next discovery is queried.
TEST_F(ComponentTest, DiscoveryIsReleasedAfterItsClassIsStored) {
  FakeDiscovery &leaving = New({{1, {}, kFunction}}), &next = New({{2, {}, kFunction}}), &last = New({});
  const uint32_t cookie = leaving.Add(), nextCookie = next.Add();
  last.Add();
  Result created = ZR_R_TIMEOUT;
  leaving.onCall = [&](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || ZrRemoveComponentDiscovery(cookie) == ZR_R_OK);
    if (operation == "Release") created = Create(1).first;
  };
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "function.create"));
  EXPECT_RESULT(created, ZR_R_OK);
  EXPECT_EQ(leaving.queries + next.queries, 1u) << "the class must be stored before Release runs";

  leaving.onCall = nullptr;
  next.onCall = [&](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || ZrRemoveComponentDiscovery(nextCookie) == ZR_R_OK);
    EXPECT_TRUE(operation != "Release" || ZrRemoveComponentDiscovery(nextCookie + 1) == ZR_R_OK);
  };
  EXPECT_EQ(Create(9), Outcome(ZR_R_CLASS_NOT_REGISTERED, ""));
  EXPECT_TRUE(next.queries == 1 && last.queries == 0) << "the removed discovery must not be queried";
}

// A lookup runs during another lookup of the same class and stores the class. The outer lookup then replaces it, so the
// class no longer belongs to the discovery that the inner lookup found.
TEST_F(ComponentTest, ReplacedClassSurvivesRemovalOfItsFirstReporter) {
  FakeDiscovery &first = New({{1, {}, kFunction}}), &second = New({{1, ModulePath("good")}});
  first.Add();
  const uint32_t secondCookie = second.Add();
  first.onCall = [&](const std::string& operation) {
    if (operation != "QueryComponent" || first.findsNothing) return;
    first.findsNothing = true;
    EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "good.load good.init good.create"));
    first.findsNothing = false;
  };
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "function.create"));
  EXPECT_EQ(Remove(secondCookie), Outcome(ZR_R_OK, "")) << "this discovery has no class any more, so no module stops";
  EXPECT_EQ(Create(1), Outcome(ZR_R_OK, "function.create"));
  EXPECT_EQ(first.queries, 2u);
}

// The teardown is complete nevertheless. The host receives the first exception.
TEST_F(ComponentTest, LastUninitializePropagatesModuleExceptions) {
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
  EXPECT_TRUE(thrown == 1 && exits == 2) << "exception " << thrown << " of " << exits << " exits";
  discovery.onCall = nullptr;
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(Create(1).first, ZR_R_CLASS_NOT_REGISTERED);
}

// The class is removed while its module creates an object. The caller receives the object; the class no longer exists.
TEST_F(ComponentTest, ModuleMayRemoveItsDiscoveryWhileItCreatesAnObject) {
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
  EXPECT_EQ(DrainModuleLog(), "function.exit");
  EXPECT_EQ(discovery.references, 0u);
  EXPECT_EQ(CreateObject(1), ZR_R_CLASS_NOT_REGISTERED);
}
