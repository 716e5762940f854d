// Result codes as text for the user.

#ifndef EXAMPLES_HOST_RESULT_TEXT_H
#define EXAMPLES_HOST_RESULT_TEXT_H

#include <zrcore/base.h>

#include <string>

/// Describe returns the name of a result code and, for some codes, its cause in parentheses, such as
/// "ZR_R_FILE_NOT_FOUND (the module can't be loaded)". A code without a name is shown as a number.
std::string Describe(ZRRESULT result);

#endif
