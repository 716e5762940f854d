// ZrCore: texts of result codes.
//
// The registry maps a code to two strings: its text, which is its symbolic name, and a description for people. The
// codes of base.h are in it from the start, all but ZR_R_OK; modules register their own. A row is never replaced and
// never removed: it outlives the module that registered it and every ZrUninitialize.
//
// Codes are unsigned here: a ZRRESULT converts, with a cast where the compiler minds the sign. A null pointer gives
// ZR_R_INVALID_ARGUMENTS, except for a description.
//
// Any thread, any time, before ZrInitialize too, under one mutex. A mutex that fails raises std::system_error. Each
// call is a search among the rows; the first of all sets the registry up.

#ifndef ZRCORE_ERROR_INFO_H
#define ZRCORE_ERROR_INFO_H

#include "zrcore/base.h"
#include "zrcore/string.h"

/// ZrErrorInfoRegister adds a code. The texts are copied.
///
/// @param code         any that has no row yet.
/// @param text         zero-terminated; may be empty.
/// @param description  zero-terminated, or null for none, which reads as an empty string.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null; ZR_R_ALREADY_REGISTERED if the code has a row: the row
///         stays as it was.
/// @throws std::bad_alloc when memory is exhausted; nothing is registered then.
ZR_API ZRRESULT ZrErrorInfoRegister(uint32_t code, const WCHAR* text, const WCHAR* description);

/// ZrErrorInfoGetText gives the text of a code, such as "ZR_R_FAILED".
///
/// @param text  receives one more reference of the registry's string, which the caller destroys; unchanged on failure.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `text` is null; ZR_R_NOT_EXISTING if the code has no row.
/// @throws std::bad_alloc when memory is exhausted while the first call of all sets the registry up.
ZR_API ZRRESULT ZrErrorInfoGetText(uint32_t code, ZRSTR* text);

/// ZrErrorInfoGetDescription gives the description of a code, like ZrErrorInfoGetText. A row without one gives an
/// empty string.
ZR_API ZRRESULT ZrErrorInfoGetDescription(uint32_t code, ZRSTR* description);

#endif
