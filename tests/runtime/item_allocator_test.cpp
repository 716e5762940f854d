// Tests the item allocators through their own class, because no export reaches them directly: caching, caps,
// statistics, threads and teardown. Also tests the two instances that REFs and SREFs use.

#include "runtime/item_allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>

#include "identifiers/reference_records.h"
#include "platform/scheduling.h"
#include "tests/support/race.h"
#include "tests/support/units.h"
#include "zrcore/reference.h"

struct CItemAllocatorProbe {
  static uint32_t Cached(const CItemAllocator& allocator) { return allocator.Cached(); }
  static void SetFlag(CItemAllocator& allocator, uint8_t flag) { allocator.busy_ = flag; }
};

// Gives each test its own allocator and enables caching. The destructor restores the defaults.
struct ItemAllocatorTest : testing::Test {
  static constexpr uint64_t kSize = 40;

  ItemAllocatorTest() { CItemAllocator::SetEnabled(true); }
  ~ItemAllocatorTest() override {
    items_.Teardown();
    CItemAllocator::SetEnabled(false);
    CItemAllocator::SetMultiThreaded(true);
    CItemAllocator::SetDefaultCap(1024);
    g_itemAllocators.ownerThread = kNoThread;
  }

  // Passes `count` new items of the heap to the allocator. Returns how many items the allocator then caches.
  static uint32_t CacheItems(CItemAllocator& items, uint32_t count) {
    while (count-- > 0) items.Recycle(AllocateOrThrow(kSize));
    return CItemAllocatorProbe::Cached(items);
  }
  CItemAllocator items_{"items", true, kSize, 0};
};

TEST_F(ItemAllocatorTest, ReusesTheLastItemFirstAndOnlyForItsSize) {
  void* first = items_.Allocate(kSize);
  void* second = items_.AllocateWithoutThrow(kSize);
  items_.Recycle(first);
  items_.Recycle(second, 7);
  items_.Recycle(nullptr);
  EXPECT_EQ(items_.PopCached(kSize - 1), nullptr);
  EXPECT_EQ(items_.PopCached(kSize + 1), nullptr);
  EXPECT_EQ(items_.Allocate(kSize), second);
  std::thread([&] { EXPECT_EQ(items_.PopCached(kSize), first) << "by default every thread uses the cache"; }).join();
  EXPECT_EQ(items_.PopCached(kSize), nullptr);

  // While caching is disabled, cached items stay in the cache.
  items_.Recycle(first);
  CItemAllocator::SetEnabled(false);
  EXPECT_EQ(items_.PopCached(kSize), nullptr);
  items_.Recycle(second);
  CItemAllocator::SetEnabled(true);
  EXPECT_EQ(CacheItems(items_, 0), 1u);

  EXPECT_EQ(items_.PopCached(kSize), first);
  void* fresh = items_.AllocateWithoutThrow(kSize);  // the cache is empty
  EXPECT_NE(fresh, nullptr);
  items_.Recycle(fresh);
  EXPECT_EQ(items_.AllocateWithoutThrow(kSize), fresh);
  items_.Recycle(fresh);
  std::free(first);

  // After the teardown the allocator uses only the heap.
  items_.Teardown();
  EXPECT_EQ(CacheItems(items_, 1), 0u);
  EXPECT_EQ(items_.PopCached(0), nullptr);
}

TEST_F(ItemAllocatorTest, CapLimitsAndTrimsTheCache) {
  const struct {
    uint32_t oldCap, added, cached, newCap, left;
  } kRows[] = {
      {0, 1030, 1024, 10, 1024},  // a new cap does not trim a cache with the default cap
      {2000, 2050, 2000, 10, 9},  // trimmed to one item fewer than the new cap
      {2000, 50, 50, 50, 50},    {2000, 50, 50, 49, 48}, {2000, 1, 1, 0, 0}, {2000, 50, 50, 1, 0}, {10, 50, 10, 20, 10},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(Format("cap %u, %u items added, then cap %u", row.oldCap, row.added, row.newCap));
    CItemAllocator items("row", true, kSize, row.oldCap);
    EXPECT_EQ(CacheItems(items, row.added), row.cached) << "items cached with the old cap";
    items.SetCap(row.newCap);
    EXPECT_EQ(CacheItems(items, 0), row.left) << "items left by the new cap";
    EXPECT_EQ(CacheItems(items, 1100), row.newCap != 0 ? std::max(row.newCap, row.left) : 1024)
        << "items cached after 1100 more";
    items.Teardown();
  }
  CItemAllocator::SetDefaultCap(3);
  EXPECT_EQ(CacheItems(items_, 5), 3u);
}

