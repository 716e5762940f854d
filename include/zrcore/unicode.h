// ZrCore: text between its encodings, and letter case.
//
// A ZRSTR is nominally UTF-16. The functions here move text between it, plain 16-bit units, UTF-8 and UTF-32, in four
// layers. The layers have four conventions and treat bad text in different ways; callers rely on each, so none of them
// is a guide to another:
//
//   1. creators        make a string: count first, then one allocation of the exact size
//   2. writers         fill the caller's buffer, and tell its size when asked through the in-out capacity
//   3. range converters  take [begin, end) and give a buffer which they allocate
//   4. the rest        UTF-8 with replacement, raw copies, case in the user's locale
//
// Nothing here is a validator. In particular surrogates are often merged without a look at whether they are a pair; the
// merged value of `first` and `second` is then first * 1024 + second - 56613888, as for a true pair.
//
// Lengths are signed, in code units of the form that is named, and -1 means that the text runs to its terminator. In
// this family a null argument gives ZR_R_INVALID_ARGUMENTS unless it is said otherwise. Only the range converters
// throw: std::bad_alloc (see "Exceptions" in base.h).
//
// Any thread, any time, before ZrInitialize too: all work is on the arguments alone. All is linear in the length.

#ifndef ZRCORE_UNICODE_H
#define ZRCORE_UNICODE_H

#include "zrcore/base.h"
#include "zrcore/string.h"

#ifndef __cplusplus
#include <uchar.h>
#endif

// ---- Creating strings ----------------------------------------------------------------------------------------------

