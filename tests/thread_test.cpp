// Small races with a countable outcome; the thread sanitizer sees the rest.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/array_samples.h"
#include "tests/support/fake_discovery.h"
#include "tests/support/gate.h"
#include "tests/support/module_log.h"

static constexpr int kThreads = 4;

// So many rounds of the body in each of the threads, which begin together.
static void Race(int rounds, const std::function<void(int thread)>& body) {
  CGate start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      start.Arrive();
      start.Wait();
      for (int round = 0; round < rounds; ++round) body(thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ShareStrings) {
  const Owned text(Units(W("shared")));
  Race(5000, [&](int) {
    const Owned copy(ZrCopyString(text)), empty(ZrCopyString(nullptr));
    EXPECT_EQ(ZrStringLen(copy) + ZrStringLen(empty), 6u);
  });
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  for (int round = 0; round < 200; ++round) {  // each thread gives up one of the last references
    ZRSTR last = ZrCreateString(W("last"));
    for (int thread = 1; thread < kThreads; ++thread) ZrCopyString(last);
    Race(1, [last](int) { ZrDestroyString(last); });
  }
}

TEST(Threads, ShareBlobs) {
  for (int round = 0; round < 300; ++round) {
    std::vector<ZRBLOB> handles = {ZrCreateBlob(8, "original")};
    while (handles.size() < kThreads) handles.push_back(ZrCopyBlob(handles[0]));
    Race(1, [&](int thread) {  // each with a handle of its own on the same bytes; the last holder writes in place
      const std::string text = "by thread " + std::to_string(thread);
      for (int copies = 5; copies >= 0; --copies) {
        ZRBLOB mine = handles[static_cast<std::size_t>(thread)], blob = copies != 0 ? ZrCopyBlob(mine) : mine;
        EXPECT_EQ(BytesOf(blob), "original");
        if ((copies + thread) % 2 != 0) {
          (void)ZrRemoveBlob(blob, 1, 99);
          (void)ZrSeekBlob(blob, 0, ZR_BLOB_SEEK_START, 0);
          (void)ZrWriteBlob(blob, text.data(), static_cast<uint32_t>(text.size()));
          EXPECT_EQ(BytesOf(blob), text);
        }
        (void)ZrDestroyBlob(blob);
      }
    });
  }
}

TEST(Threads, ReadTheLocaleOnce) {
  Race(1, [](int) { EXPECT_EQ(ZrWCHARCompareNoCase(W("First"), W("fIRST")), 0) << "a table that was not full yet"; });
}

TEST(Threads, LocksAndAtomicsLoseNothing) {
  ZRCRITICALSECTION lock = nullptr;
  ASSERT_EQ(ZrInitializeCriticalSection(&lock), ZR_R_OK);
  int64_t atomic = 0, locked = 0;
  Race(5000, [&](int) {
    ZrInterlockedIncrement64(&atomic);
    ZrEnterCriticalSection(&lock);
    ZrEnterCriticalSection(&lock);
    ++locked;
    ZrLeaveCriticalSection(&lock);
    ZrLeaveCriticalSection(&lock);
  });
  EXPECT_EQ(atomic, 5000 * kThreads);
  EXPECT_EQ(locked, 5000 * kThreads);
  EXPECT_EQ(ZrDeleteCriticalSection(&lock), ZR_R_OK);
}

// The library is open, with this discovery, to the end of the scope.
struct Session {
  explicit Session(FakeDiscovery& discovery) {
    uint32_t cookie = 0;
    ZrInitialize();
    EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
  }
  ~Session() { ZrUninitialize(); }
};

static ZRRESULT CreateObject(int number) {
  const ZRUUID classId = ClassId(static_cast<uint32_t>(number));
  void* object = nullptr;
  return ZrCreateInstance(&classId, 0, &classId, 0, &object);
}

TEST(Threads, FirstCreationsAtOnceStartAModuleOnce) {
  const std::string kLog = "good.load good.init good.create good.create good.create good.create good.exit good.unload";
  for (int round = 0; round < 40; ++round) {
    const bool isGood = round % 2 != 0;  // all come back from a module that refuses too
    const Units path = ModulePath(isGood ? "good" : "refusing");
    FakeDiscovery discovery({{0, path}, {1, path}});
    std::atomic<int> refused = 0;
    (void)TakeModuleLog();
    {
      const Session session(discovery);
      Race(1, [&](int thread) {
        const ZRRESULT result = CreateObject(thread % 2);
        if (result == ZR_R_NOT_SUPPORTED) ++refused;
        EXPECT_TRUE(result == ZR_R_NOT_SUPPORTED || result == ZR_R_OK);
      });
    }
    EXPECT_EQ(refused == 0, isGood);
    EXPECT_EQ(isGood ? TakeModuleLog() : kLog, kLog);
  }
}

static std::atomic<int> g_started{0};
static std::atomic<bool> g_isReady{false};
static ZRRESULT Init() {
  for (int turn = 0; turn < 100; ++turn) std::this_thread::yield();  // time for others to come too early
  g_isReady = true;
  return ++g_started, ZR_R_OK;
}
static ZRRESULT CreateByFunction(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  EXPECT_TRUE(g_isReady);
  *object = object;
  return ZR_R_OK;
}
static void Exit() { --g_started; }

TEST(Threads, AddRemoveAndCreateAtOnce) {
  FakeDiscovery lasting({{1, {}, {CreateByFunction, Init, Exit}, W("Lasting")}});
  FakeDiscovery passing({{2, {}, {CreateByFunction, Init, Exit}, W("Passing")}});  // the same assembly
  {
    const Session session(lasting);
    Race(300, [&](int thread) {
      uint32_t cookie = 0;
      ZRUUID classId;
      EXPECT_TRUE(thread != 0 || ZrAddComponentDiscovery(&passing, &cookie) == ZR_R_OK);
      const ZRRESULT result = CreateObject(2);
      EXPECT_TRUE(result == ZR_R_OK || (result == ZR_R_CLASS_NOT_REGISTERED && thread != 0));
      EXPECT_TRUE(thread != 0 || ZrRemoveComponentDiscovery(cookie) == ZR_R_OK);
      EXPECT_EQ(CreateObject(1), ZR_R_OK);
      EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Lasting"))), &classId), ZR_R_OK);
    });
  }
  EXPECT_EQ(g_started, 0);
  EXPECT_EQ(lasting.references + passing.references, 0u);
}

// Whoever finds the flag taken is refused and nothing happens; what does happen is counted in the elements.
TEST(Threads, TakeTurnsAtAnArray) {
  const Array numbers = MakeArray(ZR_VT_I8, {{2, 0}}), strings = MakeArray(ZR_VT_STR, {{1, 0}});
  const uint32_t kFirst = 0, kSecond = 1;
  std::atomic<int64_t> done = 0, odd = 0;
  const auto happens = [&](ZRRESULT result) {
    if (result != ZR_R_OK && result != ZR_R_INVALID_OBJECT_STATE) ++odd;
    return result == ZR_R_OK;
  };
  Race(5000, [&](int thread) {
    void* data = nullptr;
    if (happens(ZrSafeArrayAccessData(numbers.get(), &data))) {
      ++*static_cast<int64_t*>(data);
      ++done;
      EXPECT_EQ(ZrSafeArrayUnaccessData(numbers.get()), ZR_R_OK);
    }
    const int64_t mine = thread * int64_t{0x100000001};  // both halves alike, unless a get meets a put
    int64_t seen = 0;
    (void)happens(ZrSafeArrayPutElement(numbers.get(), &kSecond, &mine));
    if (happens(ZrSafeArrayGetElement(numbers.get(), &kSecond, &seen)) && seen >> 32 != (seen & 0xFFFFFFFF)) ++odd;
    const Owned text(Widened(std::to_string(thread)));
    Owned got;
    (void)happens(ZrSafeArrayPutElement(strings.get(), &kFirst, &text.string));
    if (happens(ZrSafeArrayGetElement(strings.get(), &kFirst, &got.string)) && got && ZrStringLen(got) != 1) ++odd;
  });
  int64_t counted = 0;
  EXPECT_EQ(ZrSafeArrayGetElement(numbers.get(), &kFirst, &counted), ZR_R_OK);
  EXPECT_EQ(counted, done);
  EXPECT_EQ(odd, 0);
}

// A discovery that is asked calls back while another thread ends the library: the two must not wait for each other.
TEST(Threads, DiscoveriesCallBackDuringTheLastUninitialize) {
  FakeDiscovery discovery;
  discovery.onCall = [](const char* operation) {
    ZRSTR name = nullptr;
    const ZRUUID classId = ClassId(77);
    if (operation == std::string("QueryComponent")) (void)ZrClassNameFromCLSID(&classId, &name);
  };
  Race(500, [&](int thread) {
    if (thread == 0) {
      const Session session(discovery);
    } else {
      const ZRRESULT result = CreateObject(76);
      EXPECT_TRUE(result == ZR_R_NO_INIT || result == ZR_R_CLASS_NOT_REGISTERED);
    }
  });
  EXPECT_EQ(discovery.references, 0u);
}

TEST(Threads, BuildTheErrorRegistryOnceAndRegisterOnce) {
  std::atomic<int> registered = 0;
  Race(1, [&](int) {
    for (uint32_t code = 1001; code <= 1050; ++code) {  // which no other test registers
      Owned text;
      if (ZrErrorInfoRegister(code, W("text"), nullptr) == ZR_R_OK) ++registered;
      EXPECT_EQ(ZrErrorInfoGetText(code % 2 ? code : 0x80000000, &text.string), ZR_R_OK);
    }
  });
  EXPECT_EQ(registered, 50);
}
