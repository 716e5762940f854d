// ZrCore: variants, one record that holds a value of any type of the library, together with its type.
//
// A ZRVARIANT is a record of 16 bytes. Callers allocate it themselves, and may read and write its fields. The tag word
// (Type) says which type the value has and, by two flags, how the record holds it:
//
//     | Type (2) | Reserved1 (2) | Reserved2 (2) | Reserved3 (2) | Value (8) |
//
//     ZR_VT_I4                                  Value is the number itself
//     ZR_VT_STR                                 Value is a handle, and the record owns one reference on the string
//     ZR_VT_STR | ZR_VT_BYREF                   Value is the address of a ZRSTR that somebody else owns
//     ZR_VT_UUID | ZR_VT_BYREF                  Value is the address of a ZRUUID* that somebody else owns
//     ZR_VT_STR | ZR_VT_ARRAY                   Value is a ZRSAFEARRAY of strings, which the record owns
//     ZR_VT_STR | ZR_VT_ARRAY | ZR_VT_BYREF     Value is the address of a ZRSAFEARRAY that somebody else owns
//
// A record starts from ZrVariantInit, from ZR_VARIANT_INIT or from 16 zero bytes. ZrVariantClear releases what it owns:
//
//     ZRVARIANT number = ZR_VARIANT_INIT, text = ZR_VARIANT_INIT;
//     number.Type = ZR_VT_I4;
//     number.Value.i4 = 42;
//     ZRRESULT result = ZrVariantChangeType(&text, &number, 0, ZR_VT_STR);     // text is "42"
//     ZrVariantClear(&text);                                                   // number owns nothing
//
// A by-reference record contains the address of a variable of the type: the address of a number, or of a handle or
// pointer to the value, as the examples show. The record owns nothing, so ZrVariantClear leaves the variable alone. The
// variable must outlive the record. A chain of by-reference records must end: functions that follow a cycle never
// return. In this family the functions return ZR_R_INVALID_POINTER for a null record, except ZrVariantIsContentEmpty.
//
// ## Destinations
// Every function that writes a destination, except ZrVariantInit, releases what the destination holds by its tag word.
// So the destination must have been initialised: otherwise the behaviour is undefined. When the destination is released
// depends on the function:
//
//   - ZrVariantCopy and ZrVariantCopyInd release the destination first and read the source's Value afterwards.
//     ZrVariantChangeType does the same if the source already has the target's tag. The source record, and the value
//     that it refers to, must not be part of what the destination owns, such as an element of the destination's array:
//     otherwise the behaviour is undefined.
//   - ZrVariantChangeType to another type reads the source first and then releases what the destination owned. The
//     source may be part of what the destination owned.
//
// ## Bits without meaning
// The bits 0x1000 and 0x8000 of the tag word have no meaning, but they count where whole tag words are compared.
//
// ZrVariantInit sets the three marker words, and so does every function that makes a new value. ZrVariantClear sets
// them to zero. No function checks them, but ZrVariantCompare compares them together with numbers that are held by
// value.
//
// A number narrower than 64 bits is in the first bytes of Value. A conversion stores zeros in the remaining bytes. A
// copy of a number that is held by value has the marker words and all bytes of the source.
//
// ## Threads
// Any thread, before ZrInitialize too. A record has no lock: any number of threads may read it at once, but a call that
// writes it while another call uses it is a data race. Different records may share strings and blobs, and different
// threads may use those records at the same time.
//
// ## Out of memory
// See "Exceptions" in base.h. ZrVariantCopy, ZrVariantCopyInd and ZrVariantChangeType throw std::bad_alloc, except in
// these cases:
//
//   - If there is no memory for a new text, the text is null and the result is ZR_R_OK; for the text of a ZR_VT_UUID or
//     ZR_VT_CHAR32 the result is ZR_R_NO_MEMORY.
//   - If there is no memory for the bytes of a new blob or the parts of a copied array, the process is terminated, as
//     in ZrCreateBlob and ZrSafeArrayCopy.
//   - Copying a string needs no memory.
//
// When one of the three functions throws, the state of the destination is:
//
//     a copy                                   it was released; it has the tag of the value and a null Value
//     ZrVariantChangeType to the same tag      the same
//     a scalar converted into another record   it was released and is empty
//     a scalar converted in place              it has its value as before, except as described for ZrVariantChangeType
//     a converted array                        it has its value as before
//
// ## Callbacks
// AddRef and Release of objects in values must not throw. Their exceptions pass through the function that called them
// or terminate the process.

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

