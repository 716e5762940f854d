#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "zrcore/zrcore.h"

static uint8_t TryFromAnotherThread(ZRCRITICALSECTION& lock) {
  uint8_t acquired = 9;
  std::thread([&] {
    EXPECT_EQ(ZrTryEnterCriticalSection(&lock, &acquired), ZR_R_OK);
    EXPECT_TRUE(acquired != 1 || ZrLeaveCriticalSection(&lock) == ZR_R_OK);
  }).join();
  return acquired;
}

TEST(Lock, IsRecursiveAndExcludesOtherThreads) {
  ZRCRITICALSECTION lock = nullptr;
  ASSERT_EQ(ZrInitializeCriticalSection(&lock), ZR_R_OK);
  EXPECT_EQ(TryFromAnotherThread(lock), 1);
  EXPECT_EQ(ZrEnterCriticalSection(&lock), ZR_R_OK);
  EXPECT_EQ(ZrEnterCriticalSection(&lock), ZR_R_OK);
  uint8_t acquired = 0;
  EXPECT_EQ(ZrTryEnterCriticalSection(&lock, &acquired), ZR_R_OK);
  EXPECT_EQ(acquired, 1) << "the owner may enter again";
  for (int entries = 3; entries > 0; --entries) {
    EXPECT_EQ(TryFromAnotherThread(lock), 0);
    EXPECT_EQ(ZrLeaveCriticalSection(&lock), ZR_R_OK);
  }
  EXPECT_EQ(TryFromAnotherThread(lock), 1);
  EXPECT_EQ(ZrDeleteCriticalSection(&lock), ZR_R_OK);
  EXPECT_EQ(lock, nullptr);
}

TEST(Lock, RefusesWhatIsNoLock) {
  ZRCRITICALSECTION none = nullptr;
  uint8_t acquired = 9;
  for (auto operation : {ZrEnterCriticalSection, ZrLeaveCriticalSection, ZrDeleteCriticalSection}) {
    EXPECT_EQ(operation(nullptr), ZR_R_INVALID_ARGUMENTS);
    EXPECT_EQ(operation(&none), ZR_R_INVALID_OBJECT_STATE);
  }
  EXPECT_EQ(ZrInitializeCriticalSection(nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrTryEnterCriticalSection(nullptr, &acquired), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrTryEnterCriticalSection(&none, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrTryEnterCriticalSection(&none, &acquired), ZR_R_INVALID_OBJECT_STATE);
  EXPECT_EQ(acquired, 9);
}

template <class Integer>
struct Family {
  Integer (*increment)(Integer*);
  Integer (*decrement)(Integer*);
  Integer (*exchange)(Integer*, const Integer*);
};

template <class Integer>
static void Check(Family<Integer> family) {
  constexpr Integer kMin = std::numeric_limits<Integer>::min(), kMax = std::numeric_limits<Integer>::max();
  Integer word = 0;
  EXPECT_EQ(family.increment(&word), Integer{1});
  EXPECT_EQ(family.decrement(&word), Integer{0});
  word = kMax;
  EXPECT_EQ(family.increment(&word), kMin) << "wraps";
  EXPECT_EQ(family.decrement(&word), kMax);
  const Integer next = 5;
  EXPECT_EQ(family.exchange(&word, &next), kMax);
  EXPECT_EQ(word, Integer{5});
  EXPECT_EQ(family.exchange(&word, nullptr), Integer{0});
  EXPECT_EQ(word, Integer{5});
  EXPECT_EQ(family.exchange(nullptr, &next), Integer{0});
  EXPECT_EQ(family.increment(nullptr), Integer{0});
  EXPECT_EQ(family.decrement(nullptr), Integer{0});
}

TEST(Atomics, EveryWidthAndSign) {
  Check<int32_t>({ZrInterlockedIncrement32, ZrInterlockedDecrement32, ZrInterlockedExchange32});
  Check<uint32_t>({ZrInterlockedIncrementU32, ZrInterlockedDecrementU32, ZrInterlockedExchangeU32});
  Check<int64_t>({ZrInterlockedIncrement64, ZrInterlockedDecrement64, ZrInterlockedExchange64});
  Check<uint64_t>({ZrInterlockedIncrementU64, ZrInterlockedDecrementU64, ZrInterlockedExchangeU64});
}
