// ZrCore: texts of result codes.
//
// The registry is a table with one row per code. A row holds two strings: a text, which is the code's symbolic name,
// and a description for people. The table has a row for every code of base.h except ZR_R_OK; modules register their own
// codes. A row is never replaced and never removed: it outlives the module that registered it, and every
// ZrUninitialize.
//
// Codes are unsigned here: cast a ZRRESULT to uint32_t. A null pointer gives ZR_R_INVALID_ARGUMENTS, except for the
// description of ZrErrorInfoRegister.
//
// All three functions may throw, see "Exceptions" in base.h, unless they return ZR_R_INVALID_ARGUMENTS. In this order:
//
//     std::system_error    any call: the mutex can't be locked
//     std::bad_alloc       any call until the table is complete: out of memory while the library's own rows are added
//     std::bad_alloc       ZrErrorInfoRegister: out of memory for the two strings or the row
//
// The first call adds the library's own rows. If that runs out of memory, the rows added so far stay, and the next call
// adds the others. Once the table is complete, the two getters never run out of memory.
//
// Any thread, any time, under one mutex. Logarithmic in the number of rows.

#ifndef ZRCORE_ERROR_INFO_H
#define ZRCORE_ERROR_INFO_H

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZrErrorInfoRegister adds a row. The strings are copied.
///
/// @param code         any code that has no row yet.
/// @param text         zero-terminated; may be empty.
/// @param description  zero-terminated, or null for none, which ZrErrorInfoGetDescription returns as an empty string.
/// @return
///   - ZR_R_OK                  the row was added.
///   - ZR_R_INVALID_ARGUMENTS   `text` is null.
///   - ZR_R_ALREADY_REGISTERED  the code has a row, which stays as it was.
/// @throws std::system_error if the mutex can't be locked; the code has no row then. See "Exceptions" in base.h.
/// @throws std::bad_alloc if there is no memory for the table or the row; the code has no row then.
ZR_API ZRRESULT ZrErrorInfoRegister(uint32_t code, const WCHAR* text, const WCHAR* description);

/// ZrErrorInfoGetText gives the text of a code, such as "ZR_R_FAILED".
///
/// @param text  gives one more reference on the registry's string (ZrDestroyString). Unchanged after a failure or an
///              exception.
/// @return
///   - ZR_R_OK                 `*text` was written.
///   - ZR_R_INVALID_ARGUMENTS  `text` is null.
///   - ZR_R_NOT_EXISTING       the code has no row.
/// @throws std::system_error if the mutex can't be locked; see "Exceptions" in base.h.
/// @throws std::bad_alloc if the table isn't complete and there is no memory for its rows.
ZR_API ZRRESULT ZrErrorInfoGetText(uint32_t code, ZRSTR* text);

/// ZrErrorInfoGetDescription gives the description of a code. For a row without one it gives an empty string.
///
/// @param description  gives a reference on a string (ZrDestroyString). Unchanged after a failure or an exception.
/// @return
///   - ZR_R_OK                 `*description` was written.
///   - ZR_R_INVALID_ARGUMENTS  `description` is null.
///   - ZR_R_NOT_EXISTING       the code has no row.
/// @throws std::system_error if the mutex can't be locked; see "Exceptions" in base.h.
/// @throws std::bad_alloc if the table isn't complete and there is no memory for its rows.
ZR_API ZRRESULT ZrErrorInfoGetDescription(uint32_t code, ZRSTR* description);

#endif