/// ZRCY is a signed 64-bit count of a unit that caller and callee agree on. The library never scales it.
typedef int64_t ZRCY;

#ifdef __cplusplus
/// IZrDispatch has further operations, on which host and modules agree. The library calls only AddRef and Release.
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
#define ZR_VT_BYREF 0x4000     ///< Value is the address of the value

// The tags. 14, 16, 22 to 24, 28 to 47 and those above 53 are not assigned.
#define ZR_VT_EMPTY 0      ///< nothing
#define ZR_VT_BOOL 1       ///< 8 bits: 0 is false, any other value is true
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
#define ZR_VT_QWORD 20     ///< as ZR_VT_UI8, except when it is converted to ZR_VT_DATETIME
#define ZR_VT_BLOB 21      ///< ZRBLOB, may be null; owned
#define ZR_VT_UNKNOWN 25   ///< IZrUnknown pointer, may be null; owns one reference
#define ZR_VT_OPAQUE 26    ///< 64 bits; nothing converts to it or from it
#define ZR_VT_CHAR32 27    ///< one code point, 32 bits
#define ZR_VT_VARIANT 48   ///< with ZR_VT_BYREF the address of a ZRVARIANT; otherwise 64 bits that are only copied
#define ZR_VT_UUID 49      ///< ZRUUID record made by a function of uuid.h, may be null; owned
#define ZR_VT_STR 50       ///< ZRSTR, may be null; owns one reference
#define ZR_VT_REF 51       ///< ZRREF record made by a function of reference.h, may be null; owned
#define ZR_VT_SREF 52      ///< ZRSREF record made by a function of reference.h, may be null; owned
#define ZR_VT_DISPATCH 53  ///< IZrDispatch pointer, may be null; owns one reference
#define ZR_VT_LAST 53      ///< the greatest tag

// ---- The record ----------------------------------------------------------------------------------------------------

/// ZRVARIANTVALUE is the payload of a ZRVARIANT. The tag word says which member is in use.
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

/// ZRVARIANT is a record with a value of any type.
typedef struct tagZRVARIANT {
  uint16_t Type;       ///< the tag word
  uint16_t Reserved1;  ///< marker words; ZR_VARIANT_INIT contains those of a new value
  uint16_t Reserved2;
  uint16_t Reserved3;
  ZRVARIANTVALUE Value;
} ZRVARIANT;

ZR_STATIC_ASSERT(sizeof(ZRVARIANTVALUE) == 8, "every value has 64 bits or less");
ZR_STATIC_ASSERT(sizeof(ZRVARIANT) == 16 && offsetof(ZRVARIANT, Type) == 0 && offsetof(ZRVARIANT, Reserved1) == 2 &&
                     offsetof(ZRVARIANT, Reserved2) == 4 && offsetof(ZRVARIANT, Reserved3) == 6 &&
                     offsetof(ZRVARIANT, Value) == 8,
                 "a ZRVARIANT is two words of 64 bits");

/// ZR_VARIANT_INIT initialises a record in its definition: ZRVARIANT v = ZR_VARIANT_INIT;
#define ZR_VARIANT_INIT                        \
  {                                            \
    ZR_VT_EMPTY, 0x0041, 0x004D, 0x0043, { 0 } \
  }

// ---- Lifetime ------------------------------------------------------------------------------------------------------

/// ZrVariantInit writes an empty value with its marker words.
///
/// @param variant  receives the empty value. What the record held is neither read nor released.
/// @return
///   - ZR_R_OK               the record is empty.
///   - ZR_R_INVALID_POINTER  `variant` is null.
///
/// Leak: what the record owned is not released. Use ZrVariantClear for a record that was initialised before.
ZR_API ZRRESULT ZrVariantInit(ZRVARIANT* variant) ZR_NOEXCEPT;

