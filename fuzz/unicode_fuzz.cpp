// Takes any bytes as text in each of the three encodings and compares every conversion with the model. The first four
// bytes choose a length, the byte after the text and a capacity.

#include "fuzz/fuzz_support.h"
#include "tests/support/unicode_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  const uint8_t chosenLength = data[0], after = data[1];
  const int32_t capacity = data[2] | (data[3] & 0x0F) << 8;  // may be far larger than the text, but is quick to fill
  data += 4;
  size -= 4;

  const std::vector<uint8_t> bytes(data, data + size);
  const auto text = FuzzUnits(data, size);
  const std::vector<WCHAR> units(text.begin(), text.end());
  std::vector<char32_t> points(size / sizeof(char32_t));
  if (!points.empty()) std::memcpy(points.data(), data, points.size() * sizeof(char32_t));

  FuzzRequire(CheckFromUtf8(bytes, after));
  FuzzRequire(CheckFromUtf32(points));
  const bool isPart = chosenLength != 0 && chosenLength <= units.size();
  FuzzRequire(CheckWriters(units, isPart ? chosenLength : -1, capacity));
  FuzzRequire(CheckRanges(std::vector<char>(bytes.begin(), bytes.end()), units, points));
  return 0;
}
