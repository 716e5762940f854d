// ZrCore: counted strings.
//
// A ZRSTR is one reference on an immutable block of 16-bit code units. It points at the first unit; two 32-bit words
// stand in front of it and a zero unit behind the last, so it also reads as a zero-terminated text:
//
//     | refCount | byteLen | c0 c1 c2 ... 0 |
//     '----- 8 bytes ------^ ZRSTR              byteLen counts the terminator: (units + 1) * 2
//
// Zero units may lie inside: the length is what the header says, never what a scan finds. Content is nominally UTF-16
// and never checked; unpaired surrogates pass through. A string can be made with an odd length in bytes; its length in
// units is then rounded down.
//
// Null is a legal, empty string wherever a ZRSTR is read. Whoever holds a reference gives it up with ZrDestroyString.
// The shared empty string is one static block of which some creators give references instead of allocating; it is
// ready before any code runs.
//
// In this family a null out-argument gives ZR_R_INVALID_ARGUMENTS. Lengths count code units unless they are said to be
// bytes; what doesn't fit the 32 bits of byteLen is not refused but stored truncated, and such a string can only be
// destroyed, since nothing may read it by its lengths. Nothing throws: exhausted memory is told by null or
// ZR_R_NO_MEMORY.
//
// Any thread, any time, before ZrInitialize too. Any number of threads may copy, read and destroy one string at once.

#ifndef ZRCORE_STRING_H
#define ZRCORE_STRING_H

#include "zrcore/base.h"

/// ZRSTR is a counted string, or null for an empty one. The units are not to be written to; the type is not const so
/// that a literal can't be passed for a counted string by mistake.
typedef WCHAR* ZRSTR;

// ---- Creating ------------------------------------------------------------------------------------------------------

/// ZrCreateString makes a string of a zero-terminated text.
///
/// @param text  zero-terminated, or null.
/// @return gives a string: the shared empty string for an empty text; null if `text` is null or memory is exhausted.
///
/// Linear in the length; one allocation, none for an empty text.
ZR_API ZRSTR ZrCreateString(const WCHAR* text) ZR_NOEXCEPT;

