// ZrCore: 128-bit identifiers.
//
// A ZRUUID names a class, an interface or a value. It is a plain record of sixteen bytes. The fields of two and four
// bytes are in the machine's byte order:
//
//     | data1 (4) | data2 (2) | data3 (2) | data4 (8 bytes) |
//     {  8 digits -  4 digits -  4 digits - 2+2 - 2+2+2+2+2+2 }    text form, hexadecimal
//
// The nil value is all zeros. A caller may keep records in memory of its own. Records that a function here gives are
// heap blocks and must be released with ZrDestroyUUID.
//
//     ZRUUID id;
//     if (ZR_FAILED(ZrUUIDFromString("{01234567-89AB-CDEF-0123-456789ABCDEF}", &id))) return;
//     ZrCreateInstance(&id, 0, &kInterfaceId, 0, &object);
//
// For a null argument the functions that return a result code return ZR_R_INVALID_ARGUMENTS, except where a comment
// says otherwise. The functions that make a heap record throw std::bad_alloc when out of memory; see "Exceptions" in
// base.h.
//
// Any thread, any time, before ZrInitialize too. Records have no lock: a call that changes or destroys a record while
// another call uses it is a data race.

#ifndef ZRCORE_UUID_H
#define ZRCORE_UUID_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/string.h"

#ifndef __cplusplus
#include <stdbool.h>
#endif

/// ZRUUID is an identifier. Identifiers have the same order as their texts.
typedef struct tagZRUUID {
  uint32_t data1;
  uint16_t data2;
  uint16_t data3;
  uint8_t data4[8];
} ZRUUID;

ZR_STATIC_ASSERT(sizeof(ZRUUID) == 16, "a ZRUUID is sixteen bytes");
ZR_STATIC_ASSERT(offsetof(ZRUUID, data1) == 0 && offsetof(ZRUUID, data2) == 4 && offsetof(ZRUUID, data3) == 6 &&
                     offsetof(ZRUUID, data4) == 8,
                 "a ZRUUID has no gaps");

/// ZrCreateUUID makes a nil record.
///
/// @return gives a record (ZrDestroyUUID); never null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRUUID* ZrCreateUUID(void);

/// ZrGenerateUUID makes a record with a random value (version 4 of RFC 9562) from the system's generator.
///
/// If the system's generator fails, the record is nil, and no error is reported.
///
/// @return gives a record (ZrDestroyUUID); never null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRUUID* ZrGenerateUUID(void);

/// ZrCopyUUID makes a record with the value of `source`.
///
/// @param copy  gives the record (ZrDestroyUUID). Unchanged after a failure or an exception.
/// @return
///   - ZR_R_OK                 `*copy` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrCopyUUID(const ZRUUID* source, ZRUUID** copy);

/// ZrDestroyUUID takes a heap record, overwrites it with zeros and frees it. Null is ignored.
ZR_API void ZrDestroyUUID(ZRUUID* uuid) ZR_NOEXCEPT;

/// ZrCompareUUID reports whether two identifiers are equal. Null does not count as nil here.
///
/// @param equal  receives 1 if all sixteen bytes are equal, else 0.
/// @return
///   - ZR_R_OK                 `*equal` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null. `*equal` is unchanged.
ZR_API ZRRESULT ZrCompareUUID(const ZRUUID* left, const ZRUUID* right, uint8_t* equal) ZR_NOEXCEPT;

/// ZRUUIDGreater returns whether `left` comes after `right`; false if either is null.
///
/// The numbers data1, data2 and data3 decide first, then the bytes of data4, all unsigned. This is the order of the
/// texts. On a little-endian machine it is not the order of the record's bytes.
ZR_API bool ZRUUIDGreater(const ZRUUID* left, const ZRUUID* right) ZR_NOEXCEPT;

/// ZRUUIDLess returns whether `left` comes before `right`, in the order of ZRUUIDGreater; false if either is null.
ZR_API bool ZRUUIDLess(const ZRUUID* left, const ZRUUID* right) ZR_NOEXCEPT;

/// ZrStringFromUUID makes the text of an identifier, such as "{01234567-89AB-CDEF-0123-456789ABCDEF}": 38 units, in
/// upper case, with the braces.
///
/// @param uuid    must not be null, even if `string` is null: that is undefined behaviour.
/// @param string  gives the text (ZrDestroyString).
/// @return
///   - ZR_R_OK                 `*string` was written.
///   - ZR_R_INVALID_ARGUMENTS  `string` is null.
///   - ZR_R_NO_MEMORY          out of memory. `*string` is null.
///
/// One allocation.
ZR_API ZRRESULT ZrStringFromUUID(const ZRUUID* uuid, ZRSTR* string) ZR_NOEXCEPT;

/// ZrUUIDFromString parses an identifier from 8-bit text. It accepts more than ZrStringFromUUID writes.
///
/// The text may begin with one quotation mark, one opening brace, or both in this order. The next 36 bytes are the
/// identifier. Its hexadecimal digits, in upper or lower case, are read at fixed positions. The four separators are not
/// checked and may be any byte except zero. Everything after the 36 bytes is ignored; a closing brace is not needed.
///
/// @param text  zero-terminated bytes.
/// @param uuid  receives the value.
/// @return
///   - ZR_R_OK                 `*uuid` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null, or the whole text has fewer than 36 bytes. `*uuid` is unchanged.
///   - ZR_R_INVALID_ARGUMENTS  the whole text has 36 bytes or more, but fewer than 36 follow the quotation mark and the
///                             brace; or a byte that must be a digit is not one. `*uuid` is nil.
ZR_API ZRRESULT ZrUUIDFromString(const char* text, ZRUUID* uuid) ZR_NOEXCEPT;

#endif
