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
#include "tests/support/fake_configuration.h"
#include "tests/support/fake_discovery.h"

// Runs `operation` until it succeeds; answers how many failures came before, each told by `onFailure` or, if that is
// ZR_R_NO_MEMORY, by std::bad_alloc too.
static int Exhaust(ZRRESULT onFailure, const std::function<ZRRESULT()>& operation) {
  for (int n = 1;; ++n) {
    ZRRESULT result = ZR_R_NO_MEMORY;
    FailAllocation(n);
    try {
      result = operation();
    } catch (const std::bad_alloc&) {
    }
    if (!AllocationFailed()) return n - 1;
    EXPECT_EQ(result, onFailure) << "allocation " << n;
    if (n > 100) return n;
  }
}

// For operations that answer what they made, or null.
static ZRRESULT NoMemoryIfNull(const void* made) { return made != nullptr ? ZR_R_OK : ZR_R_NO_MEMORY; }

TEST(ExhaustedMemory, StringsAreNull) {
  const Owned text(Units(W("text")));
  const uint32_t emptyCount = ZrStringRefCount(Owned(ZrCopyString(nullptr)));
  const ZRDATETIMESTRUCT record = {2012, 3, 0, 4, 5, 6, 7, 0, 0, 0}, odd = {-1, -1, 0, -1, -1, -1, -1, 0, 0, -1};
  const ZRUUID uuid = {};
  using Out = ZRSTR*;
  const std::function<ZRRESULT(Out)> kCreators[] = {
      [](Out out) { return NoMemoryIfNull(*out = ZrCreateString(W("a"))); },
      [](Out out) { return NoMemoryIfNull(*out = ZrCreateStringLen(W("a"), 3)); },
      [](Out out) { return NoMemoryIfNull(*out = ZrCreateStringByteLen("abc", 3)); },
      [&](Out out) { return NoMemoryIfNull(*out = ZrDeepCopyString(text)); },
      [](Out out) { return NoMemoryIfNull(*out = ZrDeepCopyString(nullptr)); },
      [&](Out out) { return NoMemoryIfNull(*out = ZrAppendStrings(text, text)); },
      [](Out out) { return NoMemoryIfNull(*out = ZrAppendStrings(nullptr, nullptr)); },
      [&](Out out) { return NoMemoryIfNull(*out = ZrDateTimeStructToDateString(&record)); },
      [&](Out out) { return NoMemoryIfNull(*out = ZrDateTimeStructToDateTimeString(&record, 1)); },
      [&](Out out) { return NoMemoryIfNull(*out = ZrDateTimeStructToTimeString(&record)); },
      [&](Out out) { return NoMemoryIfNull(*out = ZrDateTimeStructToTimeString(&odd)); },
      [](Out out) { return NoMemoryIfNull(*out = ZrTimeSpanToTimeSpanString(1)); },
      [](Out out) { return NoMemoryIfNull(*out = ZrTimeSpanToTimeSpanString(-1)); },
      [&](Out out) { return ZrStringFromUUID(&uuid, out); },
      [](Out out) { return ZrCreateZRSTRfromWCHAR(W("a"), 2, out); },
      [](Out out) { return ZrCreateZRSTRfromUTF8("a", 1, out); },
      [](Out out) { return ZrUTF8toZRSTR("\x80", 1, out); },
      [](Out out) { return ZrCreateZRSTRfromUTF32(U"a", 1, out); },
      [&](Out out) { return *out = ZrCopyString(text), ZrReCreateString(out, W("a")) ? ZR_R_OK : ZR_R_NO_MEMORY; },
      [&](Out out) {
        return *out = ZrCopyString(text), ZrReCreateStringLen(out, W("a"), 1) ? ZR_R_OK : ZR_R_NO_MEMORY;
      },
  };
  for (const auto& create : kCreators) {
    SCOPED_TRACE(&create - kCreators);
    const auto createOne = [&] {
      ZRSTR string = text;
      const ZRRESULT result = create(&string);
      EXPECT_EQ(string == nullptr, ZR_FAILED(result));
      ZrDestroyString(string);
      return result;
    };
    EXPECT_EQ(Exhaust(ZR_R_NO_MEMORY, createOne), 1);
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  EXPECT_EQ(ZrStringRefCount(Owned(ZrCopyString(nullptr))), emptyCount);
}

TEST(ExhaustedMemory, MemoryBlocksAreNullAndStay) {
  char* block = nullptr;
  EXPECT_EQ(Exhaust(ZR_R_NO_MEMORY, [&] { return NoMemoryIfNull(block = static_cast<char*>(ZrCreateMemory(1))); }), 1);
  *block = 'x';
  const auto recreate = [&] {
    auto* moved = static_cast<char*>(ZrRecreateMemory(block, 2));
    EXPECT_EQ(moved != nullptr ? *moved : *block, 'x') << "a failure leaves the old block";
    block = moved != nullptr ? moved : block;
    return NoMemoryIfNull(moved);
  };
  EXPECT_EQ(Exhaust(ZR_R_NO_MEMORY, recreate), 1);
  ZrDestroyMemory(block);
}

TEST(ExhaustedMemory, RecordsLocksAndBuffersThrow) {
  const Owned numbers(Units(W("1.2.3.4.5.6"))), words(Units(W("words")));
  ZRREF value = {{1, 2, 3, 4, 5, 6}};
  const ZRSREF both = {&value, words};
  const ZRUUID id = {1, 2, 3, {4}};
  const char32_t point = U'a';
  ZRREF* ref = nullptr;
  ZRSREF* sref = nullptr;
  ZRUUID* uuid = nullptr;
  ZRCRITICALSECTION lock = nullptr;
  char* bytes = nullptr;
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
      {1, [&] { uuid = ZrCreateUUID(); }},
      {1, [&] { uuid = ZrGenerateUUID(); }},
      {1, [&] { (void)ZrCopyUUID(&id, &uuid); }},
      {1, [&] { (void)ZrInitializeCriticalSection(&lock); }},
      {1, [&] { (void)ZrUTF32toUTF8(&point, &point + 1, 0, &bytes); }},
  };
  for (const auto& maker : kMakers) {
    SCOPED_TRACE(&maker - kMakers);
    const auto make = [&] {
      EXPECT_FALSE(ref || sref || uuid || lock || bytes) << "out-values are unchanged";
      maker.make();
      return ZR_R_OK;
    };
    EXPECT_EQ(Exhaust(ZR_R_NO_MEMORY, make), maker.allocations);
    ZrDestroyREF(std::exchange(ref, nullptr));
    ZrDestroySREF(std::exchange(sref, nullptr));
    ZrDestroyUUID(std::exchange(uuid, nullptr));
    if (lock != nullptr) (void)ZrDeleteCriticalSection(&lock);
    std::free(std::exchange(bytes, nullptr));
  }
  EXPECT_EQ(ZrStringRefCount(words), 1u);
  const auto write = [&] {
    ZRSTR string = words;
    EXPECT_EQ(ZrSREFToString(&both, &string), ZR_R_OK) << "no code tells";
    return NoMemoryIfNull(Owned(string));
  };
  EXPECT_EQ(Exhaust(ZR_R_NO_MEMORY, write), 1);
}

