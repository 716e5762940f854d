// ZrCore: variants, one record that holds any value of the library, with the type it has.
//
// A ZRVARIANT is 16 bytes that callers allocate themselves, wherever they like, and whose fields they read and write.
// The tag word tells the type, and by two flags how the value is held:
//
//     | Type (2) | Reserved1 (2) | Reserved2 (2) | Reserved3 (2) | Value (8) |
//
//     ZR_VT_I4                                  Value is the number itself
//     ZR_VT_STR                                 Value is a handle, and the record owns one reference on the string
//     ZR_VT_STR | ZR_VT_BYREF                   Value is the address of a ZRSTR that belongs to somebody else
//     ZR_VT_STR | ZR_VT_ARRAY                   Value is a ZRSAFEARRAY of strings, which the record owns
//     ZR_VT_STR | ZR_VT_ARRAY | ZR_VT_BYREF     Value is the address of a ZRSAFEARRAY that belongs to somebody else
//
// A by-reference record owns nothing, is never released, and must not outlive what it points at. The bits 0x1000 and
// 0x8000 mean nothing; they count where whole tag words are compared.
//
// A record starts from ZrVariantInit, from ZR_VARIANT_INIT or from 16 zero bytes. Every function that writes a
// destination, except ZrVariantInit, releases what the destination holds by its tag word, so the record must have been
// initialised. When the destination is released differs:
//
//   - ZrVariantCopy and ZrVariantCopyInd release the destination first and read the source's Value afterwards.
//     ZrVariantChangeType does so too if the source has the target's tag already. The source record, and what it
//     refers to, must not lie in what the destination owns, such as in an element of the destination's array.
//   - ZrVariantChangeType to another type reads the source first and then releases what the destination owned. The
//     source may lie in it.
//
// A chain of records that refer to each other must end. The three marker words are set by ZrVariantInit and by every
// function that writes a new value, and are zero after ZrVariantClear. No function tests them, but ZrVariantCompare
// compares them along with numbers that are held by value. A number narrower than 64 bits lies in the first bytes of
// Value. The functions here store zeros in the remaining bytes.
//
// In this family a null record gives ZR_R_INVALID_POINTER.
//
// Out of memory (see "Exceptions" in base.h): ZrVariantCopy, ZrVariantCopyInd and ZrVariantChangeType throw
// std::bad_alloc, with two exceptions. A new text is null, and the result is ZR_R_OK, or ZR_R_NO_MEMORY for the text of
// a ZR_VT_UUID or ZR_VT_CHAR32. The bytes of a new blob and the parts of a copied array terminate the process, as in
// ZrCreateBlob and ZrSafeArrayCopy. Copying a string needs no memory. When one of the three throws, the destination
//
//     of a copy                                was released; has the tag of the value and a null Value
//     of ZrVariantChangeType to the same tag   the same
//     of a scalar converted to another record  was released and is empty
//     of a scalar converted in place           holds its value as before, or as ZrVariantCopy would have copied it
//     of a converted array                     holds its value as before
//
// AddRef and Release of objects in values must not throw. What they throw passes through the function that called them
// or terminates the process.
//
// Any thread, before ZrInitialize too; a record has no lock, so one at a time for a record, or any number that only
// read it. Strings and blobs behind records may be shared between threads.

#ifndef ZRCORE_VARIANT_H
#define ZRCORE_VARIANT_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/blob.h"
#include "zrcore/component.h"
#include "zrcore/datetime.h"
#include "zrcore/reference.h"
#include "zrcore/string.h"
#include "zrcore/uuid.h"

typedef struct IZrDispatch IZrDispatch;

/// ZRSAFEARRAY is a handle on an array.
typedef struct ZrSafeArrayDescriptor* ZRSAFEARRAY;

/// ZRCY is a signed 64-bit count of what caller and callee agreed on. It is handled as a plain integer, unscaled.
typedef int64_t ZRCY;

