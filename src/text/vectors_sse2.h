// The operations that vectors.h lists, in SSE2. Only vectors.h includes this file.

#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "zrcore/base.h"

struct ByteVector {
  __m128i lanes;
};
struct UnitVector {
  __m128i lanes;
};

// The loads and stores become part of each caller, so that the sanitizers check them as they check the caller.
[[gnu::always_inline]] inline ByteVector LoadBytes(const unsigned char* at) noexcept {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(at))};
}
[[gnu::always_inline]] inline UnitVector LoadUnits(const WCHAR* at) noexcept {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(at))};
}
[[gnu::always_inline]] inline UnitVector LoadAlignedUnits(const void* at) noexcept {
  return {_mm_load_si128(static_cast<const __m128i*>(at))};
}
[[gnu::always_inline]] inline void StoreBytes(unsigned char* at, ByteVector bytes) noexcept {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(at), bytes.lanes);
}
[[gnu::always_inline]] inline void StoreUnits(WCHAR* at, UnitVector units) noexcept {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(at), units.lanes);
}

inline ByteVector EachByte(int byte) noexcept { return {_mm_set1_epi8(static_cast<char>(byte))}; }
inline UnitVector EachUnit(int unit) noexcept { return {_mm_set1_epi16(static_cast<int16_t>(unit))}; }

inline ByteVector operator&(ByteVector a, ByteVector b) noexcept { return {_mm_and_si128(a.lanes, b.lanes)}; }
inline ByteVector operator|(ByteVector a, ByteVector b) noexcept { return {_mm_or_si128(a.lanes, b.lanes)}; }
inline ByteVector operator+(ByteVector a, ByteVector b) noexcept { return {_mm_add_epi8(a.lanes, b.lanes)}; }
inline UnitVector operator&(UnitVector a, UnitVector b) noexcept { return {_mm_and_si128(a.lanes, b.lanes)}; }
inline UnitVector operator|(UnitVector a, UnitVector b) noexcept { return {_mm_or_si128(a.lanes, b.lanes)}; }
inline UnitVector operator^(UnitVector a, UnitVector b) noexcept { return {_mm_xor_si128(a.lanes, b.lanes)}; }
inline UnitVector operator+(UnitVector a, UnitVector b) noexcept { return {_mm_add_epi16(a.lanes, b.lanes)}; }
inline UnitVector AndNot(UnitVector mask, UnitVector units) noexcept {
  return {_mm_andnot_si128(mask.lanes, units.lanes)};
}

inline ByteVector SubtractSaturated(ByteVector a, ByteVector b) noexcept { return {_mm_subs_epu8(a.lanes, b.lanes)}; }
inline ByteVector Min(ByteVector a, ByteVector b) noexcept { return {_mm_min_epu8(a.lanes, b.lanes)}; }

inline ByteVector IsEqual(ByteVector a, ByteVector b) noexcept { return {_mm_cmpeq_epi8(a.lanes, b.lanes)}; }
inline UnitVector IsEqual(UnitVector a, UnitVector b) noexcept { return {_mm_cmpeq_epi16(a.lanes, b.lanes)}; }
inline ByteVector IsGreaterSigned(ByteVector a, ByteVector b) noexcept { return {_mm_cmpgt_epi8(a.lanes, b.lanes)}; }
inline UnitVector IsGreaterSigned(UnitVector a, UnitVector b) noexcept { return {_mm_cmpgt_epi16(a.lanes, b.lanes)}; }

inline unsigned TopBits(ByteVector bytes) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bytes.lanes)); }
inline unsigned TopBits(UnitVector mask) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(mask.lanes)); }
inline bool HasTopBit(ByteVector bytes) noexcept { return TopBits(bytes) != 0; }
inline bool HasTopBit(UnitVector mask) noexcept { return TopBits(mask) != 0; }
inline bool AreAscii(ByteVector bytes) noexcept { return !HasTopBit(bytes); }
inline bool AreAscii(UnitVector units) noexcept {
  return TopBits(IsEqual(units & EachUnit(0xFF80), EachUnit(0))) == 0xFFFF;
}

template <int n>
ByteVector ShiftedIn(ByteVector bytes) noexcept {
  return {_mm_slli_si128(bytes.lanes, n)};
}

inline UnitVector WidenLow(ByteVector bytes) noexcept { return {_mm_unpacklo_epi8(bytes.lanes, _mm_setzero_si128())}; }
inline UnitVector WidenHigh(ByteVector bytes) noexcept { return {_mm_unpackhi_epi8(bytes.lanes, _mm_setzero_si128())}; }
inline ByteVector NarrowAscii(UnitVector low, UnitVector high) noexcept {
  return {_mm_packus_epi16(low.lanes, high.lanes)};
}
inline ByteVector NarrowMasks(UnitVector low, UnitVector high) noexcept {
  return {_mm_packs_epi16(low.lanes, high.lanes)};
}

// The instruction adds up the lower and the upper eight lanes.
inline unsigned SumOfBytes(ByteVector bytes) noexcept {
  const __m128i halves = _mm_sad_epu8(bytes.lanes, _mm_setzero_si128());
  return static_cast<unsigned>(_mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4));
}

// In pairs to four sums of 32 bits, then the upper two to the lower, then the upper one.
inline int SumOfSignedUnits(UnitVector units) noexcept {
  __m128i sum = _mm_madd_epi16(units.lanes, _mm_set1_epi16(1));
  sum = _mm_add_epi32(sum, _mm_srli_si128(sum, 8));
  sum = _mm_add_epi32(sum, _mm_srli_si128(sum, 4));
  return _mm_cvtsi128_si32(sum);
}
