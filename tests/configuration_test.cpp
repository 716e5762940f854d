// What discoveries configure. The exports act; what came of it is read from the item allocators, behind the boundary.

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "components/allocator_settings.h"
#include "components/component_management.h"
#include "frame/item_allocator.h"
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

static ZRVARIANT Variant(unsigned type, uint64_t value) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = static_cast<uint16_t>(type);
  variant.Value.ui8 = value;
  return variant;
}
static ZRVARIANT Variant(unsigned type, const void* address) {
  return Variant(type, reinterpret_cast<uint64_t>(address));
}

static bool IsUnderManagementLock() { return ComponentRegistry().ManagementLock().IsOwn(); }

static void Give(FakeDiscovery& discovery, FakeConfiguration& configuration) {
  discovery.configure = [&configuration](const ZRUUID& classId, ZRSTR name, IZrConfiguration** given) {
    EXPECT_TRUE(classId == ZRUUID{} && ContentOf(name) == W("ZrCore") && *given == nullptr && !IsUnderManagementLock());
    *given = configuration.Given();
    return ZR_R_FAILED;  // not read
  };
}

class ConfigurationTest : public testing::Test {
 protected:
  ConfigurationTest() {
    ZrInitialize();
    EXPECT_EQ(InForce(), kNothing);
  }
  ~ConfigurationTest() override {
    ZrUninitialize();
    EXPECT_EQ(InForce(), kNothing);
  }

  static uint32_t Add(FakeDiscovery& discovery) {
    uint32_t cookie = 0;
    EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    return cookie;
  }
};

