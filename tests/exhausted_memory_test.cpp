// Every operation with its n-th allocation failing, for n = 1, 2, 3 … until none is left to fail. Each failure answers
// the contract's code, leaks nothing (the address sanitizer looks) and leaves everything usable.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "tests/support/array_samples.h"
#include "tests/support/failing_heap.h"
#include "tests/support/fake_discovery.h"

// Runs `operation` until it succeeds; answers how many failures came before.
template <class Result>
static int Exhaust(Result onFailure, const std::function<Result()>& operation) {
  for (int n = 1;; ++n) {
    FailAllocation(n);
    const Result result = operation();
    if (!AllocationFailed()) return n - 1;
    EXPECT_EQ(result, onFailure) << "allocation " << n;
    if (n > 100) return n;
  }
}

TEST(ExhaustedMemory, StringCreatorsAnswerNull) {
  const Owned text(Units(W("text")));
  const uint32_t emptyCount = ZrStringRefCount(Owned(ZrCopyString(nullptr)));
  const ZRDATETIMESTRUCT record = {2012, 3, 0, 4, 5, 6, 7, 0, 0, 0}, oddRecord = {-1, -1, 0, -1, -1, -1, -1, 0, 0, -1};
  using Creator = std::function<ZRSTR()>;
  const Creator kCreators[] = {
      [] { return ZrCreateString(W("a")); },
      [] { return ZrCreateStringLen(W("a"), 3); },
      [] { return ZrCreateStringByteLen("abc", 3); },
      [&] { return ZrDeepCopyString(text); },
      [] { return ZrDeepCopyString(nullptr); },
      [&] { return ZrAppendStrings(text, text); },
      [] { return ZrAppendStrings(nullptr, nullptr); },
      [&] { return ZrDateTimeStructToDateString(&record); },
      [&] { return ZrDateTimeStructToDateTimeString(&record, 1); },
      [&] { return ZrDateTimeStructToTimeString(&record); },
      [&] { return ZrDateTimeStructToTimeString(&oddRecord); },
      [] { return ZrTimeSpanToTimeSpanString(1); },
      [] { return ZrTimeSpanToTimeSpanString(-1); },
  };
  for (const Creator& create : kCreators) {
    EXPECT_EQ(Exhaust<bool>(false, [&] { return Owned(create()).string != nullptr; }), 1);
  }
  const ZRUUID uuid = {};
  EXPECT_EQ(Exhaust<ZRRESULT>(ZR_R_NO_MEMORY,
                              [&] {
                                ZRSTR string = text;
                                const ZRRESULT result = ZrStringFromUUID(&uuid, &string);
                                EXPECT_EQ(string == nullptr, ZR_FAILED(result));
                                ZrDestroyString(string);
                                return result;
                              }),
            1);
  EXPECT_EQ(Exhaust<ZRRESULT>(ZR_R_NO_MEMORY,
                              [&] {
                                ZRSTR string = text;
                                const ZRRESULT result = ZrCreateZRSTRfromWCHAR(W("a"), 2, &string);
                                EXPECT_EQ(string == nullptr, ZR_FAILED(result));
                                ZrDestroyString(string);
                                return result;
                              }),
            1);
  for (bool exact : {false, true}) {
    EXPECT_EQ(Exhaust<int>(0,
                           [&] {
                             ZRSTR string = ZrCopyString(text);
                             const int truth =
                                 exact ? ZrReCreateStringLen(&string, W("a"), 1) : ZrReCreateString(&string, W("a"));
                             EXPECT_EQ(string == nullptr, truth == 0);
                             ZrDestroyString(string);
                             return truth;
                           }),
              1);
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  EXPECT_EQ(ZrStringRefCount(Owned(ZrCopyString(nullptr))), emptyCount);
}

TEST(ExhaustedMemory, MemoryBlocksAnswerNull) {
  char* block = nullptr;
  EXPECT_EQ(Exhaust<bool>(true,
                          [&] {
                            block = static_cast<char*>(ZrCreateMemory(1));
                            return block == nullptr;
                          }),
            1);
  *block = 'x';
  EXPECT_EQ(Exhaust<bool>(true,
                          [&] {
                            auto* moved = static_cast<char*>(ZrRecreateMemory(block, 2));
                            EXPECT_EQ(moved != nullptr ? *moved : *block, 'x') << "a failure leaves the old block";
                            block = moved != nullptr ? moved : block;
                            return moved == nullptr;
                          }),
            1);
  ZrDestroyMemory(block);
}

TEST(ExhaustedMemory, ReferencesThrowAndTheirTextIsNull) {
  const Owned numbers(Units(W("1.2.3.4.5.6"))), words(Units(W("words")));
  ZRREF value = {{1, 2, 3, 4, 5, 6}};
  const ZRSREF both = {&value, words};
  ZRREF* ref = nullptr;
  ZRSREF* sref = nullptr;
  const struct {
    int allocations;
    std::function<void()> make;
  } kMakers[] = {
      {1, [&] { ref = ZrCreateREF(); }},
      {1, [&] { (void)ZrCopyREF(&value, &ref); }},
      {1, [&] { (void)ZrStringToREF(numbers, &ref); }},
      {1, [&] { sref = ZrCreateSREF(); }},
      {2, [&] { (void)ZrCopySREF(&both, &sref); }},
      {2, [&] { (void)ZrStringToSREF(numbers, &sref); }},
      {1, [&] { (void)ZrStringToSREF(words, &sref); }},
  };
  for (const auto& maker : kMakers) {
    const int failures = Exhaust<bool>(true, [&] {
      try {
        maker.make();
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(ref == nullptr && sref == nullptr) << "out-values are unchanged";
        return true;
      }
      return false;
    });
    EXPECT_EQ(failures, maker.allocations);
    ZrDestroyREF(std::exchange(ref, nullptr));
    ZrDestroySREF(std::exchange(sref, nullptr));
  }
  EXPECT_EQ(ZrStringRefCount(words), 1u);
  EXPECT_EQ(Exhaust<bool>(true,
                          [&] {
                            ZRSTR string = words;
                            EXPECT_EQ(ZrSREFToString(&both, &string), ZR_R_OK) << "no code tells";
                            return Owned(string).string == nullptr;
                          }),
            1);
}

TEST(ExhaustedMemory, UnicodeCreatorsAnswerACodeAndRangeConvertersThrow) {
  const std::function<ZRRESULT(ZRSTR*)> kCreators[] = {
      [](ZRSTR* string) { return ZrCreateZRSTRfromUTF8("a", 1, string); },
      [](ZRSTR* string) { return ZrUTF8toZRSTR("\x80", 1, string); },
      [](ZRSTR* string) { return ZrCreateZRSTRfromUTF32(U"a", 1, string); },
  };
  for (const auto& create : kCreators) {
    EXPECT_EQ(Exhaust<ZRRESULT>(ZR_R_NO_MEMORY,
                                [&] {
                                  ZRSTR string = reinterpret_cast<ZRSTR>(&string);
                                  const ZRRESULT result = create(&string);
                                  EXPECT_EQ(string == nullptr, ZR_FAILED(result));
                                  ZrDestroyString(string);
                                  return result;
                                }),
              1);
  }
  const char32_t point = U'a';
  char* bytes = nullptr;
  EXPECT_EQ(Exhaust<bool>(true,
                          [&] {
                            try {
                              (void)ZrUTF32toUTF8(&point, &point + 1, 0, &bytes);
                            } catch (const std::bad_alloc&) {
                              EXPECT_EQ(bytes, nullptr);
                              return true;
                            }
                            return false;
                          }),
            1);
  std::free(bytes);
}

TEST(ExhaustedMemory, RecordsAndLocksThrow) {
  const ZRUUID value = {1, 2, 3, {4}};
  ZRUUID* record = nullptr;
  ZRCRITICALSECTION lock = nullptr;
  const std::function<void()> kMakers[] = {
      [&] { record = ZrCreateUUID(); },
      [&] { record = ZrGenerateUUID(); },
      [&] { (void)ZrCopyUUID(&value, &record); },
      [&] { (void)ZrInitializeCriticalSection(&lock); },
  };
  for (const auto& make : kMakers) {
    const int failures = Exhaust<bool>(true, [&] {
      try {
        make();
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(record == nullptr && lock == nullptr);
        return true;
      }
      return false;
    });
    EXPECT_EQ(failures, 1);
    ZrDestroyUUID(std::exchange(record, nullptr));
    if (lock != nullptr) (void)ZrDeleteCriticalSection(&lock);
  }
}

// Two strings and a row for each code; what the failure interrupts is finished by the next call.
TEST(ExhaustedMemory, TheErrorRegistryThrowsAndGoesOn) {
  const auto failures = [](const std::function<ZRRESULT()>& operation) {
    return Exhaust<ZRRESULT>(ZR_R_NO_MEMORY, [&] {
      try {
        return operation();
      } catch (const std::bad_alloc&) {
        return ZR_R_NO_MEMORY;
      }
    });
  };
  ZRSTR text = nullptr;
  EXPECT_GE(failures([&] { return ZrErrorInfoGetText(0xCA, &text); }), 3);
  EXPECT_EQ(ContentOf(Owned(text)), W("ZR_R_SAME_VALUE"));
  EXPECT_EQ(failures([&] { return ZrErrorInfoRegister(0x1234, W("text"), W("description")); }), 3);
  EXPECT_EQ(ZrErrorInfoRegister(0x1234, W("text"), W("description")), ZR_R_ALREADY_REGISTERED);
}

// The handle, the element and the growth of a buffer throw; the block and buffer of a new element end the process.
TEST(ExhaustedMemory, BlobsThrowOrEndTheProcess) {
  const std::string bytes(1000, 'x');
  ZRBLOB blob = ZrCreateBlob(1000, bytes.data()), copy = ZrCopyBlob(blob);
  const struct {
    std::function<void()> run;
    int throws, dies;  // so many allocations throw, so many behind them end the process
  } kRows[] = {
      {[&] { (void)ZrDestroyBlob(ZrCreateBlob(1, "x")); }, 2, 2},
      {[&] { (void)ZrDestroyBlob(ZrCopyBlob(blob)); }, 2, 0},
      {[&] { (void)ZrWriteBlob(copy, bytes.data(), 1); }, 1, 2},
      {[&] { (void)ZrWriteBlob(copy, bytes.data(), 1000); }, 1, 0},  // no longer shared: growth
      {[&] { (void)ZrInsertBlob(copy, 0, bytes.data(), 1000); }, 1, 0},
      {[&] { (void)ZrAppendBlobData(copy, bytes.data(), 1000); }, 1, 0},
      {[&] { (void)ZrAppendBlob(copy, copy); }, 1, 0},
  };
  const auto content = [](ZRBLOB of) {
    uint32_t length = 0, position = 0;
    (void)ZrBlobByteLen(of, &length);
    (void)ZrBlobPosition(of, &position);
    std::string text(length, 0);
    (void)ZrReadBlobPos(of, text.data(), 0, length);
    return text + std::to_string(position);
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    const std::string before = content(copy);
    int n = 1;
    for (; n <= row.throws + row.dies; ++n) {
      const auto fail = [&] {
        FailAllocation(n);
        row.run();
      };
      if (n <= row.throws) {
        EXPECT_THROW(fail(), std::bad_alloc);
        EXPECT_TRUE(AllocationFailed());
      } else {
        EXPECT_DEATH(fail(), "");
      }
      EXPECT_EQ(content(copy), before);
    }
    FailAllocation(n);
    row.run();
    EXPECT_FALSE(AllocationFailed()) << "more allocations than are needed";
  }
  EXPECT_EQ(content(blob), bytes + "1000");
  (void)ZrDestroyBlob(blob);
  (void)ZrDestroyBlob(copy);
}

static ZRRESULT CreateByFunction(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  *object = object;
  return ZR_R_OK;
}

TEST(ExhaustedMemory, ComponentOperationsAnswerTheirCodes) {
  ZrInitialize();
  FakeDiscovery discovery({{1, {}, {CreateByFunction, nullptr, nullptr}, W("Name")}, {2, ModulePath("nowhere")}});
  uint32_t cookie = 0;
  EXPECT_GE(Exhaust<ZRRESULT>(ZR_R_UNEXPECTED, [&] { return ZrAddComponentDiscovery(&discovery, &cookie); }), 2);
  EXPECT_EQ(discovery.references, 1u);

  // The lookup, the binding and the creation fail in turn, each with its code; a module that isn't there fails alike.
  for (uint32_t number : {1u, 2u}) {
    const ZRUUID classId = ClassId(number);
    std::set<ZRRESULT> failures;
    ZRRESULT result = ZR_R_OK;
    for (int n = 1; n < 100; ++n) {
      void* object = &object;
      FailAllocation(n);
      result = ZrCreateInstance(&classId, 0, &classId, 0, &object);
      EXPECT_EQ(object != nullptr, ZR_SUCCEEDED(result)) << "no object is made and then lost";
      if (!AllocationFailed()) break;
      failures.insert(result);
    }
    EXPECT_EQ(result, number == 1 ? ZR_R_OK : ZR_R_FILE_NOT_FOUND);
    // (A diagnostic that can't be put together is lost and changes no result.)
    failures.erase(ZR_R_FILE_NOT_FOUND);
    EXPECT_EQ(failures, (std::set<ZRRESULT>{ZR_R_REQUEST_ABORTED, ZR_R_UNEXPECTED}));
  }

  const Owned name(Units(W("Name")));
  ZRUUID classId = ClassId(1);
  EXPECT_GE(Exhaust<ZRRESULT>(ZR_R_FAILED, [&] { return ZrCLSIDFromClassName(name, &classId); }), 1);
  ZRSTR learnt = nullptr;
  EXPECT_GE(Exhaust<ZRRESULT>(ZR_R_FAILED,
                              [&] {
                                const ZRRESULT result = ZrClassNameFromCLSID(&classId, &learnt);
                                EXPECT_EQ(learnt != nullptr, ZR_SUCCEEDED(result))
                                    << "no string is given and then lost";
                                return result;
                              }),
            1);
  ZrDestroyString(learnt);
  EXPECT_EQ(Exhaust<ZRRESULT>(ZR_R_UNEXPECTED, [&] { return ZrRemoveComponentDiscovery(cookie); }), 0);
  EXPECT_EQ(Exhaust<ZRRESULT>(ZR_R_UNEXPECTED, [&] { return ZrUninitialize(); }), 0) << "the end needs no memory";
  EXPECT_EQ(discovery.references, 0u);
}

// Runs the operation on fresh arrays with one allocation after the other failing; answers how often it threw. (Texts
// that can't be made are null, and no failure.)
static int ExhaustArray(const std::function<Array()>& make, const std::function<void(ZRSAFEARRAY)>& operation) {
  int thrown = 0;
  for (int n = 1;; n += n < 20 ? 1 : 331) {  // of thousands, few are of a kind of their own
    const Array array = make();
    const std::string before = ShowArray(array.get());
    bool hasThrown = false;
    FailAllocation(n);
    try {
      operation(array.get());
    } catch (const std::bad_alloc&) {
      hasThrown = true;
    }
    if (!AllocationFailed()) return thrown;
    if (!hasThrown) continue;
    ++thrown;
    EXPECT_EQ(ShowArray(array.get()), before);
    EXPECT_EQ(ZrSafeArrayUnlock(array.get()), ZR_R_INVALID_OBJECT_STATE) << "the flag is free";
  }
}

// Copying those ends the process.
static void ClearArrays(ZRSAFEARRAY variants) {
  const Content content = ContentOf(variants);
  auto* elements = static_cast<ZRVARIANT*>(static_cast<void*>(content.data));
  for (ZRVARIANT* element = elements; element < elements + content.count; ++element) {
    const ZRVARIANT* inner = element;
    while (inner->Type == (ZR_VT_VARIANT | ZR_VT_BYREF) && inner->Value.address != nullptr) {
      inner = static_cast<const ZRVARIANT*>(inner->Value.address);
    }
    if ((inner->Type & ZR_VT_ARRAY) != 0) (void)ZrVariantClear(element);
  }
}

// A change of shape or type happens or doesn't. What a put is to replace goes first, so here it is nothing.
TEST(ExhaustedMemory, ArraysThrowAndAreAsBefore) {
  Samples samples;
  const ZrSafeArrayBound bounds[] = {{2, 1}, {400, -1}}, none = {0, 0}, one = {1, 0};
  for (const auto& [source, width] : kElementTypes) {
    SCOPED_TRACE(source);
    const uint16_t tag = source;
    const auto make = [&] {
      Array array = samples.Make(tag);
      if (tag == ZR_VT_VARIANT) ClearArrays(array.get());
      return array;
    };
    EXPECT_GE(ExhaustArray(make, [&](ZRSAFEARRAY array) { (void)ZrSafeArrayRedim(array, 2, bounds); }), 2);
    for (const int target : {ZR_VT_R8, ZR_VT_VARIANT, ZR_VT_UUID, ZR_VT_REF, ZR_VT_SREF}) {
      const auto to = static_cast<uint16_t>(target);
      EXPECT_GE(ExhaustArray(make, [&](ZRSAFEARRAY array) { (void)ZrSafeArrayChangeType(array, 0, to); }), 2) << target;
    }

    const Array values = make();
    const Content content = ContentOf(values.get());
    int puts = 0, gets = 0;
    for (uint32_t index = 0, last = 0; index < content.count; ++index) {
      const char* value = content.data + index * width;
      uint16_t tagWord = 0;  // of a variant
      std::memcpy(&tagWord, value, sizeof tagWord < width ? sizeof tagWord : width);
      if (tag == ZR_VT_VARIANT && std::exchange(last, tagWord) == tagWord) continue;
      const uint32_t zero = 0;
      puts += ExhaustArray(
          [&] {
            return MakeArray(tag, {{1, 0}});
          },
          [&](ZRSAFEARRAY array) {
            try {
              (void)ZrSafeArrayPutElement(array, &zero, value);
            } catch (const std::bad_alloc&) {  // of a variant the tag remains
              if (tag == ZR_VT_VARIANT)
                *static_cast<ZRVARIANT*>(static_cast<void*>(ContentOf(array).data)) = ZR_VARIANT_INIT;
              throw;
            }
          });
      const Array variable = MakeArray(tag, {{1, 0}});
      const auto fresh = [&] {
        Array array = MakeArray(tag, {{1, 0}});
        (void)ZrSafeArrayPutElement(array.get(), &zero, value);
        (void)ZrSafeArrayRedim(variable.get(), 1, &none);
        (void)ZrSafeArrayRedim(variable.get(), 1, &one);
        return array;
      };
      gets += ExhaustArray(
          fresh, [&](ZRSAFEARRAY array) { (void)ZrSafeArrayGetElement(array, &zero, ContentOf(variable.get()).data); });
    }
    const bool isCopied = tag == ZR_VT_BLOB || tag == ZR_VT_REF || tag == ZR_VT_SREF || tag == ZR_VT_VARIANT;
    EXPECT_EQ(puts > 0, isCopied);
    EXPECT_EQ(gets > 0, isCopied);
  }
}

TEST(ExhaustedMemory, NewArraysThrowOrEndTheProcess) {
  const ZrSafeArrayBound bounds[] = {{2, 0}, {3, 0}};
  const Array array = MakeArray(ZR_VT_VARIANT, {{2, 0}});
  const std::function<void()> kMakers[] = {
      [&] { (void)ZrSafeArrayDestroy(ZrSafeArrayCreate(ZR_VT_VARIANT, 2, bounds)); },
      [&] { (void)CopyOf(array.get()); },
  };
  for (const auto& make : kMakers) {
    for (int n = 1; n <= 6; ++n) {
      const auto fail = [&] {
        FailAllocation(n);
        make();
        EXPECT_FALSE(AllocationFailed()) << n;
      };
      if (n == 1) {
        EXPECT_THROW(fail(), std::bad_alloc);
      } else if (n <= 5) {
        EXPECT_DEATH(fail(), "");
      } else {
        fail();
      }
    }
  }
}