/// ZrVariantClear releases what the record owns and writes 16 zero bytes, marker words included.
///
/// If the tag word is 0, the whole record is left unchanged, Value and marker words included.
///
/// @return If the tag word was not 0, the record is 16 zero bytes afterwards, whatever the result.
///   - ZR_R_OK                 the record is empty.
///   - ZR_R_INVALID_POINTER    `variant` is null, or the record owned an array and its handle was null.
///   - ZR_R_INVALID_ARGUMENTS  the tag word is not 0 and has no ZR_VT_ARRAY, and its tag is 0, not assigned or above
///                             53, with or without ZR_VT_BYREF.
///
/// Throws nothing of its own, and needs no memory; see "Exceptions" in base.h. An exception from Release of an object
/// in the record passes through; the record is 16 zero bytes then.
ZR_API ZRRESULT ZrVariantClear(ZRVARIANT* variant);

/// ZrVariantCopy releases the destination and then makes it a copy of the source.
///
/// Strings and blobs are shared, and interface pointers get one more reference. UUIDs, REFs, SREFs and arrays are
/// copied. A by-reference record becomes another by-reference record with the same address; only with the tag 0 the
/// address becomes null. A null string becomes an empty string, and a ZRSREF with neither a ref nor a text becomes
/// null. Other nulls stay null.
///
/// @param destination  released before the source is read, whatever its tag; errors of the release are ignored. If it
///                     is the source itself, it is empty afterwards, and its value is lost.
/// @return After a failure the destination was released, and it has the source's tag word and a null Value, unless an
///         argument is null.
///   - ZR_R_OK                 the destination is a copy.
///   - ZR_R_INVALID_POINTER    an argument is null: nothing changed. Or the source owns an array whose handle is null.
///   - ZR_R_INVALID_ARGUMENTS  the source's tag is not assigned or above 53, and the source has no ZR_VT_ARRAY.
///   - other codes             of ZrSafeArrayCopy, for an array that the source owns.
/// @throws std::bad_alloc if there is no memory for a record, a blob's handle or an array's object; the destination was
///         released, and it has the source's tag word and a null Value. See "Exceptions" in base.h.
///
/// Numbers, strings, interface pointers and by-reference records allocate nothing.
ZR_API ZRRESULT ZrVariantCopy(ZRVARIANT* destination, const ZRVARIANT* source);

/// ZrVariantCopyInd copies like ZrVariantCopy, but if the source is by reference, it copies the value that the source
/// refers to. The destination is never by reference after a success.
///
/// The address of a ZRVARIANT is followed until a record without ZR_VT_BYREF is found, and that record is copied. If an
/// address is null, the destination gets:
///
///   - 0 or null for a number, a blob or an interface pointer,
///   - a new nil record for a ZR_VT_UUID, ZR_VT_REF or ZR_VT_SREF,
///   - an empty string for a string,
///   - ZR_VT_VARIANT with a null Value for a variant.
///
/// If an address is not null but the handle that it refers to is null, the handle stays null, except that a null string
/// becomes an empty string.
///
/// @param destination  released before the source's Value is read, whatever its tag; errors of the release are ignored.
///                     If it is the source itself, it is empty afterwards, and its value is lost.
/// @return After a failure the destination was released, unless an argument is null. Its state is named with the code.
///   - ZR_R_OK                 the destination has a value of its own, or it is the source itself and not by reference.
///   - ZR_R_INVALID_POINTER    an argument is null: nothing changed. Or the address of an array is null: the
///                             destination is empty. Or an array's handle is null: the destination has the array's tag
///                             and a null Value.
///   - ZR_R_INVALID_ARGUMENTS  the value is not an array, and its tag is not assigned or above 53, or is 0 in a
///                             by-reference record: the destination has this tag and a null Value. Or the destination
///                             is the source itself, and it is by reference: it is empty.
///   - other codes             of ZrSafeArrayCopy: the destination has the array's tag and a null Value.
/// @throws std::bad_alloc as for ZrVariantCopy; the destination was released, and it has the tag of the value and a
///         null Value. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrVariantCopyInd(ZRVARIANT* destination, const ZRVARIANT* source);

