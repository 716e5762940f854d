// What discoveries configure. The exports act; what came of it is read from the item allocators, behind the boundary.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <stdexcept>

#include "components/allocator_settings.h"
#include "components/component_management.h"
#include "runtime/item_allocator.h"
#include "tests/support/failing_heap.h"
#include "tests/support/fake_configuration.h"
#include "tests/support/fake_discovery.h"

// The switch, then for REFs and SREFs how many are cached and how many may be.
static std::string InForce() {
  static const std::regex kAllocators("[^]*tagZRSREF : (\\S+)/\\d+\ntagZRREF : (\\S+)/\\d+\n");
  std::ostringstream statistics;
  CItemAllocator::WriteStatistics(statistics);
  return (g_itemAllocators.isEnabled ? "on " : "off ") + std::regex_replace(statistics.str(), kAllocators, "$2 $1");
}

static const std::string kNothing = "off 0/1024 0/1024";

static ZRVARIANT Number(unsigned type, uint64_t value) {
  return {static_cast<uint16_t>(type), 0, 0, 0, {.ui8 = value}};
}
static ZRVARIANT At(unsigned type, const void* address) { return Number(type, reinterpret_cast<uint64_t>(address)); }

static bool IsUnderManagementLock() { return ComponentRegistry().ManagementLock().IsOwn(); }

// A discovery with a configuration.
struct Host {
  explicit Host(std::map<Units, FakeConfiguration::Value> values) {
    configuration.values = std::move(values);
    discovery.configure = [this](const ZRUUID& classId, ZRSTR name, IZrConfiguration** given) {
      EXPECT_EQ(classId, ZRUUID{});
      EXPECT_EQ(ContentOf(name), W("ZrCore"));
      EXPECT_TRUE(!*given && !IsUnderManagementLock());
      *given = configuration.Given();
      return configuration.onCall(), ZR_R_FAILED;
    };
  }
  // The same value under each of the three names.
  explicit Host(const FakeConfiguration::Value& value)
      : Host({{W("EnableAllocator"), value}, {W("ZR_VT_REF"), value}, {W("ZR_VT_SREF"), value}}) {}

  // Answers what the addition puts in force.
  std::string Add() {
    cookie = discovery.Add();
    EXPECT_EQ(configuration.references, 0);
    return InForce();
  }
  std::string Remove() {
    EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    return InForce();
  }

  FakeConfiguration configuration;
  FakeDiscovery discovery;
  uint32_t cookie = 0;
};

struct ConfigurationTest : testing::Test {
  ConfigurationTest() { ZrInitialize(); }
  ~ConfigurationTest() override {
    ZrUninitialize();
    EXPECT_EQ(InForce(), kNothing);
  }
};

TEST_F(ConfigurationTest, ValuesOfAnyTypeAreReadAndWhatIsMissingIsNothing) {
  const Owned truth(Units(W("ZR_TRUE")));
  const uint32_t seven = 7;
  const uintptr_t madeUpHandle = 1;
  const ZRVARIANT text = At(ZR_VT_STR, truth.string), byRef = At(ZR_VT_UI4 | ZR_VT_BYREF, &seven);
  struct {
    const char* what;
    Host host;
    std::string inForce = kNothing;
  } rows[] = {
      {"BOOL 1 with ZR_R_SAME_VALUE", Host({Number(ZR_VT_BOOL, 1), ZR_R_SAME_VALUE}), "on 0/1 0/1"},
      {"BOOL 1 with ZR_R_CANCELLED", Host({Number(ZR_VT_BOOL, 1), ZR_R_CANCELLED})},
      {"BOOL 2: exactly 1 is true", Host({Number(ZR_VT_BOOL, 2)}), "off 0/2 0/2"},
      {"I4 -1: out of range", Host({Number(ZR_VT_I4, 0xFFFFFFFF)})},
      {"I8 256", Host({Number(ZR_VT_I8, 256)}), "off 0/256 0/256"},
      {"STR ZR_TRUE", Host({text}), "on 0/1 0/1"},
      {"a reference to UI4 7", Host({byRef}), "on 0/7 0/7"},
      {"a reference to a variant", Host({At(ZR_VT_VARIANT | ZR_VT_BYREF, &byRef)}), "on 0/7 0/7"},
      {"a null reference", Host({At(ZR_VT_BOOL | ZR_VT_BYREF, nullptr)})},
      {"a reference to an array, for SREFs only",
       Host({{W("ZR_VT_SREF"), {At(ZR_VT_UI4 | ZR_VT_ARRAY | ZR_VT_BYREF, &madeUpHandle)}}}), "off 0/1024 0/1"},
      {"nothing for REFs", Host({{W("EnableAllocator"), {text}}, {W("ZR_VT_SREF"), {byRef}}}), "on 0/1024 0/7"},
      {"no section", Host(std::map<Units, FakeConfiguration::Value>{})},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(row.host.Add(), row.inForce);
    EXPECT_EQ(row.host.Remove(), kNothing);
  }
  EXPECT_EQ(ZrStringRefCount(truth), 1u);
}

