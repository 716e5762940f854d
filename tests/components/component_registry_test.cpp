// Tests the component registry through its own class, for cases that the exports cannot reach or only with great
// effort: cookies that wrap, and the order of class identifiers.

#include <gtest/gtest.h>

#include "components/component_registry.h"
#include "tests/support/fake_discovery.h"

struct CRegistryTestPeer {
  static void SetLastCookie(CComponentManagement& registry, uint32_t cookie) ZR_UNCHECKED {
    registry.lastCookie_ = cookie;
  }
};

TEST(Registry, CookiesWrapAndSkipZeroAndCookiesInUse) {
  FakeDiscovery discovery;
  CComponentManagement registry;
  const std::pair<uint32_t, uint32_t> kRows[] = {{0xFFFFFFFE, 0xFFFFFFFF}, {0xFFFFFFFF, 1}, {0xFFFFFFFE, 2}};
  for (const auto& [last, next] : kRows) {
    CRegistryTestPeer::SetLastCookie(registry, last);
    uint32_t cookie = 0;
    EXPECT_RESULT(registry.AddDiscovery(&discovery, &cookie), ZR_R_OK);
    EXPECT_EQ(cookie, next) << "the cookie after " << last;
  }
}

TEST(Registry, ClassIdsAreOrderedByEveryByte) {
  for (int at = 0; at < 16; ++at) {
    const ZRUUID nil = {};
    ZRUUID other = {};
    reinterpret_cast<unsigned char*>(&other)[at] = 0x80;
    EXPECT_TRUE(CByteWiseLess()(nil, other) && !CByteWiseLess()(other, nil)) << "byte " << at;
  }
}
