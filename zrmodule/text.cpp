#include "zrmodule/text.h"

#include <algorithm>

static constexpr const char* kReplacement = "\uFFFD";

std::filesystem::path PathOf(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string bytes = path.u8string();
  return std::string(bytes.begin(), bytes.end());
}

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string Names(const std::vector<std::string>& names) {
  static constexpr std::size_t kShown = 5;
  std::string text;
  for (std::size_t index = 0; index < std::min(names.size(), kShown); ++index) {
    text += (index == 0 ? "" : ", ") + names[index];
  }
  return names.size() > kShown ? text + " and " + std::to_string(names.size() - kShown) + " more" : text;
}

// The length of the sequence of UTF-8 with which a text begins; 0 if it begins with another byte.
static std::size_t SequenceLength(const char* text, std::size_t size) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const auto isNext = [&](std::size_t index, unsigned low = 0x80, unsigned high = 0xBF) {
    return index < size && byte(index) >= low && byte(index) <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return isNext(1) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {  // neither overlong nor a surrogate
    return isNext(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF) && isNext(2) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    return isNext(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF) && isNext(2) && isNext(3) ? 4 : 0;
  }
  return 0;
}

// Most texts are, and need no copy byte by byte.
static bool IsPrintableAscii(const std::string& bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
}

std::string ValidUtf8(const std::string& bytes) {
  if (IsPrintableAscii(bytes)) return bytes;
  std::string valid;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t length = SequenceLength(bytes.data() + at, bytes.size() - at);
    valid += length != 0 ? bytes.substr(at, length) : kReplacement;
    at += std::max<std::size_t>(length, 1);
  }
  return valid;
}

std::string Printable(const std::string& bytes) {
  if (IsPrintableAscii(bytes)) return bytes;
  std::string printable;
  const std::string valid = ValidUtf8(bytes);
  for (std::size_t at = 0; at < valid.size();) {
    const std::size_t length = SequenceLength(valid.data() + at, valid.size() - at);
    const auto first = static_cast<unsigned char>(valid[at]);
    const bool isLatinControl = first == 0xC2 && static_cast<unsigned char>(valid[at + 1]) < 0xA0;
    if (first == '\n' || first == '\t')
      printable += ' ';
    else if (first < 0x20 || first == 0x7F || isLatinControl)
      printable += kReplacement;
    else
      printable += valid.substr(at, length);
    at += length;
  }
  return printable;
}
