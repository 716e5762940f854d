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

static void Race(const std::function<void(int thread)>& body) {
  CGate start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      start.Arrive();
      start.Wait();
      body(thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ShareStrings) {
  const Owned text(Units(W("shared")));
  Race([&](int) {
    for (int round = 0; round < 5000; ++round) {
      const Owned copy(ZrCopyString(text)), empty(ZrCopyString(nullptr));
      if (ZrStringLen(copy) + ZrStringLen(empty) != 6) ADD_FAILURE();
    }
  });
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  for (int round = 0; round < 200; ++round) {  // each thread gives up one of the last references
    ZRSTR last = ZrCreateString(W("last"));
    for (int thread = 1; thread < kThreads; ++thread) ZrCopyString(last);
    Race([last](int) { ZrDestroyString(last); });
  }
}

static void CheckBlob(ZRBLOB blob, const std::string& content) {
  std::string bytes(content.size(), '?');
  uint32_t length = 0;
  (void)ZrBlobByteLen(blob, &length);
  (void)ZrReadBlobPos(blob, bytes.data(), 0, length);
  if (bytes != content) ADD_FAILURE() << bytes;
}

TEST(Threads, ShareBlobs) {
  for (int round = 0; round < 300; ++round) {
    std::vector<ZRBLOB> handles = {ZrCreateBlob(8, "original")};
    while (handles.size() < kThreads) handles.push_back(ZrCopyBlob(handles[0]));
    Race([&](int thread) {  // each with a handle of its own on the same bytes; the last holder writes in place
      ZRBLOB mine = handles[static_cast<std::size_t>(thread)];
      for (int copies = 0; copies < 5; ++copies) {
        ZRBLOB copy = ZrCopyBlob(mine);
        CheckBlob(copy, "original");
        const std::string text = "thread " + std::to_string(thread);
        if (copies % 2) {
          (void)ZrSeekBlob(copy, 0, ZR_BLOB_SEEK_START, 0);
          (void)ZrWriteBlob(copy, text.data(), 8);
          CheckBlob(copy, text);
        }
        (void)ZrDestroyBlob(copy);
      }
      if (thread % 2) {
        (void)ZrRemoveBlob(mine, 0, 4);
        (void)ZrAppendBlobData(mine, "ly", 2);
        CheckBlob(mine, "inally");
      }
      (void)ZrDestroyBlob(mine);
    });
  }
}

TEST(Threads, ReadTheLocaleOnce) {
  Race([](int) {
    if (ZrWCHARCompareNoCase(W("First"), W("fIRST")) != 0) ADD_FAILURE() << "a table that was not full yet";
  });
}

TEST(Threads, LocksAndAtomicsLoseNothing) {
  ZRCRITICALSECTION lock = nullptr;
  ASSERT_EQ(ZrInitializeCriticalSection(&lock), ZR_R_OK);
  int64_t atomic = 0, locked = 0;
  Race([&](int) {
    for (int round = 0; round < 5000; ++round) {
      ZrInterlockedIncrement64(&atomic);
      ZrEnterCriticalSection(&lock);
      ZrEnterCriticalSection(&lock);
      ++locked;
      ZrLeaveCriticalSection(&lock);
      ZrLeaveCriticalSection(&lock);
    }
  });
  EXPECT_EQ(atomic, 5000 * kThreads);
  EXPECT_EQ(locked, 5000 * kThreads);
  EXPECT_EQ(ZrDeleteCriticalSection(&lock), ZR_R_OK);
}

static ZRRESULT CreateObject(uint32_t number) {
  const ZRUUID classId = ClassId(number);
  void* object = nullptr;
  return ZrCreateInstance(&classId, 0, &classId, 0, &object);
}

TEST(Threads, FirstCreationsAtOnceStartAModuleOnce) {
  for (int round = 0; round < 20; ++round) {
    (void)TakeModuleLog();
    FakeDiscovery discovery({{1, ModulePath("good")}, {2, ModulePath("good")}});
    uint32_t cookie = 0;
    ZrInitialize();
    ASSERT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    Race([](int thread) { EXPECT_EQ(CreateObject(thread % 2 ? 1 : 2), ZR_R_OK); });
    ZrUninitialize();
    EXPECT_EQ(TakeModuleLog(),
              "good.load good.init good.create good.create good.create good.create good.exit good.unload");
  }
}

TEST(Threads, FirstCreationsAtOnceOfARefusingModuleAllComeBack) {
  for (int round = 0; round < 20; ++round) {
    FakeDiscovery discovery({{1, ModulePath("refusing")}});
    uint32_t cookie = 0;
    ZrInitialize();
    ASSERT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    std::atomic<int> refused{0};
    Race([&](int) {
      const ZRRESULT result = CreateObject(1);
      if (result == ZR_R_NOT_SUPPORTED) ++refused;
      EXPECT_TRUE(result == ZR_R_NOT_SUPPORTED || result == ZR_R_OK);
    });
    EXPECT_GE(refused, 1);
    ZrUninitialize();
  }
}

static ZRRESULT CreateByFunction(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  *object = object;
  return ZR_R_OK;
}
static std::atomic<int> g_started{0};
static ZRRESULT Init() { return ++g_started, ZR_R_OK; }
static void Exit() { --g_started; }

TEST(Threads, AddRemoveAndCreateAtOnce) {
  ZrInitialize();
  FakeDiscovery lasting({{1, {}, {CreateByFunction, Init, Exit}, W("Lasting")}});
  FakeDiscovery passing({{2, {}, {CreateByFunction, Init, Exit}, W("Passing")}});  // the same assembly
  uint32_t lastingCookie = 0;
  ASSERT_EQ(ZrAddComponentDiscovery(&lasting, &lastingCookie), ZR_R_OK);
  Race([&](int thread) {
    for (int round = 0; round < 300; ++round) {
      if (thread == 0) {
        uint32_t cookie = 0;
        EXPECT_EQ(ZrAddComponentDiscovery(&passing, &cookie), ZR_R_OK);
        (void)CreateObject(2);
        EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
      } else {
        EXPECT_EQ(CreateObject(1), ZR_R_OK);
        const ZRRESULT result = CreateObject(2);
        EXPECT_TRUE(result == ZR_R_OK || result == ZR_R_CLASS_NOT_REGISTERED);
        ZRUUID classId;
        EXPECT_EQ(ZrCLSIDFromClassName(Owned(Units(W("Lasting"))), &classId), ZR_R_OK);
      }
    }
  });
  ZrUninitialize();
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
  Race([&](int thread) {
    const Owned text(Widened(std::to_string(thread)));
    for (int round = 0; round < 5000; ++round) {
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
      ZRSTR string = text;
      (void)happens(ZrSafeArrayPutElement(strings.get(), &kFirst, &string));
      string = nullptr;
      if (happens(ZrSafeArrayGetElement(strings.get(), &kFirst, &string)) && string != nullptr &&
          ZrStringLen(string) != 1)
        ++odd;
      ZrDestroyString(string);
    }
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
  Race([&](int thread) {
    for (int round = 0; round < 500; ++round) {
      if (thread == 0) {
        uint32_t cookie = 0;
        ZrInitialize();
        (void)ZrAddComponentDiscovery(&discovery, &cookie);
        ZrUninitialize();
      } else {
        const ZRRESULT result = CreateObject(76);
        EXPECT_TRUE(result == ZR_R_NO_INIT || result == ZR_R_CLASS_NOT_REGISTERED);
      }
    }
  });
  EXPECT_EQ(discovery.references, 0u);
}

TEST(Threads, BuildTheErrorRegistryOnceAndRegisterOnce) {
  std::atomic<int> registered = 0;
  Race([&](int) {
    for (uint32_t code = 1001; code <= 1050; ++code) {  // which no other test registers
      if (ZrErrorInfoRegister(code, W("text"), nullptr) == ZR_R_OK) ++registered;
      ZRSTR text = nullptr;
      if (ZrErrorInfoGetText(code % 2 ? code : 0x80000000, &text) != ZR_R_OK) ADD_FAILURE();
      ZrDestroyString(text);
    }
  });
  EXPECT_EQ(registered, 50);
}
