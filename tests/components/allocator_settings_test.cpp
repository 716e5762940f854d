// Tests the library's own configuration, which discoveries supply. The tests call exports and read the resulting
// settings from the item allocators.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <stdexcept>

#include "components/allocator_settings.h"
#include "components/component_registry.h"
#include "runtime/item_allocator.h"
#include "tests/support/failing_heap.h"
#include "tests/support/fake_configuration.h"
#include "tests/support/fake_discovery.h"

// The settings in force: the switch, then the number of cached items and the cap, for REFs and for SREFs.
static std::string CurrentSettings() {
  static const std::regex kAllocators("[^]*tagZRSREF : (\\S+)/\\d+\ntagZRREF : (\\S+)/\\d+\n");
  std::ostringstream statistics;
  CItemAllocator::WriteStatistics(statistics);
  return (g_itemAllocators.isEnabled ? "on " : "off ") + std::regex_replace(statistics.str(), kAllocators, "$2 $1");
}

static const std::string kDefaultSettings = "off 0/1024 0/1024";

static ZRVARIANT Number(unsigned type, uint64_t value) {
  return {static_cast<uint16_t>(type), 0, 0, 0, {.ui8 = value}};
}
static ZRVARIANT At(unsigned type, const void* address) { return Number(type, reinterpret_cast<uint64_t>(address)); }

static bool IsUnderManagementLock() { return ComponentRegistry().ManagementLock().IsOwn(); }

// A discovery that has a configuration.
struct Host {
  explicit Host(std::map<Units, FakeConfiguration::Value> values) {
    configuration.values = std::move(values);
    discovery.configure = [this](const ZRUUID& classId, ZRSTR name, IZrConfiguration** out) {
      EXPECT_EQ(classId, ZRUUID{});
      EXPECT_EQ(ContentOf(name), W("ZrCore"));
      EXPECT_TRUE(!*out && !IsUnderManagementLock());
      *out = configuration.WithReference();
      return configuration.onCall(), ZR_R_FAILED;
    };
  }
  // Has the same value under each of the three names.
  explicit Host(const FakeConfiguration::Value& value)
      : Host({{W("EnableAllocator"), value}, {W("ZR_VT_REF"), value}, {W("ZR_VT_SREF"), value}}) {}

  // Adds the discovery. Returns the settings afterwards.
  std::string Add() {
    cookie = discovery.Add();
    EXPECT_EQ(configuration.references, 0);
    return CurrentSettings();
  }
  // Removes the discovery. Returns the settings afterwards.
  std::string Remove() {
    EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    return CurrentSettings();
  }

  FakeConfiguration configuration;
  FakeDiscovery discovery;
  uint32_t cookie = 0;
};

struct ConfigurationTest : testing::Test {
  ConfigurationTest() { ZrInitialize(); }
  ~ConfigurationTest() override {
    ZrUninitialize();
    EXPECT_EQ(CurrentSettings(), kDefaultSettings);
  }
};

TEST_F(ConfigurationTest, ConvertsValuesOfAnyTypeAndUsesDefaultsForMissingOnes) {
  const Owned truth(Units(W("ZR_TRUE")));
  const uint32_t seven = 7;
  const uintptr_t madeUpHandle = 1;
  const ZRVARIANT text = At(ZR_VT_STR, truth.string), byRef = At(ZR_VT_UI4 | ZR_VT_BYREF, &seven);
  struct {
    const char* value;
    Host host;
    std::string settings = kDefaultSettings;
  } rows[] = {
      {"BOOL 1 with ZR_R_SAME_VALUE", Host({Number(ZR_VT_BOOL, 1), ZR_R_SAME_VALUE}), "on 0/1 0/1"},
      {"BOOL 1 with ZR_R_CANCELLED", Host({Number(ZR_VT_BOOL, 1), ZR_R_CANCELLED})},
      {"BOOL 2: only 1 is true", Host({Number(ZR_VT_BOOL, 2)}), "off 0/2 0/2"},
      {"I4 -1: out of range", Host({Number(ZR_VT_I4, 0xFFFFFFFF)})},
      {"I8 256", Host({Number(ZR_VT_I8, 256)}), "off 0/256 0/256"},
      {"STR ZR_TRUE", Host({text}), "on 0/1 0/1"},
      {"a reference to UI4 7", Host({byRef}), "on 0/7 0/7"},
      {"a reference to a variant", Host({At(ZR_VT_VARIANT | ZR_VT_BYREF, &byRef)}), "on 0/7 0/7"},
      {"a null reference", Host({At(ZR_VT_BOOL | ZR_VT_BYREF, nullptr)})},
      {"a reference to an array, for SREFs only",
       Host({{W("ZR_VT_SREF"), {At(ZR_VT_UI4 | ZR_VT_ARRAY | ZR_VT_BYREF, &madeUpHandle)}}}), "off 0/1024 0/1"},
      {"no value for REFs", Host({{W("EnableAllocator"), {text}}, {W("ZR_VT_SREF"), {byRef}}}), "on 0/1024 0/7"},
      {"no section", Host(std::map<Units, FakeConfiguration::Value>{})},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.value);
    EXPECT_EQ(row.host.Add(), row.settings);
    EXPECT_EQ(row.host.Remove(), kDefaultSettings);
  }
  EXPECT_EQ(ZrStringRefCount(truth), 1u);
}

