// Parses any text as a REF and compares it with a slow model. The model trims the text, splits it at the dots, parses
// each number with the C library, formats the numbers again and compares the result with the text.

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "zrcore/zrcore.h"

using Units = std::basic_string<WCHAR>;

static const Units kSpace = {0x20, 0x09, 0x0A, 0x0D, 0x0C, 0x0B};

// The C library parses bytes. A unit that is not ASCII becomes a letter, which also ends a number.
static std::string Narrowed(const Units& units) {
  std::string bytes;
  for (WCHAR unit : units) bytes += unit < 0x80 ? static_cast<char>(unit) : 'x';
  return bytes;
}

struct ModelReference {
  bool hasSixFields = false;
  std::optional<ZRREF> ref;
};

static ModelReference ModelOf(Units text) {
  text.erase(0, std::min(text.find_first_not_of(kSpace), text.size()));
  text.erase(text.find_last_not_of(kSpace) + 1);
  std::vector<Units> fields(1);
  for (WCHAR unit : text) {
    if (unit == '.') {
      fields.emplace_back();
    } else {
      fields.back() += unit;
    }
  }
  if (fields.size() != 6 || std::find(fields.begin(), fields.end(), Units()) != fields.end()) return {};
  ZRREF ref;
  for (std::size_t word = 0; word < 6; ++word) {
    const long long value = std::strtoll(Narrowed(fields[word]).c_str(), nullptr, 10);
    ref.words[word] = static_cast<uint32_t>(std::clamp<long long>(value, 0, 0xFFFFFFFF));
  }
  const uint32_t* w = ref.words;
  char written[72];
  std::snprintf(written, sizeof written, "%u.%u.%u.%u.%u.%u", w[0], w[1], w[2], w[3], w[4], w[5]);
  const bool isSame = std::strcmp(written, Narrowed(text).c_str()) == 0;
  return {true, isSame ? std::optional(ref) : std::nullopt};
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Units units = FuzzUnits(data, size);
  ZRSTR text = ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)));
  const ModelReference expected = ModelOf(units);

  ZRREF old = {{9, 9, 9, 9, 9, 9}};
  ZRREF* ref = &old;
  const ZRRESULT result = ZrStringToREF(text, &ref);
  FUZZ_CLAIM(result == (expected.ref ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS));
  ZRREF split = old;
  uint32_t* w = split.words;
  FUZZ_CLAIM(ZrSplitRefName(text, w, w + 1, w + 2, w + 3, w + 4, w + 5) == result);
  if (!expected.ref) {
    FUZZ_CLAIM(ref == (expected.hasSixFields ? nullptr : &old));
    FUZZ_CLAIM(std::memcmp(&split, &old, sizeof split) == 0);
    ZrDestroyString(text);
    return 0;
  }
  FUZZ_CLAIM(std::memcmp(ref, &*expected.ref, sizeof *ref) == 0);
  FUZZ_CLAIM(std::memcmp(&split, ref, sizeof split) == 0);

  // Formatted and parsed again it must be the same, and an SREF of its numbers must equal an SREF of its text.
  ZRSTR written = nullptr;
  FUZZ_CLAIM(ZrREFToString(ref, &written) == ZR_R_OK);
  ZRSREF numbers = {ref, nullptr}, words = {nullptr, written};
  uint8_t equal = 9;
  FUZZ_CLAIM(ZrCompareSREF(&numbers, &words, &equal) == ZR_R_OK && equal == 1);
  ZrDestroyString(written);
  ZrDestroyREF(ref);
  ZrDestroyString(text);
  return 0;
}
