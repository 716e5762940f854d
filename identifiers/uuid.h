// The two orders of identifiers. They differ on a little-endian machine and must not be merged into one.

#pragma once

#include <cstdint>
#include <cstring>

#include "zrcore/uuid.h"

// Eight bytes as a number whose order is that of the bytes. Compilers make one load and one swap of it.
inline uint64_t LoadBigEndian64(const void* address) noexcept {
  unsigned char bytes[8];
  std::memcpy(bytes, address, sizeof bytes);
  uint64_t value = 0;
  for (unsigned char byte : bytes) value = value << 8 | byte;
  return value;
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
