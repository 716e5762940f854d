// The plain half of the library from C: strings, identifiers, locks and counters. None of it needs ZrInitialize.

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
  LocksAndCounters();
  if (failures == 0) {
    puts("All as it should be.");
    return 0;
  }
  printf("%d claims don't hold.\n", failures);
  return 1;
}