#ifdef __cplusplus
/// IZrDispatch has further operations that are between host and modules; the library calls AddRef and Release alone.
struct IZrDispatch : IZrUnknown {
 protected:
  ~IZrDispatch() = default;
};
#else
struct IZrDispatch {
  const IZrUnknownTable* table;
};
#endif

// ---- Tag words -----------------------------------------------------------------------------------------------------

#define ZR_VT_TYPEMASK 0x0FFF  ///< the tag in a tag word
#define ZR_VT_ARRAY 0x2000     ///< Value is an array whose elements have the tag
#define ZR_VT_BYREF 0x4000     ///< Value is an address

// The tags. 14, 16, 22 to 24, 28 to 47 and those above 53 are not assigned.
#define ZR_VT_EMPTY 0      ///< nothing
#define ZR_VT_BOOL 1       ///< 8 bits: 0 is false, all else is true
#define ZR_VT_I1 2         ///< signed, 8 bits
#define ZR_VT_I2 3         ///< signed, 16 bits
#define ZR_VT_I4 4         ///< signed, 32 bits
#define ZR_VT_I8 5         ///< signed, 64 bits
#define ZR_VT_UI1 6        ///< unsigned, 8 bits
#define ZR_VT_UI2 7        ///< unsigned, 16 bits
#define ZR_VT_UI4 8        ///< unsigned, 32 bits
#define ZR_VT_UI8 9        ///< unsigned, 64 bits
#define ZR_VT_R4 10        ///< IEEE 754 binary32
#define ZR_VT_R8 11        ///< IEEE 754 binary64
#define ZR_VT_TIME 12      ///< time of day: signed 64-bit count of 100 ns
#define ZR_VT_DATETIME 13  ///< ZRDATETIME
#define ZR_VT_CY 15        ///< ZRCY
#define ZR_VT_BYTE 17      ///< as ZR_VT_UI1
#define ZR_VT_WORD 18      ///< as ZR_VT_UI2
#define ZR_VT_DWORD 19     ///< as ZR_VT_UI4
#define ZR_VT_QWORD 20     ///< as ZR_VT_UI8, but for its conversion to ZR_VT_DATETIME
#define ZR_VT_BLOB 21      ///< ZRBLOB, may be null; owned
#define ZR_VT_UNKNOWN 25   ///< IZrUnknown pointer, may be null; owns one reference
#define ZR_VT_OPAQUE 26    ///< 64 bits that nothing converts to or from
#define ZR_VT_CHAR32 27    ///< one code point, 32 bits
#define ZR_VT_VARIANT 48   ///< with ZR_VT_BYREF the address of a ZRVARIANT; without, a word that is only carried along
#define ZR_VT_UUID 49      ///< ZRUUID record of ZrCreateUUID and its kin, may be null; owned
#define ZR_VT_STR 50       ///< ZRSTR, may be null; owns one reference
#define ZR_VT_REF 51       ///< ZRREF record of ZrCreateREF and its kin, may be null; owned
#define ZR_VT_SREF 52      ///< ZRSREF record of ZrCreateSREF and its kin, may be null; owned
#define ZR_VT_DISPATCH 53  ///< IZrDispatch pointer, may be null; owns one reference
#define ZR_VT_LAST 53      ///< the greatest tag

// ---- The record ----------------------------------------------------------------------------------------------------

