// Every operation with its n-th allocation failing, for n = 1, 2, 3 … until none is left to fail. Each failure answers
// the contract's code, leaks nothing (the address sanitizer looks) and leaves everything usable.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "tests/support/array_samples.h"
#include "tests/support/failing_heap.h"
#include "tests/support/fake_discovery.h"

// What operations answer that have thrown std::bad_alloc, and those that answer what they made, or null.
static constexpr ZRRESULT kThrows = 1, kNull = ZR_R_NO_MEMORY;
static ZRRESULT Told(const void* made) { return made != nullptr ? ZR_R_OK : kNull; }

struct Operation {
  ZRRESULT onFailure;
  std::function<ZRRESULT()> run;
  int failures = 1, deaths = 0;  // so many allocations make it fail, so many behind them end the process
};
using Action = std::function<void()>;
using Memory = std::unique_ptr<void, void (*)(void*)>;

static void Nothing() {}

// Answers how many allocations had to succeed. `check` runs behind each failure, `prepare` ahead of each try.
static int Exhaust(const Operation& operation, const Action& check = Nothing, const Action& prepare = Nothing) {
  for (int n = 1;; ++n) {
    prepare();
    ZRRESULT result = kThrows;
    const auto attempt = [&] {
      FailAllocation(n);
      result = operation.run();
    };
    if (operation.failures < n && n <= operation.failures + operation.deaths) {
      EXPECT_DEATH(attempt(), "") << "allocation " << n;
      continue;
    }
    try {
      attempt();
    } catch (const std::bad_alloc&) {
    }
    if (!AllocationFailed()) return n - 1;
    EXPECT_RESULT(result, operation.onFailure) << "allocation " << n;
    check();
  }
}

TEST(ExhaustedMemory, NothingIsGivenAndNothingLost) {
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
  const auto string = [&] { return out.string = text, &out.string; };  // not null, but afterwards
  const auto copy = [&] { return out.string = ZrCopyString(text), &out.string; };
  const auto convert = [&] {
    (void)ZrUTF32toUTF8(&point, &point + 1, 0, &bytes);
    return Told(Memory(std::exchange(bytes, nullptr), std::free).get());
  };
  const struct {
    uint16_t tag;
    Operation operation;
  } kRows[] = {
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrCreateString(W("a"))); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrCreateStringLen(W("a"), 3)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrCreateStringByteLen("abc", 3)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrDeepCopyString(text)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrDeepCopyString(nullptr)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrAppendStrings(text, text)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrDateTimeStructToDateString(&record)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrDateTimeStructToDateTimeString(&record, 1)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrDateTimeStructToTimeString(&record)); }}},
      {ZR_VT_STR, {kNull, [&] { return Told(out.string = ZrTimeSpanToTimeSpanString(1)); }}},
      {ZR_VT_STR, {kNull, [&] { return ZrStringFromUUID(&id, string()); }}},
      {ZR_VT_STR, {kNull, [&] { return ZrCreateZRSTRfromWCHAR(W("a"), 2, string()); }}},
      {ZR_VT_STR, {kNull, [&] { return ZrCreateZRSTRfromUTF8("a", 1, string()); }}},
      {ZR_VT_STR, {kNull, [&] { return ZrUTF8toZRSTR("\x80", 1, string()); }}},
      {ZR_VT_STR, {kNull, [&] { return ZrCreateZRSTRfromUTF32(&point, 1, string()); }}},
      {ZR_VT_STR, {kNull, [&] { return ZrReCreateString(copy(), W("a")) ? ZR_R_OK : kNull; }}},
      {ZR_VT_STR, {kNull, [&] { return ZrReCreateStringLen(copy(), W("a"), 1) ? ZR_R_OK : kNull; }}},
      {ZR_VT_STR, {kNull, [&] { return ZrSREFToString(&both, string()), Told(out.string); }}},  // no code tells
      {ZR_VT_EMPTY, {kNull, [&] { return Told(Memory(ZrCreateMemory(1), ZrDestroyMemory).get()); }}},
      {ZR_VT_REF, {kThrows, [&] { return Told(out.ref = ZrCreateREF()); }}},
      {ZR_VT_REF, {kThrows, [&] { return ZrCopyREF(&value, &out.ref); }}},
      {ZR_VT_REF, {kThrows, [&] { return ZrStringToREF(numbers, &out.ref); }}},
      {ZR_VT_SREF, {kThrows, [&] { return Told(out.sref = ZrCreateSREF()); }}},
      {ZR_VT_SREF, {kThrows, [&] { return ZrCopySREF(&both, &out.sref); }, 2}},
      {ZR_VT_SREF, {kThrows, [&] { return ZrStringToSREF(numbers, &out.sref); }, 2}},
      {ZR_VT_SREF, {kThrows, [&] { return ZrStringToSREF(text, &out.sref); }}},
      {ZR_VT_UUID, {kThrows, [&] { return Told(out.uuid = ZrCreateUUID()); }}},
      {ZR_VT_UUID, {kThrows, [&] { return Told(out.uuid = ZrGenerateUUID()); }}},
      {ZR_VT_UUID, {kThrows, [&] { return ZrCopyUUID(&id, &out.uuid); }}},
      {ZR_VT_EMPTY, {kThrows, [&] { return ZrInitializeCriticalSection(&lock), ZrDeleteCriticalSection(&lock); }}},
      {ZR_VT_EMPTY, {kThrows, convert}},
  };
  const auto check = [&] { EXPECT_FALSE(out.address || lock || bytes); };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    owner = OwnedVariant();
    owner.Type = row.tag;
    EXPECT_EQ(Exhaust(row.operation, check), row.operation.failures);
    EXPECT_EQ(out.address != nullptr, row.tag != ZR_VT_EMPTY);
  }
  EXPECT_EQ(ZrStringRefCount(text), 1u);
  const auto recreate = [&] {
    void* moved = ZrRecreateMemory(block, 2);
    if (moved != nullptr) block = static_cast<char*>(moved);
    return Told(moved);
  };
  EXPECT_EQ(Exhaust({kNull, recreate}, [&] { EXPECT_EQ(*block, 'x'); }), 1);
  ZrDestroyMemory(block);
}

