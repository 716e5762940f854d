// The plain half of the library from C: strings, identifiers, variants, arrays, locks and counters. None of it
// needs ZrInitialize.

#include <stdio.h>
#include <zrcore/zrcore.h>

#include "code_units.h"

static int failures = 0;

// One line a claim; the program fails if one of them doesn't hold.
static void Claim(int holds, const char* claim) {
  printf("  %s  %s\n", holds ? "ok  " : "FAIL", claim);
  if (!holds) ++failures;
}

// The units as 8-bit text. Enough for what is ASCII, such as the text of an identifier.
static void ToAscii(ZRSTR string, char* text, size_t size) {
  size_t length = ZrStringLen(string);
  if (length >= size) length = size - 1;
  for (size_t i = 0; i < length; ++i) text[i] = string[i] < 0x80 ? (char)string[i] : '?';
  text[length] = '\0';
}

static void Strings(void) {
  puts("Strings");
  ZRSTR saturn = ZrCreateString(W("Saturn \u571F\u661F"));  // the last two units are the planet's name in Han
  ZRSTR rings = ZrCreateStringLen(W(", rings"), 7);
  ZRSTR both = ZrAppendStrings(saturn, rings);
  Claim(ZrStringLen(saturn) == 9 && ZrStringByteLen(saturn) == 18, "the length counts 16-bit units");
  Claim(ZrStringLen(both) == 16, "appending makes a new string of both");

  int32_t order = 1;
  Claim(ZR_SUCCEEDED(ZrCompareStringW(both, W("Saturn \u571F\u661F, rings"), &order)) && order == 0,
        "and it compares equal to the literal");
  Claim(ZR_SUCCEEDED(ZrCompareString(saturn, rings, &order)) && order > 0, "\"Saturn\" comes after a comma");

  ZRSTR again = ZrCopyString(saturn);
  Claim(again == saturn && ZrStringRefCount(saturn) == 2, "a copy is the same block with one more reference");
  ZrDestroyString(again);
  Claim(ZrStringRefCount(saturn) == 1, "which is given up again");

  const WCHAR withZero[] = {W('a'), 0, W('b')};
  ZRSTR exact = ZrCreateStringByteLen(withZero, sizeof withZero);
  Claim(ZrStringLen(exact) == 3 && exact[2] == W('b'), "a zero unit inside is a unit like any other");

  ZrDestroyString(exact);
  ZrDestroyString(both);
  ZrDestroyString(rings);
  ZrDestroyString(saturn);
}

static void Identifiers(void) {
  puts("Identifiers");
  ZRUUID* made = ZrGenerateUUID();
  ZRSTR text = NULL;
  Claim(ZR_SUCCEEDED(ZrStringFromUUID(made, &text)) && ZrStringLen(text) == 38, "an identifier becomes a text");

  char ascii[39];
  ToAscii(text, ascii, sizeof ascii);
  printf("        %s\n", ascii);
  ZRUUID read = {0};
  uint8_t equal = 0;
  Claim(ZR_SUCCEEDED(ZrUUIDFromString(ascii, &read)) && ZR_SUCCEEDED(ZrCompareUUID(made, &read, &equal)) && equal,
        "and the text becomes the identifier again");
  Claim(!ZRUUIDLess(made, &read) && !ZRUUIDGreater(made, &read), "neither of the two comes first");
  Claim(ZR_FAILED(ZrUUIDFromString("{not an identifier}", &read)), "what is none is refused");
  ZrDestroyString(text);
  ZrDestroyUUID(made);
}