/// ZRVARIANTVALUE is the payload of a ZRVARIANT: the member that the tag word names.
typedef union tagZRVARIANTVALUE {
  uint64_t ui8;           // ZR_VT_UI8, ZR_VT_QWORD, ZR_VT_OPAQUE; first, so that { 0 } makes all 8 bytes zero
  uint8_t boolean;        // ZR_VT_BOOL
  int8_t i1;              // ZR_VT_I1
  int16_t i2;             // ZR_VT_I2
  int32_t i4;             // ZR_VT_I4
  int64_t i8;             // ZR_VT_I8
  uint8_t ui1;            // ZR_VT_UI1, ZR_VT_BYTE
  uint16_t ui2;           // ZR_VT_UI2, ZR_VT_WORD
  uint32_t ui4;           // ZR_VT_UI4, ZR_VT_DWORD
  float r4;               // ZR_VT_R4
  double r8;              // ZR_VT_R8
  int64_t time;           // ZR_VT_TIME
  ZRDATETIME dateTime;    // ZR_VT_DATETIME
  ZRCY cy;                // ZR_VT_CY
  uint32_t char32;        // ZR_VT_CHAR32
  ZRBLOB blob;            // ZR_VT_BLOB
  IZrUnknown* unknown;    // ZR_VT_UNKNOWN
  IZrDispatch* dispatch;  // ZR_VT_DISPATCH
  ZRUUID* uuid;           // ZR_VT_UUID
  ZRSTR string;           // ZR_VT_STR
  ZRREF* ref;             // ZR_VT_REF
  ZRSREF* sref;           // ZR_VT_SREF
  ZRSAFEARRAY array;      // with ZR_VT_ARRAY
  void* address;          // with ZR_VT_BYREF
} ZRVARIANTVALUE;

/// ZRVARIANT is a value of any type.
typedef struct tagZRVARIANT {
  uint16_t Type;       ///< the tag word
  uint16_t Reserved1;  ///< marker words: ZR_VARIANT_INIT shows what a new value has
  uint16_t Reserved2;
  uint16_t Reserved3;
  ZRVARIANTVALUE Value;
} ZRVARIANT;

ZR_STATIC_ASSERT(sizeof(ZRVARIANT) == 16 && offsetof(ZRVARIANT, Value) == 8, "a ZRVARIANT is two words of 64 bits");
ZR_STATIC_ASSERT(offsetof(ZRVARIANT, Reserved1) == 2 && offsetof(ZRVARIANT, Reserved3) == 6, "no gaps");

/// ZR_VARIANT_INIT initialises a record where it is defined: ZRVARIANT v = ZR_VARIANT_INIT;
#define ZR_VARIANT_INIT                        \
  {                                            \
    ZR_VT_EMPTY, 0x0041, 0x004D, 0x0043, { 0 } \
  }

// ---- Life ----------------------------------------------------------------------------------------------------------

/// ZrVariantInit writes an empty value with its marker words. What the record held is not looked at and not released.
///
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `variant` is null.
ZR_API ZRRESULT ZrVariantInit(ZRVARIANT* variant) ZR_NOEXCEPT;

/// ZrVariantClear releases what the record holds and writes 16 zero bytes, marker words included.
///
/// A record whose tag word is 0 is left as it is, its Value and marker words too.
///
/// @return A record whose tag word was not 0 is 16 zero bytes afterwards, whatever the result.
///   - ZR_R_OK                 the record is empty.
///   - ZR_R_INVALID_POINTER    `variant` is null, or the record owned an array and its handle was null.
///   - ZR_R_INVALID_ARGUMENTS  the tag word is not 0, has no ZR_VT_ARRAY, and its tag is 0, not assigned or above 53,
///                             with or without ZR_VT_BYREF.
///
/// Throws nothing of its own, and needs no memory; see "Exceptions" in base.h. An exception from Release of an object
/// in the record passes through; the record is 16 zero bytes then.
ZR_API ZRRESULT ZrVariantClear(ZRVARIANT* variant);

/// ZrVariantCopy releases the destination, then makes it a copy of the source.
///
/// Strings and blobs are shared, interface pointers get one more reference, records and arrays are copied. A
/// by-reference record becomes another one with the same address. A null string becomes an empty one, and a ZRSREF with
/// neither ref nor text becomes null; other nulls stay.
///
/// @param destination  released before the source is read, whatever its tag; errors of the release are ignored. If it
///                     is the source itself, it is empty afterwards.
/// @return After a failure the destination was released and has the source's tag word and a null Value, unless an
///         argument is null.
///   - ZR_R_OK                 the destination is a copy.
///   - ZR_R_INVALID_POINTER    an argument is null: nothing changed. Or the source owns an array whose handle is null.
///   - ZR_R_INVALID_ARGUMENTS  the source's tag is not assigned or above 53.
///   - other codes             of ZrSafeArrayCopy, for an array that the source owns.
/// @throws std::bad_alloc if there is no memory for a record, a blob's handle or an array's object; the destination was
///         released and has the source's tag word and a null Value. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrVariantCopy(ZRVARIANT* destination, const ZRVARIANT* source);

