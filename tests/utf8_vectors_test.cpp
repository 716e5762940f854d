#include "text/utf8_vectors.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/unicode_check.h"

// Runs of one kind of character, long enough for the vectors and for what follows them, and one thing wrong somewhere,
// or nothing. Both ways are compared with the model, whatever this processor has.
TEST(Utf8Vectors, BothWaysDoWhatTheModelDoes) {
  static constexpr char32_t kFirst[] = {0x20, 0xA0, 0x4E00, 0xFF80, 0x1F600, 0x7A};
  static constexpr char32_t kCount[] = {0x5F, 0x760, 0x1000, 0x80, 0x100, 0x10};
  std::mt19937 random(42);
  const auto pick = [&random](size_t below) { return random() % below; };
  const bool hadWide = g_hasWideVectors;
  EXPECT_EQ(hadWide, FindWideVectors());
  for (int round = 0; round < 6000; ++round) {
    std::vector<char32_t> points;
    for (size_t runs = 1 + pick(4); runs != 0; --runs) {
      const size_t kind = pick(std::size(kFirst)), other = pick(std::size(kFirst)), every = 1 + pick(40);
      for (size_t length = pick(pick(3) == 0 ? 150 : 40); length != 0; --length) {
        const size_t chosen = pick(every) == 1 ? other : kind;
        points.push_back(kFirst[chosen] + static_cast<char32_t>(pick(kCount[chosen])));
      }
    }
    std::vector<WCHAR> units = model::StringFromUtf32(points);
    std::vector<uint8_t> bytes;
    for (char32_t point : points) {
      // Sometimes longer than need be.
      const size_t shortest = point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
      for (char byte : model::Sequence(point, pick(2000) == 0 ? 4 : shortest))
        bytes.push_back(static_cast<uint8_t>(byte));
    }
    switch (pick(4)) {
      case 0:
        if (!bytes.empty()) bytes[pick(bytes.size())] = static_cast<uint8_t>(random());
        if (!units.empty()) units[pick(units.size())] = static_cast<WCHAR>(0xD800 + pick(0x800));
        break;
      case 1:
        if (!bytes.empty()) bytes.erase(bytes.begin() + static_cast<std::ptrdiff_t>(pick(bytes.size())));
        if (!units.empty()) units.erase(units.begin() + static_cast<std::ptrdiff_t>(pick(units.size())));
        break;
      default:
        break;
    }
    const auto length = pick(2) == 0 || units.empty() ? -1 : static_cast<int32_t>(1 + pick(units.size()));
    for (const bool isWide : {false, hadWide}) {
      g_hasWideVectors = isWide;
      const auto behind = static_cast<uint8_t>(random());
      const char* claim = CheckFromUtf8(bytes, behind);
      if (claim == nullptr) claim = CheckWriters(units, length, static_cast<int32_t>(pick(1200)));
      if (claim != nullptr) ADD_FAILURE() << claim << ", round " << round << (isWide ? ", wide" : ", narrow");
    }
    if (HasFailure()) break;
  }
  g_hasWideVectors = hadWide;
}