// Two strings and a row for each code; what the failure interrupts is finished by the next call.
TEST(ExhaustedMemory, TheErrorRegistryThrowsAndGoesOn) {
  ZRSTR text = nullptr;
  EXPECT_GE(Exhaust(ZR_R_NO_MEMORY, [&] { return ZrErrorInfoGetText(0xCA, &text); }), 3);
  EXPECT_EQ(ContentOf(Owned(text)), W("ZR_R_SAME_VALUE"));
  EXPECT_EQ(Exhaust(ZR_R_NO_MEMORY, [&] { return ZrErrorInfoRegister(0x1234, W("text"), W("description")); }), 3);
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

// Copies and conversions throw, but a text becomes null, for two kinds with a code. In place the value is back.
TEST(ExhaustedMemory, VariantsThrowOrTheirTextIsNull) {
  enum : uint16_t { kCopy = 0x100, kCopyBehind, kCopyBehindNull };
  static constexpr ZRRESULT kThrows = 1;
  const struct {
    const char* source;
    uint16_t operation;  // a copy, or the target of a conversion
    int failures;
    ZRRESULT onFailure = kThrows;
    bool goesOn = false;  // with failures that end the process
  } kRows[] = {
      {"UUID {00000000-0000-0000-0000-000000000001}", kCopy, 1},
      {"REF 1.2.3.4.5.6", kCopy, 1},
      {"SREF 1.2.3.4.5.6 text name", kCopy, 2},
      {"SREF neither", kCopy, 0},
      {"BLOB 0102", kCopy, 2},
      {"STR null", kCopy, 0},
      {"SREF 1.2.3.4.5.6", kCopyBehind, 2},
      {"BLOB 0102", kCopyBehind, 2},
      {"UUID null", kCopyBehindNull, 1},
      {"STR null", kCopyBehindNull, 0},
      {"REF null", kCopyBehindNull, 1},
      {"SREF null", kCopyBehindNull, 1},
      {"I4 5", ZR_VT_R8, 0},
      {"STR 1.5f", ZR_VT_R8, 0},
      {"STR 0000000000000000000000x", ZR_VT_R8, 1},
      {"STR 01234567-89ab-cdef-0123-456789abcdef", ZR_VT_UUID, 1},
      {"BLOB 0102", ZR_VT_UUID, 1},
      {"STR 1.2.3.4.5.6", ZR_VT_REF, 1},
      {"SREF text 1.2.3.4.5.6", ZR_VT_REF, 1},
      {"STR 1.2.3.4.5.6", ZR_VT_SREF, 2},
      {"STR name", ZR_VT_SREF, 1},
      {"REF 1.2.3.4.5.6", ZR_VT_SREF, 2},
      {"I4 5", ZR_VT_BLOB, 2, kThrows, true},
      {"REF 1.2.3.4.5.6", ZR_VT_BLOB, 2, kThrows, true},
      {"I4 5", ZR_VT_STR, 1, ZR_R_OK},
      {"R8 1.5", ZR_VT_STR, 1, ZR_R_OK},
      {"DATETIME 1", ZR_VT_STR, 1, ZR_R_OK},
      {"BLOB 0102", ZR_VT_STR, 1, ZR_R_OK},
      {"REF 1.2.3.4.5.6", ZR_VT_STR, 1, ZR_R_OK},
      {"UUID {00000000-0000-0000-0000-000000000001}", ZR_VT_STR, 1, ZR_R_NO_MEMORY},
      {"CHAR32 65", ZR_VT_STR, 1, ZR_R_NO_MEMORY},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.source) + " to " + std::to_string(row.operation));
    const auto run = [&](ZRVARIANT& destination, ZRVARIANT& source) {
      try {
        if (row.operation == kCopy) return ZrVariantCopy(&destination, &source);
        if (row.operation < kCopy) return ZrVariantChangeType(&destination, &source, 0, row.operation);
        const ZRVARIANT reference = row.operation == kCopyBehind ? ByRef(source) : ByRef(source.Type, nullptr);
        return ZrVariantCopyInd(&destination, &reference);
      } catch (const std::bad_alloc&) {
        return kThrows;
      }
    };
    const bool isCopy = row.operation >= kCopy;
    for (int n = 1; !row.goesOn || n <= row.failures; ++n) {
      OwnedVariant source = Value(row.source), apart = Value("STR before");
      const std::string before = Describe(source);
      FailAllocation(n);
      const ZRRESULT result = run(apart, source);
      if (!AllocationFailed()) {
        EXPECT_EQ(n, row.failures + 1);
        break;
      }
      EXPECT_EQ(result, row.onFailure) << "allocation " << n;
      const std::string name = isCopy ? before.substr(0, before.find(' ')) : "STR";
      EXPECT_EQ(Describe(apart), isCopy || result == ZR_R_OK ? name + " null" : "EMPTY");
      EXPECT_EQ(Describe(source), before);
      if (isCopy) continue;
      FailAllocation(n);
      EXPECT_EQ(run(source, source), row.onFailure);
      EXPECT_TRUE(AllocationFailed());
      EXPECT_EQ(Describe(source), result == ZR_R_OK ? "STR null" : before);
    }
  }
}

