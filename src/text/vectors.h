// Vectors of 16 bytes: the few operations on them that the loops over text need, with one implementation per processor.
// Every x86-64 processor has SSE2 and every arm64 processor has NEON, so the compiler's target chooses. Nothing is
// detected when the library is loaded. (utf8_vectors.h declares conversions with one form per set of instructions.)
//
// ZR_HAS_VECTORS is defined if there is an implementation. A loop that uses these operations is compiled only then.
// Beside it stands a plain loop, which finishes what fills no vector and does all the work on other processors.
//
// ByteVector has sixteen bytes, UnitVector has eight code units; the first in memory is lane 0. Both implementations
// define the same operations for them:
//
//     LoadBytes, LoadUnits              load a vector from any address
//     LoadAlignedUnits                  loads from an address that is a multiple of 16
//     StoreBytes, StoreUnits            store a vector at any address
//     EachByte, EachUnit                the same value in each lane; its bits above the lane's size are dropped
//     & | ^ + AndNot                    by lane; a sum wraps; AndNot(mask, lanes) clears the bits of the mask
//     SubtractSaturated, Min            by byte, unsigned; a difference below 0 becomes 0
//     IsEqual, IsGreaterSigned          by lane: all bits set if it is true, otherwise 0. Bytes from 0x80 and units
//                                       from 0x8000 up are negative, so they are less than all others
//     HasTopBit                         whether the top bit of any lane is set
//     AreAscii                          whether all lanes are below 0x80
//     TopBits                           one bit per byte, its top bit. The bit of lane 0 is the lowest. A UnitVector
//                                       must be the result of a comparison and has two equal bits per unit
//     ShiftedIn<n>                      the bytes n places before each lane: n zeros, then lanes 0, 1, 2 ...
//     WidenLow, WidenHigh               the lower and the upper eight bytes as units
//     NarrowAscii                       the lanes of two UnitVectors as bytes. Lanes beyond ASCII become garbage
//     NarrowMasks                       the same for the results of comparisons: 0xFFFF becomes 0xFF
//     SumOfBytes, SumOfSignedUnits      the sum of all lanes

#pragma once

#if defined(__GNUC__) && defined(__SSE2__)
#define ZR_HAS_VECTORS
#include "text/vectors_sse2.h"
#elif defined(__GNUC__) && defined(__aarch64__)
#define ZR_HAS_VECTORS
#include "text/vectors_neon.h"
#endif
