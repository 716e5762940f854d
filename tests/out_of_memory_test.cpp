// Tests every operation that allocates when memory runs out. The n-th allocation of an operation fails, for n = 1, 2, 3
// ... until the operation succeeds. After each failure the result must be the code of the contract, nothing may leak
// (the address sanitizer checks this) and all objects must stay usable.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "runtime/heap.h"
#include "tests/support/array_samples.h"
#include "tests/support/failing_heap.h"
#include "tests/support/fake_discovery.h"
#include "text/real_text.h"

// Results for an operation that throws std::bad_alloc, and for one that returns null instead of a new object.
static constexpr ZRRESULT kThrows = 1, kNull = ZR_R_NO_MEMORY;
static ZRRESULT ResultOf(const void* made) { return made != nullptr ? ZR_R_OK : kNull; }

// An operation and its result if one of the first `failures` allocations fails. The failure of any of the next `deaths`
// allocations terminates the process.
struct Operation {
  ZRRESULT onFailure;
  std::string call;
  std::function<ZRRESULT()> run;
  int failures = 1, deaths = 0;
};
#define RUN(...) #__VA_ARGS__, [&] { return __VA_ARGS__; }

using Action = std::function<void()>;
using Memory = std::unique_ptr<void, void (*)(void*)>;

static void Nothing() {}

static std::string OutcomeName(ZRRESULT result) { return result == kThrows ? "std::bad_alloc" : ResultName(result); }

// Fails each allocation of an operation in turn. Runs `prepare` before each attempt and `check` after each failure.
// Returns the number of allocations that the operation needs.
static int FailEachAllocation(const Operation& operation, const Action& check = Nothing,
                              const Action& prepare = Nothing) {
  for (int n = 1;; ++n) {
    SCOPED_TRACE(testing::Message() << operation.call << " while allocation " << n << " fails");
    prepare();
    ZRRESULT result = kThrows;
    const auto attempt = [&] {
      FailAllocation(n);
      result = operation.run();
    };
    if (operation.failures < n && n <= operation.failures + operation.deaths) {
      EXPECT_DEATH(attempt(), "");
      continue;
    }
    try {
      attempt();
    } catch (const std::bad_alloc&) {
    }
    if (!AllocationFailed()) return n - 1;
    if (result != operation.onFailure) {
      ADD_FAILURE() << "returned or threw " << OutcomeName(result) << "\n        expected "
                    << OutcomeName(operation.onFailure);
    }
    check();
  }
}

// Expect an operation to need exactly, or at least, a number of allocations.
static void ExpectAllocations(const Operation& operation, const Action& check = Nothing,
                              const Action& prepare = Nothing) {
  const int needed = FailEachAllocation(operation, check, prepare);
  EXPECT_EQ(needed, operation.failures + operation.deaths) << "allocations needed by " << operation.call;
}
static void ExpectAtLeast(int least, const Operation& operation, const Action& check = Nothing,
                          const Action& prepare = Nothing) {
  EXPECT_GE(FailEachAllocation(operation, check, prepare), least) << "allocations needed by " << operation.call;
}

