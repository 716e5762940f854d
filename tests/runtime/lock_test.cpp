// Tests locks and atomic operations. A lock is tried from a second thread; atomics are checked at the limits of each
// type.

#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "tests/support/text.h"

TEST(Lock, IsRecursiveAndExcludesOtherThreads) {
  ZRCRITICALSECTION lock = nullptr;
  ASSERT_RESULT(ZrInitializeCriticalSection(&lock), ZR_R_OK);
  uint8_t acquired = 9;
  const auto tryFromAnotherThread = [&] {
    std::thread([&] {
      EXPECT_RESULT(ZrTryEnterCriticalSection(&lock, &acquired), ZR_R_OK);
      EXPECT_RESULT(acquired == 1 ? ZrLeaveCriticalSection(&lock) : ZR_R_OK, ZR_R_OK);
    }).join();
    return acquired;
  };
  EXPECT_RESULT(ZrEnterCriticalSection(&lock), ZR_R_OK);
  EXPECT_RESULT(ZrTryEnterCriticalSection(&lock, &acquired), ZR_R_OK);
  EXPECT_EQ(acquired, 1) << "the owner must be able to enter again";
  for (int entries = 2; entries > 0; --entries) {
    EXPECT_EQ(tryFromAnotherThread(), 0);
    EXPECT_RESULT(ZrLeaveCriticalSection(&lock), ZR_R_OK);
  }
  for (int entry = 1; entry <= 2; ++entry) EXPECT_EQ(tryFromAnotherThread(), 1) << "entry " << entry;

  ExpectRejected({ZrInitializeCriticalSection(nullptr), ZrEnterCriticalSection(nullptr),
                  ZrLeaveCriticalSection(nullptr), ZrDeleteCriticalSection(nullptr),
                  ZrTryEnterCriticalSection(nullptr, &acquired), ZrTryEnterCriticalSection(&lock, nullptr)});
  EXPECT_RESULT(ZrDeleteCriticalSection(&lock), ZR_R_OK);
  // A deleted lock is an invalid object.
  ExpectEach(ZR_R_INVALID_OBJECT_STATE, {ZrEnterCriticalSection(&lock), ZrLeaveCriticalSection(&lock),
                                         ZrDeleteCriticalSection(&lock), ZrTryEnterCriticalSection(&lock, &acquired)});
}

template <class Integer>
static void Check(Integer (*increment)(Integer*), Integer (*decrement)(Integer*),
                  Integer (*exchange)(Integer*, const Integer*)) {
  constexpr Integer kMin = std::numeric_limits<Integer>::min(), kMax = std::numeric_limits<Integer>::max();
  SCOPED_TRACE(Format("%s integers of %d bytes", kMin < 0 ? "signed" : "unsigned", static_cast<int>(sizeof(Integer))));
  Integer word = kMax;
  const Integer next = 5;
  EXPECT_EQ(increment(&word), kMin) << "must wrap";
  EXPECT_EQ(decrement(&word), kMax);
  EXPECT_EQ(exchange(&word, &next), kMax);
  EXPECT_EQ(exchange(&word, nullptr), Integer{0});
  EXPECT_EQ(exchange(nullptr, &next), Integer{0});
  EXPECT_EQ(increment(nullptr), Integer{0});
  EXPECT_EQ(decrement(nullptr), Integer{0});
  EXPECT_EQ(word, next);
}

TEST(Atomics, EveryTypeWrapsExchangesAndAcceptsNull) {
  Check(ZrInterlockedIncrement32, ZrInterlockedDecrement32, ZrInterlockedExchange32);
  Check(ZrInterlockedIncrementU32, ZrInterlockedDecrementU32, ZrInterlockedExchangeU32);
  Check(ZrInterlockedIncrement64, ZrInterlockedDecrement64, ZrInterlockedExchange64);
  Check(ZrInterlockedIncrementU64, ZrInterlockedDecrementU64, ZrInterlockedExchangeU64);
}
