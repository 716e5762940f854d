// Tests the library with several threads. Each test is a small race with a countable outcome. The thread sanitizer
// finds data races that do not change the count.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "tests/support/array_samples.h"
#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/race.h"

TEST(Threads, ShareStrings) {
  for (int round = 0; round < 200; ++round) {
    ZRSTR shared = ZrCreateString(W("shared"));
    for (int thread = 1; thread < kThreads; ++thread) ZrCopyString(shared);
    Race(50, [shared](int) { EXPECT_EQ(ZrStringLen(Owned(ZrCopyString(shared))), 6u); });
    EXPECT_EQ(ZrStringRefCount(shared), uint32_t{kThreads});
    Race(1, [shared](int) { ZrDestroyString(shared); });  // each thread releases one of the last references
  }
}

TEST(Threads, ShareBlobs) {
  for (int round = 0; round < 300; ++round) {
    std::vector<ZRBLOB> handles = {ZrCreateBlob(8, "original")};
    while (handles.size() < kThreads) handles.push_back(ZrCopyBlob(handles[0]));
    Race(1, [&](int thread) {  // each thread has its own handle of the same bytes; the last owner writes in place
      const std::string text = "thread " + std::to_string(thread);
      ZRBLOB mine = handles[static_cast<std::size_t>(thread)], copy = ZrCopyBlob(mine);
      EXPECT_EQ(BytesOf(copy), "original");
      (void)ZrDestroyBlob(copy);
      (void)ZrWriteBlob(mine, text.data(), 8);
      EXPECT_EQ(BytesOf(mine), "original" + text);
      (void)ZrDestroyBlob(mine);
    });
  }
}

TEST(Threads, ReadTheLocaleOnce) {
  Race(1, [](int) { EXPECT_EQ(ZrWCHARCompareNoCase(W("First"), W("fIRST")), 0) << "the case table was incomplete"; });
}

TEST(Threads, LocksAndAtomicsLoseNoUpdate) {
  ZRCRITICALSECTION lock = nullptr;
  ASSERT_RESULT(ZrInitializeCriticalSection(&lock), ZR_R_OK);
  int64_t atomic = 0, locked = 0;
  Race(5000, [&](int) {
    ZrInterlockedIncrement64(&atomic);
    ZrEnterCriticalSection(&lock);
    ++locked;
    ZrLeaveCriticalSection(&lock);
  });
  EXPECT_EQ(atomic, 5000 * kThreads);
  EXPECT_EQ(locked, 5000 * kThreads);
  EXPECT_RESULT(ZrDeleteCriticalSection(&lock), ZR_R_OK);
}

// Keeps the library initialised, with this discovery, until the end of the scope.
struct Session {
  explicit Session(FakeDiscovery& discovery) {
    ZrInitialize();
    discovery.Add();
  }
  ~Session() { ZrUninitialize(); }
};

TEST(Threads, ConcurrentFirstCreationsInitializeAModuleOnce) {
  const std::string kLog = "good.load good.init good.create good.create good.create good.create good.exit good.unload";
  for (int round = 0; round < 40; ++round) {
    const bool isGood = round % 2 != 0;  // all threads must also return if the module's init fails
    const Units path = ModulePath(isGood ? "good" : "refusing");
    FakeDiscovery discovery({{0, path}, {1, path}});
    std::atomic<int> made = 0;
    (void)DrainModuleLog();
    {
      const Session session(discovery);
      Race(1, [&](int thread) { made += CreateObject(thread % 2) == ZR_R_OK; });
    }
    EXPECT_EQ(made == kThreads, isGood) << made << " objects of " << (isGood ? "good" : "refusing");
    EXPECT_EQ(isGood ? DrainModuleLog() : kLog, kLog);
  }
}

static std::atomic<int> g_started = 0;
static const ZrModuleEntryPoints kFunctions = {
    MakeObject,
    [] { return ++g_started, ZR_R_OK; },
    [] { --g_started; },
};