TEST(OutOfMemory, FailedOperationsReturnNothingAndLeakNothing) {
  const Owned text(Units(W("text"))), numbers(Units(W("1.2.3.4.5.6")));
  const ZRDATETIMESTRUCT record = {2012, 3, 0, 4, 5, 6, 7, 0, 0, 0};
  const ZRUUID id = {1, 2, 3, {4}};
  const char32_t point = U'a';
  ZRREF value = {{1, 2, 3, 4, 5, 6}};
  const ZRSREF both = {&value, text};
  ZRCRITICALSECTION lock = nullptr;
  char *bytes = nullptr, *block = static_cast<char*>(ZrCreateMemory(1));
  *block = 'x';
  OwnedVariant owner;
  ZRVARIANTVALUE& out = owner.Value;
  const auto string = [&] { return out.string = text, &out.string; };  // not null before the call, but null after it
  const auto copy = [&] { return out.string = ZrCopyString(text), &out.string; };
  const auto convert = [&] {
    (void)ZrUTF32toUTF8(&point, &point + 1, 0, &bytes);
    return ResultOf(Memory(std::exchange(bytes, nullptr), std::free).get());
  };
  const struct {
    uint16_t tag;
    Operation operation;
  } kRows[] = {
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrCreateString(W("a"))))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrCreateStringLen(W("a"), 3)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrCreateStringByteLen("abc", 3)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrDeepCopyString(text)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrDeepCopyString(nullptr)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrAppendStrings(text, text)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrDateTimeStructToDateString(&record)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrDateTimeStructToDateTimeString(&record, 1)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrDateTimeStructToTimeString(&record)))}},
      {ZR_VT_STR, {kNull, RUN(ResultOf(out.string = ZrTimeSpanToTimeSpanString(1)))}},
      {ZR_VT_STR, {kNull, RUN(ZrStringFromUUID(&id, string()))}},
      {ZR_VT_STR, {kNull, RUN(ZrCreateZRSTRfromWCHAR(W("a"), 2, string()))}},
      {ZR_VT_STR, {kNull, RUN(ZrCreateZRSTRfromUTF8("a", 1, string()))}},
      {ZR_VT_STR, {kNull, RUN(ZrUTF8toZRSTR("\x80", 1, string()))}},
      {ZR_VT_STR, {kNull, RUN(ZrCreateZRSTRfromUTF32(&point, 1, string()))}},
      {ZR_VT_STR, {kNull, RUN(ZrReCreateString(copy(), W("a")) ? ZR_R_OK : kNull)}},
      {ZR_VT_STR, {kNull, RUN(ZrReCreateStringLen(copy(), W("a"), 1) ? ZR_R_OK : kNull)}},
      {ZR_VT_STR, {kNull, RUN(ZrSREFToString(&both, string()), ResultOf(out.string))}},  // its own result is ZR_R_OK
      {ZR_VT_EMPTY, {kNull, RUN(ResultOf(Memory(ZrCreateMemory(1), ZrDestroyMemory).get()))}},
      {ZR_VT_REF, {kThrows, RUN(ResultOf(out.ref = ZrCreateREF()))}},
      {ZR_VT_REF, {kThrows, RUN(ZrCopyREF(&value, &out.ref))}},
      {ZR_VT_REF, {kThrows, RUN(ZrStringToREF(numbers, &out.ref))}},
      {ZR_VT_SREF, {kThrows, RUN(ResultOf(out.sref = ZrCreateSREF()))}},
      {ZR_VT_SREF, {kThrows, RUN(ZrCopySREF(&both, &out.sref)), 2}},
      {ZR_VT_SREF, {kThrows, RUN(ZrStringToSREF(numbers, &out.sref)), 2}},
      {ZR_VT_SREF, {kThrows, RUN(ZrStringToSREF(text, &out.sref))}},
      {ZR_VT_UUID, {kThrows, RUN(ResultOf(out.uuid = ZrCreateUUID()))}},
      {ZR_VT_UUID, {kThrows, RUN(ResultOf(out.uuid = ZrGenerateUUID()))}},
      {ZR_VT_UUID, {kThrows, RUN(ZrCopyUUID(&id, &out.uuid))}},
      {ZR_VT_EMPTY, {kThrows, RUN(ZrInitializeCriticalSection(&lock), ZrDeleteCriticalSection(&lock))}},
      {ZR_VT_EMPTY, {kThrows, RUN(convert())}},
  };
  const auto check = [&] { EXPECT_FALSE(out.address || lock || bytes); };
  for (const auto& row : kRows) {
    owner = OwnedVariant();
    owner.Type = row.tag;
    ExpectAllocations(row.operation, check);
    EXPECT_EQ(out.address != nullptr, row.tag != ZR_VT_EMPTY) << row.operation.call;
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  const auto recreate = [&] {
    void* moved = ZrRecreateMemory(block, 2);
    if (moved != nullptr) block = static_cast<char*>(moved);
    return ResultOf(moved);
  };
  ExpectAllocations({kNull, RUN(recreate())}, [&] { EXPECT_EQ(*block, 'x'); });
  ZrDestroyMemory(block);
}

