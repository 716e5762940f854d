// Ranges of one encoding into new buffers of another. The four functions share Convert and differ in the step that
// converts one character.
//
// A buffer is allocated for the worst case, without counting first. A refused character ends the conversion, but the
// caller gets the buffer nevertheless. Each step has its own limits, and most are one too low. Callers rely on each.

#include <functional>

#include "platform/unicode_forms.h"
#include "runtime/heap.h"
#include "zrcore/unicode.h"

// Converts [begin, end) into a new buffer, in which each unit of the range can become `unitsPerUnit` units, and one
// unit more. `step(at, end, to)` converts one character, moves `at` and `to` past it and returns false to refuse it.
//
// A zero unit can end the text only where a step begins. Inside a sequence or a merged pair it is read as a part of the
// character.
template <class From, class To, class Step>
static ZRRESULT Convert(const From* begin, const From* end, uint8_t stopAtZero, To** buffer, std::size_t unitsPerUnit,
                        Step step) {
  if (buffer == nullptr || std::less<>()(end, begin)) return ZR_R_INVALID_ARGUMENTS;
  if (begin == nullptr && end != nullptr) return ZR_R_INVALID_ARGUMENTS;  // an empty range from null to null is valid
  const std::size_t bufferUnits = static_cast<std::size_t>(end - begin) * unitsPerUnit + 1;
  To* const made = static_cast<To*>(AllocateOrThrow(bufferUnits * sizeof(To)));
  *buffer = made;
  To* to = made;
  ZRRESULT result = ZR_R_OK;
  for (const From* at = begin; at != end;) {
    if (stopAtZero != 0 && *at == 0) break;
    if (!step(at, end, to)) {
      result = ZR_R_INVALID_ARGUMENTS;
      break;
    }
  }
  // Zeroed after the conversion rather than before, so that no unit is written twice.
  for (To* const bufferEnd = made + bufferUnits; to != bufferEnd;) *to++ = 0;
  return result;
}

// Any surrogate, high or low, is merged with any unit after it. Only a surrogate in the last place is refused.
ZRRESULT ZrUTF16toUTF32(const WCHAR* begin, const WCHAR* end, uint8_t stopAtZero, char32_t** buffer) {
  return Convert(begin, end, stopAtZero, buffer, 1, [](const WCHAR*& at, const WCHAR* last, char32_t*& to) {
    const WCHAR unit = *at++;
    if (!IsSurrogate(unit)) {
      *to++ = unit;
      return true;
    }
    if (at == last) return false;
    *to++ = MergeUnits(unit, *at++);
    return true;
  });
}

// Refuses U+FFFF and U+10FFFF, too: callers rely on limits that are one lower than those of UTF-16.
ZRRESULT ZrUTF32toUTF16(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, WCHAR** buffer) {
  return Convert(begin, end, stopAtZero, buffer, 2, [](const char32_t*& at, const char32_t*, WCHAR*& to) {
    const char32_t codePoint = *at++;
    if (codePoint == 0xFFFF || codePoint > 0x10FFFE) return false;
    if (codePoint < 0xFFFF) {
      *to++ = static_cast<WCHAR>(codePoint);
    } else {
      to = StorePair(to, codePoint);
    }
    return true;
  });
}

// Accepts values above 0x10FFFF, up to 0x1FFFFE. The limits of the lengths are one lower than those of UTF-8
// (SequenceSize has the right ones), so 0x7F, 0x7FF and 0xFFFF take the next longer form: 0x7F -> C1 BF. Callers rely
// on these bytes.
ZRRESULT ZrUTF32toUTF8(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, char** buffer) {
  return Convert(begin, end, stopAtZero, buffer, 4, [](const char32_t*& at, const char32_t*, char*& to) {
    const char32_t codePoint = *at++;
    if (codePoint >= 0x1FFFFF) return false;
    const std::size_t size = codePoint < 0x7F ? 1 : codePoint < 0x7FF ? 2 : codePoint < 0xFFFF ? 3 : 4;
    StoreSequence(reinterpret_cast<unsigned char*>(to), codePoint, size);
    to += size;
    return true;
  });
}

// A byte below 0xC0 is copied, even a continuation byte without a lead byte. The bytes after a lead byte aren't
// checked: 0x41 in the place of a continuation byte contributes its low six bits.
ZRRESULT ZrUTF8toUTF32(const char* begin, const char* end, uint8_t stopAtZero, char32_t** buffer) {
  return Convert(begin, end, stopAtZero, buffer, 1, [](const char*& at, const char* last, char32_t*& to) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(at);
    if (*bytes < 0xC0) {
      *to++ = *bytes;
      ++at;
      return true;
    }
    const std::size_t tailBytes = TailBytes(*bytes);
    if (static_cast<std::size_t>(last - at) <= tailBytes) return false;
    *to++ = SequenceValue(bytes, tailBytes);
    at += tailBytes + 1;
    return true;
  });
}
