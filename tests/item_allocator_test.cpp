// The item allocators, which the boundary hides, and the two instances as the references use them.

#include "frame/item_allocator.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "identifiers/reference_records.h"
#include "platform/scheduling.h"
#include "zrcore/reference.h"

static std::string Statistics() {
  std::ostringstream out;
  out << std::hex << std::showbase;  // no number heeds it
  CItemAllocator::WriteStatistics(out);
  return out.str();
}

static const std::string kHeadline =
    "-- Allocator statistics : number of cached items/max size/memory usage (in bytes)\n";

// An allocator of its own under a switched-on cache; afterwards everything is as it was.
class ItemAllocatorTest : public testing::Test {
 protected:
  static constexpr uint64_t kSize = 40;

  ItemAllocatorTest() { CItemAllocator::SetEnabled(true); }
  ~ItemAllocatorTest() override {
    items_.Teardown();
    CItemAllocator::SetEnabled(false);
    CItemAllocator::SetMultiThreaded(true);
    CItemAllocator::SetDefaultCap(1024);
    g_itemAllocators.ownerThread = kNoThread;
    for (CItemAllocator* shared : {&g_refAllocator, &g_srefAllocator}) {
      shared->SetCap(1);
      shared->SetCap(0);  // trims, since the cap before was not the default
    }
  }

  // Gives `count` items that the heap made.
  void Give(int count) {
    std::vector<void*> made;
    for (int item = 0; item < count; ++item) made.push_back(AllocateOrThrow(kSize));
    for (void* item : made) items_.Give(item);
  }

  // By the statistics: the fixture's allocator is the head of the list.
  uint64_t Cached() const {
    const std::string line = Statistics().substr(kHeadline.size());
    return std::stoull(line.substr(line.find(" : ") + 3));
  }

  CItemAllocator items_{"items", true, kSize, 0};
};

TEST_F(ItemAllocatorTest, ServesTheLastItemFirstAndOnlyItsSize) {
  void* first = items_.Allocate(kSize);
  void* second = items_.AllocateWithoutThrow(kSize);
  items_.Give(first);
  items_.Give(second, 7);
  items_.Give(nullptr);
  EXPECT_EQ(Cached(), 2u);
  EXPECT_EQ(items_.Take(kSize - 1), nullptr);
  std::free(items_.Allocate(kSize + 1));
  EXPECT_EQ(Cached(), 2u);
  EXPECT_EQ(items_.Allocate(kSize), second);
  EXPECT_EQ(items_.Take(kSize), first);
  EXPECT_EQ(items_.Take(kSize), nullptr);

  // Switched off, what is cached stays where it is.
  items_.Give(first);
  CItemAllocator::SetEnabled(false);
  EXPECT_EQ(items_.Take(kSize), nullptr);
  items_.Give(second);
  CItemAllocator::SetEnabled(true);
  EXPECT_EQ(Cached(), 1u);

  // Torn down, it serves from the heap and to the heap.
  items_.Teardown();
  items_.Give(items_.Allocate(kSize));
  EXPECT_EQ(items_.Take(kSize), nullptr);
  EXPECT_EQ(items_.Take(0), nullptr);
}

TEST_F(ItemAllocatorTest, CapsAndTheirTrimming) {
  Give(1030);
  EXPECT_EQ(Cached(), 1024u) << "the default cap";
  items_.SetCap(2000);
  EXPECT_EQ(Cached(), 1024u) << "a cap of 0 before trims nothing";
  Give(1000);
  EXPECT_EQ(Cached(), 2000u);
  const struct {
    uint32_t before, given, after;
    uint64_t left;
  } kRows[] = {
      {2000, 50, 10, 9},  // one fewer than the new cap
      {2000, 50, 50, 50}, {2000, 50, 49, 48}, {2000, 1, 0, 0}, {2000, 50, 1, 0}, {10, 5, 20, 5}, {0, 50, 10, 50},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.before << " to " << row.after << " with " << row.given);
    items_.SetCap(3000);
    items_.SetCap(1);
    ASSERT_EQ(Cached(), 0u);
    items_.SetCap(row.before);
    Give(static_cast<int>(row.given));
    items_.SetCap(row.after);
    EXPECT_EQ(Cached(), row.left);
  }
  items_.SetCap(0);
  CItemAllocator::SetDefaultCap(3);
  while (void* item = items_.Take(kSize)) std::free(item);
  Give(5);
  EXPECT_EQ(Cached(), 3u);
}

TEST_F(ItemAllocatorTest, StatisticsFollowTheListOfAllocators) {
  Give(2);
  const std::string shared = "tagZRSREF : 0/1024/0\ntagZRREF : 0/1024/0\n";
  EXPECT_EQ(Statistics(), kHeadline + "items : 2/1024/80\n" + shared);
  {
    CItemAllocator old("old", false, 8, 0), newer("newer", false, 8, 5), newest("newest", false, 8, 0);
    const std::string rest = "items : 2/1024/80\n" + shared;
    EXPECT_EQ(Statistics(), kHeadline + "newest : 0/1024/0\nnewer : 0/5/0\nold : 0/1024/0\n" + rest);
    newer.Teardown();
    EXPECT_EQ(Statistics(), kHeadline + "newest : 0/1024/0\nold : 0/1024/0\n" + rest);
    old.Teardown();
    EXPECT_EQ(Statistics(), kHeadline + "newest : 0/1024/0\n" + rest);
    newest.Teardown();
  }
  EXPECT_EQ(Statistics(), kHeadline + "items : 2/1024/80\n" + shared);
}