TEST_F(ConfigurationTest, ValuesOfAnyTypeAreRead) {
  const Owned truth(Units(W("ZR_TRUE"))), number(Units(W("12"))), large(Units(W("300"))), word(Units(W("yes")));
  const uint8_t one = 1, two = 2;
  const uint32_t seven = 7;
  const ZRVARIANT text = Variant(ZR_VT_STR, truth.string), byRef = Variant(ZR_VT_UI4 | ZR_VT_BYREF, &seven);
  const struct {
    const char* what;
    FakeConfiguration::Value value;
    std::string inForce = kNothing;
  } kRows[] = {
      {"true", {Variant(ZR_VT_BOOL, 1)}, "on 0/1 0/1"},
      {"neither true nor false", {Variant(ZR_VT_BOOL, 2)}, "off 0/2 0/2"},
      {"a bit that means nothing", {Variant(ZR_VT_BOOL | 0x8000, 1)}, "on 0/1 0/1"},
      {"true by reference", {Variant(ZR_VT_BOOL | ZR_VT_BYREF, &one)}, "on 0/1 0/1"},
      {"2 by reference", {Variant(ZR_VT_BOOL | ZR_VT_BYREF, &two)}, "off 0/2 0/2"},
      {"a null reference", {Variant(ZR_VT_BOOL | ZR_VT_BYREF, nullptr)}},
      {"a null reference to a number", {Variant(ZR_VT_UI4 | ZR_VT_BYREF, nullptr)}},
      {"a number", {Variant(ZR_VT_UI4, 0xFFFFFFFF)}, "off 0/4294967295 0/4294967295"},
      {"a number by reference", {byRef}, "on 0/7 0/7"},
      {"a negative number", {Variant(ZR_VT_I4, 0xFFFFFFFF)}},
      {"too large for a boolean", {Variant(ZR_VT_I8, 256)}, "off 0/256 0/256"},
      {"text", {text}, "on 0/1 0/1"},
      {"text by reference", {Variant(ZR_VT_STR | ZR_VT_BYREF, &number.string)}, "on 0/12 0/12"},
      {"a text too large for a boolean", {Variant(ZR_VT_STR, large.string)}, "off 0/300 0/300"},
      {"a text that is no number", {Variant(ZR_VT_STR, word.string)}},
      {"a record by reference", {Variant(ZR_VT_VARIANT | ZR_VT_BYREF, &text)}, "on 0/1 0/1"},
      {"a reference by reference", {Variant(ZR_VT_VARIANT | ZR_VT_BYREF, &byRef)}, "on 0/7 0/7"},
      {"nothing", {Variant(ZR_VT_EMPTY, 1)}},
      {"an unassigned tag", {Variant(60, 1)}},
      {"an array", {Variant(ZR_VT_UI4 | ZR_VT_ARRAY | ZR_VT_BYREF, &seven)}},
      {"a failure", {Variant(ZR_VT_BOOL, 1), ZR_R_CANCELLED}},
      {"a failure with a text", {text, ZR_R_CANCELLED}},
      {"a success above zero", {Variant(ZR_VT_BOOL, 1), ZR_R_SAME_VALUE}, "on 0/1 0/1"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    FakeConfiguration configuration(row.value);
    FakeDiscovery discovery;
    Give(discovery, configuration);
    const uint32_t cookie = Add(discovery);
    EXPECT_EQ(InForce(), row.inForce);
    EXPECT_EQ(configuration.references, 0);
    EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    EXPECT_EQ(InForce(), kNothing);
  }
  EXPECT_EQ(ZrStringRefCount(truth), 1u);
}

TEST_F(ConfigurationTest, WhatIsMissingLeavesItsDefault) {
  FakeConfiguration configuration;
  FakeDiscovery discovery;
  Give(discovery, configuration);
  const auto inForce = [&] {
    const uint32_t cookie = Add(discovery);
    const std::string text = InForce();
    EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    EXPECT_EQ(configuration.references, 0);
    return text;
  };
  EXPECT_EQ(inForce(), kNothing);
  configuration.values[W("ZR_VT_SREF")] = {Variant(ZR_VT_UI4, 3)};
  EXPECT_EQ(inForce(), "off 0/1024 0/3");
  configuration.values[W("EnableAllocator")] = {Variant(ZR_VT_BOOL, 1)};
  EXPECT_EQ(inForce(), "on 0/1024 0/3");
  configuration.hasSection = false;
  EXPECT_EQ(inForce(), kNothing);
}

TEST_F(ConfigurationTest, TheFirstDiscoveryDecidesUntilTheLastIsRemoved) {
  FakeConfiguration small({Variant(ZR_VT_UI4, 5)}), large({Variant(ZR_VT_UI4, 9)});
  FakeDiscovery first, second, bare;
  Give(first, small);
  Give(second, large);
  int asked = 0;
  large.onCall = [&asked](const std::string& operation) { asked += operation == "QuerySection"; };
  uint32_t cookies[] = {Add(bare), Add(second)};
  EXPECT_EQ(InForce(), kNothing) << "one without a configuration decides too";
  for (const uint32_t cookie : cookies) EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);

  const uint32_t cookie = Add(first);
  Add(second);
  EXPECT_EQ(asked, 2) << "asked each time, heeded or not";
  ZrDestroyREF(ZrCreateREF());
  EXPECT_EQ(InForce(), "on 1/5 0/5");
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_EQ(InForce(), "on 1/5 0/5");

  // The shutdown of the registry leaves the second one in the count.
  EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
  uint32_t none = 9;
  EXPECT_EQ(ZrAddComponentDiscovery(&second, &none), ZR_R_NO_INIT);
  EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  EXPECT_EQ(ZrAddComponentDiscovery(nullptr, &none), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrRemoveComponentDiscovery(Add(second)), ZR_R_OK);
  EXPECT_EQ(InForce(), "on 1/5 0/5");
  EXPECT_EQ(asked, 3);
  AllocatorSettings().DiscoveryRemoved();  // takes it out, for the other tests' sake
  EXPECT_EQ(InForce(), kNothing);
}

// The n-th call of the host's objects throws; after the last one none does.
TEST_F(ConfigurationTest, ExceptionsPassThroughTheAddition) {
  constexpr int kCalls = 2 + 3 * 3 + 2;  // two questions, three calls for each value, two releases
  for (int n = 1; n <= kCalls + 1; ++n) {
    SCOPED_TRACE(n);
    int calls = 0;
    FakeConfiguration configuration({Variant(ZR_VT_UI4, 5)});
    FakeDiscovery discovery;
    Give(discovery, configuration);
    const auto fault = [&](const std::string& operation) {
      if (operation != "AddRef" && ++calls == n) throw std::runtime_error("thrown");
    };
    discovery.onCall = configuration.onCall = fault;
    uint32_t cookie = 0;
    const auto add = [&] { return ZrAddComponentDiscovery(&discovery, &cookie); };
    if (n <= kCalls) {
      EXPECT_THROW((void)add(), std::runtime_error);
      EXPECT_EQ(InForce(), kNothing);
      EXPECT_EQ(discovery.references, 1u) << "it is registered, but not counted";
      EXPECT_NE(cookie, 0u);
    } else {
      EXPECT_EQ(add(), ZR_R_OK);
      EXPECT_EQ(InForce(), "on 0/5 0/5");
      EXPECT_EQ(calls, kCalls);
      discovery.onCall = nullptr;
      EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    }
    EXPECT_EQ(configuration.references, 0);
    EXPECT_EQ(ZrUninitialize(), ZR_R_OK);
    EXPECT_EQ(ZrInitialize(), ZR_R_OK);
  }
}