// Each code needs two strings and an entry. The next call completes what a failure interrupted.
TEST(OutOfMemory, ErrorRegistryThrowsAndStaysUsable) {
  ZRSTR text = nullptr;
  ExpectAtLeast(3, {kThrows, RUN(ZrErrorInfoGetText(0xCA, &text))});
  EXPECT_EQ(ContentOf(Owned(text)), W("ZR_R_SAME_VALUE"));
  ExpectAllocations({kThrows, RUN(ZrErrorInfoRegister(0x1234, W("text"), W("description"))), 3});
  EXPECT_RESULT(ZrErrorInfoRegister(0x1234, W("text"), W("description")), ZR_R_ALREADY_REGISTERED);
}

// Allocations of handles, element objects and larger buffers throw. Allocations inside a new element object terminate
// the process.
TEST(OutOfMemory, BlobsAndNewArraysThrowOrTerminate) {
  const std::string bytes(1000, 'x');
  const ZrSafeArrayBound bounds[] = {{2, 0}, {3, 0}};
  const Array array = MakeArray(ZR_VT_VARIANT, {{2, 0}});
  ZRBLOB blob = ZrCreateBlob(1000, bytes.data()), copy = ZrCopyBlob(blob);
  const auto show = [](ZRBLOB of) {
    uint32_t position = 0;
    (void)ZrBlobPosition(of, &position);
    return BytesOf(of) + std::to_string(position);
  };
  const Operation kOperations[] = {
      {kThrows, RUN(ZrDestroyBlob(ZrCreateBlob(1, "x"))), 2, 2},
      {kThrows, RUN(ZrDestroyBlob(ZrCopyBlob(blob))), 2},
      {kThrows, RUN(ZrWriteBlob(copy, bytes.data(), 1)), 1, 2},
      {kThrows, RUN(ZrWriteBlob(copy, bytes.data(), 1000))},  // no longer shared, so only the buffer grows
      {kThrows, RUN(ZrInsertBlob(copy, 0, bytes.data(), 1000))},
      {kThrows, RUN(ZrAppendBlobData(copy, bytes.data(), 1000))},
      {kThrows, RUN(ZrAppendBlob(copy, copy))},
      {kThrows, RUN(ZrSafeArrayDestroy(ZrSafeArrayCreate(ZR_VT_VARIANT, 2, bounds))), 1, 1},
      {kThrows, RUN(CopyOf(array.get()) ? ZR_R_OK : ZR_R_FAILED), 1, 1},
  };
  for (const Operation& operation : kOperations) {
    const std::string before = show(copy);
    ExpectAllocations(operation, [&] { EXPECT_EQ(show(copy), before); });
  }
  EXPECT_EQ(show(blob), bytes + "1000");
  (void)ZrDestroyBlob(blob);
  (void)ZrDestroyBlob(copy);
}

// What failed allocations do to a copy or a conversion of a variant. In place, the value is restored. After ZR_R_OK the
// destination is a null string.
struct AllocationFailures {
  ZRRESULT onFailure = kThrows;
  int failures = 0, deaths = 0;
};
static constexpr AllocationFailures kThrowsOnce{kThrows, 1}, kThrowsTwice{kThrows, 2}, kTerminates{kThrows, 2, 2},
    kReturnsNullText{ZR_R_OK, 1}, kReturnsNoMemory{ZR_R_NO_MEMORY, 1};