/// ZrCreateZRSTRfromUTF32 makes a string of code points.
///
/// A code point up to 0xFFFF becomes one unit, surrogates and zeros among them. Any other becomes a pair; values above
/// 0x10FFFF are not refused, but the first unit of their pair, which wraps in 16 bits, need not be a high surrogate.
///
/// @param text    `length` code points.
/// @param length  in code points; -1 means all up to the first zero.
/// @param string  receives the string: the shared empty string for a length of 0; null when memory is exhausted.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*string` untouched, if an argument is null, `length` is below -1 or
///         the string would have more than 0x7FFFFFFF units; ZR_R_NO_MEMORY. A string of exactly 0x7FFFFFFF units is
///         made, but its byteLen wraps to 0, so it can only be destroyed (string.h).
///
/// One allocation, none for a length of 0.
ZR_API ZRRESULT ZrCreateZRSTRfromUTF32(const char32_t* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateZRSTRfromUTF8 makes a string of UTF-8, and checks it loosely.
///
/// Lead bytes from 0xC0 to 0xFF and as many continuation bytes (0x80 to 0xBF) as they ask for are good: overlong forms,
/// encoded surrogates and values above 0x10FFFF are accepted, and so is a text that ends inside a sequence. Any other
/// text is bad, and gives an empty string of its own and ZR_R_OK.
///
/// A last sequence that lacks one byte takes the byte behind the text for it, whatever that is: with an explicit
/// `length`, `text[length]` must be readable. One that lacks more yields nothing.
///
/// @param text    `length` bytes, and one more to read.
/// @param length  in bytes; -1 means all up to the first zero byte.
/// @param string  receives the string: the shared empty string for a length of 0; null when memory is exhausted.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*string` untouched, if an argument is null, `length` is below -1 or
///         the string would have more than 0x7FFFFFFF units (exactly as many are accepted, as by
///         ZrCreateZRSTRfromUTF32); ZR_R_NO_MEMORY; ZR_R_FAILED if the text yielded fewer
///         units than its lead bytes promised, because its last sequence lacks more than one byte or a sequence of four
///         bytes is overlong. The string is given then all the same, zero units in the places that are left:
///         destroy it.
///
/// One allocation, none for a length of 0.
ZR_API ZRRESULT ZrCreateZRSTRfromUTF8(const char* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrUTF8toZRSTR is ZrCreateZRSTRfromUTF8, but a `length` of 0 gives ZR_R_INVALID_ARGUMENTS. (An empty text with a
/// length of -1 gives the shared empty string here too.)
ZR_API ZRRESULT ZrUTF8toZRSTR(const char* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

// ---- Writing into the caller's buffer ------------------------------------------------------------------------------
//
// `*capacity` is -1 to ask for the size, else the units of the target form that `buffer` has room for. Asking stores
// the units needed, terminator included, and returns ZR_R_OK; each writer says what happens to a size that doesn't fit
// 31 bits. Writing leaves `*capacity` as it was. A buffer of exactly the stored size is the only one that all of the
// writers accept.
//
// All of them return ZR_R_INVALID_ARGUMENTS, with nothing written, if `source` or `capacity` is null, `length` is 0 or
// below -1, `*capacity` is below -1, or `buffer` is null and `*capacity` is not -1. A `length` of -1
// means ZrStringLen(source), which may be 0; any other is taken as given and never compared with the string's own.

/// ZrCreateWCHARfromZRSTR copies a string's units.
///
/// Asked for the size, it stores the length and one more; that is at most 0x7FFFFFFF and never wraps.
///
/// Writing, it copies the smaller of the length and the capacity, and fills the rest of the buffer with zero units. If
/// there is no rest, the text has no terminator and may be cut, and the result is ZR_R_OK all the same.
///
/// @return
///   - ZR_R_OK                 the size was stored, or the buffer was filled.
///   - ZR_R_INVALID_ARGUMENTS  as above, or `length` is 0x7FFFFFFF, in either use.
ZR_API ZRRESULT ZrCreateWCHARfromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) ZR_NOEXCEPT;

/// ZrCreateUTF16fromZRSTR is ZrCreateWCHARfromZRSTR under a second name.
ZR_API ZRRESULT ZrCreateUTF16fromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) ZR_NOEXCEPT;

/// ZrCreateUTF32fomZRSTR writes a string as code points. (The name is spelt so.)
///
/// It converts one unit more than `length`: the terminator, or whatever stands there.
///
/// Asked for the size, it counts a true pair as one and a lone surrogate as nothing, and stores 0 if the very last unit
/// is a surrogate outside a pair. A count of 0x80000000, which only a `length` of 0x7FFFFFFF without surrogates
/// reaches, wraps: it is stored as -2147483648, with ZR_R_OK. Every smaller count is stored as it is.
///
/// Writing, a lone surrogate stores nothing, but the unit after it is skipped with it, and both count as one step.
///
/// Writing ends when the steps reach the capacity or the units are used up. Beware of a capacity of 0: no count of
/// steps is ever 0, so all units are written, into a buffer that must have room for them.
///
/// @return ZR_R_OK if the steps are exactly as many as the capacity; ZR_R_FAILED if they are not, as with a buffer
///         larger than needed or a capacity of 0, what was converted having been written; ZR_R_FAILED, and ZR_R_OK if
///         the capacity is 0, on reaching a surrogate that is the very last unit; ZR_R_INVALID_ARGUMENTS as above.
ZR_API ZRRESULT ZrCreateUTF32fomZRSTR(ZRSTR source, int32_t length, char32_t* buffer, int32_t* capacity) ZR_NOEXCEPT;

/// ZrCreateUTF8fromZRSTR writes a string as UTF-8 and a zero byte.
///
/// Asked for the size, it counts four bytes for a true pair and none for a lone surrogate, and stores 1 if a lone
/// surrogate is the last unit. A size of more than 0x7FFFFFFF wraps: its low 32 bits are stored as a signed number,
/// with ZR_R_OK, and the number may be negative or too small. A text of up to 715827882 units never wraps.
///
/// Writing, any surrogate is merged with the unit after it, and one in the last place ends the text as if nothing had
/// been written. Of a merged value above 0x1FFFFF, which four bytes don't hold, the low 21 bits are written.
///
/// A buffer that is too small cuts the text, even inside a character, and succeeds; one that is too large fails.
///
/// @return ZR_R_OK if the bytes written and the zero byte fill the buffer exactly; ZR_R_FAILED, without a zero byte, if
///         they don't, as always with a capacity of 0; ZR_R_INVALID_ARGUMENTS as above.
ZR_API ZRRESULT ZrCreateUTF8fromZRSTR(ZRSTR source, int32_t length, char* buffer, int32_t* capacity) ZR_NOEXCEPT;

// ---- Converting ranges ---------------------------------------------------------------------------------------------
//
// They convert the units from `begin` up to but not including `end` and give a new buffer, large enough for the worst
// case, with the text, a zero unit, and zero units up to the buffer's end. Release it with free() of the C library;
// ZrDestroyMemory is not for it. An empty range, null to null too, gives a buffer of zero units.
//
// With a `stopAtZero` other than 0 a zero unit ends the text; with 0 it is converted like any other. A zero unit that a
// surrogate or a lead byte has taken for its second half never ends it.
//
// All answer ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*buffer` untouched, if `buffer` is null, `begin` is behind `end` or
// `begin` alone is null; ZR_R_INVALID_ARGUMENTS too for what each refuses: `*buffer` is given then all the same, with
// what was converted so far. They throw std::bad_alloc, with `*buffer` unchanged, if there is no memory for the
// buffer. One allocation.

/// ZrUTF16toUTF32 merges every surrogate with the unit behind it, pair or not, and takes other units as they are.
///
/// @param buffer  receives `end - begin + 1` code points.
/// @return as above; refuses a surrogate in the last place.
/// @throws std::bad_alloc as above; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrUTF16toUTF32(const WCHAR* begin, const WCHAR* end, uint8_t stopAtZero, char32_t** buffer);

/// ZrUTF32toUTF16 makes one unit of each code point below 0xFFFF and a pair of each from 0x10000 to 0x10FFFE.
///
/// @param buffer  receives `(end - begin) * 2 + 1` units.
/// @return as above; refuses 0xFFFF itself and every value above 0x10FFFE.
/// @throws std::bad_alloc as above; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrUTF32toUTF16(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, WCHAR** buffer);

/// ZrUTF32toUTF8 makes one byte below 0x7F, two below 0x7FF, three below 0xFFFF and four below 0x1FFFFF. The limits
/// themselves belong to the next longer form: 0x7F becomes the bytes 0xC1 0xBF.
///
/// @param buffer  receives `(end - begin) * 4 + 1` bytes.
/// @return as above; refuses 0x1FFFFF and above.
/// @throws std::bad_alloc as above; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrUTF32toUTF8(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, char** buffer);

/// ZrUTF8toUTF32 makes a code point of every lead byte from 0xC0 up and the one to three bytes behind it, whatever they
/// are, and takes other bytes as they are, those from 0x80 to 0xBF too.
///
/// @param buffer  receives `end - begin + 1` code points.
/// @return as above; refuses a range that ends inside a sequence. Nothing past `end` is read.
/// @throws std::bad_alloc as above; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrUTF8toUTF32(const char* begin, const char* end, uint8_t stopAtZero, char32_t** buffer);

// ---- UTF-8 with replacement, raw copies ----------------------------------------------------------------------------

/// ZrZRSTRtoUTF8 writes a string up to its first zero unit as well-formed UTF-8, and a zero byte. A lone surrogate
/// becomes the replacement character, EF BF BD.
///
/// With a `size` of 0 it writes nothing and returns the bytes that are needed, zero byte included. `buffer` is not used
/// then: it may be null, the string itself or anything else.
///
/// @param string  a string; any zero-terminated text will do.
/// @param buffer  receives the text and a zero byte; not used if `size` is 0.
/// @param size    of the buffer, in bytes; 0 asks for the size.
/// @return the bytes written, or needed if `size` is 0, zero byte included. It is 0 after a failure:
///   - `string` is null or `size` is negative;
///   - `size` is 0 and more than 0x7FFFFFFF bytes are needed;
///   - `size` is not 0, and `buffer` is null or has the address of `string`: nothing was written;
///   - `size` is not 0 and too small: the buffer holds the characters that had room, without a zero byte.
ZR_API int32_t ZrZRSTRtoUTF8(ZRSTR string, char* buffer, int32_t size) ZR_NOEXCEPT;

/// ZrCopyZRSTR2WCHAR copies `count` units as they are, and no more: no terminator, no look at the source's length.
///
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if a pointer is null or `count` is 0.
ZR_API ZRRESULT ZrCopyZRSTR2WCHAR(ZRSTR source, WCHAR* destination, uint32_t count) ZR_NOEXCEPT;

/// ZrCopyWCHAR2ZRSTR is the same copy with the other type on either side. It makes no string: `destination` has to have
/// room, in front of its terminator, and its header stays as it is. Nobody else may hold it, and it must not be the
/// shared empty string, which some creators give for an empty text.
ZR_API ZRRESULT ZrCopyWCHAR2ZRSTR(const WCHAR* source, ZRSTR destination, uint32_t count) ZR_NOEXCEPT;

// ---- Case ----------------------------------------------------------------------------------------------------------
//
// Case is that of the process's default locale for characters, the one that the user's environment names, whatever
// locale the program has set; if the system doesn't have it, only ASCII letters have case. The first use of any of
// these reads it, once, on one thread; a few hundred microseconds. Units are mapped one by one: no surrogate pair has
// case, and no text changes its length.

/// ZrWCHARCompareNoCase orders two zero-terminated texts by their units in lower case.
///
/// @return 0 if they are equal, else a value below or above 0, of which only the sign means something. A null comes
///         before any text, and two nulls are equal.
ZR_API int32_t ZrWCHARCompareNoCase(const WCHAR* left, const WCHAR* right) ZR_NOEXCEPT;

/// ZrWCHARToLower changes a zero-terminated text to lower case, in place.
///
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null.
ZR_API ZRRESULT ZrWCHARToLower(WCHAR* text) ZR_NOEXCEPT;

/// ZrWCHARToUpper changes a zero-terminated text to upper case, in place.
///
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null.
ZR_API ZRRESULT ZrWCHARToUpper(WCHAR* text) ZR_NOEXCEPT;

#endif
