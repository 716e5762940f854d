// The operations that vectors.h lists, in NEON. Only vectors.h includes this file.

#pragma once

#include <arm_neon.h>

#include <cstdint>

#include "zrcore/base.h"

struct ByteVector {
  uint8x16_t lanes;
};
struct UnitVector {
  uint16x8_t lanes;
};

// The loads and stores become part of each caller, so that the sanitizers check them as they check the caller. Units
// are loaded and stored as bytes: WCHAR is a type of its own, and its address need not be a multiple of two.
[[gnu::always_inline]] inline ByteVector LoadBytes(const unsigned char* at) noexcept { return {vld1q_u8(at)}; }
[[gnu::always_inline]] inline UnitVector LoadUnits(const WCHAR* at) noexcept {
  return {vreinterpretq_u16_u8(vld1q_u8(reinterpret_cast<const uint8_t*>(at)))};
}
[[gnu::always_inline]] inline UnitVector LoadAlignedUnits(const void* at) noexcept {
  return {vreinterpretq_u16_u8(vld1q_u8(static_cast<const uint8_t*>(at)))};
}
[[gnu::always_inline]] inline void StoreBytes(unsigned char* at, ByteVector bytes) noexcept {
  vst1q_u8(at, bytes.lanes);
}
[[gnu::always_inline]] inline void StoreUnits(WCHAR* at, UnitVector units) noexcept {
  vst1q_u8(reinterpret_cast<uint8_t*>(at), vreinterpretq_u8_u16(units.lanes));
}

inline ByteVector EachByte(int byte) noexcept { return {vdupq_n_u8(static_cast<uint8_t>(byte))}; }
inline UnitVector EachUnit(int unit) noexcept { return {vdupq_n_u16(static_cast<uint16_t>(unit))}; }

inline ByteVector operator&(ByteVector a, ByteVector b) noexcept { return {vandq_u8(a.lanes, b.lanes)}; }
inline ByteVector operator|(ByteVector a, ByteVector b) noexcept { return {vorrq_u8(a.lanes, b.lanes)}; }
inline ByteVector operator+(ByteVector a, ByteVector b) noexcept { return {vaddq_u8(a.lanes, b.lanes)}; }
inline UnitVector operator&(UnitVector a, UnitVector b) noexcept { return {vandq_u16(a.lanes, b.lanes)}; }
inline UnitVector operator|(UnitVector a, UnitVector b) noexcept { return {vorrq_u16(a.lanes, b.lanes)}; }
inline UnitVector operator^(UnitVector a, UnitVector b) noexcept { return {veorq_u16(a.lanes, b.lanes)}; }
inline UnitVector operator+(UnitVector a, UnitVector b) noexcept { return {vaddq_u16(a.lanes, b.lanes)}; }
inline UnitVector AndNot(UnitVector mask, UnitVector units) noexcept { return {vbicq_u16(units.lanes, mask.lanes)}; }

inline ByteVector SubtractSaturated(ByteVector a, ByteVector b) noexcept { return {vqsubq_u8(a.lanes, b.lanes)}; }
inline ByteVector Min(ByteVector a, ByteVector b) noexcept { return {vminq_u8(a.lanes, b.lanes)}; }

inline ByteVector IsEqual(ByteVector a, ByteVector b) noexcept { return {vceqq_u8(a.lanes, b.lanes)}; }
inline UnitVector IsEqual(UnitVector a, UnitVector b) noexcept { return {vceqq_u16(a.lanes, b.lanes)}; }
inline ByteVector IsGreaterSigned(ByteVector a, ByteVector b) noexcept {
  return {vcgtq_s8(vreinterpretq_s8_u8(a.lanes), vreinterpretq_s8_u8(b.lanes))};
}
inline UnitVector IsGreaterSigned(UnitVector a, UnitVector b) noexcept {
  return {vcgtq_s16(vreinterpretq_s16_u16(a.lanes), vreinterpretq_s16_u16(b.lanes))};
}

// The largest lane decides, which one instruction finds.
inline bool AreAscii(ByteVector bytes) noexcept { return vmaxvq_u8(bytes.lanes) < 0x80; }
inline bool AreAscii(UnitVector units) noexcept { return vmaxvq_u16(units.lanes) < 0x80; }
inline bool HasTopBit(ByteVector bytes) noexcept { return !AreAscii(bytes); }
inline bool HasTopBit(UnitVector mask) noexcept { return vmaxvq_u16(mask.lanes) >= 0x8000; }

// No instruction collects the top bits. The shift spreads the top bit over its lane, and of each eight lanes the mask
// leaves the bits 01 02 04 ... 80, a different one in each. Three sums of neighbours add these up, which carries
// nothing because no two have the same bit.
inline unsigned TopBits(ByteVector bytes) noexcept {
  const uint8x16_t isSet = vreinterpretq_u8_s8(vshrq_n_s8(vreinterpretq_s8_u8(bytes.lanes), 7));
  uint8x16_t bits = vandq_u8(isSet, vreinterpretq_u8_u64(vdupq_n_u64(0x8040201008040201)));
  bits = vpaddq_u8(bits, bits);
  bits = vpaddq_u8(bits, bits);
  bits = vpaddq_u8(bits, bits);
  return vgetq_lane_u16(vreinterpretq_u16_u8(bits), 0);
}
inline unsigned TopBits(UnitVector mask) noexcept { return TopBits(ByteVector{vreinterpretq_u8_u16(mask.lanes)}); }

template <int n>
ByteVector ShiftedIn(ByteVector bytes) noexcept {
  return {vextq_u8(vdupq_n_u8(0), bytes.lanes, 16 - n)};
}

inline UnitVector WidenLow(ByteVector bytes) noexcept { return {vmovl_u8(vget_low_u8(bytes.lanes))}; }
inline UnitVector WidenHigh(ByteVector bytes) noexcept { return {vmovl_high_u8(bytes.lanes)}; }

// The lower byte of each unit, which is the right one for ASCII and for masks.
inline ByteVector NarrowAscii(UnitVector low, UnitVector high) noexcept {
  return {vuzp1q_u8(vreinterpretq_u8_u16(low.lanes), vreinterpretq_u8_u16(high.lanes))};
}
inline ByteVector NarrowMasks(UnitVector low, UnitVector high) noexcept { return NarrowAscii(low, high); }

inline unsigned SumOfBytes(ByteVector bytes) noexcept { return vaddlvq_u8(bytes.lanes); }
inline int SumOfSignedUnits(UnitVector units) noexcept { return vaddlvq_s16(vreinterpretq_s16_u16(units.lanes)); }
