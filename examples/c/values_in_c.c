// The value functions of the library in C: strings, identifiers, variants, arrays, locks and counters. None of them
// needs ZrInitialize. Each line of output is a statement about the library that the program checks; the exit status is
// 1 if one of them is false. Every value that a function gives is destroyed again.

#include <stdio.h>
#include <zrcore/zrcore.h>

#include "code_units.h"

static int failures = 0;

static void Check(int isTrue, const char* statement) {
  printf("  %s  %s\n", isTrue ? "ok  " : "FAIL", statement);
  if (!isTrue) ++failures;
}

// Copies a string to 8-bit text, cut to `size` bytes. Only for ASCII, such as the text of an identifier: any other unit
// becomes a question mark.
static void ToAscii(ZRSTR string, char* text, size_t size) {
  size_t length = ZrStringLen(string);
  if (length >= size) length = size - 1;
  for (size_t i = 0; i < length; ++i) text[i] = string[i] < 0x80 ? (char)string[i] : '?';
  text[length] = '\0';
}

static void Strings(void) {
  puts("Strings");
  ZRSTR saturn = ZrCreateString(W("Saturn \u571F\u661F"));  // the last two units are the planet's Chinese name
  ZRSTR rings = ZrCreateStringLen(W(", rings"), 7);
  ZRSTR both = ZrAppendStrings(saturn, rings);
  Check(ZrStringLen(saturn) == 9 && ZrStringByteLen(saturn) == 18, "the length counts 16-bit units");
  Check(ZrStringLen(both) == 16, "appending two strings makes a new one");

  int32_t order = 1;
  Check(ZR_SUCCEEDED(ZrCompareStringW(both, W("Saturn \u571F\u661F, rings"), &order)) && order == 0,
        "the new string compares equal to the literal");
  Check(ZR_SUCCEEDED(ZrCompareString(saturn, rings, &order)) && order > 0, "\"Saturn\" comes after a comma");

  ZRSTR again = ZrCopyString(saturn);
  Check(again == saturn && ZrStringRefCount(saturn) == 2, "a copy is the same memory block with one more reference");
  ZrDestroyString(again);
  Check(ZrStringRefCount(saturn) == 1, "destroying the copy removes that reference");

  const WCHAR withZero[] = {W('a'), 0, W('b')};
  ZRSTR exact = ZrCreateStringByteLen(withZero, sizeof withZero);
  Check(ZrStringLen(exact) == 3 && exact[2] == W('b'), "a string may contain zero units");

  ZrDestroyString(exact);
  ZrDestroyString(both);
  ZrDestroyString(rings);
  ZrDestroyString(saturn);
}

static void Identifiers(void) {
  puts("Identifiers");
  ZRUUID* made = ZrGenerateUUID();
  ZRSTR text = NULL;
  Check(ZR_SUCCEEDED(ZrStringFromUUID(made, &text)) && ZrStringLen(text) == 38, "an identifier converts to text");

  char ascii[39];
  ToAscii(text, ascii, sizeof ascii);
  printf("        %s\n", ascii);
  ZRUUID read = {0};
  uint8_t equal = 0;
  Check(ZR_SUCCEEDED(ZrUUIDFromString(ascii, &read)) && ZR_SUCCEEDED(ZrCompareUUID(made, &read, &equal)) && equal,
        "the text converts back to the same identifier");
  Check(!ZRUUIDLess(made, &read) && !ZRUUIDGreater(made, &read), "neither identifier is less than the other");
  Check(ZR_FAILED(ZrUUIDFromString("{not an identifier}", &read)), "an invalid text is rejected");
  ZrDestroyString(text);
  ZrDestroyUUID(made);
}