/// ZrVariantCopyInd is ZrVariantCopy, but of a by-reference source the destination gets a value of its own.
///
/// An address of a ZRVARIANT is followed until a record without ZR_VT_BYREF is found, which is copied. Through a null
/// address a number, a blob or an interface reads as 0 or null, a ZR_VT_UUID, ZR_VT_REF or ZR_VT_SREF as a new nil
/// record, a string as an empty one, and a variant as ZR_VT_VARIANT with a null Value. A null handle that an existing
/// address points at stays null, but a string's.
///
/// @param destination  released before the source's Value is read, whatever its tag; errors of the release are ignored.
///                     If it is the source itself, it is empty afterwards.
/// @return
///   - ZR_R_OK                 the destination has a value of its own.
///   - ZR_R_INVALID_POINTER    an argument is null: nothing changed. Or the address of an array is null: the
///                             destination was released and is empty. Or an array's handle is null: the destination
///                             was released and has the array's tag and a null Value.
///   - ZR_R_INVALID_ARGUMENTS  the tag is not assigned, above 53, or 0 in a by-reference record: the destination was
///                             released and has this tag and a null Value. The tag has no flags if it was found in a
///                             by-reference record. The same code if a by-reference record is both arguments.
///   - other codes             of ZrSafeArrayCopy: the destination was released and has the array's tag and a null
///                             Value.
/// @throws std::bad_alloc as ZrVariantCopy; the destination was released and has the tag of the value and a null Value.
///         See "Exceptions" in base.h.
ZR_API ZRRESULT ZrVariantCopyInd(ZRVARIANT* destination, const ZRVARIANT* source);

/// ZrVariantIsContentEmpty tells whether a value has no content. It has no way to fail.
///
/// @return 1 for an empty, an unassigned or a greater tag; for a blob, a string or an array with nothing in it; for a
///         nil UUID or REF, for an SREF whose ref is nil or, without a ref, whose text is empty; for null handles of
///         these, arrays excepted. By reference the value behind the address counts, and a null address gives 1. Else
///         0: all numbers, whatever their value, booleans and interface pointers are content, also null ones and by
///         null addresses; so is a null array, and a null `variant`.
ZR_API uint8_t ZrVariantIsContentEmpty(const ZRVARIANT* variant) ZR_NOEXCEPT;

// ---- Conversion ----------------------------------------------------------------------------------------------------

