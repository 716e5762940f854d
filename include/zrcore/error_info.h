// ZrCore: texts of result codes.
//
// The registry is a table with one row per result code. A row contains two strings: a text, which is the symbolic name
// of the code, and a description for people. The table has a row for every code of base.h except ZR_R_OK, and modules
// register their own codes. All codes of base.h have the same, general description. A row is never replaced and never
// removed: it remains after the module that registered it has been unloaded, and after every ZrUninitialize.
//
//     ZRSTR text = 0;
//     ZRRESULT result = ZrErrorInfoGetText((uint32_t)ZR_R_FAILED, &text);     // "ZR_R_FAILED"
//     ZrDestroyString(text);
//
// Codes are unsigned here: cast a ZRRESULT to uint32_t. In this family a null pointer returns ZR_R_INVALID_ARGUMENTS,
// except for the description of ZrErrorInfoRegister. Release the strings that a function gives with ZrDestroyString.
//
// Any thread, any time, before ZrInitialize too. Each call locks one mutex for the whole table. The cost is
// logarithmic in the number of rows.
//
// ## Exceptions
// The first call adds the rows for the codes of base.h. If that runs out of memory, the rows that were added remain,
// and the next call adds the others. The table is complete when all of them have been added.
//
// All three functions may throw, unless they return ZR_R_INVALID_ARGUMENTS; see "Exceptions" in base.h. They throw:
//
//     std::system_error    any call: the mutex can't be locked
//     std::bad_alloc       any call until the table is complete: out of memory for the rows of the codes of base.h
//     std::bad_alloc       ZrErrorInfoRegister: out of memory for the two strings or the row
//
// Once the table is complete, the two getters never run out of memory.

#ifndef ZRCORE_ERROR_INFO_H
#define ZRCORE_ERROR_INFO_H

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZrErrorInfoRegister adds a row for a code. The strings are copied. Nothing removes the row again.
///
/// @param code         any code that has no row yet.
/// @param text         reads a zero-terminated text; may be empty, must not be null.
/// @param description  reads a zero-terminated text. Null means no description: ZrErrorInfoGetDescription then returns
///                     an empty string.
/// @return
///   - ZR_R_OK                  the row was added.
///   - ZR_R_INVALID_ARGUMENTS   `text` is null.
///   - ZR_R_ALREADY_REGISTERED  the code already has a row, which is unchanged.
/// @throws std::system_error if the mutex can't be locked; the row is not added then. See "Exceptions" in base.h.
/// @throws std::bad_alloc if there is no memory for the rows of the codes of base.h or for the new row and its strings;
///         the new row is not added then.
ZR_API ZRRESULT ZrErrorInfoRegister(uint32_t code, const WCHAR* text, const WCHAR* description);

/// ZrErrorInfoGetText returns the text of a code, such as "ZR_R_FAILED", in `*text`.
///
/// @param text  gives one more reference on the registry's string (ZrDestroyString). Unchanged after a failure or an
///              exception.
/// @return
///   - ZR_R_OK                 `*text` was written.
///   - ZR_R_INVALID_ARGUMENTS  `text` is null.
///   - ZR_R_NOT_EXISTING       the code has no row.
/// @throws std::system_error if the mutex can't be locked; see "Exceptions" in base.h.
/// @throws std::bad_alloc if the table isn't complete and there is no memory for the rows of the codes of base.h.
ZR_API ZRRESULT ZrErrorInfoGetText(uint32_t code, ZRSTR* text);

/// ZrErrorInfoGetDescription returns the description of a code in `*description`. If the row has no description, the
/// result is an empty string.
///
/// @param description  gives a reference on a string (ZrDestroyString). Unchanged after a failure or an exception.
/// @return
///   - ZR_R_OK                 `*description` was written.
///   - ZR_R_INVALID_ARGUMENTS  `description` is null.
///   - ZR_R_NOT_EXISTING       the code has no row.
/// @throws std::system_error if the mutex can't be locked; see "Exceptions" in base.h.
/// @throws std::bad_alloc if the table isn't complete and there is no memory for the rows of the codes of base.h.
ZR_API ZRRESULT ZrErrorInfoGetDescription(uint32_t code, ZRSTR* description);

#endif