TEST_F(ConfigurationTest, AValueObjectIsReleasedBeforeItsAnswerIsLookedAt) {
  uint32_t calls = 0;  // two for the section, then for each value: query, read, release
  Host host({At(ZR_VT_UI4 | ZR_VT_BYREF, &calls)});
  host.configuration.onCall = [&calls] { ++calls; };
  EXPECT_EQ(host.Add(), "on 0/8 0/11");
  EXPECT_EQ(host.Remove(), kNothing);
}

TEST_F(ConfigurationTest, TheFirstDiscoveryDecidesUntilTheLastIsRemoved) {
  Host small({Number(ZR_VT_UI4, 5)}), large({Number(ZR_VT_UI4, 9)}), bare({Number(ZR_VT_UI4, 9)});
  bare.discovery.configure = nullptr;
  int calls = 0;
  large.configuration.onCall = [&calls] { ++calls; };
  EXPECT_EQ(bare.Add(), kNothing);
  EXPECT_EQ(large.Add(), kNothing) << "one without a configuration decides too";
  EXPECT_EQ(bare.Remove(), kNothing);
  EXPECT_EQ(large.Remove(), kNothing);

  EXPECT_EQ(small.Add(), "on 0/5 0/5");
  ZrDestroyREF(ZrCreateREF());
  EXPECT_EQ(large.Add(), "on 1/5 0/5");
  EXPECT_EQ(small.Remove(), "on 1/5 0/5");
  EXPECT_RESULT(ZrRemoveComponentDiscovery(small.cookie), ZR_R_UNKNOWN_IDENTIFIER);

  // The shutdown of the registry leaves the other one in the count.
  ZrUninitialize();
  ZrInitialize();
  EXPECT_EQ(large.Add(), "on 1/5 0/5");
  EXPECT_EQ(large.Remove(), "on 1/5 0/5");
  EXPECT_EQ(calls, 3 * 13) << "it is asked each time, heeded or not";
  AllocatorSettings().DiscoveryRemoved();  // for the other tests' sake
}

TEST_F(ConfigurationTest, WhatAnyCallThrowsPassesThroughTheAddition) {
  // Two questions, five calls for each value, since it is an object that is released twice more, and two releases.
  for (int n = 1; n <= 19; ++n) {
    SCOPED_TRACE(testing::Message() << "call " << n << " throws");
    Host host({Number(ZR_VT_UNKNOWN, 0)}), next({Number(ZR_VT_UI4, 6)});
    const IZrConfiguration* object = &host.configuration;
    for (auto& [name, value] : host.configuration.values) value.variant = At(ZR_VT_UNKNOWN, object);
    host.configuration.onCall = [calls = 0, n]() mutable {
      if (++calls >= n) throw std::runtime_error("thrown");  // the releases that follow throw, too
    };
    EXPECT_THROW(host.Add(), std::runtime_error);
    EXPECT_EQ(host.configuration.references, 0);
    EXPECT_EQ(host.discovery.references, 1u) << "it is registered";
    EXPECT_EQ(next.Add(), "on 0/6 0/6") << "but not counted";
    EXPECT_EQ(next.Remove(), kNothing);
    ZrUninitialize();
    ZrInitialize();
  }
}