TEST(Threads, AddRemoveAndCreateConcurrently) {
  FakeDiscovery lasting({{1, {}, kFunctions}}), passing({{2, {}, kFunctions}});  // both belong to one assembly
  const ZRUUID lastingId = ClassId(1), unknownId = ClassId(3);
  const Owned unknown(Units(W("Unknown")));
  {
    const Session session(lasting);
    Race(300, [&](int) {
      const uint32_t cookie = passing.Add();
      EXPECT_RESULT(CreateObject(1), ZR_R_OK);
      EXPECT_RESULT(CreateObject(2), ZR_R_OK);
      ZRUUID classId;
      ZRSTR name = nullptr;
      IZrConfiguration* configuration = nullptr;
      EXPECT_RESULT(ZrCLSIDFromClassName(unknown, &classId), ZR_R_FAILED);
      EXPECT_RESULT(ZrClassNameFromCLSID(&unknownId, &name), ZR_R_FAILED);
      EXPECT_RESULT(ZrQueryComponentConfiguration(&lastingId, unknown, &configuration), ZR_R_NOT_IMPLEMENTED);
      EXPECT_RESULT(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    });
  }
  EXPECT_EQ(g_started, 0);
  EXPECT_EQ(lasting.references + passing.references, 0u);
}

// A call that finds the flag taken fails and changes nothing. The element counts the calls that succeed.
TEST(Threads, ArrayFlagAdmitsOneThread) {
  const Array numbers = MakeArray(ZR_VT_I8, {{1, 0}}), strings = MakeArray(ZR_VT_STR, {{1, 0}});
  const uint32_t kFirst = 0;
  std::atomic<int64_t> done = 0;
  const auto succeeded = [](ZRRESULT result) {
    EXPECT_TRUE(result == ZR_R_OK || result == ZR_R_INVALID_OBJECT_STATE) << Result(result);
    return result == ZR_R_OK;
  };
  Race(50000, [&](int) {
    void* data = nullptr;
    if (!succeeded(ZrSafeArrayAccessData(numbers.get(), &data))) return;
    ++*static_cast<int64_t*>(data);
    ++done;
    EXPECT_RESULT(ZrSafeArrayUnaccessData(numbers.get()), ZR_R_OK);
  });
  Race(5000, [&](int thread) {
    const Owned text(Widened(std::to_string(thread)));
    Owned got;
    (void)succeeded(ZrSafeArrayPutElement(strings.get(), &kFirst, &text.string));
    EXPECT_TRUE(!succeeded(ZrSafeArrayGetElement(strings.get(), &kFirst, &got.string)) || ZrStringLen(got) <= 1);
  });
  int64_t counted = 0;
  EXPECT_RESULT(ZrSafeArrayGetElement(numbers.get(), &kFirst, &counted), ZR_R_OK);
  EXPECT_EQ(counted, done);
}

// A discovery calls the library during a query while another thread uninitialises the library. The threads must not
// deadlock.
TEST(Threads, DiscoveriesCallBackDuringTheLastUninitialize) {
  FakeDiscovery discovery;
  discovery.onCall = [](const std::string& operation) {
    ZRUUID classId;
    if (operation == "QueryComponent") (void)ZrCLSIDFromClassName(nullptr, &classId);
  };
  Race(500, [&](int thread) {
    if (thread == 0) {
      const Session session(discovery);
    } else {
      EXPECT_NE(CreateObject(76), ZR_R_OK);
    }
  });
  EXPECT_EQ(discovery.references, 0u);
}

// The last ZrUninitialize stops a module whose exit function initialises the library again. Calls of other threads must
// still fail.
TEST(Threads, OtherThreadsAreRejectedDuringShutdown) {
  static std::atomic<int> turn = 0;  // 1: initialised again during the shutdown; 2: the other thread calls
  const ZrModuleEntryPoints points = {MakeObject, nullptr, [] {
                                        ZrInitialize();
                                        turn = 1;
                                        while (turn != 2) std::this_thread::yield();
                                        for (int more = 0; more < 1000; ++more) std::this_thread::yield();
                                        ZrUninitialize();
                                      }};
  FakeDiscovery discovery({{1, {}, points}}), late;
  for (int round = 0; round < 20; ++round) {
    turn = 0;
    uint32_t cookie = 7;
    std::thread other([&] {
      while (turn != 1) std::this_thread::yield();
      turn = 2;
      EXPECT_EQ(ZrAddComponentDiscovery(&late, &cookie), ZR_R_NO_INIT);
    });
    {
      const Session session(discovery);
      EXPECT_EQ(CreateObject(1), ZR_R_OK);
    }
    other.join();
    EXPECT_EQ(cookie + late.references, 0u);
  }
}

TEST(Threads, BuildTheErrorRegistryOnceAndRegisterEachCodeOnce) {
  std::atomic<int> registered = 0;
  Race(1, [&](int) {
    for (uint32_t code = 1001; code <= 3000; ++code) {  // no other test registers these codes
      Owned text;
      registered += ZrErrorInfoRegister(code, W("text"), nullptr) == ZR_R_OK;
      EXPECT_RESULT(ZrErrorInfoGetText(code % 2 ? code : 0x80000000, &text.string), ZR_R_OK);
    }
  });
  EXPECT_EQ(registered, 2000);
}
