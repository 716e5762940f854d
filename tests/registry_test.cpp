// What the boundary can't show of the registry: the wrap of its cookies, the orders of its keys.

#include <gtest/gtest.h>

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
  const struct {
    uint32_t last, next;
  } kRows[] = {{0xFFFFFFFE, 0xFFFFFFFF}, {0xFFFFFFFF, 1}, {0xFFFFFFFE, 2}, {0xFFFFFFFD, 0xFFFFFFFE}, {0xFFFFFFFF, 3}};
  for (const auto& row : kRows) {  // each finds those before it in use
    CRegistryTestPeer::SetLastCookie(registry, row.last);
    uint32_t cookie = 0;
    EXPECT_EQ(registry.AddDiscovery(&discovery, &cookie), ZR_R_OK);
    EXPECT_EQ(cookie, row.next) << "after " << row.last;
  }
}

TEST(Registry, AssembliesAreOrderedByTheirKeys) {
  const auto points = [](uintptr_t create, uintptr_t exit, uintptr_t init) -> ZrModuleEntryPoints {
    return {reinterpret_cast<ZrCreateInstanceModuleFunction>(create), reinterpret_cast<ZrInitModuleFunction>(init),
            reinterpret_cast<ZrExitModuleFunction>(exit)};
  };
  // In ascending order: no path before any, then create, exit, init; paths by unit and without their functions.
  const CAssemblyKey kKeys[] = {
      {{}, points(1, 1, 9)}, {{}, points(1, 2, 1)},     {{}, points(1, 2, 2)},
      {{}, points(2, 0, 0)}, {W("A"), points(9, 9, 9)}, {W("A/"), {}},
      {W("a"), {}},          {W("\x00E9"), {}},         {W("\xFFFF"), {}},
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
  for (int left = 0; left < 16; ++left) {
    for (int right = 0; right < 16; ++right) {
      ZRUUID one = {}, other = {};
      reinterpret_cast<unsigned char*>(&one)[left] = 0x80;
      reinterpret_cast<unsigned char*>(&other)[right] = 0x7F;
      EXPECT_EQ(CByteWiseLess()(one, other), left > right) << left << ", " << right;
    }
  }
}
