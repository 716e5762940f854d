// Conversions between UTF-8 and 16-bit text by particular vector instructions. They exist in several forms, one per set
// of instructions:
//
//     utf8_decode_avx512.cpp,   AVX-512 with VBMI2, which the newer x86-64 processors for servers have
//     utf8_encode_avx512.cpp
//     utf8_vectors_avx2.cpp     AVX2, which most x86-64 processors have
//     utf8_vectors_neon.cpp     NEON, which every arm64 processor has
//
// When the library is loaded, it chooses the best form for its processor. The functions ...Blocks and ...Short below
// call the chosen form directly: a call through a pointer would cost short texts a tenth of their time.
//
// The callers are the loops in unicode_to_string.cpp and unicode_to_buffer.cpp. They do all the work where there is no
// form, and they handle what a form leaves to them:
//
//   - A counting function counts the whole text, or nothing.
//   - A function for short texts converts the whole text, or nothing.
//   - A converting function converts from the beginning of the text. It stops at the end, or where less than a vector
//     is left on either side, or at a character that needs other treatment. It moves both cursors past what it has
//     converted, and the caller's loop continues there. It may convert nothing.
//
// To add a form, add it to Utf8Form, kUtf8Forms and CanRun, and call it from the functions of its kind of processor.

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "zrcore/base.h"
#include "zrcore/string.h"

enum class Utf8Form : uint8_t { None, Avx512, Avx2, Neon };
inline constexpr Utf8Form kUtf8Forms[] = {Utf8Form::Avx512, Utf8Form::Avx2, Utf8Form::Neon,
                                          Utf8Form::None};  // the best first

// Returns whether this processor can run the form, and the library was built with it. None can always run.
[[nodiscard]] bool CanRun(Utf8Form form) noexcept;
[[nodiscard]] Utf8Form BestUtf8Form() noexcept;

// The chosen form. Set once, when the library is loaded.
extern Utf8Form g_utf8Form;

inline constexpr std::size_t kNotCounted = std::numeric_limits<std::size_t>::max();

// A short text that begins with ASCII is usually all ASCII. The callers' loops finish it before a form is set up. The
// form for AVX-512 doesn't ask, because it converts a short text in one or two steps.
[[nodiscard]] inline bool IsWorthAForm(const unsigned char* text, std::size_t size) noexcept {
  return size >= 35 && (size >= 128 || *text >= 0x80);
}

// CountUnitBlocks returns the number of units that UTF-8 yields, or no value if it doesn't count such a text. It
// returns kNotCounted for bad text: a lead byte that lacks a continuation byte, unless the text ends first, or a
// continuation byte without a lead byte.
//
// DecodeBlocks decodes from the beginning of a good text. `at` ends on the first byte of a character. Units between the
// final `to` and `toEnd` may be overwritten with garbage.
//
// CountUtf8Blocks returns the number of bytes of UTF-8 that the units yield. It returns kNotCounted if the text
// contains a lone surrogate, or if it doesn't count such a text.
//
// CreateShort makes the string of a short text. The fixed cost of separate steps, to count, to allocate and to decode,
// is most of the cost of such a text. Returns false, and makes nothing, if the text is longer or is left to the
// callers' loops: bad text, text that ends inside a character, and overlong forms of four bytes. If out of memory, it
// returns true, and `string` is null.
//
// EncodeShort encodes a short text of ASCII. Returns false, and writes nothing, if the text is longer or not all ASCII.
//
// EncodeBlocks encodes from `at`. Bytes after the final `to` may be overwritten with garbage. The units left, without
// the very last, yield at least as many bytes as were overwritten, so the caller's loop writes over all of them.

inline constexpr std::size_t kMostShort = 64;  // bytes of UTF-8, or units

#if defined(__GNUC__) && defined(__x86_64__)