/// ZrCreateZRSTRfromWCHAR makes a string of `length` code units, or of a whole zero-terminated text.
///
/// Units are copied up to the first zero unit of `text` or up to `length`, whichever comes first; zero units fill the
/// rest and count. But a text that is not null and yields no unit to copy (an empty text, or length 0) gives the shared
/// empty string, whatever `length` says.
///
/// @param text    zero-terminated, or null for `length` zero units. It is scanned to its terminator even when `length`
///                is shorter, so a slice of a larger buffer won't do.
/// @param length  in code units; -1 means all of `text`, which must not be null then.
/// @param string  receives the string; null when memory is exhausted.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*string` untouched, if `string` is null, `length` is below -1, or
///         `text` is null with length -1; ZR_R_NO_MEMORY.
///
/// Linear in the longer of both lengths; one allocation. A null text with length 0 gives an empty block of its own.
ZR_API ZRRESULT ZrCreateZRSTRfromWCHAR(const WCHAR* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateZRSTRfromUTF16 is ZrCreateZRSTRfromWCHAR under a second name.
ZR_API ZRRESULT ZrCreateZRSTRfromUTF16(const WCHAR* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateStringLen_2 is ZrCreateZRSTRfromWCHAR under a third name.
ZR_API ZRRESULT ZrCreateStringLen_2(const WCHAR* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateStringLen makes a new string of exactly `length` code units.
///
/// Units are copied up to the first zero unit of `text` or up to `length`, whichever comes first; zero units fill the
/// rest. The filling counts: ZrStringLen of the result is `length`, whatever the text held.
///
/// @param text    zero-terminated, or null for `length` zero units. It is scanned to its terminator even when `length`
///                is shorter, so a slice of a larger buffer won't do.
/// @param length  in code units, without the terminator; 0xFFFFFFFF means all of `text`, which must not be null then.
/// @return gives a string; null when memory is exhausted. Never the shared empty string: an empty result is a block of
///         its own.
///
/// Linear in the longer of both lengths; one allocation.
ZR_API ZRSTR ZrCreateStringLen(const WCHAR* text, uint32_t length) ZR_NOEXCEPT;

/// ZrCreateStringByteLen makes a new string of exactly `length` bytes of data, zero bytes included.
///
/// @param data    at least `length` bytes of any alignment, or null for zero bytes.
/// @param length  in bytes, without the terminator; may be odd.
/// @return gives a string of its own, also when empty; null when memory is exhausted.
///
/// Linear; one allocation.
ZR_API ZRSTR ZrCreateStringByteLen(const void* data, uint32_t length) ZR_NOEXCEPT;

/// ZrAppendStrings makes the string of `left` followed by `right`. Both arguments stay the caller's.
///
/// @return gives a string: a new block when both are given, even if one is empty; one more reference of the other when
///         exactly one is null; a new empty block when both are; null when memory is exhausted. Zero units inside
///         are kept.
///
/// Linear; one allocation of the exact size.
ZR_API ZRSTR ZrAppendStrings(ZRSTR left, ZRSTR right) ZR_NOEXCEPT;

// ---- References ----------------------------------------------------------------------------------------------------

/// ZrCopyString adds one reference to a string. It can't fail.
///
/// @return gives `string` itself; for null a reference of the shared empty string, so the result is never null.
///
/// One atomic increment.
ZR_API ZRSTR ZrCopyString(ZRSTR string) ZR_NOEXCEPT;

/// ZrDeepCopyString makes a new block with the same content. The source's count doesn't change.
///
/// @return gives a string of its own; for null a new empty block; null when memory is exhausted.
ZR_API ZRSTR ZrDeepCopyString(ZRSTR string) ZR_NOEXCEPT;

/// ZrDestroyString gives up one reference; the last one frees the block. Null is ignored.
ZR_API void ZrDestroyString(ZRSTR string) ZR_NOEXCEPT;

/// ZrReCreateString replaces the string in a variable by a new one of a zero-terminated text.
///
/// The old reference is given up before the text is read: a text that lies in the variable's own last reference is gone
/// by then. Not atomic in respect of the variable.
///
/// @param string  variable whose string, if any, is given up and that receives ZrCreateString(text).
/// @return 1; 0 if either argument is null, with nothing changed, or when memory is exhausted, with null in
///         the variable.
ZR_API uint8_t ZrReCreateString(ZRSTR* string, const WCHAR* text) ZR_NOEXCEPT;

/// ZrReCreateStringLen is ZrReCreateString with ZrCreateStringLen(text, length). A null text is refused here.
ZR_API uint8_t ZrReCreateStringLen(ZRSTR* string, const WCHAR* text, uint32_t length) ZR_NOEXCEPT;

/// ZrStringRefCount is the momentary number of references; 0 for null.
ZR_API uint32_t ZrStringRefCount(ZRSTR string) ZR_NOEXCEPT;

// ---- Reading -------------------------------------------------------------------------------------------------------

/// ZrStringLen is the length in code units, without the terminator; 0 for null. Constant time.
ZR_API uint32_t ZrStringLen(ZRSTR string) ZR_NOEXCEPT;

/// ZrStringByteLen is the length in bytes, without the terminator; 0 for null. Constant time.
ZR_API uint32_t ZrStringByteLen(ZRSTR string) ZR_NOEXCEPT;

/// ZrCompareString orders two strings by their bytes, zero units included.
///
/// On a little-endian machine the low byte of a unit decides before the high one, so U+0100 comes before U+00FF: use it
/// for equality and for containers, not for people. If one string is the beginning of the other, the shorter comes
/// first. Null equals the empty string.
///
/// @param order  receives a value below, equal to or above 0; only its sign means something.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `order` is null.
ZR_API ZRRESULT ZrCompareString(ZRSTR left, ZRSTR right, int32_t* order) ZR_NOEXCEPT;

/// ZrCompareStringW orders a string and a zero-terminated text by code unit. It stops at the first zero unit on both
/// sides, so what follows a zero unit inside `left` is ignored; but a `left` that begins with one is not empty, and
/// comes behind an empty `right`.
///
/// @param left   a string, or null for an empty one.
/// @param right  zero-terminated, or null for an empty one.
/// @param order  receives -1, 0 or 1.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `order` is null.
ZR_API ZRRESULT ZrCompareStringW(ZRSTR left, const WCHAR* right, int32_t* order) ZR_NOEXCEPT;

#endif