TEST_F(ConfigurationTest, AClassIsConfiguredByTheDiscoveryThatReportedIt) {
  using Answer = std::pair<Result, std::string>;  // and whose configuration is given
  FakeDiscovery first({{1, Units()}}), second({{1, Units()}, {2, Units()}, {3, Units()}});
  FakeConfiguration ofFirst, ofSecond;
  const Owned wanted(Units(W("Wanted")));
  const uint32_t firstCookie = first.Add(), secondCookie = second.Add();
  first.configure = [&](const ZRUUID&, ZRSTR, IZrConfiguration** given) {
    EXPECT_RESULT(ZrRemoveComponentDiscovery(firstCookie), ZR_R_OK) << "it may go while it is asked";
    return *given = &ofFirst, ZR_R_ACCESS_DENIED;
  };
  second.configure = [&](const ZRUUID& classId, ZRSTR name, IZrConfiguration** given) {
    EXPECT_TRUE(name == wanted.string && !*given && IsUnderManagementLock());
    *given = &ofSecond;
    return classId == ClassId(3) ? throw std::runtime_error("thrown") : ZR_R_SAME_VALUE;
  };
  const auto query = [&](uint32_t number) {
    const ZRUUID classId = ClassId(number);
    IZrConfiguration* given = &ofFirst;
    const ZRRESULT result = ZrQueryComponentConfiguration(&classId, wanted, &given);
    return Answer(result, !given ? "none" : given == &ofFirst ? "first" : given == &ofSecond ? "second" : "another");
  };
  EXPECT_EQ(query(2), Answer(ZR_R_SAME_VALUE, "second"));
  EXPECT_EQ(query(1), Answer(ZR_R_ACCESS_DENIED, "first"));
  EXPECT_EQ(query(1), Answer(ZR_R_SAME_VALUE, "second"));
  EXPECT_EQ(query(3), Answer(ZR_R_FAILED, "second"));
  EXPECT_EQ(query(4), Answer(ZR_R_CLASS_NOT_REGISTERED, "none"));
  EXPECT_EQ(first.references, 0u);

  // A discovery that removes itself while it is asked for a class is asked for its configuration in the same call.
  // Later calls find the class, but no discovery any more.
  FakeDiscovery leaving({{5, Units()}});
  const uint32_t leavingCookie = leaving.Add();
  leaving.onCall = [&](const std::string& operation) {
    if (operation == "QueryComponent") ZrRemoveComponentDiscovery(leavingCookie);
  };
  leaving.configure = [&](const ZRUUID&, ZRSTR, IZrConfiguration** given) { return *given = &ofFirst, ZR_R_OK; };
  EXPECT_EQ(query(5), Answer(ZR_R_OK, "first"));
  EXPECT_EQ(query(5), Answer(ZR_R_UNEXPECTED, "none"));
  EXPECT_EQ(leaving.references, 0u);
  EXPECT_RESULT(ZrRemoveComponentDiscovery(secondCookie), ZR_R_OK);
}

// A removal stops a module, which removes the same discovery.
TEST_F(ConfigurationTest, ADiscoveryThatIsRemovedInsideItsRemovalCountsOnce) {
  static uint32_t cookie = 0;
  static constexpr auto kExit = [] { EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK); };
  FakeDiscovery leaving({{1, {}, {MakeObject, nullptr, kExit}}});
  Host next({Number(ZR_VT_UI4, 6)});
  cookie = leaving.Add();
  EXPECT_RESULT(CreateObject(1), ZR_R_OK);
  EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  EXPECT_EQ(leaving.references, 0u);
  EXPECT_EQ(next.Add(), "on 0/6 0/6") << "it is the first";
  EXPECT_EQ(next.Remove(), kNothing);
}

TEST_F(ConfigurationTest, WithoutMemoryForANameNothingIsAskedForByIt) {
  Host host({Number(ZR_VT_UI4, 5)});
  host.discovery.onCall = [](const std::string& operation) {
    if (operation == "AddRef") FailAllocation(1);  // of the name of the whole
  };
  EXPECT_EQ(host.Add(), kNothing);
  EXPECT_TRUE(AllocationFailed());
  EXPECT_EQ(host.Remove(), kNothing);

  host.discovery.onCall = nullptr;
  int calls = 0;
  host.configuration.onCall = [&calls] {
    if (++calls == 2) FailAllocation(1);  // of the first value's, which is the switch
  };
  EXPECT_EQ(host.Add(), "off 0/5 0/5");
  EXPECT_TRUE(AllocationFailed());
  EXPECT_EQ(host.Remove(), kNothing);
}

// The class outlives its discovery then, and nobody can configure it any more.
TEST_F(ConfigurationTest, ADiscoveryMayReportAClassAndRemoveItself) {
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
  EXPECT_EQ(discovery.asked, 1u);
}
