// The road of one object, from a discovery to a module and back, against real loadable files.

#include <gtest/gtest.h>

#include <deque>
#include <stdexcept>

#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/system.h"

// One cycle of the library with discoveries that are removed at the end, if the test hasn't.
class ComponentTest : public testing::Test {
 protected:
  ComponentTest() {
    (void)TakeModuleLog();
    EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  }
  ~ComponentTest() override {
    EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
    (void)TakeModuleLog();
  }

  // A discovery that outlives the registry's hold on it.
  FakeDiscovery& New(const std::vector<FakeDiscovery::Entry>& entries = {}) {
    return discoveries_.emplace_back(entries);
  }

  static uint32_t Add(FakeDiscovery& discovery) {
    uint32_t cookie = 0;
    EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    return cookie;
  }

  // Answers what ZrCreateInstance does; an object must be there after a success only.
  static ZRRESULT Create(uint32_t number) {
    const ZRUUID classId = ClassId(number), interfaceId = ClassId(1);
    void* object = &object;
    const ZRRESULT result = ZrCreateInstance(&classId, 0, &interfaceId, 0, &object);
    EXPECT_EQ(object != nullptr, ZR_SUCCEEDED(result));
    return result;
  }

 private:
  std::deque<FakeDiscovery> discoveries_;
};