TEST_F(ConfigurationTest, AClassIsConfiguredByTheDiscoveryThatReportedIt) {
  FakeDiscovery first({{1, Units()}}), second({{1, Units()}, {2, Units()}, {3, Units()}});
  const uint32_t firstCookie = Add(first);
  const uint32_t secondCookie = Add(second);
  FakeConfiguration ofFirst, ofSecond;
  const Owned wanted(Units(W("Wanted")));
  ZRRESULT result = ZR_R_SAME_VALUE;
  const auto give = [&](FakeDiscovery& discovery, FakeConfiguration& configuration, uint32_t number) {
    discovery.configure = [&, number](const ZRUUID& classId, ZRSTR name, IZrConfiguration** given) {
      EXPECT_TRUE(classId == ClassId(number) && name == wanted.string && IsUnderManagementLock());
      EXPECT_EQ(*given, nullptr);
      *given = &configuration;
      if (number == 3) throw std::runtime_error("thrown");
      return result;
    };
  };
  IZrConfiguration* given = nullptr;
  const auto ask = [&](uint32_t number) {
    give(first, ofFirst, number);
    give(second, ofSecond, number);
    given = &ofFirst;
    const ZRUUID classId = ClassId(number);
    return ZrQueryComponentConfiguration(&classId, wanted, &given);
  };
  EXPECT_EQ(ask(1), ZR_R_SAME_VALUE);
  EXPECT_EQ(given, &ofFirst);
  second.onCall = [&](const std::string& operation) {
    if (operation == "QueryComponent") given = &ofFirst;  // the result of the question that is being answered
  };
  EXPECT_EQ(ask(2), ZR_R_SAME_VALUE);
  EXPECT_EQ(given, &ofSecond);
  second.onCall = nullptr;
  result = ZR_R_ACCESS_DENIED;
  EXPECT_EQ(ask(1), ZR_R_ACCESS_DENIED) << "the discovery's own answer; no other one is asked";
  EXPECT_EQ(ask(3), ZR_R_FAILED) << "thrown";
  EXPECT_EQ(ask(4), ZR_R_CLASS_NOT_REGISTERED);
  EXPECT_EQ(given, nullptr);
  const ZRUUID classId = ClassId(1);
  EXPECT_EQ(ZrQueryComponentConfiguration(&classId, wanted, nullptr), ZR_R_INVALID_ARGUMENTS);

  // One that throws when it is asked for the class, and one that goes while it is asked for the configuration.
  second.onCall = [](const std::string& operation) {
    if (operation == "QueryComponent") throw std::runtime_error("thrown");
  };
  EXPECT_EQ(ask(5), ZR_R_FAILED);
  second.onCall = nullptr;
  first.onCall = [&](const std::string& operation) {
    EXPECT_TRUE(operation != "QueryConfiguration" || ZrRemoveComponentDiscovery(firstCookie) == ZR_R_OK);
  };
  EXPECT_EQ(ask(1), ZR_R_ACCESS_DENIED);
  EXPECT_EQ(first.references, 0u);
  EXPECT_EQ(ask(1), ZR_R_ACCESS_DENIED);
  EXPECT_EQ(given, &ofSecond);
  EXPECT_EQ(ZrRemoveComponentDiscovery(secondCookie), ZR_R_OK);
}

TEST_F(ConfigurationTest, HooksRunAtOnceAndLoseNoCount) {
  std::vector<std::thread> threads;
  for (uint64_t cap : {3u, 4u, 5u, 6u}) {
    threads.emplace_back([cap] {
      FakeConfiguration configuration({Variant(ZR_VT_UI4, cap)});
      FakeDiscovery discovery;
      Give(discovery, configuration);
      for (int round = 0; round < 300; ++round) EXPECT_EQ(ZrRemoveComponentDiscovery(Add(discovery)), ZR_R_OK);
      EXPECT_EQ(configuration.references, 0);
    });
  }
  for (std::thread& thread : threads) thread.join();
  // In which order they set the allocators is open; the next one finds that nobody is left.
  FakeConfiguration configuration({Variant(ZR_VT_UI4, 7)});
  FakeDiscovery discovery;
  Give(discovery, configuration);
  const uint32_t cookie = Add(discovery);
  EXPECT_EQ(InForce(), "on 0/7 0/7");
  EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
}
