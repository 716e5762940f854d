// ZrCore: conversion of text between encodings, and letter case.
//
// A ZRSTR (string.h) contains 16-bit code units, nominally UTF-16. The functions of this header convert between a
// ZRSTR, plain 16-bit text, UTF-8 and UTF-32, and change the case of letters. None of them can be used to validate
// text.
//
// The functions form four groups. Each group has its own way to pass buffers and its own treatment of bad text, and
// callers rely on each, so don't infer the behaviour of one function from another:
//
//   1. creators          make a string: they count first and then allocate a block of exactly the needed size
//   2. writers           fill the caller's buffer, or report the needed size through the in-out argument `capacity`
//   3. range converters  convert [begin, end) into a new buffer that they allocate
//   4. the rest          UTF-8 with replacement characters, copies of units, case in the user's locale
//
// "Merged" means below that a function computes one code point from a surrogate and the unit after it, without checking
// that the two units are a pair. The code point is first * 1024 + second - 56613888. It is the right one for a true
// pair. For any other two units it is some value from 0x2400 to 0x211FFF.
//
// A `length` is signed and counts code units of the source. A `length` of -1 means the whole text. For a null argument
// the functions return ZR_R_INVALID_ARGUMENTS unless a comment says otherwise; a null ZRSTR is refused too, not read as
// empty. Strings are released with ZrDestroyString, the buffers of range converters with the C library's free(). Only
// the range converters throw: std::bad_alloc (see "Exceptions" in base.h).
//
//     int32_t size = -1;                                              // -1 asks for the size
//     ZRRESULT result = ZrCreateUTF8fromZRSTR(string, -1, NULL, &size);
//     if (ZR_FAILED(result) || size < 1) return result;               // see "Writing into the caller's buffer"
//     char* text = (char*)malloc((size_t)size);
//     result = ZrCreateUTF8fromZRSTR(string, -1, text, &size);        // the buffer has exactly that size
//
// Any thread, any time, before ZrInitialize too. The functions use only their arguments and, for case, tables that
// don't change; two overlapping calls that write the same buffer are a data race. All are linear in the length.

#ifndef ZRCORE_UNICODE_H
#define ZRCORE_UNICODE_H

#include "zrcore/base.h"
#include "zrcore/string.h"

#ifndef __cplusplus
#include <uchar.h>
#endif

// ---- Creating strings ----------------------------------------------------------------------------------------------