TEST_F(ComponentTest, CookiesCountUpAndEachHoldsItsReference) {
  FakeDiscovery& discovery = New();
  const uint32_t first = Add(discovery), second = Add(discovery);
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(discovery.references, 2u);
  EXPECT_EQ(discovery.componentsAsked + discovery.namesAsked, 0u) << "nothing is asked of it yet";
  EXPECT_EQ(ZrRemoveComponentDiscovery(second), ZR_R_OK);
  EXPECT_EQ(discovery.references, 1u);
  EXPECT_EQ(ZrRemoveComponentDiscovery(second), ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(ZrRemoveComponentDiscovery(0), ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(Add(discovery), first + 2) << "a cookie isn't used again";
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(discovery.references, 0u) << "the last call releases what was never removed";
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(Add(discovery), first + 3) << "a new cycle goes on counting";
}

TEST_F(ComponentTest, ModulesAnswerAsTheyAre) {
  const char* kBad = "Could Not Initialize Component";
  const char* kUnloadable = "LoadLibrary failed";
  const struct {
    Units path;
    ZRRESULT result;
    const char* log;
    std::string diagnostic = {};  // what the debugger's channel says, around the path
    const char* reason = "";
  } kRows[] = {
      {ModulePath("good"), ZR_R_OK, "good.load good.init good.create"},
      {ModulePath("without_init"), ZR_R_INVALID_SYSTEM, "without_init.load without_init.unload", kBad},
      {ModulePath("without_exit"), ZR_R_INVALID_SYSTEM, "without_exit.load without_exit.unload", kBad},
      {ModulePath("without_create"), ZR_R_INVALID_SYSTEM, "without_create.load without_create.unload", kBad},
      {ModulePath("hollow"), ZR_R_INVALID_SYSTEM, "exporter.load hollow.load hollow.unload exporter.unload", kBad},
      {ModulePath("failing"), ZR_R_NO_AGGREGATION, "failing.load failing.init failing.create"},
      {ModulePath("positive"), ZR_R_SAME_VALUE, "positive.load positive.init positive.create"},
      {ModulePath("throwing"), ZR_R_UNEXPECTED, "throwing.load throwing.init throwing.create"},
      {ModulePath("nowhere"), ZR_R_FILE_NOT_FOUND, "", kUnloadable, kLoaderWords.notThere},
      {ModulePath("no_module"), ZR_R_FILE_NOT_FOUND, "", kUnloadable, kLoaderWords.noModule},
      {ModulePath("unresolved"), ZR_R_FILE_NOT_FOUND, "", kUnloadable, kLoaderWords.unresolved},
      {Units(1, WCHAR{0xD800}), ZR_R_FILE_NOT_FOUND, "", kUnloadable, kLoaderWords.noPath},
      {Units(), ZR_R_FAILED, ""},
  };
  std::vector<FakeDiscovery::Entry> entries;
  for (const auto& row : kRows) entries.push_back({static_cast<uint32_t>(entries.size()), row.path});
  Add(New(entries));
  uint32_t number = 0;
  for (const auto& row : kRows) {
    for (int attempt = 0; attempt < 2; ++attempt) {  // a failure is neither remembered nor silent the second time
      SCOPED_TRACE(testing::Message() << "class " << number << ", attempt " << attempt);
      const std::string said = DebugOutputOf([&] { EXPECT_EQ(Create(number), row.result); });
      const std::string log = row.log;
      const bool isStarted = attempt > 0 && log.find(".init") != std::string::npos;
      EXPECT_EQ(TakeModuleLog(), isStarted ? log.substr(log.rfind(' ') + 1) : log);
      EXPECT_EQ(said.empty(), row.diagnostic.empty());
      if (said.empty()) continue;
      EXPECT_EQ(said.rfind("ZrCore: " + row.diagnostic + ". Path: \"", 0), 0u) << said;
      EXPECT_NE(said.find(row.reason), std::string::npos) << said;
      EXPECT_TRUE(said.size() > 3 && said.find("\r\n") == said.size() - 2) << "one line: " << said;
    }
    ++number;
  }
  EXPECT_EQ(DebugOutputOf([] { (void)Create(2); }),
            "ZrCore: Could Not Initialize Component. Path: \"" TEST_DIRECTORY "/without_exit" MODULE_SUFFIX
            "\". One or more of the functions \"ZrInitModule\", \"ZrExitModule\", "
            "\"ZrCreateInstanceModule\" are not exported correctly.\r\n");
}

TEST_F(ComponentTest, ARefusedStartIsNotTriedTwice) {
  FakeDiscovery& discovery = New({{1, ModulePath("refusing")}});
  const uint32_t cookie = Add(discovery);
  EXPECT_EQ(Create(1), ZR_R_NOT_SUPPORTED);
  EXPECT_EQ(TakeModuleLog(), "refusing.load refusing.init refusing.unload");
  EXPECT_EQ(Create(1), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "refusing.load refusing.create");
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "refusing.exit refusing.unload");
}

TEST_F(ComponentTest, ArgumentsReachTheModuleUnchanged) {
  FakeDiscovery& discovery = New({{1, ModulePath("good")}});
  Add(discovery);
  uint64_t sum = 0;
  const ZRUUID classId = ClassId(1), interfaceId = ClassId(20);
  void* object = nullptr;
  EXPECT_EQ(ZrCreateInstance(&classId, reinterpret_cast<uint64_t>(&sum), &interfaceId, uint64_t{1} << 63, &object),
            ZR_R_OK);
  EXPECT_EQ(sum, (uint64_t{1} << 63) + 21);
}

TEST_F(ComponentTest, ClassesOfOnePathShareTheAssembly) {
  FakeDiscovery& one = New({{1, ModulePath("good")}, {2, ModulePath("GOOD")}});
  FakeDiscovery& two = New({{3, ModulePath("good")}});
  const uint32_t cookie = Add(one), otherCookie = Add(two);
  EXPECT_EQ(Create(1), ZR_R_OK);
  EXPECT_EQ(Create(3), ZR_R_OK);
  EXPECT_EQ(Create(2), ZR_R_OK);
  // Two paths are two assemblies, and two files where case tells them apart.
  const std::string other = kCaseTellsFilesApart ? "GOOD" : "good";
  const std::string load = kCaseTellsFilesApart ? " GOOD.load" : "",
                    unload = kCaseTellsFilesApart ? " GOOD.unload" : "";
  EXPECT_EQ(TakeModuleLog(),
            "good.load good.init good.create good.create" + load + " " + other + ".init " + other + ".create");
  EXPECT_EQ(Create(1), ZR_R_OK);
  EXPECT_EQ(one.componentsAsked, 3u) << "classes 1 and 2 once each, and class 3 in vain";
  (void)TakeModuleLog();

  // The removal stops the shared module under the other discovery's class, which is started again while still loaded.
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "good.exit " + other + ".exit" + unload);
  EXPECT_EQ(Create(1), ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(Create(3), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "good.init good.create");

  // The last class gone, the module is unloaded; another discovery brings it back under its path.
  EXPECT_EQ(ZrRemoveComponentDiscovery(otherCookie), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "good.exit good.unload");
  FakeDiscovery& third = New({{4, ModulePath("good")}});
  Add(third);
  EXPECT_EQ(Create(4), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "good.load good.init good.create");
}

static ZRRESULT CreateByFunction(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  WriteModuleLog("function", "create");
  *object = object;
  return ZR_R_OK;
}
static ZRRESULT InitByFunction() { return WriteModuleLog("function", "init"), ZR_R_OK; }
static ZRRESULT RefuseByFunction() { return WriteModuleLog("function", "refuse"), ZR_R_TIMEOUT; }
static void ExitByFunction() { WriteModuleLog("function", "exit"); }

TEST_F(ComponentTest, EntryPointsServeWithoutAFile) {
  FakeDiscovery& discovery = New({{1, {}, {CreateByFunction, nullptr, nullptr}},
                                  {2, {}, {CreateByFunction, InitByFunction, ExitByFunction}},
                                  {3, {}, {CreateByFunction, RefuseByFunction, ExitByFunction}},
                                  {4, {}, {nullptr, InitByFunction, ExitByFunction}}});
  const uint32_t cookie = Add(discovery);
  const struct {
    uint32_t number;
    ZRRESULT result;
    const char* log;
  } kRows[] = {
      {1, ZR_R_OK, "function.create"},
      {2, ZR_R_OK, "function.init function.create"},
      {3, ZR_R_NOT_SUPPORTED, "function.refuse"},
      {3, ZR_R_OK, "function.create"},
      {4, ZR_R_FAILED, ""},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(Create(row.number), row.result);
    EXPECT_EQ(TakeModuleLog(), row.log);
  }
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "function.exit function.exit");
  Add(discovery);
  EXPECT_EQ(Create(2), ZR_R_OK) << "the functions outlive the end of their assembly";
  EXPECT_EQ(TakeModuleLog(), "function.init function.create");
}