/// ZrVariantChangeType converts the value of the source to another type, into another record or in place.
///
/// What converts to what:
///
///   - Numbers, booleans and ZR_VT_CHAR32 to each other. A number is checked against the target's range in binary64,
///     fractions included (127.5 is out of range for ZR_VT_I1), then cut off towards zero; NaN and the infinities are
///     in no range, not in that of ZR_VT_R8 either. The 64-bit ranges end where binary64 puts their ends: 2^63 and 2^64
///     pass and become 0x8000000000000000, and unsigned integers up to 2^63 + 1024 pass as ZR_VT_I8 with their bits. A
///     boolean hands on its byte as it is; as a target it takes 0 to 255 and becomes 0 or 1. ZR_VT_TIME, ZR_VT_DATETIME
///     and ZR_VT_CY are numbers as sources.
///   - To ZR_VT_TIME, ZR_VT_DATETIME and ZR_VT_CY come only 64-bit integers and each other, word by word, and ZR_VT_R8,
///     cut off towards zero without a check (0x8000000000000000 where it doesn't fit). ZR_VT_QWORD to ZR_VT_DATETIME is
///     taken as the address of the 64-bit count.
///   - A blob gives its first bytes to a number, and to a ZR_VT_UUID up to 16, zeros where it has fewer. Numbers,
///     booleans, texts and the records of UUIDs, REFs and SREFs give their bytes to a blob: a boolean 0 or 1, an SREF
///     those of its ref or, without one, of its text. No bytes make a null blob.
///   - Text to an integer: decimal, or hexadecimal if "0x" are its very first units; a 'd' or 'D' may end it, and what
///     is behind that isn't read. To ZR_VT_R4 and ZR_VT_R8: what the C library's strtod reads, where an 'f' or 'F' may
///     end it likewise, or hexadecimal as above, signed, in 32 and 64 bits. An empty text is 0, and so is one that has
///     nothing in front of the letter that may end it ("dog" as an integer, "foo" as a ZR_VT_R8). White space may stand
///     in front of a decimal number or what strtod reads, never behind. The words "TRUE" and "ZR_TRUE" are 1, "FALSE"
///     and "ZR_FALSE" 0, in any mixture of upper and lower case, with nothing around them. 64 bits saturate, but for a
///     number below 0 as an unsigned one; so does a decimal ZR_VT_R4, to infinity. To ZR_VT_CY: decimal only, no words.
///     To ZR_VT_CHAR32: the first code point; digits aren't read.
///   - Text to ZR_VT_TIME, ZR_VT_DATETIME, ZR_VT_UUID and ZR_VT_REF as ZrTimeStringToDateTimeStruct,
///     ZrDateTimeStringToDateTimeStruct, ZrUUIDFromString and ZrStringToREF read it. Every text converts to ZR_VT_SREF,
///     as a ref if it reads as one, and so does every REF. An SREF converts to ZR_VT_REF by its ref or, without one, as
///     its text does.
///   - To text: integers in decimal, ZR_VT_R4 and ZR_VT_R8 as printf's "%f" (six digits, never an exponent), booleans
///     as "TRUE" and "FALSE", ZR_VT_TIME without whole days, ZR_VT_CHAR32 as its character, the others as their own
///     functions write them, an SREF by its ref where it has one. A blob's bytes become the text's code units, and
///     back; a blob without bytes becomes a null text.
///   - An array converts element by element, as by ZrSafeArrayChangeType, into a new array. The target's flags are
///     dropped then.
///
/// Nothing else converts, in particular no by-reference record (ZrVariantCopyInd first), ZR_VT_EMPTY, ZR_VT_OPAQUE,
/// interface pointers. If the source has the target's tag already, the destination becomes a ZrVariantCopy of it, flags
/// included, and an array without a copy a null one, with ZR_R_OK; in place nothing happens.
///
/// Numbers are read and written alike on every system, whatever its own runtime does, but for the decimal point, which
/// is that of the process's current locale. Where runtimes differ: an exponent begins with 'e', never with 'd'; of a
/// "0x" without a digit behind it the 0 alone is read, so it is no number; infinities and NaN are read by their names,
/// and hexadecimal fractions behind a sign; "%f" rounds the exact value, to the even digit in the middle of two, and
/// writes "inf", "-inf", "nan" and "-nan".
///
/// @param destination  may be the source itself. Another record's old value is released after the source was converted,
///                     but before the source is read if that has the target's tag already.
/// @param flags        no effect; pass 0.
/// @param target       a tag without flags.
/// @return The first code that applies; but a source that has the target's tag already is ZR_R_OK, unless an argument
///         is null. After the codes with (*) the destination is as it was. After other failures a destination that is
///         another record was released and is empty; a value that was to be converted in place is as before, or as
///         ZrVariantCopy would have copied it where the two differ.
///   - ZR_R_OK                   the destination has the target's type.
///   - ZR_R_INVALID_POINTER (*)  an argument is null.
///   - ZR_R_NOT_SUPPORTED (*)    the source is by reference.
///   - ZR_R_FAILED (*)           an element of an array doesn't convert, the array is null or has no elements, or
///                               arrays can't have elements of the target.
///   - ZR_R_INVALID_ARGUMENTS    the target is ZR_VT_EMPTY, not assigned or has flags; or the source is a ZR_VT_VARIANT
///                               by value and the target a time, a currency, a text, a blob, a UUID, a REF or an SREF.
///   - ZR_R_NOT_SUPPORTED        the types don't convert.
///   - ZR_R_INVALID_ARGUMENTS    a number is out of range, the source's record is null, an SREF has neither ref nor
///                               text, or a text is not a valid date, time, UUID or REF.
///   - ZR_R_FAILED               a text is not a number; it is out of a range of up to 32 bits, or below 0 for an
///                               unsigned target; or a blob has no bytes for a ZR_VT_UUID.
///   - ZR_R_NO_MEMORY            out of memory for the text of a ZR_VT_UUID or ZR_VT_CHAR32.
/// @throws std::bad_alloc if there is no memory for a record, a blob's handle, an array's object or its new elements;
///         or to parse certain texts: for ZR_VT_UUID those of 64 units or more, or with units beyond ASCII; for
///         ZR_VT_R4 and ZR_VT_R8, and with a minus sign for ZR_VT_UI8 and ZR_VT_QWORD, those that are not plain decimal
///         numbers of ordinary length. The destination is then as the top of this header says. See "Exceptions" in
///         base.h.
///
/// Leak: if the conversion of a null ZR_VT_REF to a ZR_VT_SREF in another record fails, Value.sref is a new record that
/// nothing releases. Other failures may leave in Value what needs no release, such as the nearest number for a text out
/// of range.
///
/// Between numbers nothing is allocated.
ZR_API ZRRESULT ZrVariantChangeType(ZRVARIANT* destination, const ZRVARIANT* source, uint32_t flags, uint16_t target);

