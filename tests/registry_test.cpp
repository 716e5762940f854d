// What the boundary can't show of the registry: the wrap of its cookies, the orders of its keys.

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "components/component_management.h"
#include "tests/support/fake_discovery.h"

struct CRegistryTestPeer {
  static void SetLastCookie(CComponentManagement& registry, uint32_t cookie) ZR_UNCHECKED {
    registry.lastCookie_ = cookie;
  }
};

TEST(Registry, CookiesWrapPastZeroAndThoseInUse) {
  FakeDiscovery discovery;
  CComponentManagement registry;
  const auto add = [&] {
    uint32_t cookie = 0;
    EXPECT_EQ(registry.AddDiscovery(&discovery, &cookie), ZR_R_OK);
    return cookie;
  };
  const struct {
    uint32_t last, next;
  } kRows[] = {
      {0, 1}, {0xFFFFFFFE, 0xFFFFFFFF}, {0xFFFFFFFF, 2}, {0xFFFFFFFE, 3}, {0xFFFFFFFD, 0xFFFFFFFE}, {0xFFFFFFFF, 4},
  };
  for (const auto& row : kRows) {  // each finds those before it in use
    CRegistryTestPeer::SetLastCookie(registry, row.last);
    EXPECT_EQ(add(), row.next) << "after " << row.last;
  }
  EXPECT_EQ(registry.RemoveDiscovery(1), ZR_R_OK);
  CRegistryTestPeer::SetLastCookie(registry, 0xFFFFFFFF);
  EXPECT_EQ(add(), 1u);
}

TEST(Registry, AssembliesAreOrderedByTheirKeys) {
  const auto create = [](uintptr_t at) { return reinterpret_cast<ZrCreateInstanceModuleFunction>(at); };
  const auto init = [](uintptr_t at) { return reinterpret_cast<ZrInitModuleFunction>(at); };
  const auto exit = [](uintptr_t at) { return reinterpret_cast<ZrExitModuleFunction>(at); };
  // In ascending order: no path before any, then create, exit, init; paths by unit and without their functions.
  const CAssemblyKey kKeys[] = {
      {{}, {create(1), init(9), exit(1)}},
      {{}, {create(1), init(1), exit(2)}},
      {{}, {create(1), init(2), exit(2)}},
      {{}, {create(2), init(0), exit(0)}},
      {W("A"), {create(9), nullptr, nullptr}},
      {W("A/"), {}},
      {W("a"), {}},
      {W("\x00E9"), {}},
      {W("\xFFFF"), {}},
  };
  const CAssemblyKeyLess less;
  for (const auto& left : kKeys) {
    for (const auto& right : kKeys)
      EXPECT_EQ(less(left, right), &left < &right) << &left - kKeys << ", " << &right - kKeys;
  }
  const CAssemblyKey samePath = {W("A"), {}};
  EXPECT_FALSE(less(samePath, kKeys[4]) || less(kKeys[4], samePath));
}

TEST(Registry, ClassesAreOrderedByBytes) {
  std::mt19937 random(11);
  for (int round = 0; round < 1000; ++round) {
    ZRUUID left = ClassId(1), right = left;
    for (ZRUUID* uuid : {&left, &right}) {
      for (int changes = 0; changes < 2; ++changes) {
        reinterpret_cast<unsigned char*>(uuid)[random() % 16] = static_cast<unsigned char>(random());
      }
    }
    EXPECT_EQ(CByteWiseLess()(left, right), std::memcmp(&left, &right, sizeof left) < 0);
  }
}
