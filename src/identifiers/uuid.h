// The two orders of identifiers. They differ on a little-endian machine and must not be merged into one.

#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "zrcore/uuid.h"

// The bytes the other way round. Written as steps of a swap network, which compilers know for one instruction.
constexpr uint64_t SwapBytes64(uint64_t value) noexcept {
  value = (value & 0x00FF00FF00FF00FF) << 8 | (value >> 8 & 0x00FF00FF00FF00FF);
  value = (value & 0x0000FFFF0000FFFF) << 16 | (value >> 16 & 0x0000FFFF0000FFFF);
  return value << 32 | value >> 32;
}

// Eight bytes as a number whose order is that of the bytes.
inline uint64_t LoadBigEndian64(const void* address) noexcept {
  uint64_t value;
  std::memcpy(&value, address, sizeof value);
  return std::endian::native == std::endian::little ? SwapBytes64(value) : value;
}

// A 128-bit number in two halves.
struct CUuidRank {
  uint64_t high;
  uint64_t low;
  friend bool operator<(const CUuidRank& left, const CUuidRank& right) noexcept {
    return left.high != right.high ? left.high < right.high : left.low < right.low;
  }
};

// By fields: data1, data2 and data3 as numbers, then the bytes of data4. The order of the text form.
struct CFieldWiseLess {
  static CUuidRank Rank(const ZRUUID& uuid) noexcept {
    return {uint64_t{uuid.data1} << 32 | uint64_t{uuid.data2} << 16 | uuid.data3, LoadBigEndian64(uuid.data4)};
  }
  bool operator()(const ZRUUID& left, const ZRUUID& right) const noexcept { return Rank(left) < Rank(right); }
};

// By the sixteen bytes from the first to the last, as memcmp does.
struct CByteWiseLess {
  static CUuidRank Rank(const ZRUUID& uuid) noexcept {
    const char* bytes = reinterpret_cast<const char*>(&uuid);
    return {LoadBigEndian64(bytes), LoadBigEndian64(bytes + 8)};
  }
  bool operator()(const ZRUUID& left, const ZRUUID& right) const noexcept { return Rank(left) < Rank(right); }
};