// ---- Comparison ----------------------------------------------------------------------------------------------------

/// ZrVariantCompare tells whether two records hold the same value under the same tag word. Nothing is converted: the 5
/// of ZR_VT_I4 and that of ZR_VT_I8 are different.
///
/// By value, integers, booleans, ZR_VT_TIME, ZR_VT_DATETIME, ZR_VT_CY, ZR_VT_CHAR32 and ZR_VT_OPAQUE are equal if all
/// 16 bytes of the records are, so the marker words and the unused bytes of Value count: compare what ZrVariantCopy or
/// ZrVariantChangeType made, or what was built on records of the same state. By reference the values alone count.
/// ZR_VT_R4 and ZR_VT_R8 are equal within one epsilon of their type, absolute up to 1.0 and relative above; NaN equals
/// nothing, an infinity all but itself. Texts by code unit, null and empty being equal; blobs by content; UUIDs by
/// bytes; REFs by words, null and nil being equal; SREFs as ZrCompareSREF decides.
///
/// @param equal  receives 1 or 0; set it to 0 before, since some answers don't write it.
/// @return ZR_R_OK, with `*equal` written but for two cases: by-reference records of which one has a null address, and
///         arrays of different shapes; ZR_R_INVALID_ARGUMENTS, with `*equal` written, if a ref is compared with a text
///         that is no REF (by its text); and with `*equal` untouched: ZR_R_INVALID_POINTER if an argument or the handle
///         of an array is null; ZR_R_NOT_SUPPORTED for interface pointers, and ZR_VT_OPAQUE by reference;
///         ZR_R_INVALID_ARGUMENTS for a null ZR_VT_UUID, a null blob, ZR_VT_VARIANT by value, ZR_VT_EMPTY by reference,
///         and tags that are not assigned or above 53.
///
/// Throws nothing, and needs no memory; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrVariantCompare(const ZRVARIANT* left, const ZRVARIANT* right, uint8_t* equal);

#endif