/// ZrCreateZRSTRfromUTF32 makes a string from code points.
///
/// A code point up to 0xFFFF becomes one unit; this includes zeros and surrogates. A larger code point becomes two
/// units. Values above 0x10FFFF are not refused: the first of their two units wraps in 16 bits and need not be a high
/// surrogate.
///
/// @param text    reads `length` code points.
/// @param length  in code points; -1 means all code points before the first zero.
/// @param string  gives the string (ZrDestroyString); the shared empty string if there are no code points.
/// @return
///   - ZR_R_OK                 `*string` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null, `length` is less than -1, or the string would have more than
///                             0x7FFFFFFF units. `*string` is unchanged.
///   - ZR_R_NO_MEMORY          out of memory. `*string` is null.
///
/// A string of exactly 0x7FFFFFFF units is made, but its byteLen wraps to 0. It must not be used except to destroy it
/// (string.h).
///
/// One allocation, none if there are no code points.
ZR_API ZRRESULT ZrCreateZRSTRfromUTF32(const char32_t* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrCreateZRSTRfromUTF8 makes a string from UTF-8. It checks only the sequence of lead and continuation bytes.
///
/// A byte from 0xC0 to 0xFF is a lead byte. A lead byte below 0xE0 needs one continuation byte (0x80 to 0xBF), a lead
/// byte below 0xF0 needs two, any other three. A text is malformed if a lead byte is followed by too few continuation
/// bytes before the next byte of another kind, or if a continuation byte stands where none is needed. A malformed text
/// gives a new empty string, and the function returns ZR_R_OK.
///
/// Nothing else is checked:
///   - An encoded surrogate becomes one unit. A value above 0x10FFFF becomes two, as in ZrCreateZRSTRfromUTF32.
///   - Overlong forms are converted. An overlong sequence of four bytes yields one unit too few, see ZR_R_FAILED.
///   - The text may end inside a sequence. If one byte is missing, the function reads the byte after the text in its
///     place, whatever that byte is. So `text[length]` must be readable if `length` is not -1. If more bytes are
///     missing, the last sequence yields no unit, see ZR_R_FAILED.
///
/// @param text    reads `length` bytes, and the byte after them if one byte is missing at the end.
/// @param length  in bytes; -1 means all bytes before the first zero byte.
/// @param string  gives the string (ZrDestroyString); the shared empty string if there are no bytes.
/// @return
///   - ZR_R_OK                 `*string` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null, `length` is less than -1, or the string would have more than
///                             0x7FFFFFFF units. `*string` is unchanged. (For exactly 0x7FFFFFFF units see
///                             ZrCreateZRSTRfromUTF32.)
///   - ZR_R_NO_MEMORY          out of memory. `*string` is null.
///   - ZR_R_FAILED             the text yielded fewer units than its lead bytes promise: more than one byte is missing
///                             from the last sequence, or a sequence of four bytes is overlong. `*string` was written;
///                             it ends with one zero unit per unit that is missing.
///
/// Leak: after ZR_R_FAILED, too, the caller owns the string and must destroy it.
///
/// One allocation, none if there are no bytes.
ZR_API ZRRESULT ZrCreateZRSTRfromUTF8(const char* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

/// ZrUTF8toZRSTR does the same as ZrCreateZRSTRfromUTF8, but returns ZR_R_INVALID_ARGUMENTS for a `length` of 0. An
/// empty text with a `length` of -1 gives the shared empty string here too.
ZR_API ZRRESULT ZrUTF8toZRSTR(const char* text, int32_t length, ZRSTR* string) ZR_NOEXCEPT;

// ---- Writing into the caller's buffer ------------------------------------------------------------------------------
//
// `*capacity` selects what a writer does.
//   - -1 asks for the size. The writer stores the number of units of the target form in `*capacity`, terminator
//     included, and returns ZR_R_OK. It doesn't use `buffer`. Each comment says what happens to a size above
//     0x7FFFFFFF.
//   - 0 or more is the number of units that `buffer` has room for. The writer fills `buffer` and leaves `*capacity`
//     unchanged. `buffer` must not overlap the string.
//
// Pass a buffer of exactly the size that the writer stored. This is the only size that all writers accept.
//
// Check the stored size first: it must not be passed on if it is below 1. ZrCreateUTF32fomZRSTR may store 0, and
// writes past the end of the buffer when it is called with that capacity. The UTF-8 and UTF-32 writers may store a
// negative size.
//
// All writers return ZR_R_INVALID_ARGUMENTS and write nothing in these cases:
//   - `source` or `capacity` is null;
//   - `length` is 0 or less than -1;
//   - `*capacity` is less than -1;
//   - `buffer` is null and `*capacity` is not -1.
//
// A `length` of -1 means ZrStringLen(source), which may be 0. Any other `length` is never compared with the string's
// own length. It must not be greater: reading past the end of the string is undefined behaviour.

/// ZrCreateWCHARfromZRSTR copies the units of a string into a buffer.
///
/// It copies as many units as `length` and the capacity allow and fills the rest of the buffer with zero units. If the
/// capacity is not greater than the length, the copy has no terminator and may be cut, and the function returns ZR_R_OK
/// nevertheless.
///
/// The size that it stores is the length plus one. It is at most 0x7FFFFFFF and never wraps.
///
/// @return
///   - ZR_R_OK                 the size was stored, or the buffer was filled.
///   - ZR_R_INVALID_ARGUMENTS  one of the cases above, or `length` is 0x7FFFFFFF. Nothing was written.
ZR_API ZRRESULT ZrCreateWCHARfromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) ZR_NOEXCEPT;

/// ZrCreateUTF16fromZRSTR is ZrCreateWCHARfromZRSTR under a second name.
ZR_API ZRRESULT ZrCreateUTF16fromZRSTR(ZRSTR source, int32_t length, WCHAR* buffer, int32_t* capacity) ZR_NOEXCEPT;

/// ZrCreateUTF32fomZRSTR writes a string as code points into a buffer. (The name is spelt so.)
///
/// It converts `length` units and the unit after them, called the final unit below. If `length` is -1 or the string's
/// own length, the final unit is the terminator. If `length` is less, the final unit is a unit of the text.
///
/// The size that it stores counts one for each unit that is not a surrogate, one for each true pair, and nothing for a
/// lone surrogate. It is 0 if the final unit is a surrogate that is not part of a true pair. A count of 0x80000000 is
/// stored as -2147483648, and the function returns ZR_R_OK. Only a `length` of 0x7FFFFFFF without surrogates has this
/// count. Every smaller count is stored exactly.
///
/// Writing goes in steps. A unit that is not a surrogate, or a true pair, is one step and stores one code point. A lone
/// surrogate and the unit after it are together one step, which stores nothing. Writing ends when the number of steps
/// reaches the capacity or no unit is left. With lone surrogates the function can therefore return ZR_R_OK without
/// having written the end of the buffer or a terminator.
///
/// A capacity of 0 doesn't limit the writing: the number of steps never equals 0, so the function writes all code
/// points. It must not be passed unless the buffer has room for the whole text; writing past the end of a smaller
/// buffer is undefined behaviour.
///
/// @return
///   - ZR_R_OK                 the size was stored; or the number of steps equals the capacity; or the capacity is 0
///                             and the final unit is a surrogate that begins a step.
///   - ZR_R_FAILED             the number of steps is less than the capacity, because the buffer is larger than needed
///                             or because the final unit is a surrogate that begins a step; or the capacity is 0 and no
///                             such surrogate was found. The code points of all steps so far were written.
///   - ZR_R_INVALID_ARGUMENTS  one of the cases above. Nothing was written.
ZR_API ZRRESULT ZrCreateUTF32fomZRSTR(ZRSTR source, int32_t length, char32_t* buffer, int32_t* capacity) ZR_NOEXCEPT;

/// ZrCreateUTF8fromZRSTR writes a string as UTF-8 and a zero byte into a buffer.
///
/// A buffer that is too small cuts the text, even inside a character, and the function returns ZR_R_OK. A buffer that
/// is too large makes it fail.
///
/// The size that it stores counts four bytes for a true pair, none for a lone surrogate, one to three for any other
/// unit, and one for the zero byte. If the last unit of the text is a lone surrogate, the size is 1, whatever the other
/// units are: with that capacity the function writes an empty text and returns ZR_R_OK.
///
/// A size above 0x7FFFFFFF wraps: its low 32 bits are stored as a signed number, which may be negative or too small,
/// and the function returns ZR_R_OK. The size of a text of up to 715827882 units never wraps.
///
/// When the function writes, it merges every surrogate with the unit after it. Four bytes can't represent a merged
/// value above 0x1FFFFF; the function writes its low 21 bits. The function fails when it reaches a surrogate that is
/// the last unit of the text.
///
/// @return
///   - ZR_R_OK                 the size was stored; or the text, complete or cut, and the zero byte fill the buffer
///                             exactly.
///   - ZR_R_FAILED             the text and the zero byte don't fill the buffer, a surrogate that is the last unit was
///                             reached, or the capacity is 0. The bytes so far were written, without a zero byte.
///   - ZR_R_INVALID_ARGUMENTS  one of the cases above. Nothing was written.
ZR_API ZRRESULT ZrCreateUTF8fromZRSTR(ZRSTR source, int32_t length, char* buffer, int32_t* capacity) ZR_NOEXCEPT;

// ---- Converting ranges ---------------------------------------------------------------------------------------------
//
// The range converters convert the units from `begin` up to but not including `end`. They give a new buffer that is
// large enough for the worst case. It contains the converted text, and zero units from there to the end of the buffer,
// at least one. Release it with the C library's free(); it must not be passed to ZrDestroyMemory. An empty range gives
// a buffer of zero units, and so does a range from null to null.
//
// If `stopAtZero` is not 0, the first zero unit ends the text. If it is 0, a zero unit is converted like any other. A
// zero unit that is merged with the surrogate before it, or read as a continuation byte after a lead byte, never ends
// the text.
//
// ZR_R_INVALID_ARGUMENTS has two meanings here:
//   - The arguments are not a range: `buffer` is null, `begin` is after `end`, or only one of `begin` and `end` is
//     null. `*buffer` is unchanged.
//   - The range contains something that the function refuses. `*buffer` is given nevertheless, with the text that was
//     converted so far.
//
// Leak: after the second kind of failure, too, the caller must free the buffer. Set `*buffer` to null before the call
// and free it after every call.
//
// Each call makes one allocation. If it is out of memory, it throws std::bad_alloc and leaves `*buffer` unchanged.

/// ZrUTF16toUTF32 converts UTF-16 to code points. It merges every surrogate with the unit after it, pair or not, and
/// copies any other unit.
///
/// @param buffer  gives a buffer of `end - begin + 1` code points (free).
/// @return
///   - ZR_R_OK                 the range was converted.
///   - ZR_R_INVALID_ARGUMENTS  the arguments are not a range; or the last unit is a surrogate without a unit after it,
///                             and `*buffer` was written.
/// @throws std::bad_alloc if out of memory; see "Exceptions" in base.h. `*buffer` is unchanged.
ZR_API ZRRESULT ZrUTF16toUTF32(const WCHAR* begin, const WCHAR* end, uint8_t stopAtZero, char32_t** buffer);

/// ZrUTF32toUTF16 converts code points to UTF-16. A code point below 0xFFFF becomes one unit, a code point from 0x10000
/// to 0x10FFFE becomes a pair.
///
/// @param buffer  gives a buffer of `(end - begin) * 2 + 1` units (free).
/// @return
///   - ZR_R_OK                 the range was converted.
///   - ZR_R_INVALID_ARGUMENTS  the arguments are not a range; or the range contains 0xFFFF or a value above 0x10FFFE,
///                             and `*buffer` was written.
/// @throws std::bad_alloc if out of memory; see "Exceptions" in base.h. `*buffer` is unchanged.
ZR_API ZRRESULT ZrUTF32toUTF16(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, WCHAR** buffer);

/// ZrUTF32toUTF8 converts code points to UTF-8. A code point below 0x7F becomes one byte, below 0x7FF two bytes, below
/// 0xFFFF three bytes, and below 0x1FFFFF four bytes.
///
/// The limits 0x7F, 0x7FF and 0xFFFF themselves take the next longer form: 0x7F becomes the bytes 0xC1 0xBF.
///
/// @param buffer  gives a buffer of `(end - begin) * 4 + 1` bytes (free).
/// @return
///   - ZR_R_OK                 the range was converted.
///   - ZR_R_INVALID_ARGUMENTS  the arguments are not a range; or the range contains a value of 0x1FFFFF or above, and
///                             `*buffer` was written.
/// @throws std::bad_alloc if out of memory; see "Exceptions" in base.h. `*buffer` is unchanged.
ZR_API ZRRESULT ZrUTF32toUTF8(const char32_t* begin, const char32_t* end, uint8_t stopAtZero, char** buffer);

/// ZrUTF8toUTF32 converts UTF-8 to code points. A byte from 0xC0 to 0xFF is a lead byte. It becomes one code point
/// together with the bytes after it, whatever they are: one byte if it is below 0xE0, two if it is below 0xF0,
/// otherwise three. Any other byte becomes a code point of the same value, even a byte from 0x80 to 0xBF.
///
/// @param buffer  gives a buffer of `end - begin + 1` code points (free).
/// @return
///   - ZR_R_OK                 the range was converted.
///   - ZR_R_INVALID_ARGUMENTS  the arguments are not a range; or the range ends inside a sequence, and `*buffer` was
///                             written. Nothing past `end` is read.
/// @throws std::bad_alloc if out of memory; see "Exceptions" in base.h. `*buffer` is unchanged.
ZR_API ZRRESULT ZrUTF8toUTF32(const char* begin, const char* end, uint8_t stopAtZero, char32_t** buffer);

// ---- UTF-8 with replacement, raw copies ----------------------------------------------------------------------------

/// ZrZRSTRtoUTF8 writes a string up to its first zero unit as well-formed UTF-8 and a zero byte. A lone surrogate
/// becomes the replacement character, EF BF BD.
///
/// With a `size` of 0 it writes nothing and returns the number of bytes needed. It doesn't use `buffer` then, which may
/// be null, the string itself or anything else.
///
/// @param string  reads a string or any zero-terminated text.
/// @param buffer  receives the text and a zero byte. It must not overlap the string: that corrupts the text, and only a
///                buffer with the address of `string` is refused.
/// @param size    of the buffer, in bytes; 0 asks for the size.
/// @return the number of bytes written, or needed if `size` is 0, including the zero byte. 0 means that the call
///         failed:
///   - `string` is null or `size` is negative;
///   - `size` is 0 and more than 0x7FFFFFFF bytes are needed;
///   - `size` is not 0, and `buffer` is null or has the address of `string`: nothing was written;
///   - `size` is not 0 and too small: the buffer contains the characters that fit, without a zero byte.
ZR_API int32_t ZrZRSTRtoUTF8(ZRSTR string, char* buffer, int32_t size) ZR_NOEXCEPT;

/// ZrCopyZRSTR2WCHAR copies exactly `count` units. It adds no terminator and ignores the length of the string. The two
/// areas may overlap.
///
/// `count` must not be greater than the number of units in `source` or the capacity of `destination`: the function
/// reads and writes past the end then, which is undefined behaviour.
///
/// @return
///   - ZR_R_OK                 the units were copied.
///   - ZR_R_INVALID_ARGUMENTS  a pointer is null or `count` is 0.
ZR_API ZRRESULT ZrCopyZRSTR2WCHAR(ZRSTR source, WCHAR* destination, uint32_t count) ZR_NOEXCEPT;

/// ZrCopyWCHAR2ZRSTR copies exactly `count` units into an existing string, like ZrCopyZRSTR2WCHAR. It makes no string
/// and doesn't change the length in the header.
///
/// `destination` must have room for `count` units before its terminator. It must not be shared: other holders rely on a
/// string that never changes, and writing it while another thread reads it is a data race. It must not be the shared
/// empty string, which some creators give for an empty text.
///
/// @return
///   - ZR_R_OK                 the units were copied.
///   - ZR_R_INVALID_ARGUMENTS  a pointer is null or `count` is 0.
ZR_API ZRRESULT ZrCopyWCHAR2ZRSTR(const WCHAR* source, ZRSTR destination, uint32_t count) ZR_NOEXCEPT;

// ---- Case ----------------------------------------------------------------------------------------------------------
//
// These functions use the case rules of the process's default locale for characters. This is the locale that the user's
// environment names, whatever locale the program has set. If the system doesn't have that locale, or has no memory for
// it, only ASCII letters have case. The first call of any of these functions reads the rules, which needs a few hundred
// microseconds; other threads wait meanwhile. Later calls never read them again. Units are mapped one by one: a
// surrogate pair has no case, and the length of a text never changes.

/// ZrWCHARCompareNoCase compares two zero-terminated texts by their units in lower case.
///
/// @param left, right  zero-terminated, or null. A null comes before any text, and two nulls are equal.
/// @return 0 if the texts are equal, a negative number if `left` comes first, else a positive number. Only the sign has
///         a meaning.
ZR_API int32_t ZrWCHARCompareNoCase(const WCHAR* left, const WCHAR* right) ZR_NOEXCEPT;

/// ZrWCHARToLower changes a zero-terminated text to lower case, in place.
///
/// @return
///   - ZR_R_OK                 the text was changed.
///   - ZR_R_INVALID_ARGUMENTS  `text` is null.
ZR_API ZRRESULT ZrWCHARToLower(WCHAR* text) ZR_NOEXCEPT;

/// ZrWCHARToUpper changes a zero-terminated text to upper case, in place.
///
/// @return
///   - ZR_R_OK                 the text was changed.
///   - ZR_R_INVALID_ARGUMENTS  `text` is null.
ZR_API ZRRESULT ZrWCHARToUpper(WCHAR* text) ZR_NOEXCEPT;

#endif
