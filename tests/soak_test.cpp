// Tests for leaks without a sanitizer: repeated use of the whole library must leave the number of allocated bytes
// unchanged. The sanitizers look for leaks in every test; this test finds them in any build.

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "tests/support/array_sequence.h"
#include "tests/support/fake_discovery.h"
#include "tests/support/module_log.h"
#include "tests/support/unicode_check.h"

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#include <malloc.h>
static std::size_t HeapInUse() {
  (void)mallopt(M_ARENA_MAX, 1);  // mallinfo2 counts the first arena only, so all threads must share it
  return mallinfo2().uordblks;
}
#else
static std::size_t HeapInUse() { return 0; }
#endif

// Converts values of every type to every type, apart and in place, and copies and compares them.
static void UseVariants() {
  for (const TagName& from : kTagNames) {
    for (const std::string& text : TextsOf(from.tag)) {
      for (const TagName& to : kTagNames) {
        OwnedVariant source = Value(from.name + (" " + text)), apart = Value("STR before"), copy, direct;
        const ZRVARIANT byRef = ByRef(source);
        uint8_t equal = 0;
        // A null REF that becomes an SREF leaks a record, by contract.
        if (from.tag == ZR_VT_REF && to.tag == ZR_VT_SREF && text == "null") continue;
        if (from.tag == ZR_VT_QWORD && to.tag == ZR_VT_DATETIME) continue;  // would take the number for an address
        (void)ZrVariantCopy(&copy, &source);
        (void)ZrVariantCopyInd(&direct, &byRef);
        (void)ZrVariantCompare(&copy, &direct, &equal);
        (void)ZrVariantChangeType(&apart, &source, 0, to.tag);
        (void)ZrVariantChangeType(&source, &source, 0, to.tag);
      }
    }
  }
}

static void UseValues() {
  const Owned text(Units(W("1.2.3.4.5.6"))), copy(ZrDeepCopyString(text)), both(ZrAppendStrings(text, copy));
  Owned changed(ZrCreateString(W("old"))), written, described;
  (void)ZrReCreateString(&changed.string, W("new"));
  (void)ZrReCreateStringLen(&changed.string, W("newer"), 3);
  ZRREF* ref = nullptr;
  ZRSREF *sref = nullptr, *twin = nullptr;
  (void)ZrStringToREF(text, &ref);
  (void)ZrStringToSREF(both, &sref);
  (void)ZrCopySREF(sref, &twin);
  (void)ZrSREFToString(twin, &written.string);
  ZrDestroyREF(ref);
  ZrDestroySREF(sref);
  ZrDestroySREF(twin);
  ZrDestroyUUID(ZrGenerateUUID());
  (void)ZrErrorInfoGetDescription(0x80000004, &described.string);
  ZRCRITICALSECTION lock = nullptr;
  (void)ZrInitializeCriticalSection(&lock);
  (void)ZrDeleteCriticalSection(&lock);
  void* memory = ZrCreateMemory(10);
  memory = ZrRecreateMemory(memory, 2000);
  ZrDestroyMemory(memory);
  ZRBLOB blob = ZrCreateBlob(8, "original"), other = ZrCopyBlob(blob);
  (void)ZrAppendBlob(other, blob);
  (void)ZrDestroyBlob(blob);
  (void)ZrDestroyBlob(other);
  EXPECT_EQ(CheckFromUtf8({'a', 0xC3, 0xA9, 0xF0, 0x9F, 0xAA, 0x90}, 'b'), "");
  EXPECT_EQ(CheckRanges({'a', '\xC3', '\xA9'}, {WCHAR{'a'}, WCHAR{0xD83E}, WCHAR{0xDE90}}, {U'a', char32_t{0x1FA90}}),
            "");
}

// Uses a class of a module file and a class of entry points, by their names and without a configuration. The library
// keeps class names for the life of the process, so no other test uses these classes.
static void UseComponents() {
  constexpr uint32_t kFirst = 7001;
  const ZRUUID classId = ClassId(kFirst);
  const Owned name(Units(W("Soaked")));
  Owned learnt;
  ZRUUID found;
  IZrConfiguration* configuration = nullptr;
  FakeDiscovery discovery(
      {{kFirst, ModulePath("good"), {}, Units(W("Soaked"))}, {kFirst + 1, {}, {MakeObject, nullptr, nullptr}}});
  (void)ZrInitialize();
  const uint32_t cookie = discovery.Add();
  discovery.Add();
  for (int number = 0; number <= 2; ++number) (void)CreateObject(int{kFirst} + number);
  (void)ZrCLSIDFromClassName(name, &found);
  (void)ZrClassNameFromCLSID(&classId, &learnt.string);
  (void)ZrQueryComponentConfiguration(&classId, name, &configuration);
  (void)ZrRemoveComponentDiscovery(cookie);
  (void)ZrUninitialize();
  (void)DrainModuleLog();
}

TEST(Soak, RepeatedUseLeavesTheHeapUnchanged) {
  const struct {
    const char* name;
    void (*use)();
    int rounds;
  } kRows[] = {
      {"variants", UseVariants, 1},
      {"arrays", [] { EXPECT_EQ(CArraySequence::RunRandomly(20, 300, 1), ""); }, 2},
      {"values", UseValues, 10},
      {"components", UseComponents, 10},
  };
  // Each attempt runs in a new thread, because the heap keeps a cache of free blocks per thread and counts them as in
  // use. Other caches fill up in the first attempts. A leak appears in every attempt, so the least growth counts.
  for (const auto& row : kRows) {
    std::size_t leastGrowth = SIZE_MAX;
    for (int attempt = 0; attempt < 5; ++attempt) {
      const std::size_t before = HeapInUse();
      std::thread([&row] {
        for (int round = 0; round < row.rounds; ++round) row.use();
      }).join();
      const std::size_t after = HeapInUse();
      leastGrowth = std::min(leastGrowth, after - std::min(before, after));
    }
    EXPECT_EQ(leastGrowth, 0u) << row.name << ": bytes leaked in " << row.rounds << " rounds";
  }
}