TEST_F(ComponentTest, TheLowestCookieThatAnswersWins) {
  FakeDiscovery& first = New({{1, ModulePath("good")}});
  FakeDiscovery& second = New({{1, ModulePath("second")}, {2, ModulePath("second")}});
  const uint32_t cookie = Add(first);
  Add(second);
  EXPECT_EQ(Create(1), ZR_R_OK);
  EXPECT_EQ(second.componentsAsked, 0u);
  EXPECT_EQ(Create(2), ZR_R_OK);
  EXPECT_EQ(Create(9), ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(Create(9), ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(second.componentsAsked, 3u) << "a failure is not remembered";
  EXPECT_EQ(TakeModuleLog(), "good.load good.init good.create second.load second.init second.create");
  first.answer = ZR_R_FAILED;  // what was answered before stands
  EXPECT_EQ(Create(1), ZR_R_OK);
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  (void)TakeModuleLog();
  EXPECT_EQ(Create(1), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "second.create");
}

TEST_F(ComponentTest, NamesAreLearntOnceAndKept) {
  FakeDiscovery& discovery = New({{1, {}, {}, W("Learnt.Once")}, {2, {}, {}, {}}});
  const uint32_t cookie = Add(discovery);
  const ZRUUID one = ClassId(1), nameless = ClassId(2), unknown = ClassId(3);
  for (int round = 0; round < 2; ++round) {
    ZRUUID classId = {};
    EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Learnt.Once"))), &classId), ZR_R_OK);
    EXPECT_EQ(classId, one);
    ZRSTR name = nullptr;
    EXPECT_EQ(ZrClassNameFromCLSID(&one, &name), ZR_R_OK);
    EXPECT_EQ(ContentOf(Owned(name)), W("Learnt.Once"));
    name = nullptr;
    EXPECT_EQ(ZrClassNameFromCLSID(&nameless, &name), ZR_R_OK);
    EXPECT_EQ(name, nullptr) << "a null name is stored as null";
    EXPECT_EQ(discovery.namesAsked, 3u);
    EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), round == 0 ? ZR_R_OK : ZR_R_UNKNOWN_IDENTIFIER);
  }
  EXPECT_EQ(Create(1), ZR_R_CLASS_NOT_REGISTERED);

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
  std::string thrower;
  discovery.onCall = [&thrower](const char* operation) {
    if (operation == thrower) throw std::runtime_error("thrown");
  };
  thrower = "AddRef";
  uint32_t cookie = 0;
  EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_UNEXPECTED);
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(Create(31), ZR_R_CLASS_NOT_REGISTERED) << "without a reference it isn't asked";
  thrower.clear();
  cookie = Add(discovery);
  thrower = "QueryComponent";
  EXPECT_EQ(Create(31), ZR_R_REQUEST_ABORTED);
  ZRUUID classId = ClassId(31);
  ZRSTR name = nullptr;
  thrower = "QueryClassName";
  EXPECT_EQ(ZrClassNameFromCLSID(&classId, &name), ZR_R_FAILED);
  thrower = "QueryClassId";
  EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Thrower"))), &classId), ZR_R_FAILED);
  EXPECT_EQ(Create(31), ZR_R_OK) << "the lock was left and nothing is half done";
  thrower = "Release";
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_UNEXPECTED);
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_UNKNOWN_IDENTIFIER) << "what was handled stays removed";
}

