// The values that debugger_test shows. Debuggers stop the program in Stop. Python loads the same code as a shared
// library.

#include <cstring>
#include <string>

#include "arrays/array_records.h"
#include "zr/zr.hpp"

// ---- Constants: a debugger can show them before the program runs ---------------------------------------------------

ZRRESULT results[] = {
#include "all_results.inc"  // written by the test
    7};
const struct {
  uint32_t refCount, byteLen;
  WCHAR units[6];
} block = {1, 12, u"a\0\"\n\xD83C"};  // in memory that core files of gdb leave out
const ZRSTR units = const_cast<ZRSTR>(block.units);
ZRSTR text = units, noText = nullptr;
ZRUUID uuids[] = {{0x01234567, 0x89AB, 0xCDEF, {1, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}}, {}};
ZRREF ref = {{1, 2, 3, 4, 5, 0xFFFFFFFF}};
ZRSREF sref = {&ref, nullptr};
ZRDATETIME first = 0, last = INT64_MAX;
ZRTIMESPAN brief = 1, back = -936610000000;
ZrSafeArrayBound bounds[] = {{2, 5}, {11, 0}};
ZRSTR texts[] = {units, nullptr};
double reals[22] = {0.5};
ZrSafeArrayDescriptor ofTexts = {1, 2, ZR_VT_STR, nullptr, texts, bounds},
                      ofUuids = {1, 2, ZR_VT_UUID, nullptr, uuids, bounds},
                      ofReals = {2, 22, ZR_VT_R8, nullptr, reals, bounds},
                      ofNothing = {1, 2, 14, nullptr, nullptr, bounds};
ZRSAFEARRAY array = &ofTexts, noArray = nullptr, grid = &ofReals, notAssigned = &ofNothing;
ZRVARIANT nothing = ZR_VARIANT_INIT, number = {ZR_VT_I4, 0, 0, 0, {.i4 = -5}},
          otherBits = {ZR_VT_STR | 0x1000, 0, 0, 0, {.string = units}}, wrong = {14, 0, 0, 0, {1}},
          arrayHolder = {ZR_VT_UUID | ZR_VT_ARRAY, 0, 0, 0, {.array = &ofUuids}},
          nullReference = {ZR_VT_STR | ZR_VT_BYREF, 0, 0, 0, {.address = nullptr}},
          nullArray = {ZR_VT_STR | ZR_VT_ARRAY, 0, 0, 0, {.array = nullptr}};

// ---- Types that stand for others -----------------------------------------------------------------------------------

using TextAlias = ZRSTR;
using ConstTextAlias = const TextAlias;
extern ConstTextAlias aliasOfText;  // or a compiler leaves it out
extern const ZRVARIANT constant;
ConstTextAlias aliasOfText = units;
struct tagZRVARIANT untyped = {ZR_VT_I2, 0, 0, 0, {.i2 = 7}};
const ZRVARIANT constant = {ZR_VT_I2, 0, 0, 0, {.i2 = 8}};
ZRVARIANT& reference = number;
const ZRVARIANT* pointer = &number;
ZRSTR* textPointer = &text;

// ---- Memory that can't be read, and records that lead back to themselves -------------------------------------------

void* const nowhere = reinterpret_cast<void*>(uintptr_t{0x10});
ZRSTR badText = static_cast<ZRSTR>(nowhere);
ZRBLOB badBlob = static_cast<ZRBLOB>(nowhere);
ZRSAFEARRAY badArray = static_cast<ZRSAFEARRAY>(nowhere);
ZRSREF badSref = {&ref, static_cast<ZRSTR>(nowhere)};
ZRVARIANT& unreadable = *reinterpret_cast<ZRVARIANT*>(badText);  // before the program runs it is null
ZRVARIANT badString = {ZR_VT_STR, 0, 0, 0, {.ui8 = 0x10}},
          badReference = {ZR_VT_I4 | ZR_VT_BYREF, 0, 0, 0, {.ui8 = 0x10}},
          badUuids = {ZR_VT_UUID | ZR_VT_ARRAY, 0, 0, 0, {.ui8 = 0x10}},
          loop = {ZR_VT_VARIANT | ZR_VT_BYREF, 0, 0, 0, {.address = &loop}}, ring, nested, longText;

// ---- Every tag, by value, by reference and in arrays of the library ------------------------------------------------

ZRVARIANT byValue[ZR_VT_LAST + 1], byReference[ZR_VT_LAST + 1], arrays[ZR_VT_LAST + 1],
    arraysByReference[ZR_VT_LAST + 1];

static ZRSAFEARRAY NewArray(uint16_t tag, const void* first, const void* second) {
  const ZrSafeArrayBound bound = {2, 5};
  const ZRSAFEARRAY made = ZrSafeArrayCreate(tag, 1, &bound);
  uint32_t index = 5;
  (void)ZrSafeArrayPutElement(made, &index, first);  // fails for ZR_VT_OPAQUE, whose arrays have no storage
  ++index;
  (void)ZrSafeArrayPutElement(made, &index, second);
  return made;
}

