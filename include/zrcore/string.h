// ZrCore: counted strings.
//
// A ZRSTR is one reference on an immutable block of 16-bit code units. It points to the first unit. Two 32-bit words
// precede the first unit and a zero unit follows the last, so a ZRSTR can also be read as a zero-terminated text:
//
//     | refCount | byteLen | c0 c1 c2 ... 0 |
//     '----- 8 bytes ------^ ZRSTR              byteLen counts the terminator: (units + 1) * 2
//
// The length comes from the header, never from a scan, so a string may contain zero units. The content is nominally
// UTF-16 and never checked; unpaired surrogates pass through. A string may have an odd length in bytes; its length in
// units is rounded down.
//
// Null is an empty string wherever a ZRSTR is read. Release each reference with ZrDestroyString. The shared empty
// string is one static block, ready before any code runs. Some creators give a reference on it instead of allocating.
//
//     ZRSTR name = ZrCreateString(u"pump");
//     ZRSTR same = ZrCopyString(name);   // a second reference on the same block
//     ZrDestroyString(same);
//     ZrDestroyString(name);             // the last reference frees the block
//
// For a null out-argument the functions return ZR_R_INVALID_ARGUMENTS. An out-argument is overwritten: a string in the
// variable leaks unless the caller has released it. Nothing throws; each function names what it returns when out of
// memory.
//
// Lengths count code units unless a comment says bytes. A string whose length in bytes doesn't fit the 32 bits of
// byteLen is not refused: its block has the full size, but byteLen is truncated. Such a string must not be used except
// to destroy it, because every function reads a wrong length from it.
//
// Any thread, any time, before ZrInitialize too. Any number of threads may copy, read and destroy one string at once.

#ifndef ZRCORE_STRING_H
#define ZRCORE_STRING_H

#include "zrcore/base.h"

/// ZRSTR is a reference on a counted string, or null for an empty one.
///
/// The units must not be written to: other holders rely on them. The type is not const, so that in C++ a literal
/// can't be passed as a counted string by mistake. In C a literal can: that compiles and is undefined behaviour.
typedef WCHAR* ZRSTR;

// ---- Creating ------------------------------------------------------------------------------------------------------

/// ZrCreateString makes a string from a zero-terminated text.
///
/// @param text  zero-terminated, or null.
/// @return gives a string (ZrDestroyString); the shared empty string for an empty text; null if `text` is null or when
///         out of memory.
///
/// Linear in the length; one allocation, none for an empty text.
ZR_API ZRSTR ZrCreateString(const WCHAR* text) ZR_NOEXCEPT;