static ZRRESULT CreateByFunction(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  *object = object;
  return ZR_R_OK;
}

TEST(ExhaustedMemory, ComponentOperationsAnswerTheirCodes) {
  ZrInitialize();
  FakeDiscovery discovery({{1, {}, {CreateByFunction, nullptr, nullptr}, W("Name")}, {2, ModulePath("nowhere")}});
  discovery.onCall = [](const std::string& operation) {
    if (operation == "AddRef") FailAllocation(0);  // what is read behind it can't fail the addition
  };
  uint32_t cookie = 0;
  EXPECT_GE(Exhaust(ZR_R_UNEXPECTED, [&] { return ZrAddComponentDiscovery(&discovery, &cookie); }), 2);
  discovery.onCall = nullptr;
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
  EXPECT_GE(Exhaust(ZR_R_FAILED, [&] { return ZrCLSIDFromClassName(name, &classId); }), 1);
  ZRSTR learnt = nullptr;
  const auto learn = [&] {
    const ZRRESULT result = ZrClassNameFromCLSID(&classId, &learnt);
    EXPECT_EQ(learnt != nullptr, ZR_SUCCEEDED(result)) << "no string is given and then lost";
    return result;
  };
  EXPECT_GE(Exhaust(ZR_R_FAILED, learn), 1);
  ZrDestroyString(learnt);
  EXPECT_EQ(Exhaust(ZR_R_UNEXPECTED, [&] { return ZrRemoveComponentDiscovery(cookie); }), 0);
  EXPECT_EQ(Exhaust(ZR_R_UNEXPECTED, [&] { return ZrUninitialize(); }), 0) << "the end needs no memory";
  EXPECT_EQ(discovery.references, 0u);
}