TEST_F(ItemAllocatorTest, OneThreadOwnsTheCachesInSingleThreadMode) {
  CItemAllocator::SetMultiThreaded(false);
  Give(2);
  EXPECT_EQ(Cached(), 2u);
  std::thread([&] {
    EXPECT_EQ(items_.Take(kSize), nullptr);
    items_.Give(AllocateOrThrow(kSize));
  }).join();
  EXPECT_EQ(Cached(), 2u);
  EXPECT_EQ(g_itemAllocators.ownerThread, PlatformThreadId());
  std::free(items_.Take(kSize));
  EXPECT_EQ(Cached(), 1u);
}

struct CItemAllocatorProbe {
  static void SetFlag(CItemAllocator& allocator, uint8_t flag) { allocator.busy_ = flag; }
};

TEST_F(ItemAllocatorTest, NobodyWaitsForAHeldAllocator) {
  Give(1);
  CItemAllocatorProbe::SetFlag(items_, 1);
  for (bool isMultiThreaded : {true, false}) {
    CItemAllocator::SetMultiThreaded(isMultiThreaded);
    EXPECT_EQ(items_.Take(kSize), nullptr);
    items_.Give(items_.Allocate(kSize));  // from the heap, and to it
    EXPECT_EQ(Cached(), 1u);
  }
  EXPECT_EQ(g_itemAllocators.ownerThread, kNoThread);
  CItemAllocatorProbe::SetFlag(items_, 0);
  Give(1);
  EXPECT_EQ(g_itemAllocators.ownerThread, PlatformThreadId());
  CItemAllocatorProbe::SetFlag(items_, 1);
  Give(1);  // the owner needs no flag
  EXPECT_EQ(Cached(), 3u);
  CItemAllocatorProbe::SetFlag(items_, 0);
}

// Each item carries a mark of its holder while it is out: nobody may find another's.
TEST_F(ItemAllocatorTest, ThreadsNeverShareAnItem) {
  items_.SetCap(8);
  std::vector<std::thread> threads;
  for (uint64_t mark = 1; mark <= 4; ++mark) {
    threads.emplace_back([this, mark] {
      for (int round = 0; round < 20000; ++round) {
        auto* item = static_cast<uint64_t*>(items_.Allocate(kSize));
        item[0] = item[4] = mark;
        if (round % 64 == 0) PlatformYield();
        if (item[0] != mark || item[4] != mark) ADD_FAILURE();
        items_.Give(item);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_LE(Cached(), 8u);
  std::set<void*> items;
  while (void* item = items_.Take(kSize)) EXPECT_TRUE(items.insert(item).second);
  for (void* item : items) std::free(item);
}

TEST_F(ItemAllocatorTest, ReferencesReturnClearedToTheirOwnAllocator) {
  ZRREF* ref = ZrCreateREF();
  for (uint32_t& word : ref->words) word = 7;
  ZRSREF* sref = ZrCreateSREF();
  sref->ref = ref;
  ZrDestroySREF(sref);
  EXPECT_NE(Statistics().find("tagZRSREF : 1/1024/16\ntagZRREF : 1/1024/24\n"), std::string::npos);
  const auto* cached = static_cast<uint32_t*>(g_refAllocator.Take(sizeof(ZRREF)));
  ASSERT_EQ(cached, ref->words);
  EXPECT_EQ(cached[2] | cached[3] | cached[4] | cached[5], 0u) << "behind the link";
  GiveRef(ref);
  EXPECT_EQ(ZrCreateREF(), ref);
  for (uint32_t word : ref->words) EXPECT_EQ(word, 0u);
  ZrDestroyREF(ref);
}

// Constructed before the library's own objects, and so destroyed after them.
struct CLateRelease {
  ZRSREF* sref = nullptr;
  ~CLateRelease() {
    if (sref != nullptr && g_itemAllocators.head != nullptr) std::_Exit(9);  // too early to prove anything
    ZrDestroySREF(sref);
    if (g_refAllocator.Take(sizeof(ZRREF)) || g_srefAllocator.Take(sizeof(ZRSREF))) std::_Exit(8);  // kept, and lost
  }
};
__attribute__((init_priority(101))) static CLateRelease g_late;

TEST(ItemAllocatorDeathTest, TakesWhatIsReleasedAfterItsTeardown) {
  EXPECT_EXIT(
      {
        CItemAllocator::SetEnabled(true);
        (void)std::atexit([] { ZrDestroySREF(ZrCreateSREF()); });  // the process ends, the allocators are still there
        ZrDestroyREF(ZrCreateREF());
        ZrDestroySREF(ZrCreateSREF());
        g_late.sref = ZrCreateSREF();
        g_late.sref->ref = ZrCreateREF();
        ZrDestroyREF(ZrCreateREF());
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
}
