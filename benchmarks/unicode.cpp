// UTF-8 to a new 16-bit string and back, and case-insensitive comparison. The size in a row's name is the size of the
// text in UTF-8.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "row.h"
#include "zrcore/unicode.h"

#if BENCH_QT
#include <QString>
#endif
#if BENCH_ICU
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif
#if BENCH_SIMDUTF
#include <simdutf.h>
#endif
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

struct Sample {
  std::string name;   // part of the operation's name
  std::string bytes;  // whole characters
};

static std::vector<Sample> Samples() {
  static constexpr struct {
    const char *name, *text;
  } kKinds[] = {
      {"ascii", "The quick brown fox jumps over the lazy dog, and so on and on. "},
      {"latin", "Les élèves français étudient à la bibliothèque où règne un calme étrange. "},
      {"cjk", "天地玄黄宇宙洪荒日月盈昃辰宿列张寒来暑往秋收冬藏"},
      {"emoji", "😀🚀🪐🎉🌍🔥🐢🎲"},
  };
  static constexpr struct {
    const char* name;
    std::size_t bytes;
  } kSizes[] = {{"64 B", 64}, {"4 KiB", 4096}, {"1 MiB", 1 << 20}};

  std::vector<Sample> samples;
  for (const auto& kind : kKinds) {
    for (const auto& size : kSizes) {
      std::string bytes;
      while (bytes.size() <= size.bytes) bytes += kind.text;
      std::size_t end = size.bytes;
      while ((bytes[end] & 0xC0) == 0x80) --end;  // not inside a character
      samples.push_back({std::string(kind.name) + ", " + size.name, bytes.substr(0, end)});
    }
  }
  return samples;
}

static std::u16string Widen(const std::string& bytes) {
  ZRSTR string = nullptr;
  Require(ZR_SUCCEEDED(ZrCreateZRSTRfromUTF8(bytes.data(), static_cast<int32_t>(bytes.size()), &string)), "good UTF-8");
  const std::u16string text(string, string + ZrStringLen(string));
  ZrDestroyString(string);
  return text;
}

static void FromUtf8Rows(const Sample& sample) {
  const std::string operation = "UTF-8 to new string, " + sample.name;
  const std::string bytes = sample.bytes;

  Row(operation, "ZrCore", [bytes] {
    ZRSTR string = nullptr;
    Consume(ZrCreateZRSTRfromUTF8(bytes.data(), static_cast<int32_t>(bytes.size()), &string));
    Consume(string);
    ZrDestroyString(string);
  });
#if BENCH_QT
  Row(operation, "QString",
      [bytes] { Consume(QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()))); });
#endif
#if BENCH_ICU
  Row(operation, "icu::UnicodeString", [bytes] { Consume(icu::UnicodeString::fromUTF8(bytes)); });
  Row(operation, "u_strFromUTF8 (no heap)", [bytes, buffer = std::make_shared<std::u16string>(bytes.size(), u'0')] {
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    Consume(u_strFromUTF8(buffer->data(), static_cast<int32_t>(buffer->size()), &length, bytes.data(),
                          static_cast<int32_t>(bytes.size()), &error));
    Consume(length);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_utf8_to_utf16", [bytes] {
    gunichar2* text = g_utf8_to_utf16(bytes.data(), static_cast<glong>(bytes.size()), nullptr, nullptr, nullptr);
    Consume(text);
    g_free(text);
  });
#endif
#if BENCH_SIMDUTF
  Row(operation, "simdutf", [bytes] {
    const std::size_t units = simdutf::utf16_length_from_utf8(bytes.data(), bytes.size());
    auto* text = static_cast<char16_t*>(std::malloc((units + 1) * sizeof(char16_t)));
    Consume(simdutf::convert_utf8_to_utf16le(bytes.data(), bytes.size(), text));
    Consume(text);
    std::free(text);
  });
#endif
  // A block of the right size, with every byte written once.
  Row(operation, "lower bound", [bytes, units = Widen(bytes).size()] {
    char* block = static_cast<char*>(std::malloc(8 + (units + 1) * 2));
    std::memset(block, bytes[0], 8 + (units + 1) * 2);
    Consume(block);
    std::free(block);
  });
}

