// AVX-512 for the conversions between UTF-8 and 16-bit text, in vectors of 64 bytes. Only utf8_decode_avx512.cpp and
// utf8_encode_avx512.cpp include this file. utf8_vector_steps.h explains the idea of the conversions.
//
// These instructions support the idea directly:
//
//   - A comparison returns a mask, an integer with one bit per lane. The bit of lane 0 is the lowest.
//   - A compression moves the lanes of a mask to the front, so no table of shuffles is needed.
//   - Loads and stores with a mask touch only the lanes of the mask. A load sets the other lanes to zero, which is an
//     ASCII character. So the same step also does the end of a text, where nothing after the result may be changed.
//     Elsewhere whole vectors are stored, which is faster; each function says why the excess does no harm.
//
// The functions are static because the files for other instructions have functions of the same names.

#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "zrcore/base.h"

// Allows one function to use the instructions. The build's own options don't, because everything else must run on
// processors without them.
#define ZR_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt,bmi,bmi2")))

// For a function whose call would cost too much.
#define ZR_INLINE __attribute__((always_inline)) static inline

// The name of a vector says what its lanes are: bytes, units of 16 bits, or numbers of 32 bits.
ZR_AVX512 static inline __m512i Load(const void* at) noexcept { return _mm512_loadu_si512(at); }
ZR_AVX512 static inline void Store(void* at, __m512i vector) noexcept { _mm512_storeu_si512(at, vector); }
ZR_AVX512 static inline __m256i LowHalf(__m512i vector) noexcept { return _mm512_extracti64x4_epi64(vector, 0); }
ZR_AVX512 static inline __m256i HighHalf(__m512i vector) noexcept { return _mm512_extracti64x4_epi64(vector, 1); }

ZR_AVX512 static inline __m512i Each8(int byte) noexcept { return _mm512_set1_epi8(static_cast<char>(byte)); }
ZR_AVX512 static inline __m512i Each16(int unit) noexcept { return _mm512_set1_epi16(static_cast<int16_t>(unit)); }
ZR_AVX512 static inline __m512i Each32(uint32_t bits) noexcept { return _mm512_set1_epi32(static_cast<int>(bits)); }

ZR_AVX512 static inline std::size_t CountBits(uint64_t bits) noexcept {
  return static_cast<std::size_t>(_mm_popcnt_u64(bits));
}

// A mask of the first `count` lanes. For FirstOf64, `count` must be at most 64. First64 and First32 return all lanes if
// `count` is greater.
ZR_AVX512 static inline uint64_t FirstOf64(std::size_t count) noexcept {
  return _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count));
}
ZR_AVX512 static inline uint64_t First64(std::size_t count) noexcept {
  return FirstOf64(std::min<std::size_t>(count, 64));
}
ZR_AVX512 static inline uint32_t First32(std::size_t count) noexcept { return static_cast<uint32_t>(First64(count)); }

// Stores the first `count` units. `count` must be at most 32.
ZR_AVX512 static inline void StoreFirst(WCHAR* to, __m512i units, std::size_t count) noexcept {
  _mm512_mask_storeu_epi16(to, static_cast<__mmask32>(FirstOf64(count)), units);
}

ZR_AVX512 static inline bool AreAscii(__m512i bytes) noexcept { return _mm512_movepi8_mask(bytes) == 0; }
ZR_AVX512 static inline bool AreUnitsAscii(__m512i units) noexcept {
  return _mm512_test_epi16_mask(units, Each16(0xFF80)) == 0;
}

// The number of units to advance after the first 64 of a run of ASCII, which begins at `units`. The later steps are 64.
// Loads and stores that cross a cache line take longer than others. If much text is left, the first step is shorter, so
// that the later steps begin at a line.
static inline std::size_t FirstStep(std::size_t left, const WCHAR* units) noexcept {
  if (left < 512) [[likely]]
    return 64;
  return 64 - reinterpret_cast<std::uintptr_t>(units) / sizeof(WCHAR) % 32;
}