// Two strings and a row for each code; what the failure interrupts is finished by the next call.
TEST(ExhaustedMemory, TheErrorRegistryThrowsAndGoesOn) {
  ZRSTR text = nullptr;
  EXPECT_GE(Exhaust({kThrows, [&] { return ZrErrorInfoGetText(0xCA, &text); }}), 3);
  EXPECT_EQ(ContentOf(Owned(text)), W("ZR_R_SAME_VALUE"));
  EXPECT_EQ(Exhaust({kThrows, [&] { return ZrErrorInfoRegister(0x1234, W("text"), W("description")); }}), 3);
  EXPECT_RESULT(ZrErrorInfoRegister(0x1234, W("text"), W("description")), ZR_R_ALREADY_REGISTERED);
}

// Handles, elements and the growth of a buffer throw; the insides of a new one end the process.
TEST(ExhaustedMemory, BlobsAndNewArraysThrowOrEndTheProcess) {
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
      {kThrows, [&] { return ZrDestroyBlob(ZrCreateBlob(1, "x")); }, 2, 2},
      {kThrows, [&] { return ZrDestroyBlob(ZrCopyBlob(blob)); }, 2},
      {kThrows, [&] { return ZrWriteBlob(copy, bytes.data(), 1); }, 1, 2},
      {kThrows, [&] { return ZrWriteBlob(copy, bytes.data(), 1000); }},  // no longer shared: growth
      {kThrows, [&] { return ZrInsertBlob(copy, 0, bytes.data(), 1000); }},
      {kThrows, [&] { return ZrAppendBlobData(copy, bytes.data(), 1000); }},
      {kThrows, [&] { return ZrAppendBlob(copy, copy); }},
      {kThrows, [&] { return ZrSafeArrayDestroy(ZrSafeArrayCreate(ZR_VT_VARIANT, 2, bounds)); }, 1, 4},
      {kThrows, [&] { return CopyOf(array.get()) ? ZR_R_OK : ZR_R_FAILED; }, 1, 4},
  };
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(&operation - kOperations);
    const std::string before = show(copy);
    EXPECT_EQ(Exhaust(operation, [&] { EXPECT_EQ(show(copy), before); }), operation.failures + operation.deaths);
  }
  EXPECT_EQ(show(blob), bytes + "1000");
  (void)ZrDestroyBlob(blob);
  (void)ZrDestroyBlob(copy);
}