[[nodiscard]] std::size_t CountUnitsAvx2(const unsigned char* text, std::size_t size) noexcept;  // 35 bytes or more
void DecodeAvx2(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept;
[[nodiscard]] std::size_t CountUtf8Avx2(const WCHAR* text, std::size_t length) noexcept;  // 16 units or more
void EncodeAvx2(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept;

[[nodiscard]] std::size_t CountUnitsAvx512(const unsigned char* text, std::size_t size) noexcept;
[[nodiscard]] bool CreateShortAvx512(const unsigned char* text, std::size_t size, ZRSTR& string) noexcept;
void DecodeAvx512(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept;
[[nodiscard]] std::size_t CountUtf8Avx512(const WCHAR* text, std::size_t length) noexcept;
[[nodiscard]] bool EncodeShortAvx512(const WCHAR* text, std::size_t length, unsigned char* buffer) noexcept;
void EncodeAvx512(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept;

[[nodiscard]] inline std::optional<std::size_t> CountUnitBlocks(const unsigned char* text, std::size_t size) noexcept {
  if (g_utf8Form == Utf8Form::Avx512) return CountUnitsAvx512(text, size);
  if (g_utf8Form == Utf8Form::Avx2 && IsWorthAForm(text, size)) return CountUnitsAvx2(text, size);
  return std::nullopt;
}
inline void DecodeBlocks(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept {
  const auto size = static_cast<std::size_t>(end - at);
  if (g_utf8Form == Utf8Form::Avx512) return DecodeAvx512(at, end, to, toEnd);
  if (g_utf8Form == Utf8Form::Avx2 && IsWorthAForm(at, size)) DecodeAvx2(at, end, to, toEnd);
}
[[nodiscard]] inline bool CreateShort(const unsigned char* text, std::size_t size, ZRSTR& string) noexcept {
  return size <= kMostShort && g_utf8Form == Utf8Form::Avx512 && CreateShortAvx512(text, size, string);
}
[[nodiscard]] inline bool EncodeShort(const WCHAR* text, std::size_t length, unsigned char* buffer) noexcept {
  return length <= kMostShort && g_utf8Form == Utf8Form::Avx512 && EncodeShortAvx512(text, length, buffer);
}
[[nodiscard]] inline std::size_t CountUtf8Blocks(const WCHAR* text, std::size_t length) noexcept {
  if (g_utf8Form == Utf8Form::Avx512) return CountUtf8Avx512(text, length);
  return g_utf8Form == Utf8Form::Avx2 && length >= 16 ? CountUtf8Avx2(text, length) : kNotCounted;
}
inline void EncodeBlocks(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept {
  if (g_utf8Form == Utf8Form::Avx512) return EncodeAvx512(at, end, to, toEnd);
  if (g_utf8Form == Utf8Form::Avx2) EncodeAvx2(at, end, to, toEnd);
}

#else

// The callers' loops count in vectors of the same size as NEON's, so that form counts nothing.
[[nodiscard]] inline std::optional<std::size_t> CountUnitBlocks(const unsigned char*, std::size_t) noexcept {
  return std::nullopt;
}
[[nodiscard]] inline std::size_t CountUtf8Blocks(const WCHAR*, std::size_t) noexcept { return kNotCounted; }
[[nodiscard]] inline bool CreateShort(const unsigned char*, std::size_t, ZRSTR&) noexcept { return false; }
[[nodiscard]] inline bool EncodeShort(const WCHAR*, std::size_t, unsigned char*) noexcept { return false; }

#if defined(__GNUC__) && defined(__aarch64__)

void DecodeNeon(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept;
void EncodeNeon(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept;

inline void DecodeBlocks(const unsigned char*& at, const unsigned char* end, WCHAR*& to, const WCHAR* toEnd) noexcept {
  const auto size = static_cast<std::size_t>(end - at);
  if (g_utf8Form == Utf8Form::Neon && IsWorthAForm(at, size)) DecodeNeon(at, end, to, toEnd);
}
inline void EncodeBlocks(const WCHAR*& at, const WCHAR* end, unsigned char*& to, const unsigned char* toEnd) noexcept {
  if (g_utf8Form == Utf8Form::Neon) EncodeNeon(at, end, to, toEnd);
}

#else

inline void DecodeBlocks(const unsigned char*&, const unsigned char*, WCHAR*&, const WCHAR*) noexcept {}
inline void EncodeBlocks(const WCHAR*&, const WCHAR*, unsigned char*&, const unsigned char*) noexcept {}

#endif
#endif