struct VariantRow {
  const char* source;
  AllocationFailures copy{}, copyInd{}, copyIndOfNull{}, toR8{}, toUuid{}, toRef{}, toSref{}, toBlob{}, toStr{};
};
// clang-format off
static constexpr VariantRow kVariantRows[] = {
    {.source = "UUID {00000000-0000-0000-0000-000000000001}",
     .copy = kThrowsOnce, .copyInd = kThrowsOnce, .copyIndOfNull = kThrowsOnce, .toUuid = kThrowsOnce,
     .toBlob = kTerminates, .toStr = kReturnsNoMemory},
    {.source = "REF 1.2.3.4.5.6",
     .copy = kThrowsOnce, .copyInd = kThrowsOnce, .copyIndOfNull = kThrowsOnce, .toRef = kThrowsOnce,
     .toSref = kThrowsTwice, .toBlob = kTerminates, .toStr = kReturnsNullText},
    {.source = "SREF 1.2.3.4.5.6 text name",
     .copy = kThrowsTwice, .copyInd = kThrowsTwice, .copyIndOfNull = kThrowsOnce, .toRef = kThrowsOnce,
     .toSref = kThrowsTwice, .toBlob = kTerminates, .toStr = kReturnsNullText},
    {.source = "SREF text 1.2.3.4.5.6",
     .copy = kThrowsOnce, .copyInd = kThrowsOnce, .copyIndOfNull = kThrowsOnce, .toRef = kThrowsOnce,
     .toSref = kThrowsOnce, .toBlob = kTerminates},
    {.source = "BLOB 0102",
     .copy = kThrowsTwice, .copyInd = kThrowsTwice, .toUuid = kThrowsOnce, .toBlob = kThrowsTwice,
     .toStr = kReturnsNullText},
    {.source = "STR 1.2.3.4.5.6", .toRef = kThrowsOnce, .toSref = kThrowsTwice, .toBlob = kTerminates},
    {.source = "STR 01234567-89ab-cdef-0123-456789abcdef",
     .toR8 = kThrowsTwice, .toUuid = kThrowsOnce, .toSref = kThrowsOnce, .toBlob = kTerminates},
    {.source = "I4 5", .toBlob = kTerminates, .toStr = kReturnsNullText},
    {.source = "R8 1.5", .toBlob = kTerminates, .toStr = kReturnsNullText},
    {.source = "DATETIME 1", .toBlob = kTerminates, .toStr = kReturnsNullText},
    {.source = "CHAR32 65", .toBlob = kTerminates, .toStr = kReturnsNoMemory},
};
// clang-format on

TEST(OutOfMemory, VariantsThrowOrTheirTextIsNull) {
  enum : uint16_t { kCopy = 0x100, kCopyInd, kCopyIndOfNull };
  static constexpr struct {
    uint16_t target;
    const char* call;
    AllocationFailures VariantRow::*failures;
  } kOperations[] = {
      {kCopy, "ZrVariantCopy", &VariantRow::copy},
      {kCopyInd, "ZrVariantCopyInd", &VariantRow::copyInd},
      {kCopyIndOfNull, "ZrVariantCopyInd of a null address", &VariantRow::copyIndOfNull},
      {ZR_VT_R8, "to ZR_VT_R8", &VariantRow::toR8},
      {ZR_VT_UUID, "to ZR_VT_UUID", &VariantRow::toUuid},
      {ZR_VT_REF, "to ZR_VT_REF", &VariantRow::toRef},
      {ZR_VT_SREF, "to ZR_VT_SREF", &VariantRow::toSref},
      {ZR_VT_BLOB, "to ZR_VT_BLOB", &VariantRow::toBlob},
      {ZR_VT_STR, "to ZR_VT_STR", &VariantRow::toStr},
  };
  for (const VariantRow& row : kVariantRows) {
    const std::string before = Describe(Value(row.source)), name = before.substr(0, before.find(' '));
    for (std::size_t at = 0; at < 2 * std::size(kOperations); ++at) {
      const auto& [target, call, member] = kOperations[at / 2];
      const auto& [onFailure, failures, deaths] = row.*member;
      const bool isInPlace = at % 2 != 0, isCopy = target >= kCopy || target == Value(row.source).Type;
      if (isCopy && isInPlace) continue;
      OwnedVariant source, apart;
      ZRVARIANT& destination = isInPlace ? source : apart;
      const auto prepare = [&] {
        source = Value(row.source);
        apart = Before();
      };
      const auto run = [&, operation = target] {
        if (operation == kCopy) return ZrVariantCopy(&destination, &source);
        if (operation < kCopy) return ZrVariantChangeType(&destination, &source, 0, operation);
        const ZRVARIANT reference = operation == kCopyInd ? ByRef(source) : ByRef(source.Type, nullptr);
        return ZrVariantCopyInd(&destination, &reference);
      };
      const auto check = [&, onFailure = onFailure] {
        if (!isInPlace) {
          EXPECT_EQ(Describe(source), before);
        }
        const std::string restored = isInPlace ? before : "EMPTY";
        EXPECT_EQ(Describe(destination), isCopy ? name + " null" : onFailure == ZR_R_OK ? "STR null" : restored);
      };
      const std::string operation = before + ": " + call + (isInPlace ? " in place" : "");
      ExpectAllocations({onFailure, operation, run, failures, deaths}, check, prepare);
    }
  }
}