// `value` is a variable of the type, and `element` one that an array can copy.
template <class T>
static void Show(uint16_t tag, T content, const void* element = nullptr) {
  T* value = new T(content);  // a debugger reads it until the process ends
  byValue[tag].Type = tag;
  byValue[tag].Value.ui8 = 0xAAAAAAAAAAAAAAAA;  // what follows a narrow number has no meaning
  std::memcpy(&byValue[tag].Value, value, sizeof *value);
  byReference[tag] = {static_cast<uint16_t>(tag | ZR_VT_BYREF), 0, 0, 0, {.address = value}};
  arrays[tag] = {static_cast<uint16_t>(tag | ZR_VT_ARRAY), 0, 0, 0, {}};
  if (element == nullptr) element = value;
  arrays[tag].Value.array = NewArray(tag, element, element);
  arraysByReference[tag] = {static_cast<uint16_t>(tag | ZR_VT_ARRAY | ZR_VT_BYREF), 0, 0, 0, {}};
  arraysByReference[tag].Value.address = &arrays[tag].Value.array;
}

static bool MakeValues() {
  void* const noObject = nullptr;  // an array would call AddRef of another
  Show<uint8_t>(ZR_VT_BOOL, 1);
  Show<int8_t>(ZR_VT_I1, -5);
  Show<int16_t>(ZR_VT_I2, -300);
  Show<int32_t>(ZR_VT_I4, -70000);
  Show<int64_t>(ZR_VT_I8, INT64_MIN);
  Show<uint8_t>(ZR_VT_UI1, UINT8_MAX);
  Show<uint16_t>(ZR_VT_UI2, UINT16_MAX);
  Show<uint32_t>(ZR_VT_UI4, UINT32_MAX);
  Show<uint64_t>(ZR_VT_UI8, UINT64_MAX);
  Show<float>(ZR_VT_R4, 0.1F);
  Show<double>(ZR_VT_R8, 23463.2);
  Show<int64_t>(ZR_VT_TIME, 36610000000);
  Show<ZRDATETIME>(ZR_VT_DATETIME, 132537600000000001);
  Show<ZRCY>(ZR_VT_CY, -7);
  Show<uint8_t>(ZR_VT_BYTE, 65);
  Show<uint16_t>(ZR_VT_WORD, 258);
  Show<uint32_t>(ZR_VT_DWORD, 65537);
  Show<uint64_t>(ZR_VT_QWORD, 1);
  Show<ZRBLOB>(ZR_VT_BLOB, ZrCreateBlob(3, "abc"));
  Show<void*>(ZR_VT_UNKNOWN, nowhere, &noObject);
  Show<uint64_t>(ZR_VT_OPAQUE, 0xFEDCBA9876543210);
  Show<uint32_t>(ZR_VT_CHAR32, 0x1F30D);
  Show<ZRUUID*>(ZR_VT_UUID, uuids, uuids);
  Show<ZRSTR>(ZR_VT_STR, ZrCreateString(u"Mars \u2642"));
  Show<ZRREF*>(ZR_VT_REF, &ref);
  Show<ZRSREF*>(ZR_VT_SREF, new ZRSREF{&ref, ZrCreateString(u"x")});
  Show<void*>(ZR_VT_DISPATCH, nowhere, &noObject);
  byReference[ZR_VT_VARIANT] = {ZR_VT_VARIANT | ZR_VT_BYREF, 0, 0, 0, {.address = &byReference[ZR_VT_STR]}};

  ZRSAFEARRAY pair = NewArray(ZR_VT_VARIANT, &arrays[ZR_VT_I4], &byValue[ZR_VT_STR]);
  nested = {ZR_VT_VARIANT | ZR_VT_ARRAY, 0, 0, 0, {.array = pair}};
  nested.Value.array = NewArray(ZR_VT_VARIANT, &nested, &byReference[ZR_VT_VARIANT]);
  ring = {ZR_VT_VARIANT | ZR_VT_ARRAY, 0, 0, 0, {.array = NewArray(ZR_VT_VARIANT, &nothing, &nothing)}};
  void* elements = nullptr;
  (void)ZrSafeArrayAccessData(ring.Value.array, &elements);
  std::memcpy(elements, &ring, sizeof ring);

  longText = {ZR_VT_STR, 0, 0, 0, {.string = ZrCreateString(std::u16string(5000, u'a').c_str())}};
  return true;
}
static const bool made = MakeValues();

// ---- The C++ layer -------------------------------------------------------------------------------------------------

zr::Variant layerVariant(zr::String(u"Phobos"));
zr::String layerString(u"Deimos"), layerNull = zr::String::Adopt(nullptr);
zr::Blob layerBlob = zr::Blob::Adopt(ZrCreateBlob(40, nullptr));
zr::Array<int32_t> layerArray = {3, 1};
zr::AnyArray layerAnyArray = zr::AnyArray::Adopt(NewArray(ZR_VT_UI1, "\1", "\2"));
zr::Uuid layerUuid(uuids[0]);
zr::Ref layerRef(6, 5, 4, 3, 2, 1);
zr::Sref layerSref;
zr::DateTime layerDateTime(ZRDATETIME{864000000000});
zr::TimeSpan layerTimeSpan = zr::TimeSpan::Hours(1);

// ---- Stopping ------------------------------------------------------------------------------------------------------

ZRVARIANT Returned() { return number; }  // a value without an address

extern "C" void Stop() {}

int main() {
  Stop();
  return Returned().Type != ZR_VT_I4;
}