/// ZrVariantIsContentEmpty reports whether a value has no content. It cannot fail.
///
/// @return 1 or 0, not a result code. If the record is by reference, the value that it refers to is examined. The first
///         line that applies decides.
///   - 0  `variant` is null.
///   - 0  the value is an array, unless its number of elements is 0. A null array has content. An array without
///        dimensions, or with a tag that elements cannot have, has content unless the first count that it was created
///        with is 0.
///   - 1  the tag is ZR_VT_EMPTY, not assigned or above 53.
///   - 1  the value is a blob or a string without content; a nil UUID or REF; an SREF whose ref is nil; or an SREF
///        without a ref whose text is empty. For these types a null handle or address means no content too.
///   - 1  the record is a by-reference ZR_VT_VARIANT with a null address.
///   - 0  for all other values. Numbers, booleans and interface pointers always have content, even if they are 0 or
///        null or their address is null.
ZR_API uint8_t ZrVariantIsContentEmpty(const ZRVARIANT* variant) ZR_NOEXCEPT;

// ---- Conversion ----------------------------------------------------------------------------------------------------

/// ZrVariantChangeType converts the value of the source to another type, into another record or in place.
///
/// Numbers:
///
///   - Numbers, booleans and ZR_VT_CHAR32 convert to each other. As sources, ZR_VT_TIME, ZR_VT_DATETIME and ZR_VT_CY
///     are numbers too.
///   - A number must be in the target's range. The range is checked in binary64, fraction included: 127.5 is out of
///     range for ZR_VT_I1. Then the number is truncated towards zero. NaN and the infinities are out of range for every
///     target, ZR_VT_R8 included.
///   - In binary64 the upper limits of ZR_VT_I8 and of ZR_VT_UI8 round up to 2^63 and 2^64. So 2^63 is accepted for
///     ZR_VT_I8 and 2^64 for ZR_VT_UI8, and both become 0x8000000000000000. An unsigned integer from 2^63 to
///     2^63 + 1024 rounds to 2^63, so it converts to ZR_VT_I8 with its bits unchanged and becomes negative.
///   - The byte of a boolean source is converted without a range check: a byte of 200 becomes -56 as ZR_VT_I1. A
///     boolean target accepts 0 to 255 and becomes 0 or 1.
///   - As targets, ZR_VT_TIME, ZR_VT_DATETIME and ZR_VT_CY accept only these numbers: 64-bit integers and each other,
///     whose 64 bits are copied, and ZR_VT_R8. A ZR_VT_R8 is truncated towards zero without a range check; if it does
///     not fit, the result is 0x8000000000000000.
///   - A ZR_VT_QWORD that is converted to ZR_VT_DATETIME is taken for the address of a 64-bit count, which is read. The
///     address must be valid: otherwise the behaviour is undefined.
///
/// Blobs:
///
///   - A blob converts to a number by its first bytes, in the byte order of the machine, and to a ZR_VT_UUID by its
///     first 16 bytes. If the blob has fewer bytes, the others are zero. A null blob converts to the number 0.
///   - Numbers, booleans, texts, UUIDs, REFs and SREFs convert to a blob of their bytes. A boolean is stored as 0 or 1.
///     An SREF is stored as the bytes of its ref or, without a ref, of its text. Without any bytes the blob is null.
///
/// Text to a number:
///
///   - To an integer: decimal, or hexadecimal if the first two characters are "0x" or "0X". To a boolean: in the same
///     way, as an integer from 0 to 255.
///   - To ZR_VT_R4 and ZR_VT_R8: what the C library's strtod parses. But if the first two characters are "0x" or "0X",
///     the text is a hexadecimal integer, signed, of 32 bits for ZR_VT_R4 and of 64 bits for ZR_VT_R8.
///   - White space may precede a decimal number, and what strtod parses. Nothing may follow the number, except a zero
///     unit or a suffix; everything after these is ignored. The suffix of a decimal integer is 'd' or 'D'. The suffix
///     of what strtod parses is 'f' or 'F'. A hexadecimal integer has no suffix: these letters are digits.
///   - An empty text is 0. A text that begins with the suffix is 0 too ("dog" as an integer, "foo" as a ZR_VT_R8).
///   - The words "TRUE" and "ZR_TRUE" are 1, "FALSE" and "ZR_FALSE" are 0, in any mixture of upper and lower case, with
///     nothing before or after them.
///   - A number that does not fit saturates if the target is a 64-bit integer or ZR_VT_CY, or if the number is a
///     hexadecimal integer for ZR_VT_R8; but a number below 0 fails for an unsigned target. A decimal number that does
///     not fit ZR_VT_R4 or ZR_VT_R8 becomes an infinity. Other numbers that do not fit fail.
///   - To ZR_VT_CY: decimal only, and no words.
///   - To ZR_VT_CHAR32: the first code point; digits are not parsed. An empty text becomes 0.
///
/// Text to other types:
///
///   - To ZR_VT_TIME, ZR_VT_DATETIME, ZR_VT_UUID and ZR_VT_REF as ZrTimeStringToDateTimeStruct,
///     ZrDateTimeStringToDateTimeStruct, ZrUUIDFromString and ZrStringToREF parse it.
///   - Every text converts to ZR_VT_SREF: to a ref if ZrStringToREF can parse it, else to the text. Every REF converts
///     to ZR_VT_SREF too. An SREF converts to ZR_VT_REF by its ref or, without a ref, by parsing its text.
///
/// To text:
///
///   - Integers and ZR_VT_CY in decimal, ZR_VT_R4 and ZR_VT_R8 as printf's "%f" (six digits after the decimal point,
///     never an exponent), booleans as "TRUE" and "FALSE", ZR_VT_TIME without whole days, ZR_VT_CHAR32 as its
///     character.
///   - ZR_VT_DATETIME, UUIDs and REFs as their own functions write them. An SREF by its ref or, without a ref, by its
///     text.
///   - The bytes of a blob become the code units of the text, and a text converts to a blob in the same way. A blob
///     without bytes becomes a null text.
///
/// Arrays: an array converts element by element into a new array, as ZrSafeArrayChangeType converts it. Flags in
/// `target` are ignored then.
///
/// Nothing else converts: in particular no by-reference record (call ZrVariantCopyInd first), no ZR_VT_EMPTY, no
/// ZR_VT_OPAQUE and no interface pointer.
///
/// If the source already has the target's tag, whatever its flags are, nothing is converted, and the only failure is
/// ZR_R_INVALID_POINTER. Another record becomes a copy as by ZrVariantCopy, flags included; errors of the copy are
/// ignored, and an array that cannot be copied becomes a null array. In place nothing happens.
///
/// Numbers are parsed and written alike on every system, whatever its C library does. Only the decimal point is that of
/// the process's current locale. Where C libraries differ, these rules apply:
///
///   - An exponent begins with 'e', never with 'd'.
///   - In a "0x" without a digit after it, only the 0 is parsed, so the text is not a number.
///   - Infinities and NaN are parsed by their names. Hexadecimal fractions are parsed only after a sign or white space.
///   - "%f" rounds the exact value, and a tie to the even digit. It writes "inf", "-inf", "nan" and "-nan".
///
/// @param destination  may be the source itself. The old value of another record is released after the source was
///                     converted, but before the source is read if the source already has the target's tag.
/// @param flags        has no effect; pass 0.
/// @param target       a tag without flags.
/// @return The first failure that applies. After the codes with (*) the destination is unchanged. After other failures
///         a destination that is another record was released and is empty. A value that was to be converted in place is
///         as before, except that a null string has become an empty string, and that an SREF with neither a ref nor a
///         text has become null.
///   - ZR_R_OK                   the destination has the target's type, or the source already had the target's tag.
///   - ZR_R_INVALID_POINTER (*)  an argument is null.
///   - ZR_R_NOT_SUPPORTED (*)    the source is by reference.
///   - ZR_R_FAILED (*)           an element of an array does not convert, the array is null or has no elements, or
///                               arrays cannot have elements of the target type.
///   - ZR_R_INVALID_ARGUMENTS    the target is ZR_VT_EMPTY, not assigned or has flags; or the source is a ZR_VT_VARIANT
///                               by value and the target is ZR_VT_TIME, ZR_VT_DATETIME, ZR_VT_CY, a text, a blob, a
///                               UUID, a REF or an SREF.
///   - ZR_R_NOT_SUPPORTED        the types do not convert.
///   - ZR_R_INVALID_ARGUMENTS    a number is out of range, the source's record is null, an SREF has neither a ref nor a
///                               text, or a text is not a valid date, time, UUID or REF.
///   - ZR_R_FAILED               a text is not a number; a number in a text is out of the range of a target of up to 32
///                               bits, or below 0 for an unsigned target; or a blob has no bytes for a ZR_VT_UUID.
///   - ZR_R_NO_MEMORY            out of memory for the text of a ZR_VT_UUID or ZR_VT_CHAR32.
/// @throws std::bad_alloc if there is no memory for a record, a blob's handle, an array's object or its new elements;
///         or no memory to parse certain texts. For ZR_VT_UUID these are texts of 64 units or more, or with units
///         beyond ASCII. For ZR_VT_R4 and ZR_VT_R8, and for ZR_VT_UI8 and ZR_VT_QWORD if there is a minus sign, these
///         are texts that are not plain decimal numbers of ordinary length. "Out of memory" at the top of this header
///         describes the destination then. See "Exceptions" in base.h.
///
/// Leak: the conversion of a null ZR_VT_REF to a ZR_VT_SREF in another record fails, but leaves a new record in
/// Value.sref of the empty destination. Nothing releases this record. After other failures Value may have any content,
/// but nothing that needs a release.
///
/// Conversions between numbers allocate nothing.
ZR_API ZRRESULT ZrVariantChangeType(ZRVARIANT* destination, const ZRVARIANT* source, uint32_t flags, uint16_t target);