TEST_F(ComponentTest, DiscoveriesAndModulesMayCallBack) {
  FakeDiscovery& other = New({{2, ModulePath("good")}});
  FakeDiscovery& leaving = New({{1, ModulePath("reentering")}});
  const uint32_t cookie = Add(leaving), otherCookie = Add(other);
  // Removes itself in the middle of the walk that asks it; the walk goes on with the next one.
  leaving.onCall = [&](const char* operation) {
    EXPECT_TRUE(operation != std::string("QueryClassId") || ZrRemoveComponentDiscovery(cookie) == ZR_R_OK);
  };
  ZRUUID classId;
  EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Nobody.Knows"))), &classId), ZR_R_FAILED);
  EXPECT_EQ(other.namesAsked, 1u);
  EXPECT_EQ(leaving.references, 0u);

  const ZRUUID reentering = ClassId(1), good = ClassId(2), nobodys = ClassId(99);
  // Found from the moment it is registered. (The module makes an object of the class that it is given
  // as the interface.)
  void* object = nullptr;
  leaving.onCall = [&](const char* operation) {
    if (operation == std::string("AddRef")) (void)ZrCreateInstance(&reentering, 0, &nobodys, 0, &object);
  };
  Add(leaving);
  leaving.onCall = nullptr;
  EXPECT_EQ(TakeModuleLog(), "reentering.load reentering.init reentering.asked reentering.create");
  EXPECT_EQ(ZrCreateInstance(&reentering, 0, &good, 0, &object), ZR_R_OK);
  EXPECT_NE(object, nullptr);
  EXPECT_EQ(TakeModuleLog(), "reentering.create good.load good.init good.create");
  EXPECT_EQ(ZrRemoveComponentDiscovery(otherCookie), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "good.exit good.unload");
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  EXPECT_EQ(TakeModuleLog(), "reentering.exit reentering.closed reentering.unload");
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
}
