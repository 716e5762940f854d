// What discoveries configure. The exports act; what came of it is read from the item allocators, behind the boundary.

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "components/allocator_settings.h"
#include "components/component_management.h"
#include "frame/item_allocator.h"
#include "tests/support/array_samples.h"
#include "tests/support/fake_configuration.h"
#include "tests/support/fake_discovery.h"

// The switch, then for REFs and SREFs how many are cached and how many may be.
static std::string InForce() {
  std::ostringstream statistics;
  CItemAllocator::WriteStatistics(statistics);
  const auto cache = [text = statistics.str()](const std::string& name) {
    const std::size_t start = text.find(name + " : ") + name.size() + 3;
    return " " + text.substr(start, text.rfind('/', text.find('\n', start)) - start);
  };
  return (g_itemAllocators.isEnabled ? "on" : "off") + cache("tagZRREF") + cache("tagZRSREF");
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
      EXPECT_TRUE(classId == ZRUUID{} && ContentOf(name) == W("ZrCore") && !*given && !IsUnderManagementLock());
      *given = configuration.Given();
      return configuration.onCall(), ZR_R_FAILED;
    };
  }
  // The same value under each of the three names.
  explicit Host(const FakeConfiguration::Value& value)
      : Host({{W("EnableAllocator"), value}, {W("ZR_VT_REF"), value}, {W("ZR_VT_SREF"), value}}) {}

  // Answers what the addition puts in force.
  std::string Add() {
    EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    EXPECT_EQ(configuration.references, 0);
    return InForce();
  }
  std::string Remove() {
    EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
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
  const uint8_t one = 1;
  const uint32_t seven = 7;
  const Array numbers = MakeArray(ZR_VT_UI4, {{1, 0}}), texts = MakeArray(ZR_VT_STR, {{1, 0}});  // which convert
  const ZRSAFEARRAY array = numbers.get(), noArray = nullptr;
  const uintptr_t madeUpHandle = 1;
  const ZRVARIANT text = At(ZR_VT_STR, truth.string), byRef = At(ZR_VT_UI4 | ZR_VT_BYREF, &seven);
  struct {
    Host host;
    std::string inForce = kNothing;
  } rows[] = {
      {Host({Number(ZR_VT_BOOL, 2)}), "off 0/2 0/2"},
      {Host({Number(ZR_VT_BOOL | 0x8000, 1)}), "on 0/1 0/1"},
      {Host({At(ZR_VT_BOOL | ZR_VT_BYREF, &one)}), "on 0/1 0/1"},
      {Host({At(ZR_VT_BOOL | ZR_VT_BYREF, nullptr)})},
      {Host({byRef}), "on 0/7 0/7"},
      {Host({Number(ZR_VT_I4, 0xFFFFFFFF)})},
      {Host({Number(ZR_VT_I8, 256)}), "off 0/256 0/256"},
      {Host({text}), "on 0/1 0/1"},
      {Host({At(ZR_VT_VARIANT | ZR_VT_BYREF, &byRef)}), "on 0/7 0/7"},
      {Host({{W("EnableAllocator"), {At(ZR_VT_UI4 | ZR_VT_ARRAY, array)}}}), "off 0/1024 0/1024"},
      {Host({{W("EnableAllocator"), {At(ZR_VT_STR | ZR_VT_ARRAY, texts.get())}}}), "off 0/1024 0/1024"},
      {Host({{W("EnableAllocator"), {At(ZR_VT_BOOL | ZR_VT_ARRAY | ZR_VT_BYREF, &madeUpHandle)}}}), "on 0/1024 0/1024"},
      {Host({At(ZR_VT_UI4 | ZR_VT_ARRAY, nullptr)})},
      {Host({{W("ZR_VT_SREF"), {At(ZR_VT_UI4 | ZR_VT_ARRAY | ZR_VT_BYREF, &madeUpHandle)}}}), "off 0/1024 0/1"},
      {Host({At(ZR_VT_UI4 | ZR_VT_ARRAY | ZR_VT_BYREF, &noArray)})},
      {Host({text, ZR_R_CANCELLED})},
      {Host({Number(ZR_VT_BOOL, 1), ZR_R_SAME_VALUE}), "on 0/1 0/1"},
      {Host({{W("EnableAllocator"), {text}}, {W("ZR_VT_SREF"), {byRef}}}), "on 0/1024 0/7"},
      {Host(std::map<Units, FakeConfiguration::Value>{})},  // no section
  };
  for (auto& row : rows) {
    SCOPED_TRACE(&row - rows);
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
  EXPECT_EQ(ZrRemoveComponentDiscovery(small.cookie), ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(ZrAddComponentDiscovery(nullptr, &small.cookie), ZR_R_INVALID_ARGUMENTS);

  // The shutdown of the registry leaves the other one in the count.
  ZrUninitialize();
  EXPECT_EQ(ZrAddComponentDiscovery(&small.discovery, &small.cookie), ZR_R_NO_INIT);
  ZrInitialize();
  EXPECT_EQ(large.Add(), "on 1/5 0/5");
  EXPECT_EQ(large.Remove(), "on 1/5 0/5");
  EXPECT_EQ(calls, 3 * 13) << "it is asked each time, heeded or not";
  AllocatorSettings().DiscoveryRemoved();  // for the other tests' sake
}

TEST_F(ConfigurationTest, WhatAnyCallThrowsPassesThroughTheAddition) {
  for (const bool goesOn : {false, true}) {  // the releases that follow may throw, too
    // Two questions, five calls for each value, since it is an object that is released twice more, and two releases.
    for (int n = 1; n <= 19; ++n) {
      SCOPED_TRACE(testing::Message() << goesOn << ", call " << n);
      Host host({Number(ZR_VT_UNKNOWN, 0)}), next({Number(ZR_VT_UI4, 6)});
      const IZrConfiguration* object = &host.configuration;
      for (auto& [name, value] : host.configuration.values) value.variant = At(ZR_VT_UNKNOWN, object);
      host.configuration.onCall = [goesOn, calls = 0, n]() mutable {
        if (++calls == n || (goesOn && calls > n)) throw std::runtime_error("thrown");
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
}

TEST_F(ConfigurationTest, AClassIsConfiguredByTheDiscoveryThatReportedIt) {
  FakeDiscovery first({{1, Units()}}), second({{1, Units()}, {2, Units()}, {3, Units()}});
  const Owned wanted(Units(W("Wanted")));
  FakeConfiguration ofFirst, ofSecond;
  IZrConfiguration* given = nullptr;
  uint32_t firstCookie = 0, secondCookie = 0, asked = 0;
  ZrAddComponentDiscovery(&first, &firstCookie);
  ZrAddComponentDiscovery(&second, &secondCookie);
  first.configure = [&](const ZRUUID&, ZRSTR, IZrConfiguration** result) {
    EXPECT_EQ(ZrRemoveComponentDiscovery(firstCookie), ZR_R_OK) << "it may go while it is asked";
    *result = &ofFirst;
    return ZR_R_ACCESS_DENIED;
  };
  second.configure = [&](const ZRUUID& classId, ZRSTR name, IZrConfiguration** result) {
    EXPECT_TRUE(classId == ClassId(asked) && name == wanted.string && !*result && IsUnderManagementLock());
    *result = &ofSecond;
    if (asked == 3) throw std::runtime_error("thrown");
    return ZR_R_SAME_VALUE;
  };
  second.onCall = [&](const std::string& operation) {
    if (operation == "QueryComponent") given = &ofFirst;  // the result of the question that is being answered
    if (operation == "QueryComponent" && asked == 5) throw std::runtime_error("thrown");
  };
  const struct {
    uint32_t number;
    ZRRESULT result;
    const IZrConfiguration* given;
  } kRows[] = {
      {2, ZR_R_SAME_VALUE, &ofSecond}, {1, ZR_R_ACCESS_DENIED, &ofFirst},        {1, ZR_R_SAME_VALUE, &ofSecond},
      {3, ZR_R_FAILED, &ofSecond},     {4, ZR_R_CLASS_NOT_REGISTERED, &ofFirst}, {5, ZR_R_FAILED, &ofFirst},
  };
  for (const auto& row : kRows) {
    const ZRUUID classId = ClassId(asked = row.number);
    EXPECT_EQ(ZrQueryComponentConfiguration(&classId, wanted, nullptr), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(ZrQueryComponentConfiguration(&classId, wanted, &given), row.result) << &row - kRows;
    EXPECT_EQ(given, row.given) << &row - kRows;
  }
  EXPECT_EQ(first.references, 0u);
  EXPECT_EQ(ZrRemoveComponentDiscovery(secondCookie), ZR_R_OK);
}

TEST_F(ConfigurationTest, HooksRunAtOnceAndLoseNoCount) {
  std::vector<std::thread> threads;
  for (uint64_t cap = 3; cap <= 6; ++cap) {
    threads.emplace_back([host = std::make_unique<Host>(FakeConfiguration::Value{Number(ZR_VT_UI4, cap)})] {
      for (int round = 0; round < 300; ++round) {
        (void)host->Add();
        (void)host->Remove();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  Host next({Number(ZR_VT_UI4, 7)});  // in which order they set the allocators is open; nobody is left, though
  EXPECT_EQ(next.Add(), "on 0/7 0/7");
  EXPECT_EQ(next.Remove(), kNothing);
}