TEST(OutOfMemory, ComponentOperationsReturnTheirCodes) {
  ZrInitialize();
  FakeDiscovery discovery({{1, {}, {MakeObject, nullptr, nullptr}, Units(W("Name"))}, {2, ModulePath("nowhere")}});
  discovery.onCall = [](const std::string& operation) {
    if (operation == "AddRef") FailAllocation(0);  // a failure to read the configuration must not fail the addition
  };
  uint32_t cookie = 0;
  ExpectAtLeast(2, {ZR_R_UNEXPECTED, RUN(ZrAddComponentDiscovery(&discovery, &cookie))});
  discovery.onCall = nullptr;
  EXPECT_EQ(discovery.references, 1u);

  // The lookup, the binding to the assembly and the creation fail in turn, each with its own code. Class 2 has no
  // module file. A diagnostic message that cannot be built is lost and does not change the result.
  for (uint32_t number : {1u, 2u}) {
    const ZRUUID classId = ClassId(number);
    std::set<Result> results;
    bool hasFailed = true;
    for (int n = 1; hasFailed; ++n) {
      void* object = &object;
      FailAllocation(n);
      const ZRRESULT result = ZrCreateInstance(&classId, 0, &classId, 0, &object);
      hasFailed = AllocationFailed();
      SCOPED_TRACE(testing::Message() << "an object of class " << number << " while allocation " << n << " fails");
      EXPECT_EQ(object != nullptr, ZR_SUCCEEDED(result)) << "only a successful call may return an object";
      EXPECT_FALSE(number == 1 && hasFailed && ZR_SUCCEEDED(result)) << Result(result);
      results.insert(result);
    }
    const ZRRESULT last = number == 1 ? ZR_R_OK : ZR_R_FILE_NOT_FOUND;
    EXPECT_EQ(results, (std::set<Result>{ZR_R_REQUEST_ABORTED, ZR_R_UNEXPECTED, last}));
  }

  Owned name(Units(W("Name"))), learnt;
  ZRUUID classId = ClassId(1);
  const auto check = [&] { EXPECT_EQ(learnt, nullptr) << "a failed call must not return a string"; };
  ExpectAtLeast(1, {ZR_R_FAILED, RUN(ZrCLSIDFromClassName(name, &classId))});
  ExpectAtLeast(1, {ZR_R_FAILED, RUN(ZrClassNameFromCLSID(&classId, &learnt.string))}, check);

  // A discovery can be removed whichever allocation of a lookup failed. The failure may leave the class in the record
  // of the discovery but not in the registry.
  bool hasFailed = true;
  for (int n = 1; hasFailed; ++n) {
    FakeDiscovery leaving({{3, {}, {MakeObject, nullptr, nullptr}}});
    const uint32_t leavingCookie = leaving.Add();
    FailAllocation(n);
    (void)CreateObject(3);
    hasFailed = AllocationFailed();
    EXPECT_RESULT(ZrRemoveComponentDiscovery(leavingCookie), ZR_R_OK) << "after allocation " << n << " failed";
    EXPECT_EQ(leaving.references, 0u);
  }

  // Removal and shutdown need no memory.
  ExpectAllocations({ZR_R_UNEXPECTED, RUN(ZrRemoveComponentDiscovery(cookie)), 0});
  ExpectAllocations({ZR_R_UNEXPECTED, RUN(ZrUninitialize()), 0});
  EXPECT_EQ(discovery.references, 0u);
}