static void ToUtf8Rows(const Sample& sample) {
  const std::string operation = "string to new UTF-8, " + sample.name;
  const std::u16string text = Widen(sample.bytes);

  // The first call determines the size, as in a caller that doesn't know it.
  std::shared_ptr<WCHAR> string(ZrCreateString(text.c_str()), ZrDestroyString);
  Row(operation, "ZrCore", [string] {
    int32_t size = -1;
    Consume(ZrCreateUTF8fromZRSTR(string.get(), -1, nullptr, &size));
    auto* bytes = static_cast<char*>(std::malloc(static_cast<std::size_t>(size)));
    Consume(ZrCreateUTF8fromZRSTR(string.get(), -1, bytes, &size));
    Consume(bytes);
    std::free(bytes);
  });
#if BENCH_QT
  Row(operation, "QString", [text = QString::fromStdU16String(text)] { Consume(text.toUtf8()); });
#endif
#if BENCH_ICU
  Row(operation, "icu::UnicodeString", [text = icu::UnicodeString(text.data(), static_cast<int32_t>(text.size()))] {
    std::string bytes;
    Consume(text.toUTF8String(bytes));
  });
  Row(operation, "u_strToUTF8 (no heap)", [text, buffer = std::make_shared<std::string>(text.size() * 3, '0')] {
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    Consume(u_strToUTF8(buffer->data(), static_cast<int32_t>(buffer->size()), &length, text.data(),
                        static_cast<int32_t>(text.size()), &error));
    Consume(length);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_utf16_to_utf8", [text] {
    char* bytes = g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(text.data()), static_cast<glong>(text.size()),
                                  nullptr, nullptr, nullptr);
    Consume(bytes);
    g_free(bytes);
  });
#endif
#if BENCH_SIMDUTF
  Row(operation, "simdutf", [text] {
    auto* bytes = static_cast<char*>(std::malloc(simdutf::utf8_length_from_utf16le(text.data(), text.size()) + 1));
    Consume(simdutf::convert_utf16le_to_utf8(text.data(), text.size(), bytes));
    Consume(bytes);
    std::free(bytes);
  });
#endif
  Row(operation, "lower bound", [size = sample.bytes.size(), text] {
    char* block = static_cast<char*>(std::malloc(size + 1));
    std::memset(block, text[0], size + 1);
    Consume(block);
    std::free(block);
  });
}

static void CaselessRows(const std::string& operation, const std::u16string& left, const std::u16string& right) {
  Require(ZrWCHARCompareNoCase(left.c_str(), right.c_str()) == 0, "the texts differ in case only");
  Row(operation, "ZrCore", [left, right] { Consume(ZrWCHARCompareNoCase(left.c_str(), right.c_str())); });
#if BENCH_QT
  Row(operation, "QString", [left = QString::fromStdU16String(left), right = QString::fromStdU16String(right)] {
    Consume(left.compare(right, Qt::CaseInsensitive));
  });
#endif
#if BENCH_ICU
  Row(operation, "u_strcasecmp", [left, right] { Consume(u_strcasecmp(left.c_str(), right.c_str(), 0)); });
#endif
#if BENCH_GLIB
  const std::string narrowLeft(left.begin(), left.end()), narrowRight(right.begin(), right.end());
  if (g_ascii_strcasecmp(narrowLeft.c_str(), narrowRight.c_str()) == 0) {  // otherwise it stops at the first difference
    Row(operation, "g_ascii_strcasecmp (char)",
        [narrowLeft, narrowRight] { Consume(g_ascii_strcasecmp(narrowLeft.c_str(), narrowRight.c_str())); });
  }
#endif
#if defined(__SSE2__)
  Row(operation, "lower bound", [left, right] {  // compares ASCII only, and knows the length
    int mask = 0xFFFF;
    for (std::size_t at = 0; at + 8 <= left.size(); at += 8) {
      const auto fold = [at](const std::u16string& text) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
        const __m128i isUpper = _mm_and_si128(_mm_cmpgt_epi16(units, _mm_set1_epi16('A' - 1)),
                                              _mm_cmplt_epi16(units, _mm_set1_epi16('Z' + 1)));
        return _mm_or_si128(units, _mm_and_si128(isUpper, _mm_set1_epi16(0x20)));
      };
      mask &= _mm_movemask_epi8(_mm_cmpeq_epi16(fold(left), fold(right)));
    }
    Consume(mask);
  });
#endif
}

void UnicodeRows() {
  // Set before first use, when the library reads it. This locale exists on every system and has more than ASCII
  // letters.
  Require(setenv("LC_ALL", "C.utf8", 1) == 0, "the locale is set");
  for (const Sample& sample : Samples()) {
    FromUtf8Rows(sample);
    ToUtf8Rows(sample);
  }
  CaselessRows("case-insensitive compare 32 units", u"The Quick Brown Fox Jumps Over A",
               u"tHE qUICK bROWN fOX jUMPS oVER a");
  // First with accented letters that are the same in both texts, then with accented letters that differ in case, so
  // that the comparison must use the locale's tables.
  CaselessRows("case-insensitive compare 32 units, 8 accented",
               u"D\xE9j\xE0 vu, \xE9l\xE8ve fran\xE7"
               u"ais \xE0 la \xEEle.",
               u"d\xE9J\xE0 VU, \xE9L\xE8VE FRAN\xE7"
               u"AIS \xE0 LA \xEELE.");
  CaselessRows("case-insensitive compare 32 units, 4 accented in two cases",
               u"D\xE9j\xE0 vu, nos \xE9l\xE8ves anglais ici.", u"d\xC9J\xC0 VU, NOS \xC9L\xC8VES ANGLAIS ICI.");
}
