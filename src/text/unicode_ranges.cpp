// Ranges of one encoding into new buffers of another. The four share one frame and differ in one step.

#include <functional>

#include "platform/unicode_forms.h"
#include "runtime/heap.h"
#include "zrcore/unicode.h"

// Converts [begin, end) into a new buffer of `room` units. `step(at, end, to)` converts what stands at `at`, moves both
// on and answers whether it could. What is not written is zeroed behind it, so that nothing is written twice.
template <class From, class To, class Step>
static ZRRESULT Convert(const From* begin, const From* end, uint8_t stopAtZero, To** buffer, std::size_t unitsForEach,
                        Step step) {
  if (buffer == nullptr || std::less<>()(end, begin)) return ZR_R_INVALID_ARGUMENTS;
  if (begin == nullptr && end != nullptr) return ZR_R_INVALID_ARGUMENTS;  // no range
  const std::size_t room = static_cast<std::size_t>(end - begin) * unitsForEach + 1;
  To* const made = static_cast<To*>(AllocateOrThrow(room * sizeof(To)));
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
  for (To* const roomEnd = made + room; to != roomEnd;) *to++ = 0;
  return result;
}

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

ZRRESULT ZrUTF32toUTF16(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, WCHAR** buffer) {
  return Convert(begin, end, stopAtZero, buffer, 2, [](const char32_t*& at, const char32_t*, WCHAR*& to) {
    const char32_t codePoint = *at++;
    if (codePoint == 0xFFFF || codePoint > 0x10FFFE) return false;  // each limit is one short, and stays so
    if (codePoint < 0xFFFF) {
      *to++ = static_cast<WCHAR>(codePoint);
    } else {
      to = StorePair(to, codePoint);
    }
    return true;
  });
}

ZRRESULT ZrUTF32toUTF8(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, char** buffer) {
  return Convert(begin, end, stopAtZero, buffer, 4, [](const char32_t*& at, const char32_t*, char*& to) {
    const char32_t codePoint = *at++;
    if (codePoint >= 0x1FFFFF) return false;
    // Each limit is one short, and stays so.
    const std::size_t size = codePoint < 0x7F ? 1 : codePoint < 0x7FF ? 2 : codePoint < 0xFFFF ? 3 : 4;
    StoreSequence(reinterpret_cast<unsigned char*>(to), codePoint, size);
    to += size;
    return true;
  });
}

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