/// ZrCreateZRSTRfromWCHAR makes a string of `length` code units, or from a whole zero-terminated text.
///
/// It copies units up to the first zero unit of `text` or up to `length`, whichever comes first. Zero units fill the
/// string up to `length` and count as part of it.
///
/// If `text` is an empty text, or `text` is not null and `length` is 0, the result is the shared empty string. It is
/// not filled up to `length`. A null `text` with a length of 0 gives a new empty string.
///
/// @param text    zero-terminated, or null for `length` zero units. The function scans it for its terminator even if
///                `length` is shorter, so it must not be a slice of a larger buffer without a terminator.
/// @param length  in code units; -1 means all of `text`, which must not be null then.
/// @param string  gives the string (ZrDestroyString).
/// @return
///   - ZR_R_OK                 `*string` was written.
///   - ZR_R_INVALID_ARGUMENTS  `string` is null, `length` is less than -1, or `text` is null and `length` is -1.
///                             `*string` is unchanged.
///   - ZR_R_NO_MEMORY          out of memory. `*string` is null.
///
/// Linear in the longer of the two lengths; one allocation, none for the shared empty string.
ZR_API ZRRESULT ZrCreateZRSTRfromWCHAR(const WCHAR* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateZRSTRfromUTF16 is ZrCreateZRSTRfromWCHAR under a second name.
ZR_API ZRRESULT ZrCreateZRSTRfromUTF16(const WCHAR* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateStringLen_2 is ZrCreateZRSTRfromWCHAR under a third name.
ZR_API ZRRESULT ZrCreateStringLen_2(const WCHAR* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateStringLen makes a new string of exactly `length` code units.
///
/// It copies units up to the first zero unit of `text` or up to `length`, whichever comes first. Zero units fill the
/// string up to `length` and count as part of it: ZrStringLen of the result is `length`, whatever the text contains.
///
/// @param text    zero-terminated, or null for `length` zero units. The function scans it for its terminator even if
///                `length` is shorter, so it must not be a slice of a larger buffer without a terminator.
/// @param length  in code units, without the terminator; 0xFFFFFFFF means all of `text`, which must not be null then.
/// @return gives a string (ZrDestroyString), never the shared empty string; null when out of memory.
///
/// Linear in the longer of the two lengths; one allocation.
ZR_API ZRSTR ZrCreateStringLen(const WCHAR* text, uint32_t length) ZR_NOEXCEPT;

/// ZrCreateStringByteLen makes a new string of exactly `length` bytes of data, including zero bytes.
///
/// @param data    reads `length` bytes, with any alignment. If it is null, all `length` bytes of the string are zero.
/// @param length  in bytes, without the terminator; may be odd.
/// @return gives a string (ZrDestroyString), never the shared empty string; null when out of memory.
///
/// Linear; one allocation.
ZR_API ZRSTR ZrCreateStringByteLen(const void* data, uint32_t length) ZR_NOEXCEPT;

/// ZrAppendStrings makes a string of `left` followed by `right`. It reads both and keeps zero units inside them.
///
/// @return gives a string (ZrDestroyString); null when out of memory.
///   - Both arguments are not null: a new string, even if one of them is empty.
///   - Exactly one is null: one more reference on the other.
///   - Both are null: a new empty string.
///
/// Linear; one allocation of the exact size.
ZR_API ZRSTR ZrAppendStrings(ZRSTR left, ZRSTR right) ZR_NOEXCEPT;

// ---- References ----------------------------------------------------------------------------------------------------

/// ZrCopyString adds one reference to a string. It can't fail.
///
/// @return gives `string` itself; for null a reference on the shared empty string. The result is never null.
///
/// One atomic increment.
ZR_API ZRSTR ZrCopyString(ZRSTR string) ZR_NOEXCEPT;

/// ZrDeepCopyString makes a new string with the same content. The reference count of the source doesn't change.
///
/// @return gives a string (ZrDestroyString), never the shared empty string; for null a new empty string; null when out
///         of memory.
///
/// Linear; one allocation.
ZR_API ZRSTR ZrDeepCopyString(ZRSTR string) ZR_NOEXCEPT;

/// ZrDestroyString takes one reference and releases it. The last reference frees the block. Null is ignored.
ZR_API void ZrDestroyString(ZRSTR string) ZR_NOEXCEPT;

/// ZrReCreateString replaces the string in a variable with a new string from a zero-terminated text.
///
/// The old reference is released before `text` is read. If that was the last reference, the block of the old string is
/// freed, so `text` must not point into it.
///
/// Data race: the replacement is not atomic. No other thread may use the variable during the call.
///
/// @param string  the variable. It takes the old string, which may be null, and gives ZrCreateString(text).
/// @param text    zero-terminated.
/// @return 1 if the string was replaced. 0 in two cases:
///   - An argument is null. Nothing changed.
///   - Out of memory. The old reference has been released and the variable is null.
ZR_API uint8_t ZrReCreateString(ZRSTR* string, const WCHAR* text) ZR_NOEXCEPT;

/// ZrReCreateStringLen does the same as ZrReCreateString, with a new string from ZrCreateStringLen(text, length).
/// Unlike ZrCreateStringLen it refuses a null `text`: it returns 0 and nothing changed.
ZR_API uint8_t ZrReCreateStringLen(ZRSTR* string, const WCHAR* text, uint32_t length) ZR_NOEXCEPT;

/// ZrStringRefCount returns the current reference count; 0 for null. Other threads may change it at any time.
ZR_API uint32_t ZrStringRefCount(ZRSTR string) ZR_NOEXCEPT;

// ---- Reading -------------------------------------------------------------------------------------------------------

/// ZrStringLen returns the length in code units, without the terminator; 0 for null. Constant time.
ZR_API uint32_t ZrStringLen(ZRSTR string) ZR_NOEXCEPT;

/// ZrStringByteLen returns the length in bytes, without the terminator; 0 for null. Constant time.
ZR_API uint32_t ZrStringByteLen(ZRSTR string) ZR_NOEXCEPT;

/// ZrCompareString compares two strings by their unsigned bytes, including zero units.
///
/// On a little-endian machine the low byte of a unit decides before the high byte, so U+0100 comes before U+00FF. Use
/// the order for equality and for containers, not to sort text for people. If one string is the beginning of the other,
/// the shorter one comes first. Null equals the empty string.
///
/// @param order  receives a negative number if `left` comes first, 0 if the strings are equal, else a positive number.
///               Only the sign has a meaning.
/// @return
///   - ZR_R_OK                 `*order` was written.
///   - ZR_R_INVALID_ARGUMENTS  `order` is null.
///
/// Linear; no allocation.
ZR_API ZRRESULT ZrCompareString(ZRSTR left, ZRSTR right, int32_t* order) ZR_NOEXCEPT;

/// ZrCompareStringW compares a string and a zero-terminated text by code unit.
///
/// The first zero unit in `left` ends it, and the units after it are ignored. There is one exception: if `right` is
/// empty, every `left` whose length is not 0 comes after it, even a `left` that begins with a zero unit.
///
/// @param left   a string, or null for an empty one.
/// @param right  zero-terminated, or null for an empty text.
/// @param order  receives -1, 0 or 1.
/// @return
///   - ZR_R_OK                 `*order` was written.
///   - ZR_R_INVALID_ARGUMENTS  `order` is null.
///
/// Linear; no allocation.
ZR_API ZRRESULT ZrCompareStringW(ZRSTR left, const WCHAR* right, int32_t* order) ZR_NOEXCEPT;

#endif