TEST_F(ConfigurationTest, ReleasesValueObjectBeforeUsingItsValue) {
  uint32_t calls = 0;  // two calls for the section, then query, read and release for each value
  Host host({At(ZR_VT_UI4 | ZR_VT_BYREF, &calls)});
  host.configuration.onCall = [&calls] { ++calls; };
  EXPECT_EQ(host.Add(), "on 0/8 0/11");
  EXPECT_EQ(host.Remove(), kDefaultSettings);
}

TEST_F(ConfigurationTest, FirstDiscoveryConfiguresUntilLastIsRemoved) {
  Host small({Number(ZR_VT_UI4, 5)}), large({Number(ZR_VT_UI4, 9)}), bare({Number(ZR_VT_UI4, 9)});
  bare.discovery.configure = nullptr;
  int calls = 0;
  large.configuration.onCall = [&calls] { ++calls; };
  EXPECT_EQ(bare.Add(), kDefaultSettings);
  EXPECT_EQ(large.Add(), kDefaultSettings) << "a first discovery without a configuration keeps the defaults in force";
  EXPECT_EQ(bare.Remove(), kDefaultSettings);
  EXPECT_EQ(large.Remove(), kDefaultSettings);

  EXPECT_EQ(small.Add(), "on 0/5 0/5");
  ZrDestroyREF(ZrCreateREF());
  EXPECT_EQ(large.Add(), "on 1/5 0/5");
  EXPECT_EQ(small.Remove(), "on 1/5 0/5");
  EXPECT_RESULT(ZrRemoveComponentDiscovery(small.cookie), ZR_R_UNKNOWN_IDENTIFIER);

  // ZrUninitialize drops the second discovery, but that discovery stays in the count of discoveries.
  ZrUninitialize();
  ZrInitialize();
  EXPECT_EQ(large.Add(), "on 1/5 0/5");
  EXPECT_EQ(large.Remove(), "on 1/5 0/5");
  EXPECT_EQ(calls, 3 * 13) << "each addition queries the configuration, even if it is not used";
  AllocatorSettings().DiscoveryRemoved();  // corrects the count for the other tests
}

TEST_F(ConfigurationTest, AddDiscoveryPropagatesExceptionsFromEveryCall) {
  // 19 calls: two queries, five calls for each of three values, and two releases. A value needs five calls because it
  // is an object, which is released twice more.
  for (int n = 1; n <= 19; ++n) {
    SCOPED_TRACE(testing::Message() << "call " << n << " throws");
    Host host({Number(ZR_VT_UNKNOWN, 0)}), next({Number(ZR_VT_UI4, 6)});
    const IZrConfiguration* object = &host.configuration;
    for (auto& [name, value] : host.configuration.values) value.variant = At(ZR_VT_UNKNOWN, object);
    host.configuration.onCall = [calls = 0, n]() mutable {
      if (++calls >= n) throw std::runtime_error("thrown");  // the later releases throw, too
    };
    EXPECT_THROW(host.Add(), std::runtime_error);
    EXPECT_EQ(host.configuration.references, 0);
    EXPECT_EQ(host.discovery.references, 1u) << "the discovery stays registered";
    EXPECT_EQ(next.Add(), "on 0/6 0/6") << "the discovery that threw must not count as the first";
    EXPECT_EQ(next.Remove(), kDefaultSettings);
    ZrUninitialize();
    ZrInitialize();
  }
}