TEST(ExhaustedMemory, WithoutANameNoConfigurationIsAskedFor) {
  for (const bool isOfValue : {false, true}) {
    FakeConfiguration configuration;
    configuration.values[Units()];  // what a null name would find
    int calls = 0;
    configuration.onCall = [&calls] {
      if (++calls == 1) FailAllocation(1);  // the section has been given: the first name is next
    };
    FakeDiscovery discovery;
    discovery.configure = [&](const ZRUUID&, ZRSTR name, IZrConfiguration** given) {
      EXPECT_TRUE(isOfValue && name != nullptr);
      *given = configuration.Given();
      return ZR_R_OK;
    };
    discovery.onCall = [isOfValue](const std::string& operation) {
      if (operation == "AddRef" && !isOfValue) FailAllocation(1);
    };
    ZrInitialize();
    uint32_t cookie = 0;
    EXPECT_EQ(ZrAddComponentDiscovery(&discovery, &cookie), ZR_R_OK);
    EXPECT_TRUE(AllocationFailed());
    EXPECT_EQ(calls, isOfValue ? 5 : 0) << "the section, two values, two releases";
    EXPECT_EQ(ZrRemoveComponentDiscovery(cookie), ZR_R_OK);
    ZrUninitialize();
  }
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
  for (const uint16_t tag : kElementTags) {
    SCOPED_TRACE(NameOf(tag)->name);
    const std::size_t width = WidthOf(tag);
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

    const Array values = make(), same = make();
    const Content content = ContentOf(values.get());
    uint8_t equal = 9;
    FailAllocation(1);
    EXPECT_EQ(ZrSafeArrayCompare(values.get(), same.get(), &equal), ZR_R_OK);
    EXPECT_FALSE(AllocationFailed()) << "a comparison needs no memory";
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