// ---- Comparison ----------------------------------------------------------------------------------------------------

/// ZrVariantCompare reports whether two records hold the same value under the same tag word. Nothing is converted: a
/// ZR_VT_I4 of 5 and a ZR_VT_I8 of 5 are different.
///
///   - If the tag words differ, flags and bits without meaning included, the records are different.
///   - Integers, booleans, ZR_VT_TIME, ZR_VT_DATETIME, ZR_VT_CY, ZR_VT_CHAR32 and ZR_VT_OPAQUE by value are equal if
///     all 16 bytes of the records are equal. So the marker words and the unused bytes of Value count. Compare only
///     records that started from ZrVariantInit or ZR_VARIANT_INIT and then got one number, results of a conversion, and
///     copies of these. A record that started from 16 zero bytes or from ZrVariantClear differs from them, and so does
///     a copy of it.
///   - Numbers by reference are equal if their own bytes are equal. Two by-reference ZR_VT_VARIANT are equal if the
///     records that they refer to are equal by these rules.
///   - ZR_VT_R4 and ZR_VT_R8 are equal if they differ by at most one epsilon of their type, absolute up to 1.0 and
///     relative above. NaN equals nothing. An infinity equals every number except itself and NaN.
///   - Texts are compared by code unit, and a null text equals an empty text. Blobs are compared by content, UUIDs by
///     bytes, and REFs by words; a null REF equals a nil REF. SREFs are compared as by ZrCompareSREF.
///   - Arrays are compared as by ZrSafeArrayCompare. Two records with ZR_VT_EMPTY are equal.
///
/// @param equal  receives 1 or 0. Set it to 0 before the call, since some results leave it unchanged.
/// @return
///   - ZR_R_OK                 `*equal` was written, but not if a by-reference record has a null address or two arrays
///                             have different shapes.
///   - ZR_R_INVALID_ARGUMENTS  with `*equal` written: an SREF with a ref was compared with an SREF whose text is not a
///                             valid REF. They were compared by their texts.
///   - ZR_R_INVALID_POINTER    with `*equal` unchanged: an argument or the handle of an array is null.
///   - ZR_R_NOT_SUPPORTED      with `*equal` unchanged: the values are interface pointers, or ZR_VT_OPAQUE by
///                             reference.
///   - ZR_R_INVALID_ARGUMENTS  with `*equal` unchanged: a null ZR_VT_UUID, a null blob, ZR_VT_VARIANT by value,
///                             ZR_VT_EMPTY by reference, or a tag that is not assigned or above 53.
///   - ZR_R_FAILED             with `*equal` unchanged: a blob is damaged.
///
/// Throws nothing, and needs no memory; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrVariantCompare(const ZRVARIANT* left, const ZRVARIANT* right, uint8_t* equal);

#endif