static void Variants(void) {
  puts("Variants");
  ZRVARIANT text = ZR_VARIANT_INIT;
  ZRVARIANT number = ZR_VARIANT_INIT;
  text.Type = ZR_VT_STR;
  text.Value.string = ZrCreateString(W("95.16"));  // the variant's from here on
  Claim(ZR_SUCCEEDED(ZrVariantChangeType(&number, &text, 0, ZR_VT_R8)) && number.Value.r8 == 95.16,
        "a text becomes a number");
  Claim(ZR_SUCCEEDED(ZrVariantChangeType(&number, &number, 0, ZR_VT_UI1)) && number.Value.ui1 == 95,
        "which becomes a narrower one in place");

  ZRVARIANT copy = ZR_VARIANT_INIT;
  uint8_t equal = 0;
  Claim(ZR_SUCCEEDED(ZrVariantCopy(&copy, &text)) && ZrStringRefCount(text.Value.string) == 2,
        "a copy shares the string");
  Claim(ZR_SUCCEEDED(ZrVariantCompare(&copy, &text, &equal)) && equal, "and is equal");
  Claim(ZR_SUCCEEDED(ZrVariantClear(&copy)) && ZrStringRefCount(text.Value.string) == 1, "clearing gives it back");
  (void)ZrVariantClear(&text);
}

static void Arrays(void) {
  puts("Arrays");
  const ZrSafeArrayBound bounds[] = {{2, 1}, {3, 0}};  // rows 1 and 2, columns 0 to 2
  ZRSAFEARRAY array = ZrSafeArrayCreate(ZR_VT_I4, 2, bounds);
  const uint32_t indices[] = {2, 1};
  int32_t moons = 274;
  Claim(ZR_SUCCEEDED(ZrSafeArrayPutElement(array, indices, &moons)), "an element is put by its indices");

  void* data = NULL;
  Claim(ZR_SUCCEEDED(ZrSafeArrayAccessData(array, &data)) && ((int32_t*)data)[4] == 274,
        "and found in the block, the last dimension varying fastest");
  Claim(ZrSafeArrayPutElement(array, indices, &moons) == ZR_R_INVALID_OBJECT_STATE,
        "where no put reaches it meanwhile");
  (void)ZrSafeArrayUnaccessData(array);

  Claim(ZrSafeArrayChangeType(array, 0, ZR_VT_STR) == ZR_R_OK, "all elements become texts at once");
  ZRSTR text = NULL;
  int32_t order = 1;
  Claim(ZR_SUCCEEDED(ZrSafeArrayGetElement(array, indices, &text)) &&
            ZR_SUCCEEDED(ZrCompareStringW(text, W("274"), &order)) && order == 0,
        "an element is copied out, for the caller to destroy");
  ZrDestroyString(text);

  ZRVARIANT owner = ZR_VARIANT_INIT;
  owner.Type = ZR_VT_STR | ZR_VT_ARRAY;
  owner.Value.array = array;
  Claim(ZR_SUCCEEDED(ZrVariantClear(&owner)), "a variant that owns an array destroys it with its elements");
}

static void LocksAndCounters(void) {
  puts("Locks and counters");
  ZRCRITICALSECTION lock = NULL;
  uint8_t acquired = 0;
  Claim(ZR_SUCCEEDED(ZrInitializeCriticalSection(&lock)) && ZR_SUCCEEDED(ZrEnterCriticalSection(&lock)),
        "a lock is made and entered");
  Claim(ZR_SUCCEEDED(ZrTryEnterCriticalSection(&lock, &acquired)) && acquired == 1, "its owner may enter again");
  Claim(ZR_SUCCEEDED(ZrLeaveCriticalSection(&lock)) && ZR_SUCCEEDED(ZrLeaveCriticalSection(&lock)),
        "and leaves once for each entry");
  Claim(ZR_SUCCEEDED(ZrDeleteCriticalSection(&lock)) && lock == NULL, "deleting clears the variable");
  Claim(ZrEnterCriticalSection(&lock) == ZR_R_INVALID_OBJECT_STATE, "so that a deleted lock is told from a lock");

  int32_t count = 0;
  const int32_t hundred = 100;
  Claim(ZrInterlockedIncrement32(&count) == 1 && ZrInterlockedDecrement32(&count) == 0,
        "counting answers the new value");
  Claim(ZrInterlockedExchange32(&count, &hundred) == 0 && count == 100, "exchanging answers the old one");
}

int main(void) {
  Strings();
  Identifiers();
  Variants();
  Arrays();
  LocksAndCounters();
  if (failures == 0) {
    puts("All as it should be.");
    return 0;
  }
  printf("%d claims don't hold.\n", failures);
  return 1;
}