TEST_F(ConfigurationTest, QueriesTheDiscoveryThatReportedTheClass) {
  using Outcome = std::pair<Result, std::string>;  // the result, and whose configuration was returned
  FakeDiscovery first({{1, Units()}}), second({{1, Units()}, {2, Units()}, {3, Units()}});
  FakeConfiguration ofFirst, ofSecond;
  const Owned wanted(Units(W("Wanted")));
  const uint32_t firstCookie = first.Add(), secondCookie = second.Add();
  first.configure = [&](const ZRUUID&, ZRSTR, IZrConfiguration** out) {
    EXPECT_RESULT(ZrRemoveComponentDiscovery(firstCookie), ZR_R_OK) << "a discovery may remove itself during a query";
    return *out = &ofFirst, ZR_R_ACCESS_DENIED;
  };
  second.configure = [&](const ZRUUID& classId, ZRSTR name, IZrConfiguration** out) {
    EXPECT_TRUE(name == wanted.string && !*out && IsUnderManagementLock());
    *out = &ofSecond;
    return classId == ClassId(3) ? throw std::runtime_error("thrown") : ZR_R_SAME_VALUE;
  };
  const auto query = [&](uint32_t number) {
    const ZRUUID classId = ClassId(number);
    IZrConfiguration* found = &ofFirst;
    const ZRRESULT result = ZrQueryComponentConfiguration(&classId, wanted, &found);
    return Outcome(result, !found ? "none" : found == &ofFirst ? "first" : found == &ofSecond ? "second" : "another");
  };
  EXPECT_EQ(query(2), Outcome(ZR_R_SAME_VALUE, "second"));
  EXPECT_EQ(query(1), Outcome(ZR_R_ACCESS_DENIED, "first"));
  EXPECT_EQ(query(1), Outcome(ZR_R_SAME_VALUE, "second"));
  EXPECT_EQ(query(3), Outcome(ZR_R_FAILED, "second"));
  EXPECT_EQ(query(4), Outcome(ZR_R_CLASS_NOT_REGISTERED, "none"));
  EXPECT_EQ(first.references, 0u);

  // A discovery that removes itself while it reports a class is still queried for the configuration in the same call.
  // Later calls find the class but no discovery.
  FakeDiscovery leaving({{5, Units()}});
  const uint32_t leavingCookie = leaving.Add();
  leaving.onCall = [&](const std::string& operation) {
    if (operation == "QueryComponent") ZrRemoveComponentDiscovery(leavingCookie);
  };
  leaving.configure = [&](const ZRUUID&, ZRSTR, IZrConfiguration** out) { return *out = &ofFirst, ZR_R_OK; };
  EXPECT_EQ(query(5), Outcome(ZR_R_OK, "first"));
  EXPECT_EQ(query(5), Outcome(ZR_R_UNEXPECTED, "none"));
  EXPECT_EQ(leaving.references, 0u);
  EXPECT_RESULT(ZrRemoveComponentDiscovery(secondCookie), ZR_R_OK);
}

// The removal of a discovery stops a module whose exit function removes the same discovery.
TEST_F(ConfigurationTest, NestedRemovalOfOneDiscoveryCountsOnce) {
  static uint32_t cookie = 0;
  static constexpr auto kExit = [] { EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK); };
  FakeDiscovery leaving({{1, {}, {MakeObject, nullptr, kExit}}});
  Host next({Number(ZR_VT_UI4, 6)});
  cookie = leaving.Add();
  EXPECT_RESULT(CreateObject(1), ZR_R_OK);
  EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  EXPECT_EQ(leaving.references, 0u);
  EXPECT_EQ(next.Add(), "on 0/6 0/6") << "the next discovery must count as the first";
  EXPECT_EQ(next.Remove(), kDefaultSettings);
}

TEST_F(ConfigurationTest, OutOfMemoryForANameSkipsItsQuery) {
  Host host({Number(ZR_VT_UI4, 5)});
  host.discovery.onCall = [](const std::string& operation) {
    if (operation == "AddRef") FailAllocation(1);  // of the name of the configuration
  };
  EXPECT_EQ(host.Add(), kDefaultSettings);
  EXPECT_TRUE(AllocationFailed());
  EXPECT_EQ(host.Remove(), kDefaultSettings);

  host.discovery.onCall = nullptr;
  int calls = 0;
  host.configuration.onCall = [&calls] {
    if (++calls == 2) FailAllocation(1);  // of the name of the first value, the switch
  };
  EXPECT_EQ(host.Add(), "off 0/5 0/5");
  EXPECT_TRUE(AllocationFailed());
  EXPECT_EQ(host.Remove(), kDefaultSettings);
}

// The class then outlives its discovery, and no discovery can supply its configuration.
TEST_F(ConfigurationTest, DiscoveryMayReportAClassAndRemoveItself) {
  FakeDiscovery discovery({{1, Units()}});
  const uint32_t cookie = discovery.Add();
  discovery.onCall = [cookie](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryComponent" || ZrRemoveComponentDiscovery(cookie) == ZR_R_OK);
  };
  const ZRUUID classId = ClassId(1);
  const Owned name(Units(W("Wanted")));
  IZrConfiguration* configuration = nullptr;
  EXPECT_EQ(ZrQueryComponentConfiguration(&classId, name, &configuration), ZR_R_NOT_IMPLEMENTED);
  EXPECT_EQ(discovery.references, 0u);
  EXPECT_EQ(ZrQueryComponentConfiguration(&classId, name, &configuration), ZR_R_UNEXPECTED);
  EXPECT_EQ(discovery.queries, 1u);
}