static void Variants(void) {
  puts("Variants");
  ZRVARIANT text = ZR_VARIANT_INIT;
  ZRVARIANT number = ZR_VARIANT_INIT;
  text.Type = ZR_VT_STR;
  text.Value.string = ZrCreateString(W("95.16"));  // the variant owns the string: don't destroy it separately
  Check(ZR_SUCCEEDED(ZrVariantChangeType(&number, &text, 0, ZR_VT_R8)) && number.Value.r8 == 95.16,
        "a text converts to a number");
  Check(ZR_SUCCEEDED(ZrVariantChangeType(&number, &number, 0, ZR_VT_UI1)) && number.Value.ui1 == 95,
        "a variant can be converted in place, here to an 8-bit integer");

  ZRVARIANT copy = ZR_VARIANT_INIT;
  uint8_t equal = 0;
  Check(ZR_SUCCEEDED(ZrVariantCopy(&copy, &text)) && ZrStringRefCount(text.Value.string) == 2,
        "a copy shares the string");
  Check(ZR_SUCCEEDED(ZrVariantCompare(&copy, &text, &equal)) && equal, "the copy is equal");
  Check(ZR_SUCCEEDED(ZrVariantClear(&copy)) && ZrStringRefCount(text.Value.string) == 1,
        "clearing a variant releases its string");
  (void)ZrVariantClear(&text);
}

static void Arrays(void) {
  puts("Arrays");
  const ZrSafeArrayBound bounds[] = {{2, 1}, {3, 0}};  // rows 1 and 2, columns 0 to 2
  ZRSAFEARRAY array = ZrSafeArrayCreate(ZR_VT_I4, 2, bounds);
  const uint32_t indices[] = {2, 1};
  int32_t moons = 274;
  Check(ZR_SUCCEEDED(ZrSafeArrayPutElement(array, indices, &moons)), "an element is stored by its indices");

  void* data = NULL;
  Check(ZR_SUCCEEDED(ZrSafeArrayAccessData(array, &data)) && ((int32_t*)data)[4] == 274,
        "direct access finds it; the last dimension varies fastest");
  Check(ZrSafeArrayPutElement(array, indices, &moons) == ZR_R_INVALID_OBJECT_STATE,
        "while direct access holds the array's access flag, storing an element fails");
  (void)ZrSafeArrayUnaccessData(array);

  Check(ZrSafeArrayChangeType(array, 0, ZR_VT_STR) == ZR_R_OK, "one call converts all elements to texts");
  ZRSTR text = NULL;
  int32_t order = 1;
  Check(ZR_SUCCEEDED(ZrSafeArrayGetElement(array, indices, &text)) &&
            ZR_SUCCEEDED(ZrCompareStringW(text, W("274"), &order)) && order == 0,
        "reading an element gives a copy, which the caller destroys");
  ZrDestroyString(text);

  ZRVARIANT owner = ZR_VARIANT_INIT;
  owner.Type = ZR_VT_STR | ZR_VT_ARRAY;
  owner.Value.array = array;
  // `array` must not be used or destroyed after this: the variant owned it.
  Check(ZR_SUCCEEDED(ZrVariantClear(&owner)), "a variant that owns an array destroys it with its elements");
}

static void LocksAndCounters(void) {
  puts("Locks and counters");
  ZRCRITICALSECTION lock = NULL;
  uint8_t acquired = 0;
  Check(ZR_SUCCEEDED(ZrInitializeCriticalSection(&lock)) && ZR_SUCCEEDED(ZrEnterCriticalSection(&lock)),
        "a lock is initialised and entered");
  Check(ZR_SUCCEEDED(ZrTryEnterCriticalSection(&lock, &acquired)) && acquired == 1, "its owner may enter again");
  Check(ZR_SUCCEEDED(ZrLeaveCriticalSection(&lock)) && ZR_SUCCEEDED(ZrLeaveCriticalSection(&lock)),
        "the owner leaves once for each entry");
  Check(ZR_SUCCEEDED(ZrDeleteCriticalSection(&lock)) && lock == NULL, "deleting the lock sets the variable to null");
  Check(ZrEnterCriticalSection(&lock) == ZR_R_INVALID_OBJECT_STATE, "entering a deleted lock fails");

  int32_t count = 0;
  const int32_t hundred = 100;
  Check(ZrInterlockedIncrement32(&count) == 1 && ZrInterlockedDecrement32(&count) == 0,
        "increment and decrement return the new value");
  Check(ZrInterlockedExchange32(&count, &hundred) == 0 && count == 100, "exchange returns the old value");
}

int main(void) {
  Strings();
  Identifiers();
  Variants();
  Arrays();
  LocksAndCounters();
  if (failures == 0) {
    puts("All checks passed.");
    return 0;
  }
  printf("%d checks failed.\n", failures);
  return 1;
}