// A failed change of shape or type changes nothing. A put releases the old element first, so puts go to an array of
// nulls here.
TEST(OutOfMemory, ArraysThrowAndStayUnchanged) {
  const ZrSafeArrayBound bounds[] = {{2, 1}, {15, -1}};
  using Tags = std::initializer_list<uint16_t>;
  const uint32_t kFirst = 0;
  for (const uint16_t tag : Tags{ZR_VT_R8, ZR_VT_BLOB, ZR_VT_VARIANT, ZR_VT_STR, ZR_VT_REF, ZR_VT_SREF}) {
    SCOPED_TRACE("an array of " + TagWordName(tag));
    std::vector<OwnedVariant> values = ValuesOf(tag != ZR_VT_VARIANT ? tag : ZR_VT_SREF);
    const Array sample = ArrayOf(tag, values.data(), values.size());
    const std::string before = DescribeArray(CopyOf(sample.get()).get());
    Array array, other;
    const auto prepare = [&] {
      array = CopyOf(sample.get());
      other = MakeArray(tag, {{1, 0}});
    };
    const auto check = [&] {
      EXPECT_EQ(DescribeArray(array.get()), before);
      EXPECT_RESULT(ZrSafeArrayUnlock(array.get()), ZR_R_INVALID_OBJECT_STATE) << "the flag must be free";
    };
    ExpectAtLeast(2, {kThrows, RUN(ZrSafeArrayRedim(array.get(), 2, bounds))}, check, prepare);
    for (const uint16_t target : Tags{ZR_VT_R8, ZR_VT_VARIANT, ZR_VT_UUID, ZR_VT_REF, ZR_VT_SREF}) {
      SCOPED_TRACE("to " + TagWordName(target));
      ExpectAtLeast(1, {kThrows, RUN(ZrSafeArrayChangeType(array.get(), 0, target))}, check, prepare);
    }
    uint8_t equal = 9;
    ExpectAllocations({kThrows, RUN(ZrSafeArrayCompare(array.get(), sample.get(), &equal)), 0});
    int puts = 0, gets = 0;
    for (uint32_t index = 0; index < values.size() && tag != ZR_VT_VARIANT; ++index) {
      SCOPED_TRACE("element " + DescribeElements(tag, sample.get())[index]);
      const uint32_t place = index - 5;  // -5 is the lower bound of samples
      const auto first = [&] { return StorageOf(other.get()).data; };
      const auto element = [&] { return StorageOf(array.get()).data + index * WidthOf(tag); };
      puts +=
          FailEachAllocation({kThrows, RUN(ZrSafeArrayPutElement(other.get(), &kFirst, element()))}, check, prepare);
      gets += FailEachAllocation({kThrows, RUN(ZrSafeArrayGetElement(array.get(), &place, first()))}, check, prepare);
    }
    const bool isCopied = tag == ZR_VT_BLOB || tag == ZR_VT_REF || tag == ZR_VT_SREF;
    EXPECT_EQ(puts > 0, isCopied) << puts << " allocations by puts";
    EXPECT_EQ(gets > 0, isCopied) << gets << " allocations by gets";
  }
}

TEST(OutOfMemory, NewHandlerRunsBeforeAnAllocationFails) {
  static int calls = 0;
  std::set_new_handler([] { ++calls; });
  void* block = nullptr;
  for (const auto& allocate :
       {Action([&] { block = AllocateOrThrow(0); }), Action([&] { block = ReallocateOrThrow(block, 8); }),
        Action([&] { std::free(block), block = AllocateZeroedOrThrow(2, 4); })}) {
    calls = 0;
    FailAllocation(1);
    allocate();
    EXPECT_TRUE(AllocationFailed() && calls == 1 && block != nullptr);
  }
  std::free(block);
  std::set_new_handler(nullptr);
}

TEST(OutOfMemory, TextOfARealIsNull) {
  for (const double number : {1.5, 1e300}) {
    FailAllocation(1);
    EXPECT_EQ(NewFixedText(number), nullptr);
    EXPECT_TRUE(AllocationFailed());
  }
}

// Freed memory must not contain an identifier.
TEST(OutOfMemory, DestroyedUuidIsWiped) {
  static bool isWiped = false;
  ZRUUID* uuid = ZrGenerateUUID();
  g_onFree = [](const void* block) { isWiped = *static_cast<const ZRUUID*>(block) == ZRUUID{}; };
  ZrDestroyUUID(uuid);
  g_onFree = nullptr;
  EXPECT_TRUE(isWiped);
}