// Copies and conversions throw as often as the row tells for each; but a text becomes null, for two kinds with a code
// (n, c), and the insides of a new blob end the process (d). In place the value is back.
TEST(ExhaustedMemory, VariantsThrowOrTheirTextIsNull) {
  enum : uint16_t { kCopy = 0x100, kCopyBehind, kCopyBehindNull };
  static constexpr uint16_t kOperations[] = {kCopy,     kCopyBehind, kCopyBehindNull, ZR_VT_R8, ZR_VT_UUID,
                                             ZR_VT_REF, ZR_VT_SREF,  ZR_VT_BLOB,      ZR_VT_STR};
  const struct {
    const char *source, *outcomes;
  } kRows[] = {
      {"UUID {00000000-0000-0000-0000-000000000001}", "1110100dc"},
      {"REF 1.2.3.4.5.6", "1110012dn"},
      {"SREF 1.2.3.4.5.6 text name", "2210012dn"},
      {"SREF text 1.2.3.4.5.6", "1110011d0"},
      {"BLOB 0102", "22001002n"},
      {"STR 1.2.3.4.5.6", "0000012d0"},
      {"STR 01234567-89ab-cdef-0123-456789abcdef", "0002101d0"},
      {"I4 5", "0000000dn"},
      {"R8 1.5", "0000000dn"},
      {"DATETIME 1", "0000000dn"},
      {"CHAR32 65", "0000000dc"},
  };
  for (const auto& row : kRows) {
    const std::string before = Describe(Value(row.source)), name = before.substr(0, before.find(' '));
    for (std::size_t at = 0; at < 2 * std::size(kOperations); ++at) {
      const uint16_t operation = kOperations[at / 2];
      const bool isInPlace = at % 2 != 0, isCopy = operation >= kCopy || operation == Value(row.source).Type;
      const char outcome = row.outcomes[at / 2];
      if (isCopy && isInPlace) continue;
      SCOPED_TRACE(before + " to " + std::to_string(operation) + (isInPlace ? " in place" : ""));
      OwnedVariant source, apart;
      ZRVARIANT& destination = isInPlace ? source : apart;
      const auto prepare = [&] {
        source = Value(row.source);
        apart = Before();
      };
      const auto run = [&] {
        if (operation == kCopy) return ZrVariantCopy(&destination, &source);
        if (operation < kCopy) return ZrVariantChangeType(&destination, &source, 0, operation);
        const ZRVARIANT reference = operation == kCopyBehind ? ByRef(source) : ByRef(source.Type, nullptr);
        return ZrVariantCopyInd(&destination, &reference);
      };
      const auto check = [&] {
        EXPECT_TRUE(isInPlace || Describe(source) == before);
        const std::string restored = isInPlace ? before : "EMPTY";
        EXPECT_EQ(Describe(destination), isCopy ? name + " null" : outcome == 'n' ? "STR null" : restored);
      };
      const int failures = outcome == 'd' ? 2 : outcome > '9' ? 1 : outcome - '0', deaths = outcome == 'd' ? 2 : 0;
      const ZRRESULT onFailure = outcome == 'n' ? ZR_R_OK : outcome == 'c' ? ZR_R_NO_MEMORY : kThrows;
      EXPECT_EQ(Exhaust({onFailure, run, failures, deaths}, check, prepare), failures + deaths);
    }
  }
}