TEST_F(ItemAllocatorTest, StatisticsListEveryAllocator) {
  CacheItems(items_, 2);
  CItemAllocator old("old", false, 8, 0), newer("newer", false, 8, 5);
  const auto statistics = [] {
    std::ostringstream out;
    out << std::hex << std::showbase;  // must not affect any number
    CItemAllocator::WriteStatistics(out);
    return out.str();
  };
  const std::string head = "-- Allocator statistics : number of cached items/max size/memory usage (in bytes)\n",
                    rest = "items : 2/1024/80\ntagZRSREF : 0/1024/0\ntagZRREF : 0/1024/0\n";
  EXPECT_EQ(statistics(), head + "newer : 0/5/0\nold : 0/1024/0\n" + rest);
  old.Teardown();
  EXPECT_EQ(statistics(), head + "newer : 0/5/0\n" + rest);
  newer.Teardown();
  EXPECT_EQ(statistics(), head + rest);
}

TEST_F(ItemAllocatorTest, CallsNeverWaitAndSingleThreadModeHasOneOwner) {
  CacheItems(items_, 1);
  CItemAllocatorProbe::SetFlag(items_, 1);
  for (bool isMultiThreaded : {true, false}) {
    CItemAllocator::SetMultiThreaded(isMultiThreaded);
    EXPECT_EQ(items_.PopCached(kSize), nullptr);
    EXPECT_EQ(CacheItems(items_, 1), 1u) << "the item must be freed while the flag is taken";
  }
  EXPECT_EQ(g_itemAllocators.ownerThread, kNoThread);
  CItemAllocatorProbe::SetFlag(items_, 0);
  EXPECT_EQ(CacheItems(items_, 1), 2u);
  EXPECT_EQ(g_itemAllocators.ownerThread, PlatformThreadId());
  std::thread([&] {
    EXPECT_EQ(items_.PopCached(kSize), nullptr);
    EXPECT_EQ(CacheItems(items_, 1), 2u);
  }).join();
  CItemAllocatorProbe::SetFlag(items_, 1);
  EXPECT_EQ(CacheItems(items_, 1), 3u) << "the owning thread must not need the flag";
  std::free(items_.PopCached(kSize));
  EXPECT_EQ(CacheItems(items_, 0), 2u);
  CItemAllocatorProbe::SetFlag(items_, 0);
}

// Each thread marks the items that it allocates. No thread may find another thread's mark in its item.
TEST_F(ItemAllocatorTest, ThreadsNeverShareAnItem) {
  Race(1, [this](int thread) {
    const auto mark = static_cast<uint64_t>(thread + 1);
    for (int round = 0; round < 20000; ++round) {
      auto* item = static_cast<uint64_t*>(items_.Allocate(kSize));
      item[0] = item[4] = mark;
      if (round % 64 == 0) PlatformYield();
      if (item[0] != mark || item[4] != mark) ADD_FAILURE();
      items_.Recycle(item);
    }
  });
  EXPECT_LE(CacheItems(items_, 0), uint32_t{kThreads});
}

TEST_F(ItemAllocatorTest, ReferencesReturnToTheirAllocatorCleared) {
  ZRREF* ref = ZrCreateREF();
  for (uint32_t& word : ref->words) word = 7;
  ZRSREF* sref = ZrCreateSREF();
  sref->ref = ref;
  ZrDestroySREF(sref);
  const auto* cached = static_cast<uint32_t*>(g_refAllocator.PopCached(sizeof(ZRREF)));
  ASSERT_EQ(cached, ref->words);
  EXPECT_EQ(cached[2] | cached[3] | cached[4] | cached[5], 0u) << "the words after the link must be 0";
  RecycleRef(ref);
  EXPECT_EQ(ZrCreateREF(), ref);
  for (uint32_t word : ref->words) EXPECT_EQ(word, 0u);
  EXPECT_EQ(ZrCreateSREF(), sref);
  EXPECT_TRUE(sref->ref == nullptr && sref->text == nullptr);
  CItemAllocator::SetEnabled(false);  // so that no item stays cached
  ZrDestroyREF(ref);
  ZrDestroySREF(sref);
}

// Constructed before the library's own objects, and so destroyed after them.
struct CLateRelease {
  ZRSREF* sref = nullptr;
  ~CLateRelease() {
    // 9: the allocators still exist, so the test would prove nothing.
    if (sref != nullptr && g_itemAllocators.head != nullptr) std::_Exit(9);
    ZrDestroySREF(sref);
    if (g_refAllocator.PopCached(sizeof(ZRREF)) || g_srefAllocator.PopCached(sizeof(ZRSREF)))
      std::_Exit(8);  // cached, so it leaks
  }
};
__attribute__((init_priority(101))) static CLateRelease g_late;

TEST(ItemAllocatorDeathTest, FreesItemsReleasedAfterTheTeardown) {
  EXPECT_EXIT(
      {
        CItemAllocator::SetEnabled(true);
        (void)std::atexit([] { ZrDestroySREF(ZrCreateSREF()); });  // runs while the allocators still exist
        g_late.sref = ZrCreateSREF();
        g_late.sref->ref = ZrCreateREF();
        ZrDestroyREF(ZrCreateREF());
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
}
