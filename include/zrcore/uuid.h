// ZrCore: 128-bit identifiers.
//
// A ZRUUID names a class, an interface or a value. It is a plain record of sixteen bytes, the wider fields in the
// machine's byte order:
//
//     | data1 (4) | data2 (2) | data3 (2) | data4 (8 bytes) |
//     {  8 digits -  4 digits -  4 digits - 2+2 - 2+2+2+2+2+2 }    text form, hexadecimal
//
// All zero is the nil value. Records may live anywhere; those that a function here gives are heap blocks,
// released by ZrDestroyUUID.
//
// In this family a null argument gives ZR_R_INVALID_ARGUMENTS. The functions that make a heap record throw
// std::bad_alloc if there is no memory for it; see "Exceptions" in base.h. Any thread, any time, before ZrInitialize
// too; records have no lock.

#ifndef ZRCORE_UUID_H
#define ZRCORE_UUID_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/string.h"

#ifndef __cplusplus
#include <stdbool.h>
#endif

/// ZRUUID is an identifier. It orders as its text does.
typedef struct tagZRUUID {
  uint32_t data1;
  uint16_t data2;
  uint16_t data3;
  uint8_t data4[8];
} ZRUUID;

ZR_STATIC_ASSERT(sizeof(ZRUUID) == 16, "a ZRUUID is sixteen bytes");
ZR_STATIC_ASSERT(offsetof(ZRUUID, data2) == 4 && offsetof(ZRUUID, data3) == 6 && offsetof(ZRUUID, data4) == 8,
                 "a ZRUUID has no gaps");

/// ZrCreateUUID makes a nil record.
///
/// @return gives a record (ZrDestroyUUID); never null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRUUID* ZrCreateUUID(void);

/// ZrGenerateUUID makes a record with a random value (version 4 of RFC 9562) from the system's generator.
///
/// @return gives a record (ZrDestroyUUID); never null. If the system's generator fails, the record is nil, and no error
///         is reported.
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

/// ZrDestroyUUID overwrites a heap record with zeros and frees it. Null is ignored.
ZR_API void ZrDestroyUUID(ZRUUID* uuid) ZR_NOEXCEPT;

/// ZrCompareUUID tells whether two identifiers are equal.
///
/// @param equal  receives 1 if all sixteen bytes are equal, else 0.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*equal` unchanged, if any argument is null: null is no nil value
/// here.
ZR_API ZRRESULT ZrCompareUUID(const ZRUUID* left, const ZRUUID* right, uint8_t* equal) ZR_NOEXCEPT;

/// ZRUUIDGreater is whether `left` comes after `right`; false if either is null.
///
/// The numbers data1, data2 and data3 decide, then the bytes of data4, all unsigned: the order of the text form, which
/// on a little-endian machine is not that of the record's bytes.
ZR_API bool ZRUUIDGreater(const ZRUUID* left, const ZRUUID* right) ZR_NOEXCEPT;

/// ZRUUIDLess is whether `left` comes before `right`, in the order of ZRUUIDGreater; false if either is null.
ZR_API bool ZRUUIDLess(const ZRUUID* left, const ZRUUID* right) ZR_NOEXCEPT;

/// ZrStringFromUUID writes an identifier as text, such as "{01234567-89AB-CDEF-0123-456789ABCDEF}": 38 units, upper
/// case, with the braces.
///
/// @param uuid    must not be null; it is read before anything is checked.
/// @param string  receives the text, which the caller destroys; null when memory is exhausted.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `string` is null; ZR_R_NO_MEMORY.
///
/// One allocation.
ZR_API ZRRESULT ZrStringFromUUID(const ZRUUID* uuid, ZRSTR* string) ZR_NOEXCEPT;

/// ZrUUIDFromString reads an identifier from 8-bit text. It takes more than ZrStringFromUUID writes.
///
/// One quotation mark, then one opening brace may stand in front (in this order). Behind them the digits, of either
/// case, are read at fixed places; the four separators may be any byte, and all behind the 36th byte is ignored, the
/// closing brace too.
///
/// @param text  zero-terminated bytes.
/// @param uuid  receives the value.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if an argument is null or the text has fewer than 36 bytes, with the record
///         unchanged; the same code, with the record set to nil, if fewer than 36 bytes follow what stands in front or
///         a place for a digit holds none.
ZR_API ZRRESULT ZrUUIDFromString(const char* text, ZRUUID* uuid) ZR_NOEXCEPT;

#endif