TEST(ExhaustedMemory, ComponentOperationsAnswerTheirCodes) {
  ZrInitialize();
  FakeDiscovery discovery({{1, {}, {MakeObject, nullptr, nullptr}, Units(W("Name"))}, {2, ModulePath("nowhere")}});
  discovery.onCall = [](const std::string& operation) {
    if (operation == "AddRef") FailAllocation(0);  // what is read behind it can't fail the addition
  };
  uint32_t cookie = 0;
  EXPECT_GE(Exhaust({ZR_R_UNEXPECTED, [&] { return ZrAddComponentDiscovery(&discovery, &cookie); }}), 2);
  discovery.onCall = nullptr;
  EXPECT_EQ(discovery.references, 1u);

  // The lookup, the binding and the creation fail in turn, each with its code; a module that isn't there fails alike.
  // (A diagnostic that can't be put together is lost and changes no result.)
  for (uint32_t number : {1u, 2u}) {
    const ZRUUID classId = ClassId(number);
    std::set<ZRRESULT> results;
    bool hasFailed = true;
    for (int n = 1; hasFailed; ++n) {
      void* object = &object;
      FailAllocation(n);
      const ZRRESULT result = ZrCreateInstance(&classId, 0, &classId, 0, &object);
      hasFailed = AllocationFailed();
      EXPECT_EQ(object != nullptr, ZR_SUCCEEDED(result)) << "no object is made and then lost";
      EXPECT_FALSE(number == 1 && hasFailed && ZR_SUCCEEDED(result));
      results.insert(result);
    }
    const ZRRESULT last = number == 1 ? ZR_R_OK : ZR_R_FILE_NOT_FOUND;
    EXPECT_EQ(results, (std::set<ZRRESULT>{ZR_R_REQUEST_ABORTED, ZR_R_UNEXPECTED, last}));
  }

  Owned name(Units(W("Name"))), learnt;
  ZRUUID classId = ClassId(1);
  const auto check = [&] { EXPECT_EQ(learnt, nullptr) << "no string is given and then lost"; };
  EXPECT_GE(Exhaust({ZR_R_FAILED, [&] { return ZrCLSIDFromClassName(name, &classId); }}), 1);
  EXPECT_GE(Exhaust({ZR_R_FAILED, [&] { return ZrClassNameFromCLSID(&classId, &learnt.string); }}, check), 1);
  EXPECT_EQ(Exhaust({ZR_R_UNEXPECTED, [&] { return ZrRemoveComponentDiscovery(cookie); }}), 0);
  EXPECT_EQ(Exhaust({ZR_R_UNEXPECTED, [&] { return ZrUninitialize(); }}), 0) << "the end needs no memory";
  EXPECT_EQ(discovery.references, 0u);
}

// A change of shape or type happens or doesn't. What a put is to replace goes first, so here it is nothing.
TEST(ExhaustedMemory, ArraysThrowAndAreAsBefore) {
  const ZrSafeArrayBound bounds[] = {{2, 1}, {15, -1}};
  using Tags = std::initializer_list<uint16_t>;
  const uint32_t kFirst = 0;
  for (const uint16_t tag : Tags{ZR_VT_R8, ZR_VT_BLOB, ZR_VT_VARIANT, ZR_VT_STR, ZR_VT_REF, ZR_VT_SREF}) {
    SCOPED_TRACE(NameOf(tag)->name);
    std::vector<OwnedVariant> values = ValuesOf(tag != ZR_VT_VARIANT ? tag : ZR_VT_SREF);
    const Array sample = ArrayOf(tag, values.data(), values.size());
    const std::string before = ShowArray(CopyOf(sample.get()).get());
    Array array, other;
    const auto prepare = [&] {
      array = CopyOf(sample.get());
      other = MakeArray(tag, {{1, 0}});
    };
    const auto check = [&] {
      EXPECT_EQ(ShowArray(array.get()), before);
      EXPECT_RESULT(ZrSafeArrayUnlock(array.get()), ZR_R_INVALID_OBJECT_STATE) << "the flag is free";
    };
    const auto redim = [&] { return ZrSafeArrayRedim(array.get(), 2, bounds); };
    EXPECT_GE(Exhaust({kThrows, redim}, check, prepare), 2);
    for (const uint16_t target : Tags{ZR_VT_R8, ZR_VT_VARIANT, ZR_VT_UUID, ZR_VT_REF, ZR_VT_SREF}) {
      const auto change = [&] { return ZrSafeArrayChangeType(array.get(), 0, target); };
      EXPECT_GE(Exhaust({kThrows, change}, check, prepare), 2) << target;
    }
    uint8_t equal = 9;
    EXPECT_EQ(Exhaust({kThrows, [&] { return ZrSafeArrayCompare(array.get(), sample.get(), &equal); }}), 0);
    int puts = 0, gets = 0;
    for (uint32_t index = 0; index < values.size() && tag != ZR_VT_VARIANT; ++index) {
      const auto element = [&](const Array& of) { return ContentOf(of.get()).data; };
      const auto put = [&] {
        return ZrSafeArrayPutElement(other.get(), &kFirst, element(array) + index * WidthOf(tag));
      };
      const uint32_t place = index - 5;  // the lower bound of samples
      const auto get = [&] { return ZrSafeArrayGetElement(array.get(), &place, element(other)); };
      puts += Exhaust({kThrows, put}, check, prepare);
      gets += Exhaust({kThrows, get}, check, prepare);
    }
    const bool isCopied = tag == ZR_VT_BLOB || tag == ZR_VT_REF || tag == ZR_VT_SREF;
    EXPECT_TRUE((puts > 0) == isCopied && (gets > 0) == isCopied);
  }
}
